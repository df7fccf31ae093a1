#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "support/text_field.h"

namespace pathstat {

/// An atom of the asymmetric unit.
struct Site {
  std::int32_t element = 0;  ///< its number in the table of elements
  std::array<double, 3> fractional{};
};

/// What command words have said of an asymmetric unit.
struct AsymmetricUnit {
  std::array<double, 3> lengths{};  ///< a, b, c in Å; all 0 until they are set
  std::array<double, 3> angles{};   ///< alpha, beta, gamma in degrees
  Text<80> group;                   ///< name, or blank where the number tells it
  std::int32_t group_number = 1;    ///< in the International Tables; 0 where the name tells it
  std::int32_t group_option = 0;    ///< setting of the group; 0 for the library's own choice
  std::vector<Site> sites;

  bool has_cell() const { return lengths[0] > 0.0; }
};
inline AsymmetricUnit asymmetric_unit;

}  // namespace pathstat
