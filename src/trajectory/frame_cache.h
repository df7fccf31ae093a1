#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

// While one of the routines that make, move or show the cache waits for the Core, another call of theirs gets status 1
// and changes nothing.

/// Prepares the frames first, first + step, … last of a trajectory for stepping in a model, in place of any earlier
/// cache. A binary trajectory is opened a second time; of any other the frames are copied to a flat file once.
/// @param status  0; 1 on any failure, which leaves no cache
void setuptrjcache_(std::int32_t model, std::string_view file, std::int32_t first, std::int32_t last, std::int32_t step,
                    std::int32_t& status);

/// Lets go of the cache: closes, deletes and clears. Harmless without one. @param status  0
void killtrjcache_(std::int32_t& status);

/// Moves the cache to another model with the same atoms.
/// @param status  0; 1 if its atoms cannot be had, which leaves no cache
void newcachemodel_(std::int32_t model, std::int32_t& status);

/// Tests that the model of the cache and its atoms are still there; PATHSTAT_ERROR_116 is shown if not.
/// @param status  0 or 1
void checkcacheatoms_(std::int32_t& status);

/// Puts an entry of the cache, counted from 1, on the model: cell, positions, and velocities and forces where the
/// frame has them.
/// @param recalculate_bonds  has the Core find the bonds anew
/// @param status  0; 1 for an entry out of range, which changes nothing; 1 on any other failure, which leaves no cache
void showtrjframe_(std::int32_t entry, bool recalculate_bonds, std::int32_t& status);

}  // namespace pathstat
