#pragma once

#include <cstdint>
#include <span>

#include "support/plain_array.h"

namespace pathstat {

/// Finds the first position of an identifier in a list in constant time. The list may hold any integers, repeats too;
/// it is not needed after the index is built.
class IdentifierIndex {
 public:
  IdentifierIndex() = default;
  /// @param status  0; 1 no memory, or more than about 7 x 10^8 identifiers; nothing is then found
  IdentifierIndex(std::span<const std::int32_t> identifiers, std::int32_t& status);

  /// The position in the list, from 0, or -1 if the identifier is not there.
  std::int32_t find(std::int32_t identifier) const;

 private:
  PlainArray<std::int32_t> keys_;
  PlainArray<std::int32_t> positions_;
  std::int32_t size_ = 0;
  std::int32_t empty_key_ = 0;
};

}  // namespace pathstat
