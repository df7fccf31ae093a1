#pragma once

#include <cstdint>

#include "support/logical.h"
#include "support/text_field.h"

namespace pathstat {

struct TrjStats {
  std::int32_t number_of_bins = 20;
  std::int32_t block_width = 50;    ///< frames in a block
  std::int32_t block_interval = 1;  ///< frames between block starts
  std::int32_t maxima_count = 10;
  std::int32_t minima_count = 10;
  Logical stats_plot = true;
  Logical stats_text = false;
  Logical stats_file = false;
};
static_assert(sizeof(TrjStats) == 8 * sizeof(std::int32_t));
inline TrjStats trj_stats_;

struct TrjStatsC {
  Text<1024> stats_filename{"./TrajectoryStats.dat"};
};
inline TrjStatsC trj_stats_c_;

}  // namespace pathstat
