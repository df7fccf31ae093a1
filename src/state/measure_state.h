#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace pathstat {

/// Measures of each family that the last set-up found.
struct TrjMeasuresI {
  std::int32_t dist_measures = 0;
  std::int32_t angle_measures = 0;
  std::int32_t torsion_measures = 0;
  std::int32_t plane_measures = 0;
  std::int32_t inversion_measures = 0;
  std::int32_t trjmeasures_i_6 = 0;  ///< only ever cleared
};
inline TrjMeasuresI trjmeasures_i_;

/// Addresses of the named blocks "pathstat/M/...", 0 without them. The atoms of the families stand in the order
/// distance 2, angle 3, torsion 4, inversion 4, plane 6; the labels in the order of the families.
struct TrjMeasuresP {
  static constexpr std::size_t atoms_of_all = 19;
  std::array<std::int64_t, atoms_of_all> atoms{};   ///< places, from 1, among the atoms of the frames
  std::array<std::int64_t, atoms_of_all> images{};  ///< three multiples of the cell vectors for each
  std::int64_t inversion_conventions = 0;
  std::array<std::int64_t, 5> labels{};  ///< 32 characters for each measure
};
static_assert(sizeof(TrjMeasuresP) == 44 * sizeof(std::int64_t));
inline TrjMeasuresP trjmeasures_p_;

}  // namespace pathstat
