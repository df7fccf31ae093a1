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

}  // namespace

std::string arguments_in_words(const CommandWord& row) {
  return row.arguments.empty() ? std::visit(ArgumentsInWords{}, row.effect) : std::string(row.arguments);
}

std::string guards_in_words(const CommandWord& row) {
  std::string text;
  const auto* action = std::get_if<Action>(&row.effect);
  if (action == nullptr) return text;
  for (const auto& guard : action->guards.view()) {
    if (!text.empty()) text += "; ";
    text += guard.meaning;
  }
  return text;
}

std::string command_words_page(std::span<const WordTable* const> tables) {
  std::string page =
      "# Command words\n\n"
      "Written by `./dev docs` from the tables of words, `command_words.cpp` in `src/analysis/` and `src/building/`. A "
      "text with blanks stands in quotes. Logical arguments are true for a text that begins with Y, T, y, t or a digit "
      "from 1 to 9.\n";
  for (const auto* table : tables) {
    page += "\n## " + std::string(table->title) + "\n\nApplication `" + std::string(table->application) +
            "`.\n\n| Word | Meaning | Argument | Needs |\n|---|---|---|---|\n";
    for (const auto& row : table->words) {
      page += "| `" + std::string(row.word) + "` | " + std::string(row.meaning) + " | " + arguments_in_words(row) +
              " | " + guards_in_words(row) + " |\n";
    }
  }
  return page;
}

std::string command_words_list(std::span<const WordTable* const> tables) {
  std::string list;
  for (const auto* table : tables) {
    for (const auto& row : table->words) {
      list += std::string(row.word) + '\t' + arguments_in_words(row) + '\t' + std::string(row.meaning) + '\t' +
              guards_in_words(row) + '\t' + std::string(table->application) + '\n';
    }
  }
  return list;
}

}  // namespace pathstat
