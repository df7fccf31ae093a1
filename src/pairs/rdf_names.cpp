#include "pairs/rdf_names.h"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_set>
#include <vector>

#include "catalogue/model_selection.h"
#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "state/analysis_settings.h"
#include "state/rdf_settings.h"
#include "trajectory/model_frame.h"

namespace pathstat {
namespace {

constexpr std::size_t most_names_a_model = 20;

std::vector<std::int32_t> atoms_of(std::int32_t model) {
  std::int32_t error = 0;
  return atoms_of_model(model, error, ModelAtoms::stored);
}

/// Collects distinct names until the room is used up.
class NameList {
 public:
  explicit NameList(std::span<Text<8>> room) : room_(room) {}
  bool full() const { return used_ == room_.size(); }
  std::int32_t count() const { return static_cast<std::int32_t>(used_); }
  void add(std::string_view name) {
    if (full() || trimmed(name).empty() || !seen_.insert(std::string(trimmed(name))).second) return;
    room_[used_++] = name;
  }

 private:
  std::span<Text<8>> room_;
  std::size_t used_ = 0;
  std::unordered_set<std::string> seen_;
};

void add_elements(const std::vector<std::int32_t>& atoms, NameList& names) {
  std::vector<std::int32_t> types(atoms.size());
  std::int32_t error = 0;
  kvd_type_(atoms, types, error);
  if (error != 0) return;
  std::unordered_set<std::int32_t> seen;
  for (const auto type : types) {
    if (names.full()) return;
    if (!seen.insert(type).second) continue;
    Text<8> symbol;
    kvd_acl_symbol_(type, symbol, error);
    if (error == 0) names.add(symbol);
  }
}

void add_fftypes(const std::vector<std::int32_t>& atoms, NameList& names) {
  std::int32_t error = 0;
  for (const auto atom : atoms) {
    if (names.full()) return;
    Text<8> label;
    kvd_atm_fftype_(atom, label, error);
    if (error == 0) names.add(label);
  }
}

std::vector<std::int32_t> models_in_question(std::string_view source, std::int32_t model) {
  std::int32_t error = 0;
  if (same_text(source, from_trajectory)) {
    std::int32_t valid = 0;
    kvd_validateoid_(model, valid, error);
    if (error == 0 && valid != 0) return {model};
  }
  std::int32_t root = 0;
  std::int32_t count = 0;
  kvd_root_(root, error);
  count_selected(root, model_class, count, error);
  if (error == 0 && count > 0) {
    std::vector<std::int32_t> models(static_cast<std::size_t>(count));
    kvd_sel_findselected_(root, model_class, models, count, error);
    models.resize(static_cast<std::size_t>(std::clamp<std::int64_t>(count, 0, std::ssize(models))));
    return models;
  }
  std::int32_t current = 0;
  kvd_mod_current_(current, error);
  if (error != 0 || current == 0) return {};
  return {current};
}

std::string joined(const std::vector<std::string>& names) {
  std::string list;
  for (const auto& name : names) {
    if (!list.empty()) list += ',';
    list += name;
  }
  return list;
}

}  // namespace

void rdf_sets_(std::int32_t model, std::int32_t type, std::span<Text<8>> names, std::int32_t& count,
               std::int32_t& status) {
  count = 0;
  status = names.empty() ? 1 : 0;
  if (status != 0) return;
  NameList found(names);
  switch (type) {
    case rdf_between::all_atoms:
      found.add("ALL");
      break;
    case rdf_between::selected:
      found.add("SELECTED");
      break;
    case rdf_between::elements:
      add_elements(atoms_of(model), found);
      break;
    case rdf_between::fftypes:
      add_fftypes(atoms_of(model), found);
      break;
    default:
      break;
  }
  count = found.count();
}

void update_rdf_range_(std::string_view source, std::int32_t model, std::int32_t type, TextField list,
                       std::int32_t& length, TextField name1, TextField name2, std::int32_t& status) {
  status = 0;
  std::vector<std::string> names;
  for (const auto each : models_in_question(source, model)) {
    std::array<Text<8>, most_names_a_model> room;
    std::int32_t count = 0;
    rdf_sets_(each, type, room, count, status);
    for (std::int32_t k = 0; k < count; ++k) names.push_back(room[static_cast<std::size_t>(k)].str());
  }
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  list.set(joined(names));
  length = std::max<std::int32_t>(1, static_cast<std::int32_t>(trimmed(list.view()).size()));
  const std::string first = names.empty() ? std::string() : names.front();
  for (const TextField name : {name1, name2}) {
    if (std::find(names.begin(), names.end(), std::string(trimmed(name.view()))) == names.end()) name.set(first);
  }
}

}  // namespace pathstat
