#pragma once

#include <cstdint>

namespace pathstat {

/// Reports the selected fluctuation quantities, in the order of the catalogue, from the columns that are on disk. A
/// file that several rows share is read once, and its means are made once.
///
/// @param mode    whole_run_mode prints one line per quantity; running_average_mode and block_average_mode give curves
///                as plots, text and table, whichever the user has switched on
/// @param status  0; 1 for blocks of less than two frames, after PATHSTAT_MSG_35; that of an allocation or of the table
///                file; unit_error::open_failed for a file that cannot be opened, and scratch_file_damaged after
///                PATHSTAT_MSG_4, which both end the command
void fluctuations_(std::int32_t mode, std::int32_t& status);

}  // namespace pathstat
