#pragma once

#include "correlation/batch_store.h"
#include "correlation/correlation_run.h"
#include "correlation/correlation_table.h"
#include "correlation/origin_blocks.h"
#include "correlation/spectral_sums.h"

namespace pathstat {

/// True if transforms cost less than the pairs of frames do, and enough to notice.
bool transforms_pay(const SpectralShape& shape, std::int64_t atoms);

/// Fills the table by transforms, batch by batch of the atoms. While it grows, and after an interrupt, it holds the
/// means over the atoms that are done. Lags whose rounding might show are summed pair by pair at the end.
///
/// @param workers  that the memory has room for
/// @param kernel   of the columns that the shape asks for
/// @param blocks   take their sums on the way, complete unless interrupted; may be null
/// @param plots    drawn while the table grows; may be null
/// @return false if the cache can't be read
bool sum_by_transforms(BatchStore& store, const SpectralShape& shape, std::size_t workers, PairKernel kernel,
                       std::int64_t atoms, CorrelationTable& table, OriginBlocks* blocks, TablePlots* plots);

}  // namespace pathstat
