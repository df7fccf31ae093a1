#include <algorithm>
#include <array>
#include <utility>

#include "desk/model/molecular_model.h"
#include "structure/measure_geometry.h"

namespace pathstat::desk {
namespace {

constexpr std::array atoms_of_type{
    std::pair{distance_monitor, 2}, std::pair{angle_monitor, 3},     std::pair{torsion_monitor, 4},
    std::pair{plane_monitor, 6},    std::pair{inversion_monitor, 4},
};

}  // namespace

std::size_t monitor_atoms(std::int32_t type) {
  for (const auto& [known, atoms] : atoms_of_type) {
    if (known == type) return static_cast<std::size_t>(atoms);
  }
  return 0;
}

std::vector<Vector3> monitor_positions(const MolecularModel& model, const Monitor& monitor) {
  std::vector<Vector3> positions;
  for (std::size_t k = 0; k < monitor.atoms.size(); ++k) {
    positions.push_back(translated(model.positions[monitor.atoms[k]], model.cell, monitor.image(k)));
  }
  return positions;
}

double monitor_value(const Monitor& monitor, std::span<const Vector3> p) {
  switch (monitor.type) {
    case distance_monitor: {
      Vector3 between{};
      dvecsub_(p[1], p[0], between);
      return dveclen_(between);
    }
    case angle_monitor:
      return degrees_per_radian * angle_of(p[0], p[1], p[2]);
    case torsion_monitor:
      return degrees_per_radian * torsion_of(p[0], p[1], p[2], p[3]);
    case plane_monitor:
      return degrees_per_radian * plane_angle_of(p[0], p[1], p[2], p[3], p[4], p[5]);
    case inversion_monitor:
      return degrees_per_radian * inversion_of(p[0], p[1], p[2], p[3], monitor.convention).angle;
    default:
      return 0;
  }
}

}  // namespace pathstat::desk
