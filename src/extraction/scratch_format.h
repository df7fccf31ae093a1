#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "support/record_file.h"

namespace pathstat {

/// What the points of a series are.
constexpr std::int32_t kind_frames = 10004;
constexpr std::int32_t kind_models = 10005;

/// The first record of a scratch file.
struct ScratchHead {
  std::int32_t points = 0;
  std::int32_t values = 0;  ///< numbers per point
  std::int32_t kind = kind_frames;
  std::int32_t extras = 0;
};

/// The contents behind the head. Spans hold at least what the head says; `values` is packed, point after point.
struct ScratchArrays {
  std::span<std::int32_t> numbers;
  std::span<double> x;
  std::span<double> values;
  std::span<std::int32_t> models;  ///< object of each point; kind_models only
  std::span<std::int32_t> sizes;   ///< valid numbers of each point; kind_models only
  std::span<double> extras;
};

/// A series as it is written: the numbers of point k, from 0, start at values[first + k * stride].
struct ScratchSeries {
  ScratchHead head;
  std::span<const std::int32_t> numbers;
  std::span<const double> x;
  std::span<const double> values;
  std::int64_t first = 0;
  std::int64_t stride = 0;
  std::span<const std::int32_t> models;
  std::span<const std::int32_t> sizes;
  std::span<const double> extras;
};

/// Reads the head and holds it against the file: no count is passed on that the file is too short for.
RecordStatus read_scratch_head(RecordReader& file, ScratchHead& head);

/// Reads what follows the head. A point size outside 0 ... values is a wrong length.
RecordStatus read_scratch_points(RecordReader& file, const ScratchHead& head, const ScratchArrays& into);

/// Writes a whole file; one that could not be written completely is removed.
RecordStatus write_scratch(const std::string& path, const ScratchSeries& series);

}  // namespace pathstat
