#include "pairs/radial_distribution.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <string>

#include "coreapi/interrupt.h"
#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "pairs/pair_histogram.h"
#include "pairs/rdf_atoms.h"
#include "pairs/rdf_frame.h"
#include "pairs/rdf_graphs.h"
#include "pairs/rdf_result.h"
#include "pairs/rdf_sources.h"
#include "state/analysis_settings.h"

namespace pathstat {
namespace {

/// The one radial distribution that is under way. It lives on when the process ends in the middle of it: its trajectory
/// would be closed through lists that have gone by then.
std::unique_ptr<RdfBlocks>& run = *new std::unique_ptr<RdfBlocks>;

/// The distance in the middle of a bin, from 0.
double distance_of(std::size_t bin, double interval) { return (static_cast<double>(bin) + 0.5) * interval; }

void make_histograms(const RdfRequest& request, RdfBlocks& blocks, std::int32_t& status) {
  blocks.plot_data.make(2 * std::int64_t{request.bins}, status);
  for (auto* block : {&blocks.work, &blocks.total, &blocks.inter, &blocks.intra, &blocks.norm}) {
    block->make(request.bins, status);
  }
  if (status != 0) return;
  const auto xy = blocks.plot_data.span();
  for (std::size_t k = 0; 2 * k < xy.size(); ++k) xy[2 * k] = static_cast<float>(distance_of(k, request.interval));
}

bool is_from_trajectory(const RdfRequest& request) { return same_text(request.source, from_trajectory); }
bool is_from_models(const RdfRequest& request) { return same_text(request.source, from_selected_models); }

/// Puts the result into its file; the work histogram, which has done its service, takes the distances.
void write_result(const RdfRequest& request, RdfBlocks& blocks, const RdfTail& tail, std::int32_t& status) {
  const auto distances = blocks.work.span();
  for (std::size_t k = 0; k < distances.size(); ++k) distances[k] = distance_of(k, request.interval);
  const RdfHead head{request.bins, request.components ? 3 : 1};
  const RdfColumns<const double> functions{distances, blocks.total.span(), blocks.intra.span(), blocks.inter.span()};
  if (write_rdf(std::string(rdf_file), head, functions, tail) != RecordStatus::ok) {
    status = refuse("PATHSTAT_ERROR_69", rdf_file);
  }
}

}  // namespace

void start_rdf_mean(std::int32_t type) {
  gr_l_.periodic = type != periodic_type::none;
  gr_d_.mean_volume = gr_l_.periodic ? 0.0 : 1.0;
  gr_i_.fold_first_axis = type == periodic_type::one_dimensional ? 3 : type == periodic_type::two_dimensional ? 2 : 1;
}

void set_rdf_norm(const RdfRequest& request, RdfBlocks& blocks, std::int32_t& status) {
  const double first = gr_i_.set1_count, second = gr_i_.set2_count;
  blocks.pairs = gr_i_.set_mode == pair_sets::within_one ? first * first : first * second;
  constexpr auto most = std::numeric_limits<std::int32_t>::max();
  gr_i_.pair_count = blocks.pairs < most ? static_cast<std::int32_t>(blocks.pairs) : most;
  if (normalise_rdf(request.normalization, blocks.pairs, request.interval, blocks.norm.span())) return;
  status = refuse("PATHSTAT_ERROR_75", trimmed(request.normalization));
}

bool rdf_interrupted(std::int32_t configuration) {
  constexpr std::int32_t between_polls = 10;
  if (configuration % between_polls != 0 || kvu_int_requestinterrupt_() != 1) return false;
  refuse("PATHSTAT_WARN_12");
  return true;
}

void show_rdf_progress(const RdfRequest& request, const RdfBlocks& blocks, std::int32_t done, std::int32_t all,
                       std::int32_t between_shows, bool is_last) {
  const bool is_due = done % between_shows == 0;
  if ((is_due && request.monitor) || is_last) plotrdfgraphs_(request, blocks);
  if (is_due) tell_progress(static_cast<float>(done) / static_cast<float>(std::max(all, 1)));
}

void initrdf_(const RdfRequest& request, Logical& available, std::int32_t& status) {
  available = false;
  run.reset();
  gr_i_ = {};
  gr_d_ = {};
  gr_l_ = {};
  gr_c_ = {};
  status = request.bins > 0 && request.interval > 0.0 ? 0 : 1;
  if (status != 0) return;
  run.reset(new (std::nothrow) RdfBlocks);
  if (run == nullptr) status = 1;
  if (status == 0) make_histograms(request, *run, status);
  if (status != 0) return;
  if (is_from_trajectory(request)) {
    initrdftrj_(request, *run, status);
  } else if (is_from_models(request)) {
    initrdfmodel_(request, *run, status);
  }
  if (status == 0) setuprdfgraphs_(request);
}

void dordf_(const RdfRequest& request, Logical& available, std::int32_t& status) {
  status = run == nullptr ? 1 : 0;
  if (status != 0 || (!is_from_trajectory(request) && !is_from_models(request))) return;
  RdfTail tail;
  if (is_from_trajectory(request)) {
    dordftrj_(request, *run, tail.scale, tail.offset, status);
  } else {
    dordfmodel_(request, *run, tail.scale, tail.offset, status);
  }
  if (status != 0) return;
  tail.periodic = gr_l_.periodic;
  tail.set_type = request.set_type;
  write_result(request, *run, tail, status);
  available = status == 0;
}

void finishrdf_(std::int32_t& status) {
  status = 0;
  run.reset();
  gr_i_.trj_handle = -1;
}

}  // namespace pathstat
