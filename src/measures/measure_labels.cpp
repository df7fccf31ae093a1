#include "measures/measure_labels.h"

#include <algorithm>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

#include "structure/measure_geometry.h"

namespace pathstat {
namespace {

/// Puts a blank and a number behind a label, in its last characters at the latest.
void append_number(MeasureLabel& label, std::size_t number) {
  const std::string suffix = ' ' + std::to_string(number);
  const auto length = std::min(label.view().size(), measure_label_width - suffix.size());
  label = std::string(label.view().substr(0, length)) + suffix;
}

}  // namespace

MeasureLabel label_of_atoms(std::string_view prefix, std::span<const std::int32_t> numbers) {
  constexpr std::size_t two_planes = 6;
  std::string text(prefix);
  for (std::size_t k = 0; k < numbers.size(); ++k) {
    const bool within_plane = numbers.size() == two_planes && k % 3 != 0;
    if (k > 0) text += within_plane ? ',' : '-';
    text += std::to_string(numbers[k]);
  }
  return MeasureLabel(text);
}

std::string_view inversion_prefix(std::int32_t convention) {
  switch (convention) {
    case inversion_ijkl:
      return "IJKL:";
    case inversion_jilk:
      return "JILK:";
    case inversion_umbrella:
      return "UMBR:";
    default:
      return "????:";
  }
}

void number_equal_labels(std::span<MeasureLabel> labels) {
  std::unordered_map<std::string, std::set<std::size_t>> places;
  for (std::size_t k = 0; k < labels.size(); ++k) places[labels[k].str()].insert(k);
  for (std::size_t first = 0; first < labels.size(); ++first) {
    auto equal = places.extract(labels[first].str()).mapped();
    equal.erase(equal.begin(), equal.lower_bound(first));
    if (equal.size() < 2) continue;
    std::size_t number = 0;
    for (const auto k : equal) {
      append_number(labels[k], ++number);
      places[labels[k].str()].insert(k);
    }
  }
}

}  // namespace pathstat
