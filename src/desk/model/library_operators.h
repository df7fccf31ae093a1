#pragma once

#include <cstddef>
#include <gemmi/symmetry.hpp>

#include "desk/model/molecular_model.h"

namespace pathstat::desk {

/// Operators of the library of space groups, which keeps 24ths as whole numbers, as a model has them.
template <class Operations>
SymmetryOperators as_operators(const Operations& list) {
  SymmetryOperators operators;
  for (const gemmi::Op& op : list) {
    Matrix3 rotation{};
    Vector3 translation{};
    for (std::size_t row = 0; row < 3; ++row) {
      for (std::size_t column = 0; column < 3; ++column) {
        rotation[row + 3 * column] = static_cast<double>(op.rot[row][column]) / gemmi::Op::DEN;
      }
      translation[row] = static_cast<double>(op.tran[row]) / gemmi::Op::DEN;
    }
    operators.rotations.push_back(rotation);
    operators.translations.push_back(translation);
  }
  return operators;
}

}  // namespace pathstat::desk
