#include "desk/advice/nearest.h"

#include <fmt/format.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <numeric>

namespace pathstat::desk {
namespace {

char folded(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

/// How many letters of a text may be wrong for it still to mean another one.
std::size_t most_wrong(std::size_t length) { return length <= 2 ? 0 : length <= 5 ? 1 : 2; }

}  // namespace

std::size_t distance(std::string_view a, std::string_view b) {
  // Rows of the table of distances between the starts of the two: the last but one, the last and the present one.
  std::array<std::vector<std::size_t>, 3> rows;
  for (auto& row : rows) row.resize(b.size() + 1);
  std::iota(rows[1].begin(), rows[1].end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    auto& [before, last, row] = rows;
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const bool same = folded(a[i]) == folded(b[j]);
      row[j + 1] = std::min({last[j] + (same ? 0 : 1), row[j] + 1, last[j + 1] + 1});
      const bool changed_round = i > 0 && j > 0 && folded(a[i]) == folded(b[j - 1]) && folded(a[i - 1]) == folded(b[j]);
      if (changed_round) row[j + 1] = std::min(row[j + 1], before[j - 1] + 1);
    }
    std::rotate(rows.begin(), rows.begin() + 1, rows.end());
  }
  return rows[1].back();
}

std::string nearest(std::string_view wanted, std::span<const std::string> candidates) {
  constexpr std::size_t longest = 200;  // no name is that long, and the work grows with the square
  if (wanted.size() > longest) return {};
  std::string best;
  std::size_t least = most_wrong(wanted.size()) + 1;
  for (const auto& candidate : candidates) {
    if (candidate.size() > wanted.size() + 2 || wanted.size() > candidate.size() + 2) continue;
    const auto wrong = distance(wanted, candidate);
    if (wrong >= least) continue;
    least = wrong;
    best = candidate;
  }
  return best;
}

std::string did_you_mean(std::string_view wanted, std::span<const std::string> candidates) {
  const auto name = nearest(wanted, candidates);
  return name.empty() ? name : fmt::format("did you mean {}?", as_argument(name));
}

std::string as_argument(std::string_view text) {
  return text.find(' ') == std::string_view::npos ? std::string(text) : fmt::format("\"{}\"", text);
}

bool same_in_any_case(std::string_view a, std::string_view b) {
  return a.size() == b.size() && ::strncasecmp(a.data(), b.data(), a.size()) == 0;
}

}  // namespace pathstat::desk
