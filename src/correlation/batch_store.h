#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "correlation/correlation_kernels.h"
#include "correlation/frame_sink.h"
#include "services/file_units.h"
#include "support/named_memory.h"

namespace pathstat {

/// Atoms whose vectors of all frames stand together.
constexpr std::size_t atoms_in_batch = 8;
constexpr std::size_t values_in_record = 3 * atoms_in_batch;

/// A few atoms through all frames: by record the x of all, then y, then z; 0 for atoms that fill up the last batch.
class AtomBatch {
 public:
  explicit AtomBatch(std::span<const double> values) : values_(values) {}

  /// The x, y or z of the atoms in record t, from 0.
  std::span<const double, atoms_in_batch> axis(std::size_t t, std::size_t which) const {
    return values_.subspan(t * values_in_record + which * atoms_in_batch).first<atoms_in_batch>();
  }
  Axes frame(std::size_t t) const { return {axis(t, 0), axis(t, 1), axis(t, 2)}; }

 private:
  std::span<const double> values_;
};

/// The frames of a correlation by batches of atoms: in memory if they fit there, else in the cache file, which each
/// byte enters and leaves in large pieces.
class BatchStore : public FrameSink {
 public:
  /// @param file    of the cache, made only if it is needed
  /// @param memory  bytes that may be taken; what a single batch needs is taken in any case
  BatchStore(std::string_view file, std::int64_t memory) : file_(file), memory_(memory) {}

  /// Leaves so many bytes of the memory to others; before it is opened.
  void spare(std::int64_t bytes) { memory_ = std::max(memory_ - bytes, memory_ / 4); }

  std::int32_t open(std::int32_t atoms, std::int32_t frames) override;
  bool write(std::int32_t record, const Axes& frame) override;
  bool finish() override;

  std::int64_t batches() const { return batches_; }
  bool in_memory() const { return !unit_; }
  /// Batches that load() can take at once.
  std::int64_t batches_together() const;
  /// Makes `count` batches from `first` on, from 0, the contents. False if they can't be read.
  bool load(std::int64_t first, std::int64_t count);
  /// One of them.
  AtomBatch batch(std::int64_t which) const;

 private:
  std::int64_t values_of_batch() const { return frames_ * static_cast<std::int64_t>(values_in_record); }
  std::int32_t allocate(std::int64_t batches, std::int64_t records);
  bool flush();

  std::string_view file_;
  std::int64_t memory_;
  std::int64_t batches_ = 0;
  std::int64_t frames_ = 0;
  FileUnit unit_;
  int descriptor_ = -1;
  NamedBlock<double> values_;
  // While frames come in: records of all batches from the first one that waits on.
  std::int64_t room_ = 0;
  std::int64_t first_waiting_ = 0;
  std::int64_t waiting_ = 0;
  // Behind that: the first of the batches in memory.
  std::int64_t loaded_ = 0;
};

}  // namespace pathstat
