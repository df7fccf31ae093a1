#pragma once

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

}  // namespace pathstat
