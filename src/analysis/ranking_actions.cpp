#include "analysis/ranking_actions.h"

#include <cstddef>

#include "catalogue/catalogue.h"
#include "extraction/extraction.h"
#include "reports/ranking.h"
#include "state/analysis_settings.h"
#include "state/trajectory_frames.h"

namespace pathstat::actions {
namespace {

constexpr std::int32_t highest = 1;
constexpr std::int32_t lowest = -1;

std::int32_t rank_properties(std::int32_t direction) {
  std::int32_t result = 0;
  datatodisk_(trj_frames_c_.trj_file_name, trj_gui_c_.input_source, "PROPERTIES", result);
  for (std::size_t row = 0; row < property_table().size(); ++row) {
    const CatalogueTable table = property_table();
    if (!table.selected[row] || !table.on_disk[row]) continue;
    std::int32_t ranked = 0;
    calcrank_(static_cast<std::int32_t>(row) + 1, direction, ranked);
    if (result == 0) result = ranked;
  }
  return result;
}

}  // namespace

std::int32_t find_extrema() { return rank_properties(trj_gui_c_.extrema_kind == "HIGHEST" ? highest : lowest); }
std::int32_t find_maxima() { return rank_properties(highest); }
std::int32_t find_minima() { return rank_properties(lowest); }

}  // namespace pathstat::actions
