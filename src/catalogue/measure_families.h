#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "state/measure_state.h"

namespace pathstat {

/// A kind of measure that a user can mark in a model, as a row of the catalogue. Distances and distance vectors are two
/// rows of the same monitors.
struct MeasureFamily {
  std::int32_t id;            ///< of the catalogue row
  std::int32_t monitor_type;  ///< in the Core
  std::string_view prefix;    ///< of the labels of its named blocks
  std::string_view data_key;  ///< of the user data that remember its monitors
  std::string_view word;      ///< in messages
  std::string_view labels;    ///< the named block of its labels
  std::size_t atoms;          ///< of a measure
  std::size_t first_atom;     ///< place of its first block in trjmeasures_p_.atoms and .images
  std::size_t label_place;    ///< in trjmeasures_p_.labels
  std::int32_t values;        ///< numbers of a measure
  std::int32_t TrjMeasuresI::*count;

  constexpr bool has_conventions() const { return id == 505; }
};

constexpr auto measure_families = std::to_array<MeasureFamily>({
    {501, 60, "Dist", "DistMeas", "DISTANCE", "DistLabels", 2, 0, 0, 1, &TrjMeasuresI::dist_measures},
    {502, 61, "Ang", "AnglMeas", "ANGLE", "AngLabels", 3, 2, 1, 1, &TrjMeasuresI::angle_measures},
    {503, 50, "Tor", "TorsMeas", "TORSION", "TorLabels", 4, 5, 2, 1, &TrjMeasuresI::torsion_measures},
    {504, 54, "Plane", "PlanMeas", "PLANE", "PlanLabels", 6, 13, 4, 1, &TrjMeasuresI::plane_measures},
    {505, 59, "Inv", "InvrMeas", "INVERSION", "InvLabels", 4, 9, 3, 1, &TrjMeasuresI::inversion_measures},
    {506, 60, "Dist", "DistMeas", "DISTANCE VECTOR", "DistLabels", 2, 0, 0, 3, &TrjMeasuresI::dist_measures},
});

constexpr bool is_measure(std::int32_t id) { return id >= 501 && id <= 506; }

/// The family of a row with is_measure.
constexpr const MeasureFamily& measure_family(std::int32_t id) {
  return *std::ranges::find(measure_families, id, &MeasureFamily::id);
}

}  // namespace pathstat
