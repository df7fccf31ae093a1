#pragma once

#include <cstdint>
#include <span>

#include "support/vectors.h"

/// The algebra of a space group's operators, x' = R x + t in fractions of the cell.
///
/// An operator of the group has a number from 1; with a lattice translation added it is a pair of the number and three
/// integers, the shift. A group is given by its table: nine numbers per rotation, stored by columns, and three per
/// translation, and the codes of all operators in ascending order with the operator's number for each. The code holds
/// all of R and t but whole translations.
namespace pathstat {

/// No space group has more.
inline constexpr std::int32_t most_group_operators = 192;

/// Statuses of these routines, beside 0 and those of the Core.
inline constexpr std::int32_t no_such_operator = 99998;  ///< a number outside the group, or a group without operators
inline constexpr std::int32_t not_in_group = 99999;      ///< an operator that the group does not have

using Shift = std::span<const std::int32_t, 3>;
using ShiftOut = std::span<std::int32_t, 3>;

/// Gives the code of one operator, of 30 bits: from the high end down the three components of 12 t modulo 12 in four
/// bits each, then the elements of R by rows, plus 1, in two bits each.
/// @param status  0; 1 an element of R is none of -1, 0, 1, which is printed, or t is no number
void encodesinglesymmetry_(MatrixIn<double> rotation, VectorIn<double> translation, std::int32_t& code,
                           std::int32_t& status);
/// Gives the codes of all operators, in ascending order, and the number of the operator of each. It stops at the first
/// that has none.
/// @param codes, index  one for each operator
void encodeallsymmetry_(std::span<const double> rotations, std::span<const double> translations,
                        std::span<std::int32_t> codes, std::span<std::int32_t> index, std::int32_t& status);

/// Finds an operator: its number in the group and the lattice translation by which it differs from that one.
/// @param status  0; 1 as encodesinglesymmetry_; not_in_group
void locatesymmetrycode_(MatrixIn<double> rotation, VectorIn<double> translation, std::int32_t& found, ShiftOut shift,
                         std::span<const double> translations, std::span<const std::int32_t> codes,
                         std::span<const std::int32_t> index, std::int32_t& status);

/// The product: operator 1 acts first, then operator 2.
/// @param status  0; no_such_operator; that of locatesymmetrycode_
void multiplysymmetry_(std::int32_t op_1, Shift shift_1, std::int32_t op_2, Shift shift_2, std::int32_t& op_out,
                       ShiftOut shift_out, std::span<const double> rotations, std::span<const double> translations,
                       std::span<const std::int32_t> codes, std::span<const std::int32_t> index, std::int32_t& status);
/// The operator that undoes one.
/// @param status  0; no_such_operator; 1 a rotation without an inverse; that of locatesymmetrycode_
void invertsymmetry_(std::int32_t op, Shift shift, std::int32_t& op_out, ShiftOut shift_out,
                     std::span<const double> rotations, std::span<const double> translations,
                     std::span<const std::int32_t> codes, std::span<const std::int32_t> index, std::int32_t& status);

/// The same two under their names in the family of groups.
inline constexpr auto& sym_multiplyfromtable_ = multiplysymmetry_;
inline constexpr auto& sym_invertfromtable_ = invertsymmetry_;

/// Moves each point by an operator of its own and a shift. The input may be the output.
/// @param operators, shifts  one number and three integers for each point
/// @param xyz_in, xyz_out    three numbers for each point
/// @param status             0; no_such_operator: the points before the faulty one are done
void sym_transformfractionallocal_(std::span<const std::int32_t> operators, std::span<const std::int32_t> shifts,
                                   std::span<const double> xyz_in, std::span<double> xyz_out,
                                   std::span<const double> rotations, std::span<const double> translations,
                                   std::int32_t& status);
/// The same for Cartesian points in a cell; the table is that of the fractional operators.
/// @param status  as above; 1 a flat cell or no memory
void sym_transformcartesianlocal_(std::span<const std::int32_t> operators, std::span<const std::int32_t> shifts,
                                  std::span<const double> xyz_in, std::span<double> xyz_out,
                                  std::span<const double> rotations, std::span<const double> translations,
                                  const Vector3& a, const Vector3& b, const Vector3& c, std::int32_t& status);

/// Turns operators into Cartesian form, R' = M R M^-1 and t' = M t with the cell matrix M. Input and output may be the
/// same arrays.
/// @param status  0; 1 a flat cell
void sym_getcartsymmetry_(const Vector3& a, const Vector3& b, const Vector3& c, std::span<const double> rotations_in,
                          std::span<const double> translations_in, std::span<double> rotations_out,
                          std::span<double> translations_out, std::int32_t& status);

// The same for a group of the Core, by its identifier. The status may be that of the Core, too.

/// Fills the table of a group.
/// @param count                    the group's operators
/// @param rotations, translations, codes, index  room for as many operators as `codes` has elements
/// @param status                   0; no_such_operator; 1 too little room, or as encodesinglesymmetry_
void sym_constructgrouptable_(std::int32_t group, std::int32_t& count, std::span<double> rotations,
                              std::span<double> translations, std::span<std::int32_t> codes,
                              std::span<std::int32_t> index, std::int32_t& status);
void sym_multiply_(std::int32_t group, std::int32_t op_1, Shift shift_1, std::int32_t op_2, Shift shift_2,
                   std::int32_t& op_out, ShiftOut shift_out, std::int32_t& status);
void sym_invert_(std::int32_t group, std::int32_t op, Shift shift, std::int32_t& op_out, ShiftOut shift_out,
                 std::int32_t& status);
void sym_transformfractional_(std::int32_t group, std::span<const std::int32_t> operators,
                              std::span<const std::int32_t> shifts, std::span<const double> xyz_in,
                              std::span<double> xyz_out, std::int32_t& status);
void sym_transformcartesian_(std::int32_t group, const Vector3& a, const Vector3& b, const Vector3& c,
                             std::span<const std::int32_t> operators, std::span<const std::int32_t> shifts,
                             std::span<const double> xyz_in, std::span<double> xyz_out, std::int32_t& status);

}  // namespace pathstat
