#pragma once

#include <cstdint>
#include <span>

namespace pathstat {

/// Status of histogram_ when some column has no spread.
constexpr std::int32_t no_spread = -1;

/// A column whose largest and smallest value lie closer than this has no spread.
constexpr double least_spread = 1e-7;

/// The number of blocks whose starts lie `interval` frames apart; 0 for less than one frame or interval.
std::int32_t block_count(std::int32_t frames, std::int32_t interval);

/// The frames of one block, first and last, counted from 1.
struct BlockWindow {
  std::int32_t first = 0;
  std::int32_t last = 0;
};

/// The window of `width` frames that starts `half` frames ahead of the block's start, cut off at both ends of the run.
///
/// @param block  number of the block, from 1
BlockWindow block_window(std::int32_t block, std::int32_t frames, std::int32_t width, std::int32_t interval,
                         std::int32_t half);

/// Moves what belongs to the start of each block to the front, for the blocks of block_count.
/// @param of_frames  a number for each frame, such as its x
/// @return the number of blocks
std::int32_t keep_block_starts(std::span<double> of_frames, std::int32_t frames, std::int32_t interval);

/// Replaces each column by its cumulative mean: m(1) = x(1), m(f) = m(f-1) + (x(f) - m(f-1)) / f.
///
/// @param table   frames rows of `values` numbers
/// @param status  0; 1 if the table is smaller than its counts say
void runningaverage_(std::int32_t values, std::int32_t frames, std::span<double> table, std::int32_t& status);

/// Replaces the first rows of each column by the means of its blocks (block_window), each by the recurrence of
/// runningaverage_ within its window.
///
/// @param table   frames rows of `values` numbers; its first block_count rows hold the result
/// @param work    room for block_count numbers
/// @param half    frames that a window reaches back from the start of its block
/// @param status  0; 1 if width or interval is below 1 or a span is too small
void blockaverage_(std::int32_t values, std::int32_t frames, std::span<double> table, std::span<double> work,
                   std::int32_t width, std::int32_t interval, std::int32_t half, std::int32_t& status);

/// Replaces columns by the frequencies of their values in equal bins: fractions of the numbers counted.
///
/// An ordinary column has a histogram of its own. Measures are pooled: component j of `stride` takes the columns
/// j, j + stride, ... of all rows, and only the first `stride` columns and bin triples hold results. A value v goes to
/// bin round((v - lo) / w) + 1, kept within 1 ... bins, with w the range over the bins. Without spread every bin counts
/// all the numbers and the stored width is 0.
///
/// @param row_sizes  numbers that each row really holds; read for measures only
/// @param table      max(frames, bins) rows of `values` numbers; its first `bins` rows hold the result
/// @param counts     work space of `bins` numbers
/// @param bin_data   three numbers per column: first bin centre, largest value, bin width
/// @param status     0; no_spread; 1 if a count is below 1 or a span is too small
void histogram_(std::int32_t values, std::int32_t frames, std::span<const std::int32_t> row_sizes,
                std::span<double> table, std::span<double> counts, std::int32_t bins, bool is_measure,
                std::int32_t stride, std::span<double> bin_data, std::int32_t& status);

}  // namespace pathstat
