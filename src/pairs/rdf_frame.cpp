#include "pairs/rdf_frame.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>

#include "pairs/pair_distance.h"
#include "pairs/pair_histogram.h"
#include "structure/crystal_maths.h"

namespace pathstat {
namespace {

/// Images that are counted at most; a cell that has more within the cutoff is no cell of atoms.
constexpr double most_images = 1e8;
constexpr std::int32_t no_memory = 2;

PairCount question(const RdfRequest& request) {
  PairCount pairs;
  pairs.set_mode = gr_i_.set_mode;
  pairs.cutoff = request.cutoff;
  pairs.interval = request.interval;
  return pairs;
}

/// Sets the ranges of images within the cutoff. @return 0; 1 if they are too many to be counted
/// @param widen  widen_repeats or its like
std::int32_t set_repeats(PairCount& pairs, void (*widen)(PairCount&)) {
  auto& [ia, ib, ic] = pairs.repeats;
  const auto& [a, b, c] = pairs.vectors;
  cellrange_(pairs.periodic_type, a, b, c, pairs.cutoff, ia, ib, ic);
  widen(pairs);
  return image_count(pairs) > most_images ? 1 : 0;
}

void take_cell(std::int32_t frame, RdfBlocks& blocks, RdfConfiguration& configuration) {
  const auto& [a, b, c] = configuration.cell;
  std::int32_t& status = configuration.status;
  kva_cry_3dabctocellvolume_(a, b, c, configuration.volume, status);
  if (status != 0 || (frame > 1 && !gr_l_.cell_varies)) return;
  kva_cry_3dfractocartmatrix_(a, b, c, blocks.to_cartesian, status);
  if (status == 0) kva_cry_3dcarttofracmatrix_(a, b, c, blocks.to_fractional, status);
}

/// The listed atoms of a frame.
void gather(const RdfBlocks& blocks, std::span<const double> moved, std::span<double> to) {
  const auto all = blocks.xyz_in.span();
  const auto places = blocks.index_list.span();
  for (std::size_t i = 0; i < places.size(); ++i) {
    const auto from = 3 * static_cast<std::size_t>(places[i]);
    std::copy_n(from < moved.size() ? &moved[from] : &all[from], 3, &to[3 * i]);
  }
}

void fold(const RdfBlocks& blocks, RdfConfiguration& configuration) {
  const auto xyz = configuration.xyz;
  kva_cry_transformcoordinates_(xyz, blocks.to_fractional, configuration.status);
  if (configuration.status != 0) return;
  for (std::size_t axis = static_cast<std::size_t>(gr_i_.fold_first_axis) - 1; axis < 3; ++axis) {
    for (std::size_t at = axis; at < xyz.size(); at += 3) xyz[at] = folded(xyz[at]);
  }
  kva_cry_transformcoordinates_(xyz, blocks.to_cartesian, configuration.status);
}

/// The atoms where their molecules have them.
void make_whole(const RdfBlocks& blocks, const RdfConfiguration& configuration) {
  const auto xyz = configuration.xyz;
  const auto& [a, b, c] = configuration.cell;
  gather(blocks, {}, xyz);
  const auto t = blocks.trans.span();
  for (std::size_t i = 0; i + 2 < t.size(); i += 3) {
    for (std::size_t k = 0; k < 3; ++k) xyz[i + k] += t[i] * a[k] + t[i + 1] * b[k] + t[i + 2] * c[k];
  }
}

/// The translations of a periodic molecule, the last of the three first.
std::array<Vector3, 3> molecule_vectors(std::span<const std::int32_t> basis, std::int32_t periodicity,
                                        const CellVectors& cell) {
  const std::size_t rows = periodicity == 100 ? 3 : periodicity == 101 ? 2 : periodicity == 102 ? 1 : 0;
  std::array<Vector3, 3> vectors{};
  for (std::size_t row = 0; row < rows; ++row) {
    const auto n = basis.subspan(3 * row, 3);
    for (std::size_t k = 0; k < 3; ++k) {
      vectors[2 - row][k] = n[0] * cell.a[k] + n[1] * cell.b[k] + n[2] * cell.c[k];
    }
  }
  return vectors;
}

void count_within_molecules(const RdfRequest& request, const RdfBlocks& blocks, RdfConfiguration& configuration,
                            std::int32_t& status) {
  const auto molecules = static_cast<std::size_t>(gr_i_.mol_count);
  std::span<const double> first = configuration.xyz;
  std::span<const double> second = first.subspan(3 * static_cast<std::size_t>(gr_i_.set1_count));
  PairCount pairs = question(request);
  for (std::size_t m = 0; m < molecules && status == 0; ++m) {
    const auto in_first = static_cast<std::size_t>(blocks.nxyz.span()[m]);
    const auto in_second = static_cast<std::size_t>(blocks.nxyz.span()[molecules + m]);
    const bool has_pairs = gr_i_.set_mode == pair_sets::between_two ? in_first > 0 && in_second > 0 : in_first > 1;
    if (has_pairs) {
      pairs.list1 = first.first(3 * in_first);
      pairs.list2 = second.first(3 * in_second);
      pairs.periodic_type = blocks.mol_period.span()[m];
      pairs.vectors =
          molecule_vectors(blocks.mol_basis.span().subspan(9 * m, 9), pairs.periodic_type, configuration.cell);
      status = set_repeats(pairs, widen_repeats);
      if (status == 0) calculaterdf_(pairs, blocks.work.span(), configuration.search, status);
    }
    first = first.subspan(3 * in_first);
    second = second.subspan(3 * in_second);
  }
}

void add_to_mean(std::int32_t frame, const RdfBlocks& blocks, std::span<double> mean) {
  const auto work = blocks.work.span();
  const auto norm = blocks.norm.span();
  for (std::size_t i = 0; i < mean.size(); ++i) {
    work[i] *= norm[i] * gr_d_.mean_volume;
    mean[i] += (work[i] - mean[i]) / frame;
  }
}

}  // namespace

double folded(double fraction) {
  if (fraction < 0.0) return std::trunc(std::abs(fraction)) + fraction + 1.0;
  if (fraction > 1.0) return fraction - std::trunc(fraction);
  return fraction;
}

bool normalise_rdf(std::string_view normalization, double pairs, double interval, std::span<double> norm) {
  constexpr double four_pi = 12.566370614359172;
  const bool partial = same_text(normalization, "PARTIAL");
  if (!partial && !same_text(normalization, "TOTAL")) return false;
  const double shell = 1.0 / (pairs * interval * four_pi * interval * interval);
  for (std::size_t k = 0; k < norm.size(); ++k) {
    const double i = static_cast<double>(k + 1);
    norm[k] = partial ? shell / ((i - 1.0) * i + 0.25) : 1.0 / pairs;
  }
  return true;
}

void prepare_rdf_configuration(const RdfRequest& request, std::int32_t frame, std::span<const double> moved,
                               RdfBlocks& blocks, RdfConfiguration& configuration) try {
  std::int32_t& status = configuration.status;
  status = 0;
  if (gr_l_.periodic) take_cell(frame, blocks, configuration);
  if (status != 0) return;
  gather(blocks, moved, configuration.xyz);
  if (gr_l_.periodic) fold(blocks, configuration);
  if (status != 0) return;

  PairCount& pairs = configuration.pairs;
  const std::span<const double> atoms = configuration.xyz;
  pairs = question(request);
  pairs.periodic_type = gr_i_.periodic_type;
  pairs.vectors = {configuration.cell.a, configuration.cell.b, configuration.cell.c};
  pairs.list1 = atoms.first(3 * static_cast<std::size_t>(gr_i_.set1_count));
  pairs.list2 = atoms.subspan(pairs.list1.size());
  status = set_repeats(pairs, widen_repeats_of_folded);
  if (status == 0) prepare_pairs(pairs, blocks.work.span().size(), configuration.search);
} catch (const std::bad_alloc&) {
  configuration.status = no_memory;
}

void count_rdf_configuration(const RdfRequest& request, std::int32_t frame, RdfBlocks& blocks,
                             RdfConfiguration& configuration, std::int32_t& status,
                             const std::function<void()>& meanwhile) {
  status = configuration.status;
  if (status != 0) return;
  if (gr_l_.periodic) gr_d_.mean_volume += (std::abs(configuration.volume) - gr_d_.mean_volume) / frame;
  std::ranges::fill(blocks.work.span(), 0.0);
  calculaterdf_(configuration.pairs, blocks.work.span(), configuration.search, status, meanwhile);
  if (status != 0) return;
  add_to_mean(frame, blocks, blocks.total.span());
  if (!request.components) return;

  std::ranges::fill(blocks.work.span(), 0.0);
  make_whole(blocks, configuration);
  count_within_molecules(request, blocks, configuration, status);
  if (status != 0) return;
  add_to_mean(frame, blocks, blocks.intra.span());
  const auto inter = blocks.inter.span();
  for (std::size_t i = 0; i < inter.size(); ++i) inter[i] = blocks.total.span()[i] - blocks.intra.span()[i];
}

void dordfconfig_(const RdfRequest& request, std::int32_t frame, RdfBlocks& blocks, std::int32_t& status) {
  RdfConfiguration& configuration = blocks.configuration;
  configuration.cell = {gr_d_.a, gr_d_.b, gr_d_.c};
  configuration.xyz = blocks.xyz.span();
  prepare_rdf_configuration(request, frame, {}, blocks, configuration);
  count_rdf_configuration(request, frame, blocks, configuration, status);
}

}  // namespace pathstat
