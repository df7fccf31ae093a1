#pragma once

#include <cstdint>
#include <span>

// Means of columns, of products of columns and of vectors over frames. A table has `frames` rows of `values` numbers,
// row by row; columns count from 1, and a vector is three columns from the one given on. `status` is 0, or 1 if a
// count is below 1, a column is not in the table, or a span is too small; results are then left as they are.

namespace pathstat {

// Over all frames, with the sum compensated for its rounding: variances are small differences of such means.

/// The mean of a column.
void avgval_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
             double& result, std::int32_t& status);
/// The mean of the product of two columns.
void avgval2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
              std::int32_t column_b, double& result, std::int32_t& status);
/// The squared length of the mean vector.
void avgvecsqr_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                double& result, std::int32_t& status);
/// The mean scalar product of two vectors.
void avgvec2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
              std::int32_t column_b, double& result, std::int32_t& status);

// The same over frames 1 to k for each k, in one pass: m(k) = m(k-1) + (value(k) - m(k-1)) / k. `result` has an entry
// for each frame.

void cumavgval_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                std::span<double> result, std::int32_t& status);
void cumavgval2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
                 std::int32_t column_b, std::span<double> result, std::int32_t& status);
/// @param status  also that of the block that holds the mean vectors
void cumavgvecsqr_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                   std::span<double> result, std::int32_t& status);
void cumavgvec2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
                 std::int32_t column_b, std::span<double> result, std::int32_t& status);

// The same over the windows of blocks (block_window). `result` has an entry for each of block_count blocks; `half` is
// 0 ... width - 1.

void blkavgval_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                std::int32_t width, std::int32_t interval, std::int32_t half, std::span<double> result,
                std::int32_t& status);
void blkavgval2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
                 std::int32_t column_b, std::int32_t width, std::int32_t interval, std::int32_t half,
                 std::span<double> result, std::int32_t& status);
void blkavgvecsqr_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column,
                   std::int32_t width, std::int32_t interval, std::int32_t half, std::span<double> result,
                   std::int32_t& status);
void blkavgvec2_(std::int32_t values, std::int32_t frames, std::span<const double> table, std::int32_t column_a,
                 std::int32_t column_b, std::int32_t width, std::int32_t interval, std::int32_t half,
                 std::span<double> result, std::int32_t& status);

}  // namespace pathstat
