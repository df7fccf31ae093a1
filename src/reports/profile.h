#pragma once

#include <cstdint>

namespace pathstat {

/// Reports the selected properties whose series are on disk, in the order of the catalogue: as plots, text and table,
/// whichever the user has switched on.
///
/// @param mode    profile_mode, running_average_mode, block_average_mode or distribution_mode
/// @param status  0, or that of an allocation; a property whose file cannot be read is passed over
void pprofile_(std::int32_t mode, std::int32_t& status);

}  // namespace pathstat
