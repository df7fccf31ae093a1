#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace pathstat {

/// Shows mean, standard deviation, skewness, kurtosis, smallest and largest value of a property's numbers: one set of
/// all numbers, one per column for stress and cell parameters, one per component for vectors.
///
/// @param table      frames rows of `values` numbers
/// @param row_sizes  numbers that each row really holds
/// @param status     0
void calcstatistics_(std::int32_t id, std::string_view name, std::span<const double> table, std::int32_t frames,
                     std::int32_t values, std::span<const std::int32_t> row_sizes, std::int32_t& status);

}  // namespace pathstat
