#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "building/builder_actions.h"
#include "building/model_draft.h"
#include "building/structure_report.h"
#include "coreapi/messages.h"
#include "crystals/crystal_builder.h"
#include "crystals/crystal_settings.h"
#include "crystals/periodic_network.h"
#include "state/analysis_settings.h"
#include "structure/crystal_vectors.h"
#include "structure/lattice_types.h"
#include "structure/space_groups.h"
#include "support/text_field.h"

namespace pathstat::builder_actions {
namespace {

constexpr std::string_view conventional_group = "CRY/CONVENTIONAL_GPSYMMETRY";

/// How a crystal was built, to build it again in the same way.
struct Built {
  double tolerance = 0.0;
  std::int32_t special = 0, bonding = 0, display = 0, faces = 0;

  Built(std::int32_t crystal, std::int32_t& status) {
    if (status == 0) crystal_toleranceinfo_(crystal, tolerance, status);
    if (status == 0) crystal_specialpositioninfo_(crystal, special, status);
    if (status == 0) crystal_bondinginfo_(crystal, bonding, status);
    if (status == 0) crystal_displayinfo_(crystal, display, faces, status);
  }
  void again(std::int32_t unit, std::int32_t& status) const {
    constexpr std::int32_t no_alignment = 0, no_report = 0;
    crystal_buildcrystal_(unit, special, tolerance, bonding, display, faces, no_alignment, no_report, status);
  }
};

/// A new setting: the columns of (A B C) m are its cell vectors.
struct Setting {
  Matrix3 m{};
  std::int32_t lattice = 0, centring = 0;
};

/// True for a trigonal group on hexagonal axes whose lattice has a point at 1/3, 2/3, 1/3: centred the reverse way, for
/// which the tables of centrings have no row.
bool is_reverse(std::int32_t group_id) {
  constexpr std::int32_t trigonal_hexagonal = 5;
  constexpr double near = 1e-3;
  std::int32_t lattice = 0, status = 0;
  kvd_sgr_latticetype_(group_id, lattice, status);
  if (status != 0 || lattice != trigonal_hexagonal) return false;
  const auto group = group_table(group_id, status);
  constexpr Matrix3 identity{1, 0, 0, 0, 1, 0, 0, 0, 1};
  for (std::size_t op = 0; op < group.size(); ++op) {
    const auto moved = group.applied(op, {0, 0, 0});
    const bool there = std::abs(moved[0] - 1.0 / 3) < near && std::abs(moved[1] - 2.0 / 3) < near &&
                       std::abs(moved[2] - 1.0 / 3) < near;
    if (there && std::ranges::equal(std::span(group.rotations).subspan(9 * op, 9), identity)) return true;
  }
  return false;
}

/// The change between a lattice of hexagonal axes that is centred the reverse way and its rhombohedral setting: that of
/// the obverse way, turned by 180 degrees about c.
void reverse_setting(std::int32_t model, std::int32_t direction, Setting& setting, std::int32_t& status) {
  constexpr std::int32_t hexagonal_axes = 5, rhombohedral_centring = 6;
  std::int32_t group = 0, error = 0;
  if (direction == to_conventional) kvd_ud_findobject_(model, conventional_group, group, error);
  if (direction == to_primitive) group = group_of_model(model);
  if (error != 0 || group == 0 || !is_reverse(group)) return;
  std::array<Vector3, 3> column{};
  kva_sgr_primitivelattice_(hexagonal_axes, rhombohedral_centring, column[0], column[1], column[2], setting.lattice,
                            status);
  for (auto& vector : column) vector[0] = -vector[0], vector[1] = -vector[1];
  setting.m = crystal::columns(column[0], column[1], column[2]);
  if (direction == to_conventional && status == 0) dmatinv_(setting.m, setting.m, status);
}

/// The operators of a group as those of a setting, each of them once: of those that centring makes of one, the first.
struct Operators {
  std::vector<double> rotations, translations;

  Operators(const GroupTable& group, const Setting& setting, std::int32_t& status) {
    Matrix3 inverse{};
    dmatinv_(setting.m, inverse, status);
    for (std::size_t op = 0; op < group.size() && status == 0; ++op) {
      Matrix3 rotation{};
      Vector3 translation{};
      dmatmul_(inverse, std::span(group.rotations).subspan(9 * op).first<9>(), rotation);
      dmatmul_(rotation, setting.m, rotation);
      dmatmul_(inverse, std::span(group.translations).subspan(3 * op).first<3>(), translation);
      add(rotation, translation);
    }
  }

 private:
  void add(Matrix3 rotation, Vector3 translation) {
    constexpr double parts = 24.0;  // all translations of the tables are whole numbers of these
    for (auto& element : rotation) element = std::round(element);
    for (auto& part : translation) {
      part = std::round((part - std::floor(part)) * parts) / parts;
      if (part >= 1.0) part -= 1.0;
    }
    for (std::size_t op = 0; op < rotations.size() / 9; ++op) {
      if (std::ranges::equal(std::span(rotations).subspan(9 * op, 9), rotation) &&
          std::ranges::equal(std::span(translations).subspan(3 * op, 3), translation)) {
        return;
      }
    }
    rotations.insert(rotations.end(), rotation.begin(), rotation.end());
    translations.insert(translations.end(), translation.begin(), translation.end());
  }
};

/// The group of a primitive setting, and the conventional one that the model remembers with it.
std::int32_t primitive_group(std::int32_t model, const Setting& setting, std::int32_t& status) {
  const auto before = group_of_model(model);
  const auto table = group_table(before, status);
  if (status != 0) return 0;
  const Operators operators(table, setting, status);
  Text<80> name;
  std::int32_t group = 0;
  if (status == 0) kvd_sgr_name_(before, name, status);
  const auto full_name = name.str() + " primitive";
  if (status == 0) {
    kvd_sgr_create_(full_name, setting.lattice, setting.centring, operators.rotations, operators.translations, group,
                    status);
  }
  if (status == 0) kvd_ud_setobject_(model, conventional_group, before, status);
  return group;
}

/// The conventional group, which the model does not have to remember any more.
std::int32_t remembered_group(std::int32_t model, std::int32_t& status) {
  std::int32_t group = 0;
  kvd_ud_findobject_(model, conventional_group, group, status);
  if (status == 0) kvd_ud_remove_(model, conventional_group, status);
  return group;
}

/// Describes a unit that isn't built in a setting.
void change_unit(std::int32_t model, std::int32_t direction, const Setting& setting, std::int32_t& status) {
  CellVectors cell{};
  kvd_mod_3dcellvector_(model, cell[0], cell[1], cell[2], status);
  if (status != 0) return;
  const Matrix3 vectors = crystal::columns(cell[0], cell[1], cell[2]);
  Matrix3 changed{};
  dmatmul_(vectors, setting.m, changed);
  const auto column = [&](std::size_t k) { return Vector3{changed[3 * k], changed[3 * k + 1], changed[3 * k + 2]}; };
  const auto group =
      direction == to_primitive ? primitive_group(model, setting, status) : remembered_group(model, status);
  if (status == 0) kvd_mod_set3dcellvector_(model, column(0), column(1), column(2), status);
  if (status == 0) kvd_mod_set3dsymmetry_(model, group, status);
}

std::int32_t change_setting(std::int32_t direction, std::string_view nothing_to_change) {
  const auto model = current_model();
  if (model == 0) return refuse("STRUCTURE_NO_MODEL");
  const auto type = type_of_model(model);
  const bool is_crystal = type == periodic_type::three_dimensional;
  if ((!is_crystal && type != periodic_type::none) || group_of_model(model) == 0) return refuse("STRUCTURE_NO_UNIT");
  Setting setting;
  std::int32_t status = 0;
  kva_sgr_latticetransform_(model, direction, setting.m, setting.lattice, setting.centring, status);
  Matrix3 identity{};
  dmatunit_(identity);
  if (status == 0 && setting.m == identity) reverse_setting(model, direction, setting, status);
  if (status != 0 || setting.m == identity) return refuse(nothing_to_change);
  const Built built(model, status);
  if (status == 0 && is_crystal) kva_cry_unbuildcrystal_(model, status);
  if (status == 0) change_unit(model, direction, setting, status);
  if (status == 0 && is_crystal) built.again(model, status);
  if (status != 0) {
    show_message("STRUCTURE_BUILD_FAILED", status);
  } else if (is_crystal) {
    report_structure(model);
  }
  return status;
}

}  // namespace

std::int32_t primitive_cell() { return change_setting(to_primitive, "STRUCTURE_NO_PRIMITIVE"); }

std::int32_t conventional_cell() { return change_setting(to_conventional, "STRUCTURE_NO_CONVENTIONAL"); }

}  // namespace pathstat::builder_actions
