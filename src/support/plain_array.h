#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "support/named_memory.h"

namespace pathstat {

/// Owns an array without a label, from the plain allocation layer, for a scope. Contents are not initialised.
template <class T>
class PlainArray {
 public:
  PlainArray() = default;
  explicit PlainArray(std::int64_t count) {
    std::int32_t status = 0;
    std::int64_t bytes = -1;
    if (count < 0 || __builtin_mul_overflow(count, static_cast<std::int64_t>(sizeof(T)), &bytes)) bytes = -1;
    kvs_mem_alloc_(bytes, address_, status);
    if (status == 0) count_ = static_cast<std::size_t>(count);
  }
  PlainArray(PlainArray&& other) noexcept { swap(other); }
  PlainArray& operator=(PlainArray&& other) noexcept {
    PlainArray taken(std::move(other));
    swap(taken);
    return *this;
  }
  ~PlainArray() {
    std::int32_t status = 0;
    if (allocated()) kvs_mem_free_(address_, status);
  }

  bool allocated() const { return address_ != 0; }
  std::span<T> span() const { return {pointer_at<T>(address_), count_}; }

 private:
  void swap(PlainArray& other) noexcept {
    std::swap(address_, other.address_);
    std::swap(count_, other.count_);
  }

  std::int64_t address_ = 0;
  std::size_t count_ = 0;
};

}  // namespace pathstat
