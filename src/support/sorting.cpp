#include "support/sorting.h"

#include <algorithm>
#include <numeric>

namespace pathstat {
namespace {

/// Sorts 1, 2, ... n by `below` over positions from 0.
template <class Below>
void sort_index(std::size_t count, std::span<std::int32_t> index, Below below) {
  index = index.first(std::min(count, index.size()));
  std::iota(index.begin(), index.end(), 1);
  heap_sort(index, [&](std::int32_t a, std::int32_t b) {
    return below(static_cast<std::size_t>(a) - 1, static_cast<std::size_t>(b) - 1);
  });
}

template <class T>
void sort_index_of_values(std::span<const T> values, std::span<std::int32_t> index) {
  sort_index(values.size(), index, [=](std::size_t a, std::size_t b) { return values[a] < values[b]; });
}

bool text_below(std::string_view a, std::string_view b) {
  const auto byte = [](std::string_view text, std::size_t k) {
    return static_cast<unsigned char>(k < text.size() ? text[k] : ' ');
  };
  for (std::size_t k = 0; k < std::max(a.size(), b.size()); ++k)
    if (byte(a, k) != byte(b, k)) return byte(a, k) < byte(b, k);
  return false;
}

}  // namespace

void isortidx_(std::span<const std::int32_t> values, std::span<std::int32_t> index) {
  sort_index_of_values(values, index);
}
void dsortidx_(std::span<const double> values, std::span<std::int32_t> index) { sort_index_of_values(values, index); }
void rsortidx_(std::span<const float> values, std::span<std::int32_t> index) { sort_index_of_values(values, index); }

void csortidx_(std::span<std::int32_t> index, std::span<const std::string_view> texts) {
  sort_index(texts.size(), index, [=](std::size_t a, std::size_t b) { return text_below(texts[a], texts[b]); });
}

void inestsortidx_(std::span<const std::int32_t> table, std::int32_t m, std::span<std::int32_t> index) {
  const auto width = static_cast<std::size_t>(std::max(m, 0));
  const std::size_t rows = width == 0 ? index.size() : table.size() / width;
  sort_index(rows, index, [=](std::size_t a, std::size_t b) {
    return std::ranges::lexicographical_compare(table.subspan(a * width, width), table.subspan(b * width, width));
  });
}

void isort_(std::span<std::int32_t> values) {
  heap_sort(values, [](std::int32_t a, std::int32_t b) { return a < b; });
}
void dsort_(std::span<double> values) {
  heap_sort(values, [](double a, double b) { return a < b; });
}

}  // namespace pathstat
