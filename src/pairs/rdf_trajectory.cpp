#include <algorithm>
#include <cstddef>
#include <vector>

#include "coreapi/interrupt.h"
#include "coreapi/messages.h"
#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "pairs/rdf_atoms.h"
#include "pairs/rdf_frame.h"
#include "pairs/rdf_sources.h"
#include "state/analysis_settings.h"
#include "state/rdf_settings.h"
#include "trajectory/frame_cell.h"
#include "trajectory/frame_places.h"
#include "trajectory/front_end.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat {
namespace {

void read_model(const RdfRequest& request, std::int32_t& status) {
  std::int32_t error = 0;
  count_atoms(request.model, with_images, gr_i_.model_atoms, error);
  if (error == 0) kvd_mod_periodictype_(request.model, gr_i_.periodic_type, error);
  if (error != 0) status = 1;
  if (status != 0 || request.set_type != rdf_between::selected) return;
  std::int32_t selected = 0;
  count_selected(request.model, atom_class, selected, error);
  if (error != 0 || selected < 1) status = refuse("PATHSTAT_ERROR_72");
}

void open(const RdfRequest& request, RdfBlocks& blocks, std::int32_t& status) {
  blocks.trajectory.emplace(request.file, request.model, status);
  if (status == 0) gr_i_.trj_handle = blocks.trajectory->handle();
  if (status == 0) status = blocks.trajectory->attach_status();
  if (status != 0) return;
  std::int32_t type = 0;
  trj_ivalue_(gr_i_.trj_handle, trajectory_key::periodic_type, type, status);
  if (status == 0 && type != gr_i_.periodic_type) status = refuse("PATHSTAT_ERROR_86");
  if (status == 0) trj_lvalue_(gr_i_.trj_handle, trajectory_key::cell_varies, gr_l_.cell_varies, status);
}

/// Finds where in a frame each listed atom stands, with room for the model's atoms, fixed ones behind those that move.
void find_places(RdfBlocks& blocks, std::int32_t& status) {
  blocks.index_list.make(gr_i_.atom_count, status);
  if (status != 0) return;
  const FramePlaces places(*blocks.trajectory, blocks.at_oids.span(), blocks.index_list.span(),
                           {"PathStat/gr/TrjAtIds", "PathStat/gr/AtIds", "PathStat/gr/iWork1", "PathStat/gr/iWork2"},
                           status);
  if (status == 0 && places.lacks_movable()) status = refuse("PATHSTAT_ERROR_87");
  gr_i_.moved_count = places.moved();
  blocks.xyz_in.make(3 * std::max<std::int64_t>(places.size(), gr_i_.model_atoms), status);
  if (status == 0) places.place_fixed(blocks.xyz_in.span(), status);
}

/// The frame that is counted and the one that is made ready meanwhile.
class TwoFrames {
 public:
  TwoFrames(const RdfRequest& request, RdfBlocks& blocks)
      : request_(request),
        blocks_(blocks),
        moved_(3 * static_cast<std::size_t>(gr_i_.moved_count)),
        spare_xyz_(blocks.xyz.span().size()) {
    blocks.configuration.xyz = blocks.xyz.span();
    spare_.xyz = spare_xyz_;
  }

  /// Reads a frame and makes it ready.
  /// @param number  of the frames of the run, from 1
  void read(std::int64_t frame, std::int32_t number) {
    RdfConfiguration& configuration = of(number);
    std::int32_t& status = configuration.status;
    trj_readframe_(gr_i_.trj_handle, static_cast<std::int32_t>(frame), status);
    std::int32_t count = 0;
    if (status == 0 && !moved_.empty()) {
      trj_dvalue_(gr_i_.trj_handle, trajectory_key::movable_positions, moved_, count, status);
    }
    if (status == 0 && gr_i_.periodic_type != periodic_type::none) {
      configuration.cell = cell_of_frame(gr_i_.trj_handle, status);
    }
    if (status == 0) prepare_rdf_configuration(request_, number, moved_, blocks_, configuration);
  }

  /// Counts the frame that was read last. @param read_next  while others count it
  void count(std::int32_t number, std::int32_t& status, const std::function<void()>& read_next) {
    RdfConfiguration& configuration = of(number);
    if (request_.components) std::ranges::copy(moved_, blocks_.xyz_in.span().begin());
    gr_d_.a = configuration.cell.a;
    gr_d_.b = configuration.cell.b;
    gr_d_.c = configuration.cell.c;
    count_rdf_configuration(request_, number, blocks_, configuration, status, read_next);
  }

 private:
  RdfConfiguration& of(std::int32_t number) { return number % 2 == 0 ? spare_ : blocks_.configuration; }

  const RdfRequest& request_;
  RdfBlocks& blocks_;
  std::vector<double> moved_;
  std::vector<double> spare_xyz_;
  RdfConfiguration spare_;
};

}  // namespace

void initrdftrj_(const RdfRequest& request, RdfBlocks& blocks, std::int32_t& status) {
  gr_i_.trj_handle = -1;
  status = 0;
  read_model(request, status);
  if (status == 0) list_rdf_atoms(request, request.model, trajectory_refusals, blocks, status);
  if (status == 0) open(request, blocks, status);
  if (status == 0) find_places(blocks, status);
  blocks.xyz.make(3 * std::int64_t{gr_i_.atom_count}, status);
  if (status == 0) set_rdf_norm(request, blocks, status);
  start_rdf_mean(gr_i_.periodic_type);
}

void dordftrj_(const RdfRequest& request, RdfBlocks& blocks, double& scale, double& offset, std::int32_t& status) {
  status = request.first < 1 || request.step < 1 ? 1 : 0;
  if (status != 0) return;
  start_rdf_mean(gr_i_.periodic_type);
  tell_progress(0.0F);
  const std::int32_t between_shows =
      std::max<std::int32_t>(1, static_cast<std::int32_t>(request.total_frames / (std::int64_t{50} * request.step)));
  std::int32_t done = 0;
  TwoFrames frames(request, blocks);
  for (std::int64_t frame = request.first; frame <= request.last && !rdf_interrupted(done); frame += request.step) {
    if (done == 0) frames.read(frame, 1);
    const std::int64_t next = frame + request.step;
    frames.count(done + 1, status, [&] {
      if (next <= request.last) frames.read(next, done + 2);
    });
    if (status != 0) return;
    ++done;
    show_rdf_progress(request, blocks, done, request.total_frames / request.step, between_shows,
                      frame + request.step > request.last);
  }
  scale = done > 0 ? blocks.pairs / (gr_d_.mean_volume * gr_i_.model_atoms) : 0.0;
  offset = static_cast<double>(gr_i_.self_count) / gr_i_.model_atoms;
}

}  // namespace pathstat
