#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "support/named_memory.h"
#include "support/vectors.h"

namespace pathstat {

/// The dipoles of frames or models on their way to the scratch files.
class DipoleSeries {
 public:
  /// @param status  0, or that of the allocation
  DipoleSeries(std::int32_t points, std::int32_t& status);

  void set(std::size_t point, std::int32_t number, double x, const Vector3& dipole);

  /// Writes both files and marks their rows as calculated; the dielectric constant then has to be extracted anew.
  /// @param models  object of each point, for kind_models
  /// @param status  0, or that of the file that cannot be written
  void write(std::int32_t data_kind, std::span<const std::int32_t> models, std::int32_t& status) const;

 private:
  NamedBlock<std::int32_t> numbers_;
  NamedBlock<double> x_, magnitudes_, vectors_;
};

}  // namespace pathstat
