#include "desk/advice/advice.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <utility>

#include "desk/advice/limits.h"
#include "desk/advice/nearest.h"
#include "desk/advice/trajectory_advice.h"
#include "desk/advice/word_table.h"
#include "desk/script/answer_text.h"
#include "desk/script/script.h"

namespace pathstat::desk {
namespace {

using Words = std::vector<std::string>;

/// A command with what is known of its word.
struct Case {
  const EndedCommand& command;
  const CommandHelp& row;
  const ArgumentShape shape;
  const Words words;
  Present& present;

  bool failed() const { return command.status != 0; }
  bool told() const { return !command.messages.empty(); }
};

/// What the word of a command takes.
std::string takes(const Case& now) {
  const auto& arguments = now.row.arguments;
  const auto* const article = arguments.starts_with("integer") ? "an " : arguments.starts_with("number") ? "a " : "";
  return fmt::format("{} takes {}{}", now.command.word, article, arguments);
}

Words all_command_words() {
  Words words;
  for (const auto& row : command_helps()) words.emplace_back(row.word);
  return words;
}

std::string in_capitals(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
  return text;
}

std::string about_unknown_word(std::string_view word) {
  const auto known = all_command_words();
  const auto name = nearest(word, known);
  if (name.empty()) return "pathdesk words lists all words";
  if (same_in_any_case(name, word)) return fmt::format("command words are written in capitals: {}", name);
  return fmt::format("did you mean {}?", name);
}

// What a word's argument is held against.

/// An entry of a list of choices: without blanks, and without the marks of one that is not available.
std::string unmarked(const std::string& entry) {
  auto text = without_blanks(entry);
  if (text.size() >= 2 && text.front() == '<' && text.back() == '>')
    text = without_blanks(text.substr(1, text.size() - 2));
  return text;
}

Words offered_by(Present& present, const std::string& word) {
  Words names;
  for (const auto& entry : items_of(present.answer(word).ranges)) names.push_back(unmarked(entry));
  return names;
}

bool has(std::span<const std::string> names, std::string_view name) {
  return std::any_of(names.begin(), names.end(), [&](const auto& each) { return same_in_any_case(each, name); });
}

/// True if the process has said something about the text.
bool is_told_of(std::span<const Message> messages, std::string_view text) {
  for (const auto& message : messages) {
    for (const auto& argument : message.arguments) {
      const auto* name = std::get_if<std::string>(&argument);
      if (name && same_in_any_case(without_blanks(*name), text)) return true;
    }
  }
  return false;
}

/// A name with blanks that stood without its quotes: the next words joined, if that is offered.
std::string unquoted_name(const Words& words, std::size_t at, std::span<const std::string> offered) {
  std::string joined = words[at];
  for (auto k = at + 1; k < words.size(); ++k) {
    joined += " " + words[k];
    if (has(offered, joined)) return joined;
  }
  return {};
}

/// Names that SELECT_PROPERTIES and its like do not know, which they pass over.
void check_names(const Case& now, std::vector<std::string>& all) {
  const std::string word(now.command.word);
  if (now.failed() || now.shape.form != ArgumentForm::names || now.shape.most <= 2) return;
  const auto offered = offered_by(now.present, word);
  bool odd = false;
  for (std::size_t k = 0; k < now.words.size(); ++k) {
    const auto name = unmarked(now.words[k]);
    if (has(offered, name)) continue;
    odd = true;
    if (is_told_of(now.command.messages, name)) continue;
    if (const auto whole = unquoted_name(now.words, k, offered); !whole.empty()) {
      all.push_back(fmt::format("a name with blanks stands in quotes: {} \"{}\"", word, whole));
      k += static_cast<std::size_t>(std::count(whole.begin(), whole.end(), ' '));
      continue;
    }
    const auto meant = did_you_mean(name, offered);
    all.push_back(fmt::format("{} does not know \"{}\"{}", word, name,
                              meant.empty() ? "; @request " + word + " lists the names" : ": " + meant));
  }
  if (odd && now.present.answer(word).values.empty()) all.emplace_back("nothing is selected now");
}

void check_choice(const Case& now, std::vector<std::string>& all) {
  if (!now.failed() || now.words.empty()) return;
  const auto listed = listed_values(now.row.arguments);
  if (listed.empty() || std::find(listed.begin(), listed.end(), now.words[0]) != listed.end()) return;
  const auto meant = did_you_mean(now.words[0], listed);
  all.push_back(takes(now) + (meant.empty() ? "" : "; " + meant));
}

/// PROPERTY, which takes a name in capitals.
void check_property(const Case& now, std::vector<std::string>& all) {
  if (now.command.word != "PROPERTY" || !now.failed() || now.words.empty()) return;
  Words names;
  for (const auto& name : offered_by(now.present, "SELECT_PROPERTIES")) names.push_back(in_capitals(name));
  const auto meant = did_you_mean(now.words[0], names);
  all.push_back(fmt::format("no property is called \"{}\" in capitals{}, and none is selected now", now.words[0],
                            meant.empty() ? "" : ": " + meant));
}

void check_missing(const Case& now, std::vector<std::string>& all) {
  constexpr std::int32_t argument_is_missing = 1005;
  const bool missing = now.words.empty() || now.command.status == argument_is_missing;
  if (!now.failed() || !missing || now.shape.most == 0) return;
  all.push_back(takes(now));
}

// Numbers.

/// Half of the last digit that a number is written with, so that two that are shown the same count as the same.
double half_last_digit(std::string_view text) {
  int decimals = 0, exponent = 0;
  if (const auto at = text.find_first_of("eE"); at != std::string_view::npos) {
    auto digits = text.substr(at + 1);
    if (digits.starts_with('+')) digits.remove_prefix(1);
    exponent = static_cast<int>(number_in(digits).value_or(0));
    text = text.substr(0, at);
  }
  if (const auto point = text.find('.'); point != std::string_view::npos)
    decimals = static_cast<int>(text.size() - point) - 1;
  return 0.5 * std::pow(10.0, exponent - decimals);
}

/// How far a number may be from what was asked for without being another one: times are those of frames, a cut-off
/// ends with a bin.
double grain_of(const Case& now) {
  const bool is_cutoff = now.command.word == "RDF_CUTOFF";
  const auto* of = takes_time(now.row) ? "INCREMENT_TIME" : is_cutoff ? "RDF_INTERVAL" : nullptr;
  return of ? now.present.number(of).value_or(0) : 0;
}

bool is_number_form(ArgumentForm form) { return form == ArgumentForm::integer || form == ArgumentForm::number; }

void check_number(const Case& now, std::vector<std::string>& all) {
  if (!is_number_form(now.shape.form) || now.words.empty()) return;
  const std::string word(now.command.word);
  const auto asked = number_in(now.words[0]);
  if (!asked) return;
  auto reason = beyond_limits(word, *asked, now.present);
  if (!now.failed()) {
    const auto text = now.present.text(word);
    const auto taken = number_in(text);
    const bool differs = taken && std::abs(*taken - *asked) > grain_of(now) + 1.01 * half_last_digit(text);
    if (differs)
      reason =
          fmt::format("{} is {:.6g} now, not {:.6g}{}{}", word, *taken, *asked, reason.empty() ? "" : ": ", reason);
  } else if (reason.empty() && *asked <= 0 && !now.told()) {
    reason = fmt::format("{} must be above 0", word);
  }
  if (!reason.empty()) all.push_back(std::move(reason));
}

/// A word that is about frames, before there are any, or about their times where they have none. @return true if so
bool check_frames(const Case& now, std::vector<std::string>& all) {
  if (!now.failed() || now.told() || !is_number_form(now.shape.form)) return false;
  const bool about_frames = now.command.word.find("FRAME") != std::string_view::npos || takes_time(now.row) ||
                            now.command.word.ends_with("_NO");
  if (!about_frames) return false;
  if (!now.present.loaded()) {
    all.emplace_back("no trajectory is loaded: load one with TRAJECTORY first");
    return true;
  }
  if (!takes_time(now.row) || now.present.has_times()) return false;
  const auto by_number = std::string(now.command.word.substr(0, now.command.word.rfind("_TIME"))) + "_NO";
  all.push_back(fmt::format("the frames of this trajectory carry no times{}",
                            find_command_help(by_number) ? ": use " + by_number : std::string{}));
  return true;
}

// Analyses.

/// An analysis whose result another one works on later.
struct KeptResult {
  std::string_view made_by, used_by, name, atoms_word;
};
constexpr std::array kept_results{
    KeptResult{"MSD", "LINEAR_FIT", "displacement", "MSD_ATOMS"},
    KeptResult{"VAC", "POWER_SPECTRUM", "velocity autocorrelation", "VAC_ATOMS"},
    KeptResult{"RDF", "STRUCTURE_FACTOR", "radial distribution", ""},
};

bool is_of_models(const KeptResult& kept, Present& present) {
  return kept.made_by == "RDF" &&
         (present.text("ANALYSIS_INPUT_SOURCE") != "TRAJECTORY" || present.text("RDF_FOR") != "TRAJECTORY");
}

std::string atoms_in_words(const KeptResult& kept, Present& present) {
  const auto set = kept.atoms_word.empty() ? present.text("RDF_BETWEEN") : present.text(std::string(kept.atoms_word));
  if (set == "SELECTED") return fmt::format("the {} selected atoms", present.selected_atoms());
  if (set == "ALL" || set == "ALL ATOMS") return "all atoms";
  Words names;
  for (const auto& value : present.answer("RDF_TYPE").values) names.push_back(without_blanks(value));
  return names.size() == 2 ? fmt::format("{} and {}", names[0], names[1]) : set;
}

/// "all atoms, frames 1 to 200", as an analysis that runs now takes them.
std::string what_of(const KeptResult& kept, Present& present) {
  if (is_of_models(kept, present)) return atoms_in_words(kept, present) + ", models and no trajectory";
  auto text = fmt::format("{}, frames {} to {}", atoms_in_words(kept, present), present.text("FIRST_FRAME_NO"),
                          present.text("LAST_FRAME_NO"));
  if (const auto step = present.text("INCREMENT_NO"); step != "1") text += " in steps of " + step;
  return text;
}

void check_models(const Case& now, std::vector<std::string>& all) {
  if (now.command.word != "RDF" || now.told() || !is_of_models(kept_results[2], now.present)) return;
  const bool no_trajectory = !now.present.loaded();
  if (now.failed()) {
    all.emplace_back(no_trajectory
                         ? "no trajectory is loaded, and there is no selected model either: load one with TRAJECTORY"
                         : "RDF works on selected models now, and none is selected: set ANALYSIS_INPUT_SOURCE and "
                           "RDF_FOR to TRAJECTORY");
  } else {
    all.push_back(fmt::format("this is the radial distribution of models as they are{}",
                              no_trajectory ? ": no trajectory is loaded"
                                            : ", not of the trajectory: ANALYSIS_INPUT_SOURCE and RDF_FOR say so"));
  }
}

void check_pairs_of_frames(const Case& now, std::vector<std::string>& all) {
  const auto& word = now.command.word;
  if (word != "MSD" && word != "VAC" && word != "DAC" && word != "DAC_POWER_SPECTRUM") return;
  if (now.present.loaded() && now.present.frames_in_range() == 1.0) {
    all.emplace_back("the range has one frame: there is nothing to correlate");
  }
}

void check_needs(const Case& now, std::vector<std::string>& all) {
  constexpr std::int32_t below_range = 1001, above_range = 1002;
  const bool out_of_range = now.command.status == below_range || now.command.status == above_range;
  if (!now.failed() || (now.told() && !out_of_range) || !all.empty()) return;
  if (!out_of_range && !now.row.needs.empty()) {
    all.push_back(fmt::format("{} needs: {}", now.command.word, now.row.needs));
  } else if (out_of_range || is_number_form(now.shape.form)) {
    all.push_back(takes(now));
  }
}

bool has_key(const Case& now, std::string_view key) {
  const auto& messages = now.command.messages;
  return std::any_of(messages.begin(), messages.end(), [&](const Message& message) { return message.key == key; });
}

void check_trajectory(const Case& now, std::vector<std::string>& all) {
  if (now.command.word != "TRAJECTORY" || now.words.empty()) return;
  if (now.failed()) {
    if (auto text = why_not_loaded(now.words[0], now.present.model_atoms()); !text.empty())
      all.push_back(std::move(text));
  }
  if (has_key(now, "PATHSTAT_ERROR_47")) all.emplace_back("the file breaks off inside its first frame");
  const auto frames = now.present.frames_in_file();
  if (!now.failed() && has_key(now, "PATHSTAT_WARN_7") && frames) {
    all.push_back(fmt::format("{} whole frame{} left of it", *frames, *frames == 1 ? " is" : "s are"));
  }
}

/// What is made of charges where there are none: a zero that looks like a result.
void check_charges(const Case& now, std::vector<std::string>& all) {
  const auto& word = now.command.word;
  const bool names = (word == "SELECT_PROPERTIES" || word == "SELECT_FLUCTUATIONS") &&
                     std::any_of(now.words.begin(), now.words.end(), [](std::string_view name) {
                       return name.starts_with("Dipole") || name.starts_with("Dielectric");
                     });
  if (!names && word != "DAC" && word != "DAC_POWER_SPECTRUM") return;
  if (now.present.loaded() && now.present.model_atoms() > 0 && !now.present.charged()) {
    all.emplace_back("no atom of the model has a charge: dipoles, and what is made of them, mean nothing");
  }
}

void check_reset(const Case& now, std::vector<std::string>& all) {
  constexpr std::int32_t declined = -1;
  if (now.command.word == "RESET" && now.command.status == declined)
    all.emplace_back("its question was not answered with Reset: everything is as it was");
}

constexpr std::array checks{check_names,      check_choice, check_property, check_missing,
                            check_trajectory, check_number, check_models,   check_pairs_of_frames,
                            check_charges,    check_reset,  check_needs};

}  // namespace

std::vector<Advice> Adviser::about(const EndedCommand& command) {
  const auto* row = find_command_help(command.word);
  if (!row) return {{MessageKind::warning, about_unknown_word(command.word)}};
  Present present(sources_);
  const Case now{command, *row, argument_shape(*row), words_of(command.arguments), present};
  auto warnings = oddities(command.word, command.arguments);
  if (!check_frames(now, warnings)) {
    for (const auto& check : checks) check(now, warnings);
  }
  std::vector<Advice> all;
  all.reserve(warnings.size());
  for (auto& text : warnings) all.push_back({MessageKind::warning, std::move(text)});
  if (now.failed()) return all;

  keep_result(command.word, present);
  for (std::size_t k = 0; k < kept_results.size(); ++k) {
    const auto& kept = kept_results[k];
    if (command.word == kept.used_by && !results_[k].empty()) {
      all.push_back({MessageKind::note, fmt::format("{}: of the {} of {}", kept.used_by, kept.name, results_[k])});
    }
  }
  // The setting of a cut-off has been judged above; one that stood before the model came is judged where it is used.
  if (command.word != "RDF" && command.word != "RDF_CUTOFF") return all;
  const auto told = std::exchange(told_cutoff_, present.number("RDF_CUTOFF").value_or(0));
  if (command.word != "RDF" || told == told_cutoff_) return all;
  if (auto text = beyond_limits("RDF_CUTOFF", told_cutoff_, present); !text.empty())
    all.push_back({MessageKind::warning, "RDF_CUTOFF: " + text});
  return all;
}

void Adviser::note_interrupted(std::string_view word) {
  Present present(sources_);
  keep_result(word, present);
}

void Adviser::keep_result(std::string_view word, Present& present) {
  for (std::size_t k = 0; k < kept_results.size(); ++k) {
    if (word == kept_results[k].made_by) results_[k] = what_of(kept_results[k], present);
  }
}

std::string Adviser::made_of(std::string_view word) const {
  for (std::size_t k = 0; k < kept_results.size(); ++k) {
    if (word == kept_results[k].made_by || word == kept_results[k].used_by) return results_[k];
  }
  return {};
}

std::optional<std::string> constant_in_words(const Message& message) {
  constexpr double rounding = 1e-12;
  if (message.key != "PATHSTAT_MSG_61" || message.arguments.size() < 2) return std::nullopt;
  const auto* mean = std::get_if<double>(&message.arguments[0]);
  const auto* deviation = std::get_if<double>(&message.arguments[1]);
  if (!mean || !deviation || *deviation <= 0 || *deviation >= rounding * std::abs(*mean)) return std::nullopt;
  return fmt::format("  constant           {:>#14.7g}\n  (its spread of {:.1g} is rounding alone)", *mean, *deviation);
}

}  // namespace pathstat::desk
