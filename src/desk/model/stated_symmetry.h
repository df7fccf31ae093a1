#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "desk/model/molecular_model.h"

/// Symmetry as files of crystals state it, and the operators that it means.
namespace pathstat::desk {

/// What a file says of a space group; parts that it leaves out are empty or 0.
struct StatedSymmetry {
  std::vector<std::string> triplets;  ///< operators such as "-x, y+1/2, -z"
  std::string hall;                   ///< symbol of the explicit-origin notation
  std::string name;                   ///< Hermann-Mauguin symbol
  std::int32_t number = 0;            ///< in the International Tables
  double alpha = 90, gamma = 90;      ///< degrees; they tell which axes a rhombohedral group without a mark has
};

struct FoundSymmetry {
  SymmetryOperators operators;  ///< the identity first; in the library's order where the library has the group
  std::string problem;          ///< why there are none; empty if all is well
};

/// The operators of a group: those of the list, or else of the Hall symbol, of the name, of the number; without any of
/// them the identity. A list has to be a group, and may leave out the identity.
FoundSymmetry find_symmetry(const StatedSymmetry& stated);

/// What to state of operators: their triplets, and the rest if the library has their group.
StatedSymmetry stated_symmetry(const SymmetryOperators& operators);

}  // namespace pathstat::desk
