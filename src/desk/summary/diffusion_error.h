#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "desk/graphs/graph_store.h"

namespace pathstat::desk {

/// Mean squared displacements of blocks of time origins one behind the other, as the process keeps them beside those of
/// all origins.
struct OriginBlocks {
  double spacing_ps = 0;
  std::int64_t frames = 0;     ///< that take part
  std::int64_t intervals = 0;  ///< longest lag of the displacement + 1
  std::int64_t step = 1;       ///< frames from origin to origin
  std::int64_t origins = 0;    ///< in a block
  std::size_t blocks = 0, columns = 0;
  std::vector<std::int64_t> lags;  ///< frames, rising
  std::vector<double> means;       ///< Å² per atom, by lag, block and column
};

/// From the text of the file that the process has left; absent where it is not whole.
std::optional<OriginBlocks> read_origin_blocks(const std::string& text);

/// The standard error of the slope, Å²/ps, of the line of least squares through a mean squared displacement from one
/// time to another. The scatter of the slopes of the blocks is that of blocks which share frames, over a window that
/// may be shorter than the fitted one; how the error of the fit and that scatter stand to each other is taken from free
/// random walks, for which both are known in closed form: squared displacements of steps of variance σ² have the
/// covariance 2 (σ² m)², m being the steps they share (Qian, Sheetz & Elson, Biophys. J. 60, 910 (1991)). For blocks
/// that share nothing it is that of their mean.
///
/// @param column   of the blocks
/// @param from_ps, to_ps  the window
/// @return absent for fewer than five blocks or a window of no lag
std::optional<double> error_of_slope(const OriginBlocks& blocks, std::size_t column, double from_ps, double to_ps);

/// The window of a fit with the errors that the blocks in a text tell.
FittedWindow fitted_window(const std::string& origin_blocks, double from_ps, double to_ps);

}  // namespace pathstat::desk
