#include "correlation/batch_store.h"

#include <algorithm>

#include "correlation/frame_file.h"

namespace pathstat {
namespace {

constexpr std::int64_t batch_width = std::int64_t{atoms_in_batch};
constexpr std::int64_t record_width = std::int64_t{values_in_record};
constexpr std::int64_t value_bytes = sizeof(double);

}  // namespace

std::int32_t BatchStore::open(std::int32_t atoms, std::int32_t frames) {
  batches_ = (atoms + batch_width - 1) / batch_width;
  frames_ = std::max(frames, 0);
  const std::int64_t room = memory_ / (record_width * value_bytes);  // records of a batch
  if (frames_ == 0 || batches_ <= room / frames_) {
    if (allocate(batches_, frames_) == 0) return 0;
  }
  std::int32_t status = 0;
  unit_ = open_cache(file_, static_cast<std::int32_t>(2 * record_width), status);
  if (status != 0) return status;
  descriptor_ = cache_descriptor(unit_.number());
  return allocate(batches_, std::clamp<std::int64_t>(room / batches_, 1, frames_));
}

/// Room for as many records of as many batches, or for one whole batch if that is more.
std::int32_t BatchStore::allocate(std::int64_t batches, std::int64_t records) {
  std::int32_t status = 0;
  values_ = NamedBlock<double>("PathStat/Corr/Batches", std::max(batches * records, frames_) * record_width, status,
                               NotCleared{});
  room_ = records;
  // The last batch may have fewer atoms.
  const auto last = status == 0 ? static_cast<std::size_t>((batches - 1) * records * record_width) : values_.size();
  std::ranges::fill(values_.span().subspan(last), 0.0);
  return status;
}

bool BatchStore::write(std::int32_t record, const Axes& frame) {
  if (waiting_ == 0) first_waiting_ = record - 1;
  const std::size_t atoms = frame.x.size();
  for (std::size_t first = 0; first < atoms; first += atoms_in_batch) {
    const std::size_t count = std::min(atoms_in_batch, atoms - first);
    const auto batch = static_cast<std::int64_t>(first / atoms_in_batch);
    const auto to = values_.span().subspan(static_cast<std::size_t>((batch * room_ + waiting_) * record_width));
    std::ranges::copy(frame.x.subspan(first, count), to.begin());
    std::ranges::copy(frame.y.subspan(first, count), to.begin() + batch_width);
    std::ranges::copy(frame.z.subspan(first, count), to.begin() + 2 * batch_width);
  }
  return ++waiting_ < room_ || in_memory() || flush();
}

/// Moves the waiting records of each batch to their place in the file.
bool BatchStore::flush() {
  for (std::int64_t batch = 0; batch < batches_ && waiting_ > 0; ++batch) {
    const auto from = values_.span().subspan(static_cast<std::size_t>(batch * room_ * record_width),
                                             static_cast<std::size_t>(waiting_ * record_width));
    const std::int64_t place = (batch * frames_ + first_waiting_) * record_width * value_bytes;
    if (!write_values(descriptor_, place, from)) return false;
  }
  waiting_ = 0;
  return true;
}

bool BatchStore::finish() { return in_memory() || flush(); }

std::int64_t BatchStore::batches_together() const {
  if (in_memory()) return batches_;
  return std::clamp<std::int64_t>(static_cast<std::int64_t>(values_.size()) / values_of_batch(), 1, batches_);
}

bool BatchStore::load(std::int64_t first, std::int64_t count) {
  if (in_memory()) return true;
  loaded_ = first;
  return read_values(descriptor_, first * values_of_batch() * value_bytes,
                     values_.span().first(static_cast<std::size_t>(count * values_of_batch())));
}

AtomBatch BatchStore::batch(std::int64_t which) const {
  return AtomBatch(values_.span().subspan(static_cast<std::size_t>((which - loaded_) * values_of_batch()),
                                          static_cast<std::size_t>(values_of_batch())));
}

}  // namespace pathstat
