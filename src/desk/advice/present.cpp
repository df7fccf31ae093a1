#include "desk/advice/present.h"

#include <charconv>
#include <cmath>

namespace pathstat::desk {

std::optional<double> number_in(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  double number = 0;
  const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = !text.empty() && status == std::errc{} && end == text.data() + text.size();
  return whole && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::string without_blanks(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

const WordAnswer& Present::answer(const std::string& word) {
  const auto known = answers_.find(word);
  return known != answers_.end() ? known->second : answers_.emplace(word, sources_.answer(word)).first->second;
}

std::string Present::text(const std::string& word) {
  const auto& values = answer(word).values;
  return values.empty() ? std::string{} : without_blanks(values.front());
}

std::optional<double> Present::number(const std::string& word) { return number_in(text(word)); }

std::string Present::returned(const std::string& key) {
  const auto known = returned_.find(key);
  if (known != returned_.end()) return known->second;
  return returned_.emplace(key, without_blanks(sources_.returned(key))).first->second;
}

std::optional<double> Present::frames_in_file() { return number_in(returned("NUMBER_OF_FRAMES")); }

std::optional<double> Present::frames_in_range() {
  const auto first = number("FIRST_FRAME_NO"), last = number("LAST_FRAME_NO"), step = number("INCREMENT_NO");
  if (!first || !last || !step || *step < 1) return std::nullopt;
  return std::floor((*last - *first) / *step) + 1;
}

std::optional<double> Present::frame_time() {
  const auto span = number("INCREMENT_TIME"), step = number("INCREMENT_NO");
  return span && step && *step >= 1 ? std::optional(*span / *step) : std::nullopt;
}

std::optional<double> Present::time_of(std::optional<double> frame) {
  const auto first = number("FIRST_FRAME_NO"), time = number("FIRST_FRAME_TIME"), step = frame_time();
  return frame && first && time && step ? std::optional(*time + (*frame - *first) * *step) : std::nullopt;
}

std::optional<double> Present::cell_width() {
  const double width = sources_.cell_width();
  return width > 0 ? std::optional(width) : std::nullopt;
}

}  // namespace pathstat::desk
