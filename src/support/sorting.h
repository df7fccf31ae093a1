#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// Ascending heap sorts without a work array. The order of equal keys follows from the algorithm alone.
///
/// An index sort leaves the values alone: index(k) is the position, from 1, of the k-th smallest. It sorts as many
/// values as both spans hold.
namespace pathstat {

/// The sift that all sorts share: `below(a, b)` tells whether element a comes strictly before element b.
template <class Element, class Below>
void heap_sort(std::span<Element> elements, Below below) {
  if (elements.size() < 2) return;
  const auto at = [&](std::size_t k) -> Element& { return elements[k - 1]; };
  std::size_t left = elements.size() / 2 + 1, right = elements.size();
  for (;;) {
    Element moving;
    if (left > 1) {
      moving = at(--left);
    } else {
      moving = at(right);
      at(right) = at(1);
      if (--right == 1) {
        at(1) = moving;
        return;
      }
    }
    std::size_t i = left, j = 2 * left;
    while (j <= right) {
      if (j < right && below(at(j), at(j + 1))) ++j;
      if (!below(moving, at(j))) break;
      at(i) = at(j);
      i = j;
      j = 2 * j;
    }
    at(i) = moving;
  }
}

void isortidx_(std::span<const std::int32_t> values, std::span<std::int32_t> index);
void dsortidx_(std::span<const double> values, std::span<std::int32_t> index);
void rsortidx_(std::span<const float> values, std::span<std::int32_t> index);
/// Texts compare byte by byte, as if padded with blanks to one length.
void csortidx_(std::span<std::int32_t> index, std::span<const std::string_view> texts);
/// Rows of m integers stand one behind the other and compare element by element from the first.
void inestsortidx_(std::span<const std::int32_t> table, std::int32_t m, std::span<std::int32_t> index);

/// In place.
void isort_(std::span<std::int32_t> values);
void dsort_(std::span<double> values);

}  // namespace pathstat
