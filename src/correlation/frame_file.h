#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "correlation/correlation_kernels.h"
#include "services/file_units.h"

namespace pathstat {

/// Room for the vectors of atoms, of one frame or of several frames one behind the other.
struct AxesOut {
  std::span<double> x;
  std::span<double> y;
  std::span<double> z;

  /// The room of `count` values per axis from `first` on.
  AxesOut part(std::size_t first, std::size_t count) const {
    return {x.subspan(first, count), y.subspan(first, count), z.subspan(first, count)};
  }
  operator Axes() const { return {x, y, z}; }
};

/// A cache on a unit of its own, without a name: it is gone as soon as the unit is closed, in whichever way
/// the process ends.
/// @param status  0, cache_status::not_written, or unit_error::none_free after its message
FileUnit open_cache(std::string_view file, std::int32_t record_words, std::int32_t& status);

/// The unit's file for the functions below; -1 if it is not open.
int cache_descriptor(std::int32_t unit);
/// Move values to or from a place in bytes. False if not all of them were moved.
bool write_values(int descriptor, std::int64_t place, std::span<const double> values);
bool read_values(int descriptor, std::int64_t place, std::span<double> values);

/// The records of a cache on a file unit: record k, from 1, holds the x of all atoms, then y, then z, as 64-bit floats
/// in the byte order of the process.
class FrameFile {
 public:
  /// @param unit   open; the caller closes it
  /// @param atoms  above 0
  FrameFile(std::int32_t unit, std::int64_t atoms);

  /// Writes one record. False if it did not reach the file as a whole.
  bool write(std::int64_t record, const Axes& frame) const;

  /// Reads `count` records one after another in large pieces.
  /// @param stride  values of an axis from one frame to the next
  bool read(std::int64_t first, std::int64_t count, const AxesOut& frames, std::size_t stride) const;

 private:
  std::int64_t offset(std::int64_t record) const { return (record - 1) * 24 * atoms_; }

  int descriptor_;
  std::int64_t atoms_;
};

}  // namespace pathstat
