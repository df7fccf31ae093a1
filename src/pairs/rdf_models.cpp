#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "coreapi/interrupt.h"
#include "coreapi/messages.h"
#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "pairs/rdf_atoms.h"
#include "pairs/rdf_frame.h"
#include "pairs/rdf_sources.h"
#include "state/analysis_settings.h"
#include "state/rdf_settings.h"
#include "structure/crystal_maths.h"
#include "trajectory/frame_cell.h"

namespace pathstat {
namespace {

bool any_atom_selected(std::span<const std::int32_t> models, std::int32_t& status) {
  const NamedBlock<std::int32_t> counts("PathStat/gr/iWork2", std::ssize(models), status);
  if (status != 0) return false;
  std::int32_t error = 0;
  kvd_sel_numselected_(models, atom_class, counts.span(), error);
  return error == 0 && std::ranges::any_of(counts.span(), [](std::int32_t count) { return count > 0; });
}

void read_cell(std::int32_t model, std::int32_t& status) {
  const std::int32_t type = gr_i_.periodic_type;
  if (type != periodic_type::three_dimensional && type != periodic_type::two_dimensional) {
    if (gr_l_.periodic) status = refuse("PATHSTAT_ERROR_88");
    return;
  }
  std::int32_t error = 0;
  const CellVectors cell = cell_of_model(model, type, error);
  gr_d_.a = cell.a;
  gr_d_.b = cell.b;
  gr_d_.c = cell.c;
  if (error != 0) status = 1;
}

/// Lists the atoms of a model and reads where they are.
void setuprdfmodel_(const RdfRequest& request, std::int32_t model, RdfBlocks& blocks, std::int32_t& status) {
  std::int32_t error = 0;
  count_atoms(model, with_images, gr_i_.model_atoms, error);
  if (error != 0) status = 1;
  if (status == 0) list_rdf_atoms(request, model, model_refusals, blocks, status);
  blocks.xyz.make(3 * std::int64_t{gr_i_.atom_count}, status);
  blocks.xyz_in.make(3 * std::int64_t{gr_i_.atom_count}, status);
  blocks.index_list.make(gr_i_.atom_count, status);
  if (status == 0) set_rdf_norm(request, blocks, status);
  if (status != 0) return;
  std::iota(blocks.index_list.span().begin(), blocks.index_list.span().end(), 0);
  kvd_xyz_(blocks.at_oids.span(), blocks.xyz_in.span(), error);
  if (error != 0) status = 1;
  if (status == 0) read_cell(model, status);
}

/// The volume that the atoms of the present model share.
double model_volume(std::int32_t& status) {
  double volume = 1.0;
  if (gr_l_.periodic) kva_cry_3dabctocellvolume_(gr_d_.a, gr_d_.b, gr_d_.c, volume, status);
  return std::abs(volume);
}

}  // namespace

void initrdfmodel_(const RdfRequest& request, RdfBlocks& blocks, std::int32_t& status) {
  status = 0;
  blocks.models.emplace("PathStat/gr/ModelList", "PathStat/gr/iWork1", status);
  if (status != 0) return;
  const auto models = blocks.models->models();
  const auto types = blocks.models->periodic_types();
  gr_p_.model_list = models.empty() ? 0 : reinterpret_cast<std::intptr_t>(models.data());
  gr_i_.model_count = blocks.models->size();
  if (models.empty()) {
    status = 1;
  } else if (blocks.models->count_of(types[0]) != gr_i_.model_count) {
    status = refuse("PATHSTAT_ERROR_81");
  } else if (request.set_type == rdf_between::selected && !any_atom_selected(models, status)) {
    status = refuse("PATHSTAT_ERROR_72");
  }
  if (status != 0) return;
  gr_i_.periodic_type = types[0];
  start_rdf_mean(types[0]);
  // Models may differ in their cells.
  gr_l_.cell_varies = true;
}

void dordfmodel_(const RdfRequest& request, RdfBlocks& blocks, double& scale, double& offset, std::int32_t& status) {
  status = 0;
  start_rdf_mean(gr_i_.periodic_type);
  tell_progress(0.0F);
  const std::int32_t between_shows = std::max<std::int32_t>(1, gr_i_.model_count / 50);
  std::int32_t done = 0;
  for (const std::int32_t model : blocks.models->models()) {
    if (rdf_interrupted(done)) break;
    setuprdfmodel_(request, model, blocks, status);
    if (status == 0) dordfconfig_(request, done + 1, blocks, status);
    const double volume = status == 0 ? model_volume(status) : 1.0;
    if (status != 0) return;
    ++done;
    scale += (blocks.pairs / (volume * gr_i_.model_atoms) - scale) / done;
    offset += (static_cast<double>(gr_i_.self_count) / gr_i_.model_atoms - offset) / done;
    show_rdf_progress(request, blocks, done, gr_i_.model_count, between_shows, done == gr_i_.model_count);
  }
}

}  // namespace pathstat
