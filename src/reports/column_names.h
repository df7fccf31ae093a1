#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace pathstat {

/// Properties whose columns have reports of their own.
namespace property_id {
constexpr std::int32_t stress = 205;
constexpr std::int32_t cell_parameters = 206;
constexpr std::int32_t dipole_vector = 302;
constexpr std::int32_t distance_vector = 506;
}  // namespace property_id

/// What the columns of stress or cell parameters are called: six numbers a row for three periodic directions, three for
/// two, one for one.
struct ComponentNames {
  std::array<std::string_view, 6> of_six;
  std::array<std::string_view, 3> of_three;
  std::string_view of_one;

  /// @param column  from 0, below `values`
  constexpr std::string_view name(std::int32_t values, std::int32_t column) const {
    const auto at = static_cast<std::size_t>(column);
    if (values == 6) return of_six[at];
    return values == 3 ? of_three[at] : of_one;
  }
};

constexpr ComponentNames stress_components{{"xx", "yy", "zz", "yz", "xz", "xy"}, {"yy", "zz", "yz"}, "zz"};
constexpr ComponentNames cell_components{{"a", "b", "c", "alpha", "beta", "gamma"}, {"u", "v", "theta"}, "z"};

/// trjdatalabel_ without its padding. @param column  from 0
std::string data_label(std::int32_t id, std::int32_t mode, std::int32_t column);

}  // namespace pathstat
