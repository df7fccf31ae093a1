#pragma once

#include <cstdint>

#include "support/record_file.h"

namespace pathstat {

/// Reads the records before the first frame of a history file into histrj_i_, histrj_d_, histrj_c_ and histrj_p_; the
/// reader then stands at the frame. No block is made before its record is known to be there as a whole.
/// @param status  end_of_file; read_error for a record whose length is not that of its counts, or an index that is out
///                of range; not_history, count_too_small; that of the allocator
void read_history_head(RecordReader& file, std::int32_t& status);

}  // namespace pathstat
