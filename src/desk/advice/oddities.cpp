#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

#include "desk/advice/advice.h"
#include "desk/advice/nearest.h"
#include "desk/advice/word_table.h"
#include "desk/script/script.h"

namespace pathstat::desk {
namespace {

using Words = std::vector<std::string>;

constexpr std::array flags{"yes", "no", "true", "false", "y", "n", "t", "f", "1", "0"};

std::string joined(std::span<const std::string> words) {
  std::string text;
  for (const auto& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

/// "LAST" among the arguments in words: the word takes it in place of a number.
bool takes_last(const CommandHelp& row) { return row.arguments.ends_with("or LAST"); }

std::string odd_flag(const CommandHelp&, const std::string& text) {
  const auto is_known = [&](const char* flag) { return same_in_any_case(flag, text); };
  if (std::any_of(flags.begin(), flags.end(), is_known)) return {};
  constexpr std::string_view true_starts = "YTyt123456789";
  const bool taken = !text.empty() && true_starts.find(text.front()) != std::string_view::npos;
  return fmt::format("\"{}\" is taken as {}: write yes or no", text, taken ? "yes" : "no");
}

std::string odd_integer(const CommandHelp& row, const std::string& text) {
  long long whole = 0;
  const auto* first = text.data() + (text.starts_with('+') ? 1 : 0);
  const auto* end = text.data() + text.size();
  const auto read = std::from_chars(first, end, whole);
  if (read.ec == std::errc{} && read.ptr == end) return {};
  if (takes_last(row)) {
    return same_in_any_case(text, "LAST") ? "" : fmt::format("\"{}\" is neither a whole number nor LAST", text);
  }
  if (read.ec == std::errc::result_out_of_range) return {};
  return fmt::format("\"{}\" is {} and is taken as {}", text, number_in(text) ? "not a whole number" : "not a number",
                     read.ec == std::errc{} ? whole : 0);
}

std::string odd_number(const CommandHelp&, const std::string& text) {
  if (number_in(text)) return {};
  double number = 0;
  const auto* first = text.data() + (text.starts_with('+') ? 1 : 0);
  const auto read = std::from_chars(first, text.data() + text.size(), number);
  return fmt::format("\"{}\" is not a number and is taken as {:.6g}", text, read.ec == std::errc{} ? number : 0.0);
}

struct OddForm {
  ArgumentForm form;
  std::string (*odd)(const CommandHelp& row, const std::string& argument);
};
constexpr std::array odd_forms{OddForm{ArgumentForm::flag, odd_flag}, OddForm{ArgumentForm::integer, odd_integer},
                               OddForm{ArgumentForm::number, odd_number}};

/// What is passed over behind the arguments that a word takes.
std::string odd_count(std::string_view word, const ArgumentShape& shape, const Words& words) {
  if (words.size() <= shape.most) return {};
  const auto rest = joined(std::span(words).subspan(shape.most));
  if (shape.most == 0) return fmt::format("{} takes no argument: \"{}\" is passed over", word, rest);
  auto text = fmt::format("{} takes {}: \"{}\" is passed over", word,
                          shape.most == 1 ? "one argument" : fmt::format("{} arguments", shape.most), rest);
  const bool is_text =
      shape.form != ArgumentForm::flag && shape.form != ArgumentForm::integer && shape.form != ArgumentForm::number;
  if (is_text) text += fmt::format("; a text with blanks stands in quotes: {} \"{}\"", word, joined(words));
  return text;
}

}  // namespace

std::vector<std::string> oddities(std::string_view word, std::string_view arguments) {
  std::vector<std::string> all;
  const auto* row = find_command_help(word);
  if (!row) return all;
  const auto shape = argument_shape(*row);
  const auto words = words_of(arguments);
  if (const char mark = open_mark(arguments)) {
    all.push_back(fmt::format("the mark {} is not closed: everything behind it is one text", mark));
  }
  if (auto text = odd_count(word, shape, words); !text.empty()) all.push_back(std::move(text));
  for (const auto& [form, odd] : odd_forms) {
    if (form != shape.form || words.empty()) continue;
    if (auto text = odd(*row, words[0]); !text.empty()) all.push_back(fmt::format("{}: {}", word, text));
  }
  return all;
}

}  // namespace pathstat::desk
