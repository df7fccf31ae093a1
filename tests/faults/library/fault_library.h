#pragma once

#include <atomic>
#include <cstdint>

namespace pathstat::faults {

/// What the library and the test share: a file that both map.
struct Account {
  std::atomic<std::uint64_t> calls;  ///< of the kind that is watched
  std::atomic<std::uint64_t> fired;  ///< of them, those that went wrong
  std::atomic<std::int64_t> when;    ///< the last did, in nanoseconds of the steady clock
};

}  // namespace pathstat::faults
