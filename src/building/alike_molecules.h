#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace pathstat {

/// The molecules of a model that are like one of them: of the same elements in the same order.
struct AlikeMolecules {
  std::vector<std::int32_t> numbers;               ///< of each atom of the model, that of its molecule
  std::vector<std::int32_t> alike;                 ///< the molecules by number
  std::vector<std::array<std::int32_t, 3>> atoms;  ///< of each of them, objects that are what `three` are in theirs
};

/// @param all    the atoms of the model
/// @param three  places in `all`, from 0
/// @param found  empty if the three aren't different atoms of one molecule
/// @param error  that of the Core
void find_alike(std::span<const std::int32_t> all, const std::array<std::size_t, 3>& three, AlikeMolecules& found,
                std::int32_t& error);

}  // namespace pathstat
