#pragma once

#include <cstdint>

namespace pathstat {

/// A truth value that takes 32 bits in a shared record.
class Logical {
 public:
  constexpr Logical() = default;
  constexpr Logical(bool value) : bits_(value ? 1 : 0) {}
  constexpr operator bool() const { return bits_ != 0; }

 private:
  std::int32_t bits_ = 0;
};
static_assert(sizeof(Logical) == 4);

}  // namespace pathstat
