#include "desk/model/primitive_setting.h"

#include "desk/model/group_library.h"
#include "structure/crystal_vectors.h"
#include "structure/lattice_types.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

/// Rotation and translation in 24ths of each operator, whatever their order.
using Contents = std::set<std::array<int, 12>>;

Contents contents(const SymmetryOperators& operators) {
  Contents found;
  for (std::size_t k = 0; k < operators.size(); ++k) {
    std::array<int, 12> numbers{};
    for (std::size_t at = 0; at < 9; ++at) numbers[at] = static_cast<int>(std::lround(operators.rotations[k][at]));
    for (std::size_t axis = 0; axis < 3; ++axis) {
      numbers[9 + axis] = static_cast<int>((std::lround(24 * operators.translations[k][axis]) % 24 + 24) % 24);
    }
    found.insert(numbers);
  }
  return found;
}

/// By definition: x' = M⁻¹ x on the axes that are the columns of M.
SymmetryOperators on_axes(const SymmetryOperators& operators, const Matrix3& m) {
  Matrix3 inverse{};
  std::int32_t status = 0;
  dmatinv_(m, inverse, status);
  SymmetryOperators changed;
  Contents known;
  for (std::size_t k = 0; k < operators.size(); ++k) {
    Matrix3 rotation{};
    dmatmat_(operators.rotations[k], m, rotation);
    dmatmat_(inverse, rotation, rotation);
    SymmetryOperators one{{rotation}, {crystal::product(inverse, operators.translations[k])}};
    if (!known.insert(*contents(one).begin()).second) continue;
    changed.rotations.push_back(rotation), changed.translations.push_back(one.translations[0]);
  }
  return changed;
}

TEST(PrimitiveSettings, of_all_centred_groups_lead_back_to_them) {
  std::set<std::int32_t> centrings;
  for (std::size_t place = 0; place < library_groups().size(); ++place) {
    const auto& group = library_group(place);
    std::array<Vector3, 3> column{};
    std::int32_t type = 0, status = 0;
    kva_sgr_primitivelattice_(group.lattice_type, group.centring_type, column[0], column[1], column[2], type, status);
    if (status != 0 || group.centring_type == 0) continue;
    centrings.insert(group.centring_type);
    const auto primitive = on_axes(group.operators, crystal::columns(column[0], column[1], column[2]));
    const auto settings = primitive_settings(primitive);
    const auto found = std::ranges::any_of(settings, [&](const PrimitiveSetting& setting) {
      return setting.lattice_type == type && contents(setting.conventional) == contents(group.operators);
    });
    EXPECT_TRUE(found) << library_groups()[place].name;
  }
  EXPECT_EQ(centrings.size(), 6U);
}

TEST(PrimitiveSettings, are_none_for_groups_that_are_centred_or_on_the_axes_of_their_lattice) {
  for (std::size_t place = 0; place < library_groups().size(); ++place) {
    const auto& group = library_group(place);
    constexpr std::int32_t rhombohedral = 6;
    if (group.lattice_type == rhombohedral) continue;
    EXPECT_TRUE(primitive_settings(group.operators).empty()) << library_groups()[place].name;
  }
}

TEST(Lattice, of_axes_that_no_table_has_is_not_told) {
  // A mirror that takes a to a and b to a - b: on these axes no angle is right and no lengths are equal.
  const Matrix3 mirror{1, 0, 0, 1, -1, 0, 0, 0, 1};
  const SymmetryOperators oblique{{identity_rotation, mirror}, {Vector3{}, Vector3{}}};
  EXPECT_EQ(group_of_operators({}, oblique).lattice_type, 0);
  // The same mirror on the axes of the tables.
  const Matrix3 upright{1, 0, 0, 0, -1, 0, 0, 0, 1};
  EXPECT_EQ(group_of_operators({}, {{identity_rotation, upright}, {Vector3{}, Vector3{}}}).lattice_type, 2);
}

}  // namespace
}  // namespace pathstat::desk
