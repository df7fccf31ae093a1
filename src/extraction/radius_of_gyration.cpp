#include "extraction/radius_of_gyration.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "support/named_memory.h"
#include "support/vectors.h"

namespace pathstat {

double radius_of_gyration(std::span<const double> masses, std::span<const double> coordinates) {
  double mass = 0;
  Vector3 centre{};
  for (std::size_t atom = 0; atom < masses.size(); ++atom) {
    mass += masses[atom];
    for (std::size_t axis = 0; axis < 3; ++axis) centre[axis] += masses[atom] * coordinates[3 * atom + axis];
  }
  if (!(mass > 0)) return 0;
  for (double& coordinate : centre) coordinate /= mass;
  double sum = 0;
  for (std::size_t atom = 0; atom < masses.size(); ++atom) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double distance = coordinates[3 * atom + axis] - centre[axis];
      sum += masses[atom] * distance * distance;
    }
  }
  return std::sqrt(sum / mass);
}

void calcradgyr_(std::int32_t model, double& radius, std::int32_t& status) {
  constexpr std::int32_t with_images = 3;
  radius = 0;
  status = 0;
  std::int32_t count = 0;
  std::int32_t error = 0;
  count_atoms(model, with_images, count, error);
  if (error != 0 || count < 1) return;
  NamedBlock<std::int32_t> atoms("pathstat/RGR/Atoms", count, status);
  if (status != 0) return;
  std::int32_t listed = 0;
  kvd_mod_atomlist_(model, with_images, atoms.span(), listed, error);
  listed = std::clamp(listed, 0, count);
  const NamedBlock<double> masses("pathstat/RGR/Mass", listed, status);
  if (status != 0) return;
  const NamedBlock<double> coordinates("pathstat/RGR/xyz", std::int64_t{3} * listed, status);
  if (status != 0) return;
  const auto objects = atoms.span().first(static_cast<std::size_t>(listed));
  kvd_atm_dmass_(objects, masses.span(), error);
  kvd_xyz_(objects, coordinates.span(), error);
  radius = radius_of_gyration(masses.span(), coordinates.span());
}

}  // namespace pathstat
