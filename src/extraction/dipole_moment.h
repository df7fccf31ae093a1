#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "support/vectors.h"

namespace pathstat {

/// Debye in one elementary charge times one ångström, as reports have it.
constexpr double debye = 4.802;

/// Charged atoms of one sign, in parallel arrays.
struct ChargeList {
  std::span<const std::int32_t> tags;    ///< molecule of each atom, from 1
  std::span<const std::int32_t> atoms;   ///< its place among the coordinates, from 1
  std::span<const std::int32_t> images;  ///< its cell, multiples of a, b and c: three for each atom
  std::span<const double> charges;       ///< elementary charges

  ChargeList part(std::size_t first, std::size_t count) const {
    return {tags.subspan(first, count), atoms.subspan(first, count), images.subspan(3 * first, 3 * count),
            charges.subspan(first, count)};
  }
};

/// The dipole of one molecule, or the sums over several.
struct DipoleMoment {
  Vector3 dipole{};           ///< Debye
  double magnitude = 0.0;     ///< Debye
  Vector3 origin{};           ///< Å, half-way between the centres
  Vector3 positive_centre{};  ///< Å
  Vector3 negative_centre{};  ///< Å
  double net_charge = 0.0;    ///< elementary charges
};

/// The dipole of molecule m: with Q+ and Q- the sums of its charges by sign and C+ and C- the centres of these charges,
/// (C+ - C-) min(Q+, |Q-|). A molecule with charges of one sign has no such centres: only its net charge is not 0.
///
/// @param xyz       x, y, z of each atom, Å
/// @param cell      a, b, c one behind the other, by which images move atoms where the periodic type is 100
/// @param positive, negative  atoms of other molecules in them are passed over
/// @param status    0; 1 if an atom's place is not among the coordinates
void calcdipole_(std::span<const double> xyz, std::int32_t periodic_type, MatrixIn<double> cell, std::int32_t molecule,
                 const ChargeList& positive, const ChargeList& negative, DipoleMoment& moment, std::int32_t& status);

}  // namespace pathstat
