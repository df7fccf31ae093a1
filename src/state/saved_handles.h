#pragma once

#include <cstdint>

#include "support/logical.h"

namespace pathstat {

/// The profile graphs and data sets that frame stepping marks.
struct GraphintI {
  std::int32_t saved_graph_count = 0;
  std::int32_t saved_data_count = 0;
  std::int32_t highlight_frame = 0;
};
inline GraphintI graphint_i_;

struct GraphintL {
  Logical graph_interaction;  ///< saved data sets are marked at the shown frame
};
inline GraphintL graphint_l_;

/// Addresses of the named blocks "PathStat/GrInt/...", one entry per saved handle; 0 without them.
struct GraphintP {
  std::intptr_t graph_versions = 0;  ///< integers
  std::intptr_t data_versions = 0;
  std::intptr_t graph_names = 0;  ///< texts of 80
  std::intptr_t data_names = 0;
};
inline GraphintP graphint_p_;

}  // namespace pathstat
