#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "extraction/scratch_format.h"
#include "support/text_field.h"

namespace pathstat {

/// Status of a scratch file that holds less than its head says, or something else; one that cannot be opened gives
/// the status of the file service. Both show PATHSTAT_MSG_4.
constexpr std::int32_t scratch_file_damaged = 1;

/// Characters of a model name as reports keep it.
constexpr std::size_t model_name_width = 20;
using ModelName = Text<model_name_width>;

/// "./PathStat_prf" or "./PathStat_fluc" with the extension, without trailing blanks.
std::string property_file(std::string_view extension);
std::string fluctuation_file(std::string_view extension);

/// Writes a series: numbers.size() points of `values` numbers each.
///
/// @param data_kind    kind_frames or kind_models
/// @param table        the numbers of point k, from 1, start at place first_value + (k - 1) * row_stride, from 1
/// @param model_ids    object of each point, and
/// @param point_sizes  its valid numbers; read for kind_models only
/// @param status       0; unit_error::open_failed or scratch_file_damaged after PATHSTAT_MSG_4
void writescratchfile_(std::int32_t data_kind, std::string_view file, std::span<const std::int32_t> numbers,
                       std::span<const double> x, std::span<const double> table, std::int32_t values,
                       std::int32_t row_stride, std::int32_t first_value, std::span<const std::int32_t> model_ids,
                       std::span<const std::int32_t> point_sizes, std::span<const double> extras, std::int32_t& status);

/// Reads the head only. The file holds all that the counts say.
void scratchfileinfo_(std::int32_t& data_kind, std::string_view file, std::int32_t& points, std::int32_t& values,
                      std::int32_t& extras, std::int32_t& status);

/// Reads a whole file into arrays of the sizes that scratchfileinfo_ tells; smaller ones are refused as damage.
///
/// @param table        points * values numbers, packed
/// @param model_ids    for kind_models: the number of each point's model, -1 for one that is gone
/// @param model_names  for kind_models: its name, or "Deleted Model"
/// @param point_sizes  for kind_models: valid numbers of each point
void readscratchfile_(std::int32_t& data_kind, std::string_view file, std::span<std::int32_t> numbers,
                      std::span<double> x, std::span<double> table, std::int32_t& points, std::int32_t& values,
                      std::span<std::int32_t> model_ids, std::span<ModelName> model_names,
                      std::span<std::int32_t> point_sizes, std::span<double> extras, std::int32_t& extra_count,
                      std::int32_t& status);

}  // namespace pathstat
