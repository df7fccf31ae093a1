#include "catalogue/model_selection.h"

#include <algorithm>
#include <cstddef>

#include "coreapi/object_counts.h"
#include "coreapi/operations.h"

namespace pathstat {

ModelSelection::ModelSelection(std::string_view models_label, std::string_view types_label, std::int32_t& status) {
  // Listed already: this runs inside a call of the command that holds the list.
  status = find_area(models_label).elements != nullptr ? 1 : 0;
  if (status != 0) return;
  std::int32_t root = 0;
  std::int32_t selected = 0;
  std::int32_t error = 0;
  kvd_root_(root, error);
  count_selected(root, model_class, selected, error);
  if (error != 0) status = error;
  if (status != 0) return;
  is_current_model_ = selected < 1;
  models_ = NamedBlock<std::int32_t>(models_label, std::max(selected, 1), status);
  if (status != 0) return;
  std::int32_t found = 0;
  if (is_current_model_) {
    kvd_mod_current_(models_.span()[0], error);
    found = models_.span()[0] == 0 ? 0 : 1;
  } else {
    kvd_sel_findselected_(root, model_class, models_.span(), found, error);
  }
  models_.resize(std::clamp(found, 0, std::max(selected, 1)), status);
  if (status != 0) return;
  types_ = NamedBlock<std::int32_t>(types_label, size(), status);
  if (status != 0) return;
  for (std::size_t k = 0; k < models_.size(); ++k) kvd_mod_periodictype_(models()[k], types_.span()[k], error);
}

std::int32_t ModelSelection::count_of(std::int32_t periodic_type) const {
  return static_cast<std::int32_t>(std::ranges::count(periodic_types(), periodic_type));
}

}  // namespace pathstat
