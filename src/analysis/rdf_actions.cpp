#include "analysis/rdf_actions.h"

#include "analysis/analysis_state.h"
#include "pairs/radial_distribution.h"
#include "pairs/rdf_names.h"
#include "pairs/structure_factor.h"
#include "plots/graph.h"
#include "state/analysis_settings.h"
#include "state/correlation_settings.h"
#include "state/rdf_settings.h"
#include "state/trajectory_frames.h"

namespace pathstat::actions {

std::int32_t rdf() {
  Text<8> name1 = trj_rdf_c_.rdf_name_1, name2 = trj_rdf_c_.rdf_name_2;
  std::int32_t status = 0;
  update_rdf_range_(rdf_source(), trj_gui_i_.trajectory_model, trj_rdf_i_.rdf_set_type, trj_rdf_c_.rdf_name_list,
                    trj_rdf_i_.rdf_name_list_length, name1, name2, status);
  const RdfRequest request{
      .model = trj_gui_i_.trajectory_model,
      .source = rdf_source(),
      .set_type = trj_rdf_i_.rdf_set_type,
      .name1 = name1.view(),
      .name2 = name2.view(),
      .normalization = trj_rdf_c_.rdf_normalization.view(),
      .components = trj_gui_l_.rdf_components,
      .bins = trj_rdf_i_.rdf_bins,
      .interval = trj_rdf_d_.rdf_interval,
      .cutoff = trj_rdf_d_.rdf_cutoff,
      .file = trj_frames_c_.trj_file_name.view(),
      .first = trj_frames_.first_frame,
      .last = trj_frames_.last_frame,
      .step = trj_frames_.frame_step,
      .total_frames = trj_frames_.frames_in_file,
      .monitor = trj_vac_msd_l_.monitor_rdf,
  };
  const PlotTransaction plots;
  initrdf_(request, trj_gui_l_.rdf_done, status);
  if (status == 0) dordf_(request, trj_gui_l_.rdf_done, status);
  std::int32_t ended = 0;
  finishrdf_(ended);
  return status != 0 ? status : ended;
}

std::int32_t structure_factor() {
  const PlotTransaction plots;
  std::int32_t status = 0;
  sofk_(trj_rdf_d_.k_space_interval, status);
  return status;
}

}  // namespace pathstat::actions
