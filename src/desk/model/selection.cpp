#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

#include "desk/model/data_model.h"

namespace pathstat::desk {

void DataModel::set_selected_atoms(ModelObject& model, std::vector<std::uint8_t> flags) {
  model.atom_selected = std::move(flags);
  model.selected_atoms =
      static_cast<std::size_t>(std::count(model.atom_selected.begin(), model.atom_selected.end(), 1));
}

std::string DataModel::select_models(std::span<const std::string> names) {
  if (names.empty()) return "the models to select are all, none, or names of models";
  const bool all = names.size() == 1 && names[0] == "all";
  const bool none = names.size() == 1 && names[0] == "none";
  std::set<std::int32_t> chosen;
  for (const auto& name : all || none ? std::span<const std::string>{} : names) {
    const auto before = chosen.size();
    for (const auto* object : models()) {
      if (object->data.name == name) chosen.insert(object->id);
    }
    if (chosen.size() == before) return fmt::format("there is no model {}", name);
  }
  for (auto* object : models()) object->selected = all || chosen.contains(object->id);
  return {};
}

std::size_t DataModel::selected_atoms() const {
  std::size_t sum = 0;
  for (const auto* object : models()) sum += object->selected_atoms;
  return sum;
}

std::size_t DataModel::selected_models() const {
  const auto list = models();
  return static_cast<std::size_t>(std::count_if(list.begin(), list.end(), [](const auto* m) { return m->selected; }));
}

}  // namespace pathstat::desk
