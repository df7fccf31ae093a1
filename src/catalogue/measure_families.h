#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace pathstat {

/// The kinds of measures that a user can mark in a model.
struct MeasureFamily {
  std::int32_t id;            ///< of the catalogue row
  std::int32_t monitor_type;  ///< in the Core
  std::string_view prefix;    ///< of the labels of its named blocks
  std::string_view data_key;  ///< of the user data that remember its monitors
  std::string_view word;      ///< in messages
};

constexpr auto measure_families = std::to_array<MeasureFamily>({
    {501, 60, "Dist", "DistMeas", "DISTANCE"},
    {502, 61, "Ang", "AnglMeas", "ANGLE"},
    {503, 50, "Tor", "TorsMeas", "TORSION"},
    {504, 54, "Plane", "PlanMeas", "PLANE"},
    {505, 59, "Inv", "InvrMeas", "INVERSION"},
    {506, 60, "Dist", "DistMeas", "DISTANCE VECTOR"},
});

constexpr bool is_measure(std::int32_t id) { return id >= 501 && id <= 506; }

/// The family of a row with is_measure.
constexpr const MeasureFamily& measure_family(std::int32_t id) {
  return *std::ranges::find(measure_families, id, &MeasureFamily::id);
}

}  // namespace pathstat
