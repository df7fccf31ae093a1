#pragma once

#include <cstddef>
#include <filesystem>

namespace pathstat::desk {

/// The mean density of neighbours around an atom, 1/Å³, from the last record of a radial distribution's file, which
/// holds the pairs over the mean volume and the atoms of the model.
///
/// @param centres  atoms of the first set, out of `model_atoms`
/// @return 0 where there is no such file or no centre
double neighbour_density(const std::filesystem::path& file, std::size_t model_atoms, std::size_t centres);

}  // namespace pathstat::desk
