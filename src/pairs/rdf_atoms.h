#pragma once

#include <cstdint>

#include "pairs/radial_distribution.h"
#include "pairs/rdf_blocks.h"

namespace pathstat {

/// Keys of the refusals of sets, which differ between a trajectory and models.
struct RdfRefusals {
  std::string_view fewer_than_two;  ///< atoms, without periodicity
  std::string_view none;            ///< no atoms, with periodicity
  std::string_view no_like;         ///< no atoms of the one name
  std::string_view no_unlike;       ///< none of one of two names
  bool name_model = false;          ///< the model's name is the argument
};
constexpr RdfRefusals trajectory_refusals{"PATHSTAT_ERROR_82", "PATHSTAT_ERROR_83", "PATHSTAT_ERROR_85",
                                          "PATHSTAT_ERROR_84"};
constexpr RdfRefusals model_refusals{"PATHSTAT_ERROR_89", "PATHSTAT_ERROR_90", "PATHSTAT_ERROR_91", "PATHSTAT_ERROR_91",
                                     true};

/// The selector of all atoms of a model with their symmetry images.
constexpr std::int32_t with_images = 3;

/// Lists the atoms of a model in their sets and molecules, with their translations and the periodicity of each
/// molecule, and tells the way of counting. Linear in the atoms, but for a sort.
///
/// Reads gr_i_.periodic_type and model_atoms; sets mol_tag_slots, mol_count, atom_count, the set counts, set_mode and
/// self_count, and the blocks at_oids, trans, nxyz, mol_basis and mol_period.
/// @param status  0; 1 refused or not answered by the Core; the status of an allocation
void list_rdf_atoms(const RdfRequest& request, std::int32_t model, const RdfRefusals& refusals, RdfBlocks& blocks,
                    std::int32_t& status);

}  // namespace pathstat
