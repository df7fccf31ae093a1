#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "trajectory/front_end.h"

namespace pathstat {

/// Gives a key's values to the caller as far as there is room, and tells how many there are.
/// @param status  becomes too_small if there is not room for all and nothing else went wrong
template <class T>
void deliver(std::span<const T> values, std::span<T> out, std::int32_t& count, std::int32_t& status) {
  count = static_cast<std::int32_t>(std::min<std::size_t>(values.size(), INT32_MAX));
  std::copy_n(values.begin(), std::min(values.size(), out.size()), out.begin());
  if (status == 0 && values.size() > out.size()) status = trajectory_status::too_small;
}

/// The same for a key that yields one value.
template <class T>
void deliver_one(const T& value, std::span<T> out, std::int32_t& count, std::int32_t& status) {
  deliver(std::span(&value, 1), out, count, status);
}

}  // namespace pathstat
