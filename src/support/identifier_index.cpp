#include "support/identifier_index.h"

#include <algorithm>
#include <limits>

#include "support/hash_table.h"

namespace pathstat {
namespace {

/// The key of an identifier, one to one. Two runs of consecutive identifiers whose home slots overlap would make
/// probing quadratic; scattered keys do not form such runs. Source: xorshift-multiply rounds, C. Wellons, "Prospecting
/// for hash functions" (2018).
std::int32_t scattered(std::int32_t identifier) {
  auto bits = static_cast<std::uint32_t>(identifier);
  bits = (bits ^ (bits >> 16)) * 0x7feb352du;
  bits = (bits ^ (bits >> 15)) * 0x846ca68bu;
  return static_cast<std::int32_t>(bits ^ (bits >> 16));
}

/// The greatest integer up to 0 that is not the key of an identifier. `marks` has one place more than the list: among
/// that many candidates one at least is free.
std::int32_t absent_key(std::span<const std::int32_t> identifiers, std::span<std::int32_t> marks) {
  std::ranges::fill(marks, 0);
  for (const auto identifier : identifiers) {
    const std::int64_t candidate = -std::int64_t{scattered(identifier)};
    if (candidate >= 0 && candidate < static_cast<std::int64_t>(marks.size()))
      marks[static_cast<std::size_t>(candidate)] = 1;
  }
  return -static_cast<std::int32_t>(std::ranges::find(marks, 0) - marks.begin());
}

}  // namespace

IdentifierIndex::IdentifierIndex(std::span<const std::int32_t> identifiers, std::int32_t& status) {
  status = identifiers.size() > std::numeric_limits<std::int32_t>::max() / 3 ? 1 : 0;
  std::int32_t size = 0, count = 0;
  if (status == 0) hashsuggestedsize_(static_cast<std::int32_t>(identifiers.size()), size, status);
  if (status != 0) return;
  PlainArray<std::int32_t> keys(size), positions(size);
  status = keys.allocated() && positions.allocated() ? 0 : 1;
  if (status != 0) return;
  empty_key_ = absent_key(identifiers, keys.span().first(identifiers.size() + 1));
  hashinitialize_(keys.span(), count, empty_key_, status);
  // From the last to the first, so that each identifier ends with its first position.
  for (std::size_t k = identifiers.size(); k-- > 0 && status == 0;) {
    const std::int32_t key = scattered(identifiers[k]), position = static_cast<std::int32_t>(k);
    hashinsertduplicates_({&key, 1}, {&position, 1}, keys.span(), positions.span(), count, size, empty_key_, status);
  }
  keys_ = std::move(keys);
  positions_ = std::move(positions);
  size_ = size;
}

std::int32_t IdentifierIndex::find(std::int32_t identifier) const {
  std::int32_t position = -1, status = 0;
  hashsearch1_(scattered(identifier), keys_.span(), positions_.span(), position, size_, empty_key_, -1, status);
  return position;
}

}  // namespace pathstat
