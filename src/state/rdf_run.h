#pragma once

#include <cstdint>

#include "support/logical.h"
#include "support/text_field.h"
#include "support/vectors.h"

namespace pathstat {

/// What a radial distribution is made of, from initrdf_ to finishrdf_.
struct GrI {
  std::int32_t mol_tag_slots = 0;
  std::int32_t mol_count = 0;
  std::int32_t atom_count = 0;  ///< listed atoms, those of both sets
  std::int32_t trj_handle = -1;
  std::int32_t set1_count = 0;
  std::int32_t set2_count = 0;
  std::int32_t gr_i_7 = 0;
  std::int32_t moved_count = 0;  ///< atoms that the frames hold
  std::int32_t periodic_type = 0;
  std::int32_t set_mode = 0;
  std::int32_t fold_first_axis = 0;  ///< from 1
  std::int32_t pair_count = 0;       ///< 2147483647 stands for more
  std::int32_t model_atoms = 0;
  std::int32_t graph_count = 0;
  std::int32_t graph_total = 0;
  std::int32_t graph_components = 0;
  std::int32_t set_total = 0;
  std::int32_t set_inter = 0;
  std::int32_t set_intra = 0;
  std::int32_t viewer = 0;
  std::int32_t model_count = 0;
  std::int32_t self_count = 0;  ///< listed atoms before they are put into sets, for like sets; else 0
};
static_assert(sizeof(GrI) == 22 * sizeof(std::int32_t));
inline GrI gr_i_;

struct GrD {
  Vector3 a{}, b{}, c{};     ///< cell vectors, Å
  double mean_volume = 0.0;  ///< Å³; 1 without periodicity
};
static_assert(sizeof(GrD) == 10 * sizeof(double));
inline GrD gr_d_;

struct GrL {
  Logical cell_varies;
  Logical periodic;
};
inline GrL gr_l_;

struct GrC {
  Text<50> total_title;
  Text<50> components_title;
  Text<30> total_set{"Total RDF"};
  Text<30> inter_set{"Intermolecular RDF"};
  Text<30> intra_set{"IntraMolecular RDF"};
};
static_assert(sizeof(GrC) == 190);
inline GrC gr_c_;

/// Addresses of the named blocks "PathStat/gr/..."; 0 without them.
struct GrP {
  std::int64_t xyz_in = 0;
  std::int64_t xyz = 0;
  std::int64_t index_list = 0;
  std::int64_t nxyz = 0;
  std::int64_t trans = 0;
  std::int64_t at_oids = 0;
  std::int64_t plot_data = 0;
  std::int64_t work_gr = 0;
  std::int64_t total_gr = 0;
  std::int64_t inter_gr = 0;
  std::int64_t intra_gr = 0;
  std::int64_t gr_norm = 0;
  std::int64_t mol_basis = 0;
  std::int64_t mol_period = 0;
  std::int64_t model_list = 0;
};
static_assert(sizeof(GrP) == 15 * sizeof(std::intptr_t));
inline GrP gr_p_;

}  // namespace pathstat
