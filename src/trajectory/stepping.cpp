#include "trajectory/stepping.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "coreapi/operations.h"
#include "plots/graph.h"
#include "plots/saved_handles.h"
#include "state/saved_handles.h"
#include "support/text_field.h"
#include "trajectory/frame_cache.h"

namespace pathstat {
namespace {

/// The entry to show next; none where stepping stops.
std::optional<std::int32_t> next_entry(std::int32_t current, std::int32_t entries, std::int32_t& step,
                                       std::string_view mode) {
  const std::int32_t next = current + step;
  if (next >= 1 && next <= entries) return next;
  if (mode.starts_with("LOOP")) return next < 1 ? entries : 1;
  if (!mode.starts_with("REVERSE")) return std::nullopt;
  step = -step;
  const std::int32_t turned = current + step;
  if (turned < 1 || turned > entries) return std::nullopt;
  return turned;
}

}  // namespace

void shownextframe_(std::int32_t& current, std::int32_t entries, std::int32_t& step, std::string_view mode,
                    bool recalculate_bonds, std::int32_t& status) {
  status = 0;
  const auto next = next_entry(current, entries, step, mode);
  if (!next) {
    kvu_gui_supressrepeats_();
    return;
  }
  showtrjframe_(*next, recalculate_bonds, status);
  if (status != 0) return;
  highlightpoints_(*next, status);
  kvg_redisplaymodels_(0, 0);
  current = *next;
}

void highlightpoints_(std::int32_t frame, std::int32_t& status) {
  constexpr std::int32_t highlight_mark = 201;
  status = 0;
  graphint_i_.highlight_frame = frame;
  if (!graphint_l_.graph_interaction) return;
  // A command that runs inside one of the calls below may save handles, which moves them.
  const SavedHandles saved = saved_data_sets();
  const std::vector<Text<80>> names(saved.names.begin(), saved.names.end());
  const std::vector<std::int32_t> versions(saved.versions.begin(), saved.versions.end());
  if (names.empty()) return;
  const PlotTransaction transaction;
  std::int32_t error = 0;
  kvp_dat_demarkglobal_(frame_marker, error);
  for (std::size_t k = 0; k < names.size(); ++k) {
    std::int32_t handle = 0;
    kvp_han_writespecific_(names[k], versions[k], data_set_kind, handle, error);
    if (error != 0) continue;
    if (k == 0) {
      std::int32_t points = 0;
      kvp_dat_pointcount_(handle, points, error);
      graphint_i_.highlight_frame = std::max(1, std::min(graphint_i_.highlight_frame, points));
    }
    kvp_dat_mark_(frame_marker, handle, highlight_mark, graphint_i_.highlight_frame, error);
  }
}

}  // namespace pathstat
