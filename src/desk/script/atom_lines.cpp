#include "desk/script/atom_lines.h"

#include <fmt/format.h>

#include <span>
#include <utility>

#include "desk/advice/nearest.h"
#include "desk/model/marked_measure.h"
#include "desk/report/model_text.h"

namespace pathstat::desk {
namespace {

std::string atoms_are(std::size_t count) { return count == 1 ? "1 atom is" : fmt::format("{} atoms are", count); }

}  // namespace

AtomLines::AtomLines(DataModel& model, std::function<void(const std::string& text)> tell,
                     std::function<void(std::string text)> warn)
    : model_(model), tell_(std::move(tell)), warn_(std::move(warn)) {}

std::string AtomLines::select(const ScriptLine& line) {
  tell_notes(select_atoms(model_, *line.selection));
  tell_(atoms_are(model_.selected_atoms()) + " selected");
  return {};
}

std::string AtomLines::name_group(const ScriptLine& line) {
  const auto& name = line.words[0];
  groups_.insert_or_assign(name, line.selection);
  const auto models = model_.models();
  auto chosen = chosen_atoms(model_, models, *line.selection);
  tell_notes(std::move(chosen.notes));
  tell_(models.empty() ? fmt::format("The group {} will choose from the models that come", name)
                       : fmt::format("{} in the group {}", atoms_are(chosen.count), name));
  return {};
}

/// Words of a selection that fit no atom are seldom meant.
void AtomLines::tell_notes(std::vector<std::string> notes) {
  for (auto& note : notes) warn_(std::move(note));
}

/// Why words are no measure although groups have given way to their atoms.
std::string AtomLines::why_no_measure(const std::vector<std::string>& words,
                                      const std::vector<std::string>& replaced) const {
  const auto known = group_names(groups_);
  const auto before = words_before_atoms(words);
  for (const auto& word : std::span(words).subspan(before)) {
    if (!names_group(word) || groups_.contains(word)) continue;
    const auto meant = did_you_mean(word, known);
    return fmt::format("there is no group {}{}{}", word, meant.empty() ? "" : "; ", meant);
  }
  return fmt::format("these are {} atoms, which a {} does not take", replaced.size() - before, words[0]);
}

std::string AtomLines::measure(const std::vector<std::string>& words) {
  auto* model = model_.model(model_.current_model());
  if (!model) return no_model;
  const auto replaced = with_groups_replaced(model_, *model, words, groups_);
  if (!replaced.problem.empty()) return fmt::format("{}, too many or too few for a measure", replaced.problem);
  if (!is_measure(replaced.words)) return why_no_measure(words, replaced.words);
  auto [monitor, problem] = marked_measure(model->data, replaced.words);
  if (problem.empty() && !model_.add_monitor(*model, std::move(monitor))) problem = "there are too many objects";
  if (problem.empty()) tell_measure(model->data, model->data.monitors.size() - 1);
  return problem;
}

void AtomLines::tell_measure(const MolecularModel& model, std::size_t place) {
  tell_(fmt::format("Measure {}: {}", place + 1, measure_text(model, model.monitors[place])));
}

std::string AtomLines::list_measures() {
  const auto* model = model_.model(model_.current_model());
  if (!model) return no_model;
  const auto count = model->data.monitors.size();
  if (count == 0) tell_(fmt::format("The model {} has no measures.", model->data.name));
  for (std::size_t k = 0; k < count; ++k) tell_measure(model->data, k);
  return {};
}

std::string AtomLines::remove_measures(const std::string& which) {
  auto* model = model_.model(model_.current_model());
  if (!model) return no_model;
  const auto count = model->data.monitors.size();
  const auto number = which == "all" ? 0 : static_cast<std::size_t>(std::stoi(which));
  if (number > count)
    return fmt::format("there is no measure {}; the model {} has {}", number, model->data.name, count);
  for (auto k = count; k > 0; --k) {
    if (number == 0 || k == number) model_.remove_monitor(*model, k - 1);
  }
  return {};
}

}  // namespace pathstat::desk
