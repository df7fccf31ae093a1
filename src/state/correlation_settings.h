#pragma once

#include <cstdint>

#include "support/logical.h"
#include "support/text_field.h"

namespace pathstat {

/// Counts of frames of the analysed series.
struct TrjVacMsdI {
  std::int32_t max_interval_no = 0;
  std::int32_t origin_step_no = 1;
  std::int32_t max_interval_no_msd = 0;
  std::int32_t max_interval_no_dac = 0;
  std::int32_t max_interval_no_vac = 0;
  std::int32_t origin_step_no_msd = 1;
  std::int32_t origin_step_no_dac = 1;
  std::int32_t origin_step_no_vac = 1;
};
static_assert(sizeof(TrjVacMsdI) == 8 * sizeof(std::int32_t));
inline TrjVacMsdI trj_vac_msd_i_;

/// Times in ps.
struct TrjVacMsdD {
  double min_fit_time = 0.0;
  double max_fit_time = 0.0;
  double max_time_transform = 0.0;
  double max_interval_time_msd = 0.0;
  double max_time_transform_dac = 0.0;
  double max_time_transform_vac = 0.0;
};
static_assert(sizeof(TrjVacMsdD) == 6 * sizeof(double));
inline TrjVacMsdD trj_vac_msd_d_;

struct TrjVacMsdL {
  Logical monitor = true;
  Logical monitor_msd = true;
  Logical monitor_rdf = true;
  Logical monitor_dac = true;
  Logical monitor_vac = true;
};
inline TrjVacMsdL trj_vac_msd_l_;

/// "ALL" or "SELECTED".
struct TrjVacMsdC {
  Text<8> atoms{"ALL"};
  Text<8> atoms_vac{"ALL"};
  Text<8> atoms_dac{"ALL"};
  Text<8> atoms_msd{"ALL"};
};
inline TrjVacMsdC trj_vac_msd_c_;

struct TrjAniso {
  Logical anisotropic;
  Logical anisotropic_msd;
  Logical anisotropic_vac;
  Logical anisotropic_dac;
};
inline TrjAniso trj_aniso_;

}  // namespace pathstat
