#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace pathstat {

/// The boxes of the contact finder, of which there is one set at a time. A box holds the number of its first atom,
/// from 1, or -1; each atom's link leads to the next.
struct ContactGrid {
  static constexpr std::size_t most_boxes = 8000;

  double box_size = 1;
  std::array<double, 3> origin{};
  std::array<std::int32_t, most_boxes> head{};
  std::array<std::int32_t, 3> boxes{};   ///< nx, ny, nz
  std::array<std::int32_t, 3> stride{};  ///< ny nz, nz, 1
};

inline ContactGrid kva_findcontactcom_;

}  // namespace pathstat
