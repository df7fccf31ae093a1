#include "support/hash_table.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <limits>

#include "support/plain_array.h"

namespace pathstat {
namespace {

using Keys = std::span<const std::int32_t>;

bool fits_spans(std::int32_t size, std::size_t keys, std::size_t values) {
  const std::size_t slots = size < 0 ? 0 : static_cast<std::size_t>(size);
  return slots <= keys && slots <= values;
}

/// Probes from the key's home slot for the first slot that ends the search. Looks at each slot once, so that it ends in
/// a table without a free slot too; the result is then the table's size.
template <class Ends>
std::size_t probe(std::int32_t key, Keys table_keys, Ends ends) {
  const std::size_t size = table_keys.size();
  std::size_t slot = static_cast<std::uint32_t>(key) % size;
  for (std::size_t seen = 0; seen < size; ++seen) {
    if (ends(table_keys[slot])) return slot;
    if (++slot == size) slot = 0;
  }
  return size;
}

std::size_t free_slot(std::int32_t key, Keys table_keys, std::int32_t empty_key) {
  return probe(key, table_keys, [=](std::int32_t found) { return found == empty_key; });
}

std::size_t key_or_free_slot(std::int32_t key, Keys table_keys, std::int32_t empty_key) {
  return probe(key, table_keys, [=](std::int32_t found) { return found == key || found == empty_key; });
}

std::int32_t table_is_full() {
  std::puts("Hash table is full.");
  return 1;
}

}  // namespace

void hashsuggestedsize_(std::int32_t expected_count, std::int32_t& size, std::int32_t& status) {
  const std::int64_t least = 3 * std::int64_t{std::max(expected_count, 0)} + 1;
  size = 0;
  status = least > std::numeric_limits<std::int32_t>::max() ? 1 : 0;
  if (status == 0) getnextprime_(static_cast<std::int32_t>(least), size, status);
}

void hashinitialize_(std::span<std::int32_t> table_keys, std::int32_t& count, std::int32_t empty_key,
                     std::int32_t& status) {
  std::ranges::fill(table_keys, empty_key);
  count = 0;
  status = 0;
}

void hashqueryroomtoaddnvalues_(std::int32_t count, std::int32_t n, std::int32_t size, bool& answer,
                                std::int32_t& status) {
  answer = std::int64_t{count} + n < size;
  status = 0;
}

void hashinsert_(std::span<const std::int32_t> keys, std::span<const std::int32_t> values,
                 std::span<std::int32_t> table_keys, std::span<std::int32_t> table_values, std::int32_t& count,
                 std::int32_t size, std::int32_t empty_key, std::int32_t& status) {
  status = fits_spans(size, table_keys.size(), table_values.size()) && values.size() >= keys.size() ? 0 : 1;
  if (status != 0 || keys.empty()) return;
  const auto slots = static_cast<std::size_t>(std::max(size, 0));
  const auto used = static_cast<std::size_t>(std::max(count, 0));
  if (keys.size() + used >= slots) {
    status = table_is_full();
    return;
  }
  const auto table = table_keys.first(slots);
  for (std::size_t k = 0; k < keys.size(); ++k) {
    const std::size_t slot = free_slot(keys[k], table, empty_key);
    if (slot == slots) {
      status = table_is_full();
      return;
    }
    table[slot] = keys[k];
    table_values[slot] = values[k];
    ++count;
  }
}

void hashinsertduplicates_(std::span<const std::int32_t> keys, std::span<const std::int32_t> values,
                           std::span<std::int32_t> table_keys, std::span<std::int32_t> table_values,
                           std::int32_t& count, std::int32_t size, std::int32_t empty_key, std::int32_t& status) {
  status = fits_spans(size, table_keys.size(), table_values.size()) && values.size() >= keys.size() ? 0 : 1;
  if (status != 0 || keys.empty()) return;
  const auto table = table_keys.first(static_cast<std::size_t>(std::max(size, 0)));
  for (std::size_t k = 0; k < keys.size(); ++k) {
    const std::size_t slot = table.empty() ? 0 : key_or_free_slot(keys[k], table, empty_key);
    const bool known = slot < table.size() && table[slot] != empty_key;
    if (slot >= table.size() || (!known && std::int64_t{count} + 1 >= size)) {
      status = table_is_full();
      return;
    }
    table[slot] = keys[k];
    table_values[slot] = values[k];
    if (!known) ++count;
  }
}

void hashsearch1_(std::int32_t key, std::span<const std::int32_t> table_keys,
                  std::span<const std::int32_t> table_values, std::int32_t& value, std::int32_t size,
                  std::int32_t empty_key, std::int32_t default_value, std::int32_t& status) {
  value = default_value;
  status = 1;
  if (size < 1 || !fits_spans(size, table_keys.size(), table_values.size())) return;
  const auto table = table_keys.first(static_cast<std::size_t>(size));
  const std::size_t slot = key_or_free_slot(key, table, empty_key);
  status = slot < table.size() && table[slot] != empty_key ? 0 : -1;
  if (status == 0) value = table_values[slot];
}

void hashsearch_(std::span<const std::int32_t> keys, std::span<std::int32_t> values,
                 std::span<const std::int32_t> table_keys, std::span<const std::int32_t> table_values,
                 std::int32_t size, std::int32_t empty_key, std::int32_t default_value, std::int32_t& status) {
  status = values.size() < keys.size() ? 1 : 0;
  if (status != 0) return;
  for (std::size_t k = 0; k < keys.size(); ++k) {
    std::int32_t one = 0;
    hashsearch1_(keys[k], table_keys, table_values, values[k], size, empty_key, default_value, one);
    if (one == 1 || status == 0) status = one;
  }
}

void hashresize_(std::int32_t new_size, std::span<std::int32_t> table_keys, std::span<std::int32_t> table_values,
                 std::int32_t& count, std::int32_t& size, std::int32_t empty_key, std::int32_t& status) {
  status = 0;
  if (new_size < 1) return;
  const bool fits = fits_spans(new_size, table_keys.size(), table_values.size()) &&
                    fits_spans(size, table_keys.size(), table_values.size());
  const PlainArray<std::int32_t> keys(fits ? new_size : 0), values(fits ? new_size : 0);
  status = fits && keys.allocated() && values.allocated() ? 0 : 1;
  if (status != 0) return;
  std::ranges::fill(keys.span(), empty_key);
  std::int32_t moved = 0;
  for (std::size_t old = 0; old < static_cast<std::size_t>(std::max(size, 0)); ++old) {
    if (table_keys[old] == empty_key) continue;
    const std::size_t slot = free_slot(table_keys[old], keys.span(), empty_key);
    if (++moved >= new_size) {
      status = table_is_full();
      return;
    }
    keys.span()[slot] = table_keys[old];
    values.span()[slot] = table_values[old];
  }
  std::ranges::copy(keys.span(), table_keys.begin());
  std::ranges::copy(values.span(), table_values.begin());
  size = new_size;
  if (moved == count) return;
  std::puts(" Internal error: Old hash size not equal to new one.");
  count = moved;
}

void getnextprime_(std::int32_t n, std::int32_t& prime, std::int32_t& status) {
  for (prime = n; !integerisprime_(prime);) ++prime;  // ends: the largest 32-bit integer is a prime
  status = 0;
}

bool integerisprime_(std::int32_t n) {
  if (n < 4) return true;
  if (n % 2 == 0) return false;
  const auto last = static_cast<std::int32_t>(std::sqrt(static_cast<float>(n)));
  for (std::int32_t divisor = 3; divisor <= last; divisor += 2)
    if (n % divisor == 0) return false;
  return true;
}

}  // namespace pathstat
