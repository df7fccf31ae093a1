#pragma once

#include <cstdint>

#include "pairs/radial_distribution.h"
#include "pairs/rdf_blocks.h"

namespace pathstat {

/// What the atoms of a set type are called in titles.
std::string_view rdf_atoms_name(std::int32_t set_type);

/// Makes the graphs of a radial distribution and gives them to the viewer. A graph that fails shows
/// PATHSTAT_ERROR_118; gr_i_.graph_count tells how many there are.
void setuprdfgraphs_(const RdfRequest& request);

/// Sends the running means to their graphs and draws these.
void plotrdfgraphs_(const RdfRequest& request, const RdfBlocks& blocks);

}  // namespace pathstat
