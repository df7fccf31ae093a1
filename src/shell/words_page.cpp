#include "shell/words_page.h"

#include <array>
#include <cstdio>

namespace pathstat {
namespace {

std::string number_text(std::int32_t value) { return std::to_string(value); }

std::string number_text(double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%g", value);
  return text.data();
}

template <class T>
std::string bound_text(const Bound<T>& bound) {
  return bound.is_constant() ? number_text(bound.value) : std::string(bound.meaning);
}

template <class T>
bool is_none(const Bound<T>& bound) {
  return bound.is_constant() && bound.value == Bound<T>::none;
}

template <class T>
std::string limits(const NumberSetting<T>& setting) {
  std::string text = std::is_same_v<T, double> ? "number" : "integer";
  if (!is_none(setting.low)) text += " from " + bound_text(setting.low);
  if (!is_none(setting.high)) text += " to " + bound_text(setting.high);
  return text;
}

std::string list_of(std::string_view allowed) {
  std::string text = "one of ";
  for (const char c : allowed) text += c == ',' ? std::string(", ") : std::string(1, c);
  return text;
}

struct ArgumentsInWords {
  std::string operator()(const Action& action) const {
    return action.allowed.empty() ? "none" : list_of(action.allowed);
  }
  std::string operator()(const TextSetting& setting) const {
    return setting.allowed.empty() ? "text" : list_of(setting.allowed);
  }
  std::string operator()(const LogicalSetting&) const { return "yes or no"; }
  std::string operator()(const IntegerSetting& setting) const { return limits(setting); }
  std::string operator()(const DoubleSetting& setting) const { return limits(setting); }
  std::string operator()(const Label&) const { return "none"; }
};

std::string_view guard_text(Guard guard) {
  switch (guard) {
    case Guard::property_selected:
      return "a property is selected";
    case Guard::source_is_trajectory:
      return "the input is a trajectory";
    case Guard::loaded:
      return "a trajectory is loaded";
    case Guard::loaded_if_trajectory:
      return "a trajectory is loaded, if it is the input";
    case Guard::fluctuation_selected:
      return "a fluctuation quantity is selected";
    case Guard::time_axis:
      return "the frames carry times";
    case Guard::displacement_done:
      return "MSD has run";
    case Guard::velocities_done:
      return "VAC has run";
    case Guard::distribution_done:
      return "RDF has run";
    case Guard::dipole_interval_set:
      return "DAC_MAX_INTERVAL_NO is not 0";
  }
  return "";
}

}  // namespace

std::string arguments_in_words(const CommandWord& row) {
  return row.arguments.empty() ? std::visit(ArgumentsInWords{}, row.effect) : std::string(row.arguments);
}

std::string guards_in_words(const CommandWord& row) {
  std::string text;
  const auto* action = std::get_if<Action>(&row.effect);
  if (action == nullptr) return text;
  for (const auto guard : action->guards.view()) {
    if (!text.empty()) text += "; ";
    text += guard_text(guard);
  }
  return text;
}

std::string command_words_page() {
  std::string page =
      "# Command words\n\n"
      "Written by `./dev docs` from the table in `src/shell/command_words.cpp`. A text with blanks stands in quotes. "
      "Logical arguments are true for a text that begins with Y, T, y, t or a digit from 1 to 9.\n\n"
      "| Word | Meaning | Argument | Needs |\n|---|---|---|---|\n";
  for (const auto& row : command_words()) {
    page += "| `" + std::string(row.word) + "` | " + std::string(row.meaning) + " | " + arguments_in_words(row) +
            " | " + guards_in_words(row) + " |\n";
  }
  return page;
}

std::string command_words_list() {
  std::string list;
  for (const auto& row : command_words()) {
    list += std::string(row.word) + '\t' + arguments_in_words(row) + '\t' + std::string(row.meaning) + '\t' +
            guards_in_words(row) + '\n';
  }
  return list;
}

}  // namespace pathstat
