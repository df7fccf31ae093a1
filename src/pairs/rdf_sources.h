#pragma once

#include <cstdint>

#include "pairs/radial_distribution.h"
#include "pairs/rdf_blocks.h"

namespace pathstat {

// A radial distribution from the frames of a trajectory and from models: the set-up, and the walk over all
// configurations. Scale and offset are those of the result file.

void initrdftrj_(const RdfRequest& request, RdfBlocks& blocks, std::int32_t& status);
void dordftrj_(const RdfRequest& request, RdfBlocks& blocks, double& scale, double& offset, std::int32_t& status);

void initrdfmodel_(const RdfRequest& request, RdfBlocks& blocks, std::int32_t& status);
void dordfmodel_(const RdfRequest& request, RdfBlocks& blocks, double& scale, double& offset, std::int32_t& status);

/// The state before the first configuration of a periodic type.
void start_rdf_mean(std::int32_t periodic_type);
/// The norm of each bin for the sets as they are now; another normalization than the two shows PATHSTAT_ERROR_75.
void set_rdf_norm(const RdfRequest& request, RdfBlocks& blocks, std::int32_t& status);
/// True if the user asks to stop, which shows PATHSTAT_WARN_12. Asks at each tenth configuration, from 0.
bool rdf_interrupted(std::int32_t configuration);
/// Draws and reports progress, each fiftieth of all configurations, and draws the last one.
/// @param done  configurations, from 1
void show_rdf_progress(const RdfRequest& request, const RdfBlocks& blocks, std::int32_t done, std::int32_t all,
                       std::int32_t between_shows, bool is_last);

}  // namespace pathstat
