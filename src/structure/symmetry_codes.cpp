#include "structure/symmetry_codes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

#include "coreapi/operations.h"
#include "structure/crystal_coordinates.h"
#include "structure/crystal_vectors.h"
#include "support/plain_array.h"
#include "support/searching.h"
#include "support/sorting.h"

namespace pathstat {
namespace {

constexpr double steps = 12;  ///< into which a code divides a translation of one

MatrixIn<double> rotation_of(std::span<const double> rotations, std::int32_t number) {
  return rotations.subspan(9 * (static_cast<std::size_t>(number) - 1)).first<9>();
}

VectorIn<double> translation_of(std::span<const double> translations, std::int32_t number) {
  return translations.subspan(3 * (static_cast<std::size_t>(number) - 1)).first<3>();
}

bool has_operator(std::span<const double> translations, std::int32_t number) {
  return number >= 1 && static_cast<std::size_t>(number) <= translations.size() / 3;
}

Vector3 shifted(VectorIn<double> translation, Shift shift) {
  return {translation[0] + shift[0], translation[1] + shift[1], translation[2] + shift[2]};
}

/// R v + t
Vector3 applied(MatrixIn<double> rotation, VectorIn<double> v, const Vector3& translation) {
  Vector3 moved;
  dmatmul_(rotation, v, moved);
  return crystal::sum(moved, translation);
}

void copy_numbers(std::span<const double> from, std::span<double> to) {
  std::memmove(to.data(), from.data(), std::min(from.size(), to.size()) * sizeof(double));
}

/// Moves point after point.
/// @param translation_at  Vector3(number, shift): the whole translation of an operator with a shift
template <class TranslationAt>
void move_points(std::span<const std::int32_t> operators, std::span<const std::int32_t> shifts,
                 std::span<const double> xyz_in, std::span<double> xyz_out, std::span<const double> rotations,
                 std::span<const double> translations, std::int32_t& status, TranslationAt translation_at) {
  status = 0;
  for (std::size_t k = 0; k < operators.size(); ++k) {
    const std::int32_t number = operators[k];
    if (!has_operator(translations, number)) {
      status = no_such_operator;
      return;
    }
    const Vector3 moved = applied(rotation_of(rotations, number), xyz_in.subspan(3 * k).first<3>(),
                                  translation_at(number, shifts.subspan(3 * k).first<3>()));
    std::copy(moved.begin(), moved.end(), xyz_out.begin() + static_cast<std::ptrdiff_t>(3 * k));
  }
}

/// The operators of a group of the Core and room for their codes, for the time of one call.
class GroupTable {
 public:
  GroupTable(std::int32_t group, std::int32_t& status) {
    std::int32_t count = 0;
    kvd_sgr_numoperators_(group, count, status);
    if (status == 0 && count < 1) status = no_such_operator;
    if (status == 0 && count > most_group_operators) status = 1;
    if (status != 0) return;
    rotations_ = PlainArray<double>(9 * std::int64_t{count});
    translations_ = PlainArray<double>(3 * std::int64_t{count});
    codes_ = PlainArray<std::int32_t>(count);
    index_ = PlainArray<std::int32_t>(count);
    if (!rotations_.allocated() || !translations_.allocated() || !codes_.allocated() || !index_.allocated()) {
      status = 1;
      return;
    }
    std::int32_t delivered = 0;
    kvd_sgr_operators_(group, rotations_.span(), translations_.span(), delivered, status);
    if (status == 0 && delivered != count) status = 1;
  }

  void encode(std::int32_t& status) const {
    encodeallsymmetry_(rotations(), translations(), codes_.span(), index_.span(), status);
  }

  std::span<const double> rotations() const { return rotations_.span(); }
  std::span<const double> translations() const { return translations_.span(); }
  std::span<const std::int32_t> codes() const { return codes_.span(); }
  std::span<const std::int32_t> index() const { return index_.span(); }

 private:
  PlainArray<double> rotations_, translations_;
  PlainArray<std::int32_t> codes_, index_;
};

}  // namespace

void encodesinglesymmetry_(MatrixIn<double> rotation, VectorIn<double> translation, std::int32_t& code,
                           std::int32_t& status) {
  status = 0;
  std::int32_t bits = 0;
  for (const double component : translation) {
    const double whole = std::round(component * steps);
    if (!std::isfinite(whole)) {
      status = 1;
      return;
    }
    const auto step = static_cast<std::int32_t>(std::fmod(whole, steps));
    bits = bits << 4 | (step < 0 ? step + static_cast<std::int32_t>(steps) : step);
  }
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) {
      const double element = std::round(rotation[row + 3 * column]);
      if (!(std::abs(element) <= 1)) {
        std::puts("Rotation element out of range");
        status = 1;
        return;
      }
      bits = bits << 2 | (static_cast<std::int32_t>(element) + 1);
    }
  }
  code = bits;
}

void encodeallsymmetry_(std::span<const double> rotations, std::span<const double> translations,
                        std::span<std::int32_t> codes, std::span<std::int32_t> index, std::int32_t& status) {
  status = 0;
  for (std::size_t k = 0; k < codes.size() && status == 0; ++k) {
    const auto number = static_cast<std::int32_t>(k) + 1;
    encodesinglesymmetry_(rotation_of(rotations, number), translation_of(translations, number), codes[k], status);
  }
  if (status != 0) return;
  isortidx_(codes, index);
  isort_(codes);
}

void locatesymmetrycode_(MatrixIn<double> rotation, VectorIn<double> translation, std::int32_t& found, ShiftOut shift,
                         std::span<const double> translations, std::span<const std::int32_t> codes,
                         std::span<const std::int32_t> index, std::int32_t& status) {
  std::int32_t code = 0, place = 0, failures = 0;
  encodesinglesymmetry_(rotation, translation, code, status);
  if (status != 0) return;
  search_(codes, std::span(&place, 1), std::span(&code, 1), failures, status);
  if (status != 0) return;
  status = not_in_group;
  if (place < 1) return;
  const std::int32_t number = index[static_cast<std::size_t>(place) - 1];
  if (!has_operator(translations, number)) return;
  Vector3 difference;
  dvecsub_(translation, translation_of(translations, number), difference);
  for (double& component : difference) component = std::round(component);
  constexpr double most = std::numeric_limits<std::int32_t>::max();
  if (std::ranges::any_of(difference, [](double component) { return !(std::abs(component) <= most); })) return;
  std::ranges::transform(difference, shift.begin(), [](double whole) { return static_cast<std::int32_t>(whole); });
  found = number;
  status = 0;
}

void multiplysymmetry_(std::int32_t op_1, Shift shift_1, std::int32_t op_2, Shift shift_2, std::int32_t& op_out,
                       ShiftOut shift_out, std::span<const double> rotations, std::span<const double> translations,
                       std::span<const std::int32_t> codes, std::span<const std::int32_t> index, std::int32_t& status) {
  status = no_such_operator;
  if (!has_operator(translations, op_1) || !has_operator(translations, op_2)) return;
  const auto second = rotation_of(rotations, op_2);
  Matrix3 rotation;
  dmatmat_(second, rotation_of(rotations, op_1), rotation);
  const Vector3 translation = applied(second, shifted(translation_of(translations, op_1), shift_1),
                                      shifted(translation_of(translations, op_2), shift_2));
  locatesymmetrycode_(rotation, translation, op_out, shift_out, translations, codes, index, status);
}

void invertsymmetry_(std::int32_t op, Shift shift, std::int32_t& op_out, ShiftOut shift_out,
                     std::span<const double> rotations, std::span<const double> translations,
                     std::span<const std::int32_t> codes, std::span<const std::int32_t> index, std::int32_t& status) {
  status = no_such_operator;
  if (!has_operator(translations, op)) return;
  Matrix3 rotation;
  dmatinv_(rotation_of(rotations, op), rotation, status);
  if (status != 0) return;
  const Vector3 back =
      crystal::scaled(crystal::product(rotation, shifted(translation_of(translations, op), shift)), -1);
  locatesymmetrycode_(rotation, back, op_out, shift_out, translations, codes, index, status);
}

void sym_transformfractionallocal_(std::span<const std::int32_t> operators, std::span<const std::int32_t> shifts,
                                   std::span<const double> xyz_in, std::span<double> xyz_out,
                                   std::span<const double> rotations, std::span<const double> translations,
                                   std::int32_t& status) {
  move_points(operators, shifts, xyz_in, xyz_out, rotations, translations, status,
              [&](std::int32_t number, Shift shift) { return shifted(translation_of(translations, number), shift); });
}

void sym_transformcartesianlocal_(std::span<const std::int32_t> operators, std::span<const std::int32_t> shifts,
                                  std::span<const double> xyz_in, std::span<double> xyz_out,
                                  std::span<const double> rotations, std::span<const double> translations,
                                  const Vector3& a, const Vector3& b, const Vector3& c, std::int32_t& status) {
  const PlainArray<double> turns(std::ssize(rotations)), moves(std::ssize(translations));
  status = 1;
  if (!turns.allocated() || !moves.allocated()) return;
  sym_getcartsymmetry_(a, b, c, rotations, translations, turns.span(), moves.span(), status);
  if (status != 0) return;
  const Matrix3 cell = crystal::columns(a, b, c);
  move_points(operators, shifts, xyz_in, xyz_out, turns.span(), moves.span(), status,
              [&](std::int32_t number, Shift shift) {
                const Vector3 cells{double(shift[0]), double(shift[1]), double(shift[2])};
                Vector3 move;
                dvecadd_(translation_of(moves.span(), number), crystal::product(cell, cells), move);
                return move;
              });
}

void sym_getcartsymmetry_(const Vector3& a, const Vector3& b, const Vector3& c, std::span<const double> rotations_in,
                          std::span<const double> translations_in, std::span<double> rotations_out,
                          std::span<double> translations_out, std::int32_t& status) {
  copy_numbers(rotations_in, rotations_out);
  copy_numbers(translations_in, translations_out);
  kva_cry_fracoperatortocart_(a, b, c, rotations_out.first(rotations_in.size()),
                              translations_out.first(translations_in.size()), status);
}

void sym_constructgrouptable_(std::int32_t group, std::int32_t& count, std::span<double> rotations,
                              std::span<double> translations, std::span<std::int32_t> codes,
                              std::span<std::int32_t> index, std::int32_t& status) {
  const std::size_t room = codes.size();
  count = 0;
  kvd_sgr_operators_(group, rotations.first(9 * room), translations.first(3 * room), count, status);
  if (status == 0 && count < 1) status = no_such_operator;
  if (status == 0 && static_cast<std::size_t>(count) > room) status = 1;
  if (status != 0) return;
  const auto filled = static_cast<std::size_t>(count);
  encodeallsymmetry_(rotations.first(9 * filled), translations.first(3 * filled), codes.first(filled),
                     index.first(filled), status);
}

void sym_multiply_(std::int32_t group, std::int32_t op_1, Shift shift_1, std::int32_t op_2, Shift shift_2,
                   std::int32_t& op_out, ShiftOut shift_out, std::int32_t& status) {
  const GroupTable table(group, status);
  if (status == 0) table.encode(status);
  if (status != 0) return;
  sym_multiplyfromtable_(op_1, shift_1, op_2, shift_2, op_out, shift_out, table.rotations(), table.translations(),
                         table.codes(), table.index(), status);
}

void sym_invert_(std::int32_t group, std::int32_t op, Shift shift, std::int32_t& op_out, ShiftOut shift_out,
                 std::int32_t& status) {
  const GroupTable table(group, status);
  if (status == 0) table.encode(status);
  if (status != 0) return;
  sym_invertfromtable_(op, shift, op_out, shift_out, table.rotations(), table.translations(), table.codes(),
                       table.index(), status);
}

void sym_transformfractional_(std::int32_t group, std::span<const std::int32_t> operators,
                              std::span<const std::int32_t> shifts, std::span<const double> xyz_in,
                              std::span<double> xyz_out, std::int32_t& status) {
  const GroupTable table(group, status);
  if (status != 0) return;
  sym_transformfractionallocal_(operators, shifts, xyz_in, xyz_out, table.rotations(), table.translations(), status);
}

void sym_transformcartesian_(std::int32_t group, const Vector3& a, const Vector3& b, const Vector3& c,
                             std::span<const std::int32_t> operators, std::span<const std::int32_t> shifts,
                             std::span<const double> xyz_in, std::span<double> xyz_out, std::int32_t& status) {
  const GroupTable table(group, status);
  if (status != 0) return;
  sym_transformcartesianlocal_(operators, shifts, xyz_in, xyz_out, table.rotations(), table.translations(), a, b, c,
                               status);
}

}  // namespace pathstat
