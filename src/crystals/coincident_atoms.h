#pragma once

#include <cstdint>
#include <span>

#include "crystals/periodic_frame.h"

/// Finds atoms that fall together: in the unit that a model states, and among symmetry images.
///
/// Fractional coordinates are three for each atom, folded into the cell. A link tells of each atom: above 0 it is in
/// the list. The report 1 gives the messages of the checks; conflicts are no fault of a check, whose status is 0, or
/// 1 where the search for contacts fails.
namespace pathstat {

/// Finds atoms that are copies of others by a translation of the cell: of the same type, and of a higher identifier.
/// @param links  changed to −j for a copy of atom j, counted from 1
void check_trans_dup_(const PeriodicFrame& frame, std::span<const double> fractions, std::span<const std::int32_t> ids,
                      std::span<const std::int32_t> types, std::span<const double> charges,
                      std::span<std::int32_t> links, std::int32_t report, std::int32_t& status);

/// Finds atoms of the asymmetric unit that are symmetry images of others of a lower place.
/// @param fractions     of all images: the n atoms, then their images operator by operator
/// @param ids, types    of all images: those of the atoms
/// @param parents       the atom of each image, from 1; of an atom that is dropped, the image in favour of which it is
/// @param links         changed to 0 for an atom that is dropped
/// @param n             atoms of the asymmetric unit
void check_over_spec_(const PeriodicFrame& frame, std::span<const double> fractions, std::int32_t n,
                      std::span<const std::int32_t> ids, std::span<const std::int32_t> types,
                      std::span<std::int32_t> parents, std::span<std::int32_t> links, std::int32_t report,
                      std::int32_t& status);

}  // namespace pathstat
