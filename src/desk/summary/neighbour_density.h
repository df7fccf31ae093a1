#pragma once

#include <cstddef>
#include <string_view>

namespace pathstat::desk {

/// The mean density of neighbours around an atom, 1/Å³, from the last record of a radial distribution's file, which
/// holds the pairs over the mean volume and the atoms of the model.
///
/// @param centres  atoms of the first set, out of `model_atoms`
/// @return 0 where these are not the bytes of such a file, or there is no centre
double neighbour_density(std::string_view file, std::size_t model_atoms, std::size_t centres);

}  // namespace pathstat::desk
