#include "support/searching.h"

#include <algorithm>
#include <cstddef>

#include "support/identifier_index.h"

namespace pathstat {
namespace {

using List = std::span<const std::int32_t>;

std::int32_t length(List list) { return static_cast<std::int32_t>(list.size()); }

std::int32_t element(List table, std::int64_t position) { return table[static_cast<std::size_t>(position - 1)]; }

bool is_ascending(List table) { return !table.empty() && table.front() < table.back(); }

bool holds(List table, std::int32_t position, std::int32_t key) {
  return position >= 1 && position <= length(table) && element(table, position) == key;
}

/// Steps away from the guess, 1, 2, 4, ..., until the key lies between `low` and `high` or is met; `low` is then on it.
void bracket(List table, std::int32_t key, bool ascending, std::int32_t& low, std::int32_t& high) {
  const std::int32_t n = length(table), guess = low;
  const auto before = [&](std::int64_t position) {
    return ascending ? key < element(table, position) : key > element(table, position);
  };
  std::int64_t near = guess, step = 1;
  const bool backward = before(guess);
  for (;; step *= 2) {
    const std::int64_t far = std::clamp<std::int64_t>(near + (backward ? -step : step), 0, std::int64_t{n} + 1);
    const bool inside = far >= 1 && far <= n;
    if (inside && element(table, far) == key) {
      low = static_cast<std::int32_t>(far);
      high = low + 1;
      return;
    }
    if (!inside || before(far) != backward) {
      low = static_cast<std::int32_t>(std::min(near, far));
      high = static_cast<std::int32_t>(std::max(near, far));
      return;
    }
    near = far;
  }
}

}  // namespace

std::int32_t index_list_(std::span<const std::int32_t> list, std::int32_t key) {
  const auto found = std::ranges::find(list, key);
  return found == list.end() ? 0 : static_cast<std::int32_t>(found - list.begin()) + 1;
}

void search_(std::span<const std::int32_t> table, std::span<std::int32_t> positions, std::span<const std::int32_t> keys,
             std::int32_t& failures, std::int32_t& status) {
  status = positions.size() < keys.size() ? 1 : 0;
  if (status != 0) return;
  const bool ascending = is_ascending(table);
  failures = 0;
  for (std::size_t k = 0; k < keys.size(); ++k) {
    std::int32_t low = 0, high = length(table) + 1;
    ibinchop_(table, low, high, keys[k], ascending, status);
    positions[k] = holds(table, low, keys[k]) ? low : 0;
    if (positions[k] == 0) ++failures;
  }
}

void searchnosort_(std::span<const std::int32_t> table, std::span<const std::int32_t> keys,
                   std::span<std::int32_t> positions, std::int32_t& failures, std::int32_t& status) {
  failures = length(keys);
  status = 0;
  if (table.empty() || keys.empty()) return;
  status = positions.size() < keys.size() ? 1 : 0;
  if (status != 0) return;
  const IdentifierIndex index(table, status);
  if (status != 0) return;
  std::ranges::transform(keys, positions.begin(), [&](std::int32_t key) { return index.find(key) + 1; });
  failures = static_cast<std::int32_t>(std::ranges::count(positions.first(keys.size()), 0));
}

void hunt_(std::span<const std::int32_t> table, std::int32_t key, std::int32_t& position, std::int32_t& status) {
  const bool ascending = is_ascending(table);
  std::int32_t low = 0, high = length(table) + 1;
  status = 0;
  if (position >= 1 && position <= length(table)) {
    if (element(table, position) == key) return;
    low = position;
    bracket(table, key, ascending, low, high);
  }
  ibinchop_(table, low, high, key, ascending, status);
  position = low;
  if (holds(table, position, key)) return;
  ++position;
  status = -1;
}

void ibinchop_(std::span<const std::int32_t> table, std::int32_t& low, std::int32_t& high, std::int32_t key,
               bool ascending, std::int32_t& status) {
  status = low >= 0 && low < high && high <= std::int64_t{length(table)} + 1 ? 0 : 1;
  if (status != 0) return;
  while (high - low != 1) {
    const std::int32_t middle = low + (high - low) / 2;
    const std::int32_t there = element(table, middle);
    (ascending ? key < there : key > there) ? high = middle : low = middle;
  }
}

void iunique_(std::span<const std::int32_t> sorted, std::span<std::int32_t> unique, std::int32_t& count,
              std::int32_t& status) {
  std::size_t kept = 0;
  status = 0;
  for (std::size_t k = 0; k < sorted.size() && status == 0; ++k) {
    if (kept > 0 && sorted[k] == unique[kept - 1]) continue;
    if (kept == unique.size())
      status = 1;
    else
      unique[kept++] = sorted[k];
  }
  count = static_cast<std::int32_t>(kept);
}

void iuniquenosort_(std::span<const std::int32_t> values, std::span<std::int32_t> unique, std::int32_t& count) {
  std::int32_t status = 0;
  const IdentifierIndex index(values, status);
  std::size_t kept = 0;
  for (std::size_t k = 0; k < values.size() && kept < unique.size(); ++k)
    if (index.find(values[k]) == static_cast<std::int32_t>(k)) unique[kept++] = values[k];
  count = static_cast<std::int32_t>(kept);
}

}  // namespace pathstat
