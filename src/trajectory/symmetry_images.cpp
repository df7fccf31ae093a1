#include "trajectory/symmetry_images.h"

#include <algorithm>
#include <array>
#include <new>
#include <numeric>
#include <string>
#include <vector>

#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "state/analysis_settings.h"
#include "structure/crystal_coordinates.h"
#include "structure/symmetry_codes.h"
#include "support/plain_array.h"

namespace pathstat {
namespace {

constexpr std::int32_t failed = 1;
constexpr std::int32_t with_images = 3;
constexpr std::int32_t identity = 1;

/// Each operator may take an atom to an image of its own.
constexpr std::size_t most_operators = most_group_operators;

std::string label(std::string_view labels, std::string_view name) { return std::string(labels) + std::string(name); }

/// The group of a model that has one with operators beside the identity.
std::int32_t space_group(std::int32_t model, std::int32_t& operators) {
  std::int32_t type = 0, group = 0, error = 0;
  operators = identity;
  kvd_mod_periodictype_(model, type, error);
  if (error != 0 || type != periodic_type::three_dimensional) return 0;
  kvd_mod_3dsymmetry_(model, group, error);
  if (error == 0) kvd_sgr_numoperators_(group, operators, error);
  if (error != 0) operators = identity;
  return group;
}

}  // namespace

SymmetryImages::SymmetryImages(std::string_view labels, std::int32_t model, std::span<const std::int32_t> stored,
                               std::int32_t& status) try {
  std::int32_t atoms = 0;
  count_atoms(model, with_images, atoms, status);
  if (status == 0) read_operators(labels, model, status);
  if (atoms < std::ssize(stored)) status = failed;
  if (status != 0) return;
  parents_ = NamedBlock<std::int32_t>(label(labels, "SymParent"), atoms, status);
  operators_ = NamedBlock<std::int32_t>(label(labels, "SymPtr"), atoms, status);
  ids_ = NamedBlock<std::int32_t>(label(labels, "IdList"), atoms, status);
  const PlainArray<std::int32_t> objects(atoms);
  if (!objects.allocated() || parents_.size() != objects.span().size() || ids_.size() != objects.span().size()) {
    status = failed;
  }
  if (status != 0) return;
  read_images(stored, objects.span(), status);
  if (status == 0) kvd_id_(objects.span(), ids_.span(), status);
} catch (const std::bad_alloc&) {
  status = failed;
}

void SymmetryImages::read_operators(std::string_view labels, std::int32_t model, std::int32_t& status) {
  std::int32_t count = 0, delivered = 0;
  const std::int32_t group = space_group(model, count);
  if (count < 1 || count > most_group_operators) status = failed;
  if (status != 0) return;
  rotations_ = NamedBlock<double>(label(labels, "SymMat"), std::int64_t{9} * count, status);
  if (status == 0) translations_ = NamedBlock<double>(label(labels, "SymTr"), std::int64_t{3} * count, status);
  if (status != 0 || count == identity) return;
  kvd_sgr_operators_(group, rotations_.span(), translations_.span(), delivered, status);
  if (status == 0 && delivered != count) status = failed;
}

void SymmetryImages::read_images(std::span<const std::int32_t> stored, std::span<std::int32_t> objects,
                                 std::int32_t& status) {
  std::copy(stored.begin(), stored.end(), objects.begin());
  std::iota(parents_.span().begin(), parents_.span().begin() + std::ssize(stored), 1);
  std::fill_n(operators_.span().begin(), stored.size(), identity);
  std::size_t places = stored.size();
  std::array<std::int32_t, most_operators> children;
  for (std::size_t parent = 0; parent < stored.size() && operators() > identity; ++parent) {
    std::int32_t count = 0, listed = 0;
    kvd_sym_symmetrychildren_(stored[parent], children, count, status);
    const auto found = static_cast<std::size_t>(std::max(count, 0));
    if (status != 0 || found > std::min(children.size(), objects.size() - places)) break;
    for (std::size_t k = 0; k < found && status == 0; ++k, ++places) {
      std::int32_t& number = operators_.span()[places];
      objects[places] = children[k];
      parents_.span()[places] = static_cast<std::int32_t>(parent) + 1;
      kvd_sym_operators_(children[k], std::span(&number, 1), listed, status);
      if (number < identity || number > operators()) status = failed;
    }
    if (status != 0) break;
  }
  if (places != objects.size()) status = failed;
}

std::int32_t SymmetryImages::atoms_of(std::int32_t last_parent) const {
  return static_cast<std::int32_t>(
      std::ranges::count_if(parents(), [&](std::int32_t parent) { return parent <= last_parent; }));
}

void SymmetryImages::add_images(std::span<double> vectors, std::int32_t parents, const CellVectors& cell, Kind kind,
                                std::int32_t& status) const {
  if (operators() <= identity) return;
  std::array<double, 9 * most_operators> turns;
  std::array<double, 3 * most_operators> moves{};
  const std::span turn(turns.data(), rotations_.size()), move(moves.data(), translations_.size());
  std::ranges::copy(rotations_.span(), turn.begin());
  if (kind == Kind::positions) std::ranges::copy(translations_.span(), move.begin());
  kva_cry_fracoperatortocart_(cell.a, cell.b, cell.c, turn, move, status);
  if (status != 0) return;
  std::size_t at = 3 * static_cast<std::size_t>(parents);
  const auto place_of_parent = parents_.span();
  for (std::size_t place = 0; place < place_of_parent.size() && at + 3 <= vectors.size(); ++place) {
    const std::int32_t parent = place_of_parent[place];
    if (parent > parents || parent == static_cast<std::int32_t>(place) + 1) continue;
    const auto number = static_cast<std::size_t>(operators_.span()[place] - 1);
    const auto image = vectors.subspan(at).first<3>();
    const auto origin = vectors.subspan(3 * static_cast<std::size_t>(parent - 1)).first<3>();
    dmatmul_(MatrixIn<double>(turn.subspan(9 * number).first<9>()), VectorIn<double>(origin), image);
    dvecadd_(image, VectorIn<double>(move.subspan(3 * number).first<3>()), image);
    at += 3;
  }
}

}  // namespace pathstat
