#include "desk/advice/word_table.h"

#include <algorithm>
#include <array>

namespace pathstat::desk {
namespace {

/// One line a word: word, arguments, meaning, needs and application with tabs between.
constexpr std::string_view list =
#include <command_help.inc>
    ;

std::string_view take_to(std::string_view& text, char mark) {
  const auto end = std::min(text.find(mark), text.size());
  const auto taken = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return taken;
}

std::vector<CommandHelp> read_list() {
  std::vector<CommandHelp> rows;
  for (auto rest = list; !rest.empty();) {
    auto line = take_to(rest, '\n');
    CommandHelp row;
    row.word = take_to(line, '\t');
    row.arguments = take_to(line, '\t');
    row.meaning = take_to(line, '\t');
    row.needs = take_to(line, '\t');
    row.application = line;
    rows.push_back(row);
  }
  return rows;
}

/// How arguments begin in words, and what that makes of them.
struct Lead {
  std::string_view begins;
  ArgumentShape shape;
};

constexpr std::size_t any_number = 1'000'000;
constexpr std::array leads{
    Lead{"none", {ArgumentForm::none, 0}},
    Lead{"yes or no", {ArgumentForm::flag, 1}},
    Lead{"one of ", {ArgumentForm::choice, 1}},
    Lead{"integer", {ArgumentForm::integer, 1}},
    Lead{"number", {ArgumentForm::number, 1}},
    Lead{"time in ps", {ArgumentForm::number, 1}},
    Lead{"path of ", {ArgumentForm::path, 1}},
    Lead{"two names", {ArgumentForm::names, 2}},
    Lead{"any number of names", {ArgumentForm::names, any_number}},
    Lead{"graph name", {ArgumentForm::text, 5}},
    Lead{"two numbers", {ArgumentForm::number, 2}},
    Lead{"name of a ", {ArgumentForm::text, 1}},
    Lead{"six numbers", {ArgumentForm::number, 6}},
    Lead{"element symbol and three", {ArgumentForm::text, 4}},
    Lead{"name or number", {ArgumentForm::text, 2}},
};

/// Words that are given something but keep nothing of it for later analyses.
constexpr std::array passing{std::string_view("ANALYSIS_STRUCTURE_FROM_PLOT"),
                             std::string_view("CURRENT_FRAME_NUMBER"),
                             std::string_view("CURRENT_FRAME_TIME"),
                             std::string_view("EXPORT_STRUCTURE"),
                             std::string_view("FRAME_STEP_BACKWARDS"),
                             std::string_view("FRAME_STEP_FORWARDS"),
                             std::string_view("GET"),
                             std::string_view("IMPORT_STRUCTURE"),
                             std::string_view("ISOSURFACE"),
                             std::string_view("SHOW_NEXT_FRAME"),
                             std::string_view("SHOW_PREVIOUS_FRAME"),
                             std::string_view("TABLE_COLUMN"),
                             std::string_view("VOLUME_REGION"),
                             std::string_view("VOLUME_VALUES")};

}  // namespace

std::span<const CommandHelp> command_helps() {
  static const auto rows = read_list();
  return rows;
}

const CommandHelp* find_command_help(std::string_view word) {
  const auto rows = command_helps();
  const auto row = std::find_if(rows.begin(), rows.end(), [&](const CommandHelp& each) { return each.word == word; });
  return row == rows.end() ? nullptr : &*row;
}

std::string_view application_of(std::string_view word) {
  constexpr std::string_view analysis = "MD_ANALYSIS";
  const auto* row = find_command_help(word);
  return row ? row->application : analysis;
}

ArgumentShape argument_shape(const CommandHelp& row) {
  for (const auto& lead : leads) {
    if (row.arguments.starts_with(lead.begins)) return lead.shape;
  }
  return {};
}

std::vector<std::string> listed_values(std::string_view arguments) {
  if (arguments == "yes or no") return {"yes", "no"};
  constexpr std::string_view lead = "one of ", between = ", ";
  if (!arguments.starts_with(lead)) return {};
  arguments.remove_prefix(lead.size());
  std::vector<std::string> values;
  while (!arguments.empty()) {
    const auto end = std::min(arguments.find(between), arguments.size());
    values.emplace_back(arguments.substr(0, end));
    arguments.remove_prefix(std::min(end + between.size(), arguments.size()));
  }
  return values;
}

bool takes_time(const CommandHelp& row) {
  return row.arguments.starts_with("time in ps") || row.meaning.ends_with(", ps");
}

bool is_setting(const CommandHelp& row) {
  return argument_shape(row).form != ArgumentForm::none &&
         std::find(passing.begin(), passing.end(), row.word) == passing.end();
}

}  // namespace pathstat::desk
