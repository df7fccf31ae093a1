#include "desk/cli/manual_page.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>
#include <vector>

#include "desk/advice/word_table.h"

namespace pathstat::desk {
namespace {

using Options = std::vector<const CLI::Option*>;

/// Options that are shown: a hidden one is in no group.
Options shown_options(const CLI::App& app, bool positional) {
  Options shown;
  for (const auto* option : app.get_options()) {
    if (!option->get_group().empty() && option->get_positional() == positional) shown.push_back(option);
  }
  return shown;
}

std::vector<const CLI::App*> parts_of(const CLI::App& app) {
  auto parts = app.get_subcommands([](const CLI::App* part) { return !part->get_group().empty(); });
  return {parts.begin(), parts.end()};
}

/// The names of an option with their dashes: short ones first.
std::vector<std::string> names_of(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const auto& name : option.get_snames()) names.push_back("-" + name);
  for (const auto& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

/// What stands for the value of an option; empty for a flag.
std::string value_of(const CLI::Option& option) {
  if (option.get_items_expected_max() == 0) return {};
  return option.get_option_text().empty() ? "VALUE" : option.get_option_text();
}

/// A line of text in the language of man: nothing in it is taken for a command.
std::string roff_line(std::string_view text) {
  std::string line = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
  for (const char c : text) line += c == '\\' ? std::string("\\e") : c == '-' ? std::string("\\-") : std::string(1, c);
  return line + '\n';
}

/// Lines that begin with a blank stand as they are, others flow.
std::string roff_text(const std::string& text) {
  std::istringstream lines(text);
  std::string result, line;
  bool stands = false;
  while (std::getline(lines, line)) {
    const bool indented = line.starts_with(' ');
    if (indented != stands) result += indented ? ".nf\n" : ".fi\n";
    stands = indented;
    result += line.empty() ? ".PP\n" : roff_line(line);
  }
  return result + (stands ? ".fi\n" : "");
}

std::string roff_option(const CLI::Option& option) {
  std::string names;
  for (const auto& name : names_of(option)) names += (names.empty() ? "" : ", ") + name;
  if (const auto value = value_of(option); !value.empty()) names += " " + value;
  return ".TP\n.B " + roff_line(names) + roff_text(option.get_description() + "\n");
}

std::string synopsis(const CLI::App& part) {
  std::string line = part.get_name();
  for (const auto* option : shown_options(part, true)) {
    const auto name = option->get_name(true);
    const auto several = option->get_items_expected_max() > 1 ? name + "..." : name;
    line += option->get_required() ? " " + several : " [" + several + "]";
  }
  return line + (shown_options(part, false).size() > 1 ? " [OPTIONS]" : "");
}

std::string upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
  return text;
}

/// Which files belong at a place of the command line, by their extensions; others take any.
struct FilesOfPlace {
  std::string_view part, name;
  std::string_view extensions;
};

constexpr std::string_view trajectories = "trj|qtrj|atrj|arc|his", models = "qfx|car|cor";
constexpr std::string_view trajectories_and_models = "trj|qtrj|atrj|arc|his|qfx|car|cor";

constexpr std::array files_of_places{
    FilesOfPlace{"run", "SCRIPT", "script"}, FilesOfPlace{"info", "FILE", trajectories_and_models},
    FilesOfPlace{"export", "FILE", trajectories_and_models}, FilesOfPlace{"export", "--model", models},
    FilesOfPlace{"panel", "FILE", "trj|qtrj|atrj|arc|his|script"}};

/// The call of the script's function that completes what stands at a place.
std::string filler(const CLI::App& part, const CLI::Option& option) {
  const auto name = option.get_positional() ? option.get_name(true) : "--" + option.get_lnames().front();
  const auto* files = std::find_if(files_of_places.begin(), files_of_places.end(), [&](const FilesOfPlace& row) {
    return row.part == part.get_name() && row.name == name;
  });
  if (files != files_of_places.end()) return fmt::format("_pathdesk_files '{}'", files->extensions);
  const auto text = option.get_positional() ? name : value_of(option);
  if (text == "DIR") return "_pathdesk_folders";
  if (text == "WORD") {
    std::string words;
    for (const auto& row : command_helps()) words += fmt::format("{}{}", words.empty() ? "" : " ", row.word);
    return fmt::format("_pathdesk_words '{}'", words);
  }
  const auto separator = text.find_first_of(",|");
  if (separator != std::string::npos) {
    auto words = text;
    std::replace(words.begin(), words.end(), text[separator], ' ');
    return fmt::format("{} '{}'", text[separator] == ',' ? "_pathdesk_list" : "_pathdesk_words", words);
  }
  constexpr std::array<std::string_view, 7> file_texts{"FILE", "FILES", "PATH", "OUT", "LOG", "TOPOLOGY", "TRAJECTORY"};
  const bool is_file = std::find(file_texts.begin(), file_texts.end(), text) != file_texts.end();
  return is_file ? "_pathdesk_files '*'" : ":";
}

/// The cases of one subcommand: values of options, then options, then places.
std::string completion_case(const CLI::App& part) {
  std::string values, options, places;
  for (const auto* option : shown_options(part, false)) {
    std::string pattern;
    for (const auto& name : names_of(*option)) {
      pattern += (pattern.empty() ? "" : "|") + name;
      options += (options.empty() ? "" : " ") + name;
    }
    if (!value_of(*option).empty())
      values += fmt::format("        {}) {}; return ;;\n", pattern, filler(part, *option));
  }
  for (const auto* option : shown_options(part, true)) {
    if (places.empty()) places = filler(part, *option);  // of several, all take the same
  }
  return fmt::format(
      "    {})\n      case $before in\n{}      esac\n      case $current in\n        -*) _pathdesk_words '{}' ;;\n"
      "        *) {} ;;\n      esac ;;\n",
      part.get_name(), values, options, places.empty() ? ":" : places);
}

constexpr std::string_view completion_functions = R"(_pathdesk_words() { COMPREPLY=($(compgen -W "$1" -- "$current")); }
_pathdesk_folders() { compopt -o filenames; COMPREPLY=($(compgen -d -- "$current")); }
# A list with commas: what is before the last one stays.
_pathdesk_list() {
  local done=
  [[ $current == *,* ]] && done=${current%,*},
  compopt -o nospace
  COMPREPLY=($(compgen -P "$done" -W "$1" -- "${current##*,}"))
}
# Folders, and files whose extension is any of those; if there are none, any file.
_pathdesk_files() {
  local IFS=$'\n' file
  compopt -o filenames
  COMPREPLY=($(compgen -d -- "$current"))
  for file in $(compgen -f -- "$current"); do
    [[ ! -d $file && ( $1 == '*' || "|$1|" == *"|${file##*.}|"* ) ]] && COMPREPLY+=("$file")
  done
  [[ ${#COMPREPLY[@]} -gt 0 ]] || COMPREPLY=($(compgen -f -- "$current"))
}
)";

}  // namespace

std::string manual_page(const CLI::App& app, const std::string& version) {
  const auto parts = parts_of(app);
  const auto& name = app.get_name();
  auto page = fmt::format(".TH {} 1 \"\" \"{} {}\" \"User Commands\"\n.SH NAME\n", upper(name), name, version);
  page += roff_line(name + " - analyses trajectories of molecular dynamics") + ".SH SYNOPSIS\n";
  for (const auto* part : parts) page += ".B " + roff_line(name) + roff_line(synopsis(*part)) + ".br\n";
  page += ".SH DESCRIPTION\n" + roff_text(app.get_description() + "\n") + ".SH OPTIONS\n";
  for (const auto* option : shown_options(app, false)) page += roff_option(*option);
  std::string shared;
  for (const auto* part : parts) {
    page += ".SH " + roff_line(upper(name + " " + part->get_name())) + roff_text(part->get_description() + "\n");
    for (const auto* option : shown_options(*part, true)) {
      page += ".TP\n.I " + roff_line(option->get_name(true)) + roff_text(option->get_description() + "\n");
    }
    for (const auto* option : shown_options(*part, false)) page += roff_option(*option);
    // What several have below their options stands once, at the end; that is what the first one has.
    const auto footer = part->get_footer();
    if (shared.empty()) shared = footer;
    if (footer != shared && !footer.empty()) page += ".PP\n" + roff_text(footer + "\n");
  }
  return page + ".SH SCRIPTS AND EXIT STATUS\n" + roff_text(shared + "\n");
}

std::string bash_completion(const CLI::App& app) {
  std::string parts, cases, options;
  for (const auto* part : parts_of(app)) {
    parts += (parts.empty() ? "" : " ") + part->get_name();
    cases += completion_case(*part);
  }
  for (const auto* option : shown_options(app, false)) {
    for (const auto& name : names_of(*option)) options += (options.empty() ? "" : " ") + name;
  }
  return fmt::format(
      "# Completion of {0} for bash. Made by {0}: changes here are lost.\n{1}_pathdesk() {{\n"
      "  local current=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD-1]}}\n"
      "  if [[ $COMP_CWORD -eq 1 ]]; then\n    _pathdesk_words '{2} {3}'\n    return\n  fi\n"
      "  case ${{COMP_WORDS[1]}} in\n{4}  esac\n}}\ncomplete -F _pathdesk {0}\n",
      app.get_name(), completion_functions, parts, options, cases);
}

}  // namespace pathstat::desk
