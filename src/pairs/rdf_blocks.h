#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "catalogue/model_selection.h"
#include "pairs/pair_distance.h"
#include "pairs/pair_search.h"
#include "state/rdf_run.h"
#include "support/named_memory.h"
#include "trajectory/frame_cell.h"
#include "trajectory/open_trajectory.h"

namespace pathstat {

/// A named block of a radial distribution, whose address stands in gr_p_ while it lives.
template <class T>
class RdfBlock {
 public:
  RdfBlock(std::string_view label, std::int64_t GrP::*address) : label_(label), address_(address) {}
  ~RdfBlock() { gr_p_.*address_ = 0; }
  RdfBlock(const RdfBlock&) = delete;
  RdfBlock& operator=(const RdfBlock&) = delete;

  /// Makes the block of so many zeros anew. Does nothing if the status is not 0.
  void make(std::int64_t count, std::int32_t& status) {
    if (status != 0) return;
    block_.release();
    block_ = NamedBlock<T>(label_, count, status);
    gr_p_.*address_ = block_.address();
  }
  std::span<T> span() const { return block_.span(); }

 private:
  std::string_view label_;
  std::int64_t GrP::*address_;
  NamedBlock<T> block_;
};

/// A configuration and what is known of it before its pairs are counted.
struct RdfConfiguration {
  CellVectors cell;
  double volume = 0.0;      ///< Å³, with its sign; of a periodic one
  std::span<double> xyz;    ///< the listed atoms, folded into the cell; after the count as their molecules have them
  PairCount pairs;          ///< of all that are listed
  std::int32_t status = 0;  ///< of what it was made by
  PairSearch search;
};

/// All that a radial distribution holds between its set-up and its end. There is one at a time.
struct RdfBlocks {
  RdfBlock<double> xyz_in{"PathStat/gr/xyzIn", &GrP::xyz_in};  ///< atoms of a frame, fixed atoms behind moved ones
  RdfBlock<double> xyz{"PathStat/gr/xyz", &GrP::xyz};          ///< listed atoms, by set, then by molecule
  RdfBlock<std::int32_t> index_list{"PathStat/gr/IndexList", &GrP::index_list};  ///< place in xyz_in, from 0
  RdfBlock<std::int32_t> nxyz{"PathStat/gr/nxyz", &GrP::nxyz};  ///< atoms of each molecule in set 1, then in set 2
  RdfBlock<std::int32_t> trans{"PathStat/gr/Trans", &GrP::trans};
  RdfBlock<std::int32_t> at_oids{"PathStat/gr/AtOids", &GrP::at_oids};
  RdfBlock<float> plot_data{"PathStat/gr/PlotData", &GrP::plot_data};
  RdfBlock<double> work{"PathStat/gr/WorkGr", &GrP::work_gr};
  RdfBlock<double> total{"PathStat/gr/TotalGr", &GrP::total_gr};
  RdfBlock<double> inter{"PathStat/gr/InterGr", &GrP::inter_gr};
  RdfBlock<double> intra{"PathStat/gr/IntraGr", &GrP::intra_gr};
  RdfBlock<double> norm{"PathStat/gr/GrNorm", &GrP::gr_norm};
  RdfBlock<std::int32_t> mol_basis{"PathStat/gr/MolBasis", &GrP::mol_basis};
  RdfBlock<std::int32_t> mol_period{"PathStat/gr/MolPeriod", &GrP::mol_period};

  std::optional<OpenTrajectory> trajectory;
  std::optional<ModelSelection> models;
  double pairs = 0.0;  ///< gr_i_.pair_count without its limit
  Matrix3 to_cartesian{}, to_fractional{};
  RdfConfiguration configuration;  ///< with the atoms of xyz

  RdfBlocks() = default;
  ~RdfBlocks() { gr_p_.model_list = 0; }
  RdfBlocks(const RdfBlocks&) = delete;
  RdfBlocks& operator=(const RdfBlocks&) = delete;
};

}  // namespace pathstat
