#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "pairs/radial_distribution.h"
#include "pairs/rdf_blocks.h"

namespace pathstat {

/// A fractional coordinate in the cell, 0 to 1; both ends stay as they are.
double folded(double fraction);

/// What each bin of a histogram of pairs is to be multiplied with, apart from the mean volume.
///
/// "PARTIAL": one over pairs times the volume 4 pi r^2 dr of the shell at the middle of the bin; "TOTAL": one over
/// pairs. @return false for any other text
bool normalise_rdf(std::string_view normalization, double pairs, double interval, std::span<double> norm);

/// Makes a configuration ready to be counted: its volume, the listed atoms folded into the cell, and the question.
/// Another one may be counted meanwhile.
/// @param frame   number of the configuration, from 1
/// @param moved   coordinates that take the place of the first of xyz_in
/// @param configuration  its cell and the room for its atoms are given
void prepare_rdf_configuration(const RdfRequest& request, std::int32_t frame, std::span<const double> moved,
                               RdfBlocks& blocks, RdfConfiguration& configuration);

/// Adds a configuration that is ready to the running means. With components, xyz_in is to hold its atoms.
/// @param status     0; 1 a cell so small that its images cannot be counted; that of the cell's matrices or of no
/// memory
/// @param meanwhile  called while other threads count, once if the status is 0; may be empty
void count_rdf_configuration(const RdfRequest& request, std::int32_t frame, RdfBlocks& blocks,
                             RdfConfiguration& configuration, std::int32_t& status,
                             const std::function<void()>& meanwhile = {});

/// Adds one configuration to the running means, from xyz_in and the cell vectors of gr_d_: one call after the other.
void dordfconfig_(const RdfRequest& request, std::int32_t frame, RdfBlocks& blocks, std::int32_t& status);

}  // namespace pathstat
