#include "correlation/correlation_cache.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include "catalogue/model_selection.h"
#include "coreapi/messages.h"
#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "correlation/frame_file.h"
#include "support/identifier_index.h"
#include "support/named_memory.h"
#include "support/parallel.h"
#include "support/searching.h"
#include "trajectory/frame_spacing.h"
#include "trajectory/front_end.h"
#include "trajectory/open_trajectory.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat {
namespace {

constexpr std::int32_t no_memory = -1;  ///< as the named blocks have it

bool flag(const OpenTrajectory& trajectory, std::int32_t which) {
  Logical value;
  std::int32_t status = 0;
  trj_lvalue_(trajectory.handle(), which, value, status);
  return status == 0 && value;
}

double number(const OpenTrajectory& trajectory, std::int32_t which) {
  double value = 0.0;
  std::int32_t status = 0;
  trj_dvalue_(trajectory.handle(), which, value, status);
  return value;
}

/// Identifiers of the selected atoms, each once, images by their parents; at the front of `list`, which has room for
/// twice the atoms selected. @return their number; 0 after a message if one has no identifier
std::size_t selected_identifiers(std::int32_t model, std::span<std::int32_t> list) {
  const auto parents = list.first(list.size() / 2);
  const auto selected = list.last(parents.size());
  std::int32_t found = 0;
  std::int32_t error = 0;
  kvd_sel_findselected_(model, atom_class, selected, found, error);
  const auto count = std::min(static_cast<std::size_t>(std::max(found, 0)), selected.size());
  kvd_per_periodicparent_(selected.first(count), parents.first(count), error);
  std::int32_t different = 0;
  iuniquenosort_(parents.first(count), parents.first(count), different);
  const auto objects = parents.first(static_cast<std::size_t>(different));
  const auto identifiers = selected.first(objects.size());
  kvd_id_(std::span<const std::int32_t>(objects), identifiers, error);
  if (std::ranges::any_of(identifiers, [](std::int32_t id) { return id < 1; })) {
    show_message("PATHSTAT_ERROR_42");
    return 0;
  }
  std::ranges::copy(identifiers, objects.begin());
  return objects.size();
}

/// Places, from 0, of the selected atoms among the moved ones.
/// @param status  0 or cache_status::selection_unusable, or that of an allocation
NamedBlock<std::int32_t> selected_places(std::int32_t model, std::span<const std::int32_t> moved,
                                         std::int32_t& status) {
  std::int32_t selected = 0;
  std::int32_t error = 0;
  count_selected(model, atom_class, selected, error);
  if (selected < 1) {
    status = cache_status::selection_unusable;
    return {};
  }
  NamedBlock<std::int32_t> list("trj_lst", std::int64_t{2} * selected, status);
  IdentifierIndex index;
  if (status == 0) index = IdentifierIndex(moved, status);
  if (status != 0) {
    show_message("PATHSTAT_ERROR_41");
    status = no_memory;
    return {};
  }
  const auto identifiers = list.span().first(selected_identifiers(model, list.span()));
  std::size_t kept = 0;
  for (const std::int32_t identifier : identifiers) {
    const std::int32_t place = index.find(identifier);
    if (place >= 0) list.span()[kept++] = place;
  }
  if (kept == 0) {
    if (!identifiers.empty()) show_message("PATHSTAT_ERROR_43");
    status = cache_status::selection_unusable;
    return {};
  }
  if (kept < identifiers.size()) {
    kvu_msg_argi_(static_cast<std::int32_t>(identifiers.size() - kept));
    show_message("PATHSTAT_MSG_40");
  }
  list.resize(static_cast<std::int64_t>(kept), status);
  return list;
}

/// What a frame passes through on its way into the cache; there is room for two, one that is read and one that is kept.
struct FrameArrays {
  NamedBlock<double> delivered;
  NamedBlock<double> x;
  NamedBlock<double> y;
  NamedBlock<double> z;

  FrameArrays(std::int64_t moved, std::int32_t& status) {
    delivered = NamedBlock<double>("PathStat/Corr/InData", 6 * moved, status);
    if (status == 0) x = NamedBlock<double>("PathStat/Corr/Outx", moved, status);
    if (status == 0) y = NamedBlock<double>("PathStat/Corr/Outy", moved, status);
    if (status == 0) z = NamedBlock<double>("PathStat/Corr/Outz", moved, status);
  }

  AxesOut axes(std::size_t atoms) const {
    return {x.span().first(atoms), y.span().first(atoms), z.span().first(atoms)};
  }

  std::span<double> room(std::int32_t frame) const {
    const auto one = delivered.span().size() / 2;
    return delivered.span().subspan(frame % 2 == 0 ? 0 : one, one);
  }
};

/// Splits the vectors of the atoms at these places by axis; of all atoms if there are none.
void split(std::span<const double> vectors, std::span<const std::int32_t> places, const AxesOut& out) {
  for (std::size_t k = 0; k < out.x.size(); ++k) {
    const auto at = 3 * (places.empty() ? k : static_cast<std::size_t>(places[k]));
    out.x[k] = vectors[at];
    out.y[k] = vectors[at + 1];
    out.z[k] = vectors[at + 2];
  }
}

/// Keeps each frame while the next one is read.
class FrameKeeper {
 public:
  FrameKeeper(FrameSink& cache, std::span<const std::int32_t> places, const AxesOut& axes)
      : cache_(cache), places_(places), axes_(axes) {}

  /// Begins with record k; the one before is finished.
  void keep(std::int32_t k, std::span<const double> vectors) {
    const auto work = [this, k, vectors](std::int64_t, std::size_t) {
      split(vectors, places_, axes_);
      kept_ = cache_.write(k, axes_);
    };
    if (axes_.x.size() < worth_a_thread) return work(0, 0);
    work_.emplace(1, work);
  }

  /// False if a frame could not be kept.
  bool finish() {
    if (work_) work_->finish();
    work_.reset();
    return kept_;
  }

 private:
  static constexpr std::size_t worth_a_thread = 2000;  ///< atoms; fewer are kept before another thread wakes up

  FrameSink& cache_;
  std::span<const std::int32_t> places_;
  AxesOut axes_;
  bool kept_ = true;
  std::optional<ParallelBlocks> work_;
};

/// Frames of a trajectory and what is wanted of them.
struct FrameRange {
  std::int32_t first;
  std::int32_t step;
  std::int32_t count;
  bool velocities;
  bool velocities_unusable;

  std::int32_t frame(std::int32_t k) const { return first + (k - 1) * step; }
};

/// Reads frame k and its vectors. @param status  0, that of velocities which are not to be had, or the reader's
/// @return false, after PATHSTAT_ERROR_93, if the frame cannot be read
bool read_frame(const OpenTrajectory& trajectory, const FrameRange& range, std::int32_t k, std::span<double> vectors,
                bool& velocities_present, std::int32_t& status) {
  trj_readframe_(trajectory.handle(), range.frame(k), status);
  if (status == 0 && range.velocities) {
    velocities_present = flag(trajectory, trajectory_key::frame_has_velocities);
    if (!velocities_present) status = cache_status::no_velocities;
    if (velocities_present && range.velocities_unusable) status = cache_status::velocities_unusable;
    if (status != 0) return true;
  }
  if (status == 0) {
    std::int32_t count = 0;
    trj_dvalue_(trajectory.handle(),
                range.velocities ? trajectory_key::movable_velocities : trajectory_key::movable_positions, vectors,
                count, status);
  }
  if (status != 0) show_message("PATHSTAT_ERROR_93");
  return status == 0;
}

/// Copies the frames, until one fails; parameters and status as those of setupcorrl_.
void copy_frames(const OpenTrajectory& trajectory, const FrameRange& range, const FrameArrays& arrays,
                 FrameKeeper& keeper, std::int32_t& frames_done, bool& velocities_present, double& frame_spacing,
                 std::int32_t& status) {
  FrameSpacing spacing;
  for (std::int32_t k = 1; k <= range.count; ++k) {
    if (!read_frame(trajectory, range, k, arrays.room(k), velocities_present, status)) {
      frames_done = k;
      if (k < range.count) status = cache_status::frame_unreadable;
    }
    if (status != 0) return;
    const bool even =
        spacing.add(number(trajectory, trajectory_key::time), number(trajectory, trajectory_key::time_step));
    frame_spacing = spacing.spacing();
    if (!even) {
      kvu_msg_argi_(range.frame(k - 1));
      kvu_msg_argi_(range.frame(k));
      show_message("PATHSTAT_ERROR_61");
      status = cache_status::uneven_spacing;
      return;
    }
    if (!keeper.finish()) {
      status = cache_status::not_written;
      return;
    }
    keeper.keep(k, arrays.room(k));
    frames_done = k;
  }
}

}  // namespace

void setupcorrl_(FrameSink& cache, std::string_view trajectory_file, std::int32_t model, std::int32_t& frames_done,
                 std::int32_t& atoms, bool& velocities_present, double& frame_spacing, bool want_velocities,
                 std::int32_t first, std::int32_t last, std::int32_t step, std::string_view selection,
                 std::int32_t& status) {
  frames_done = atoms = status = 0;
  frame_spacing = 0.0;
  velocities_present = true;
  const OpenTrajectory trajectory(trajectory_file, model, status);
  if (status == 0) status = trajectory.attach_status();
  if (status != 0) return;

  atoms = trajectory.integer(trajectory_key::movable_atoms, 0);
  const NamedBlock<std::int32_t> moved("thd_mvatmofst", atoms, status);
  if (status != 0) return show_message("PATHSTAT_ERROR_41");
  const FrameArrays arrays(atoms, status);
  if (status != 0) return show_message("PATHSTAT_ERROR_41");
  std::int32_t listed = 0;
  trj_ivalue_(trajectory.handle(), trajectory_key::movable_ids, moved.span(), listed, status);
  if (status == 0 && atoms < 1) status = cache_status::selection_unusable;
  if (status != 0) return;

  const bool selected = same_text(selection, "SELECTED");
  NamedBlock<std::int32_t> places;
  if (selected) places = selected_places(model, moved.span(), status);
  if (status != 0) return;
  const auto cached = selected ? static_cast<std::int32_t>(places.size()) : atoms;
  step = std::max(step, 1);
  const auto count = static_cast<std::int32_t>(std::max<std::int64_t>((std::int64_t{last} - first + step) / step, 0));
  status = cache.open(cached, count);
  if (status != 0) return;

  const FrameRange range{first, step, count, want_velocities, flag(trajectory, trajectory_key::velocities_unusable)};
  FrameKeeper keeper(cache, places.span(), arrays.axes(static_cast<std::size_t>(cached)));
  copy_frames(trajectory, range, arrays, keeper, frames_done, velocities_present, frame_spacing, status);
  if (status == 0 && !(keeper.finish() && cache.finish())) status = cache_status::not_written;
  if (status == 0) atoms = cached;
}

}  // namespace pathstat
