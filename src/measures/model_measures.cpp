#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>

#include "catalogue/measure_families.h"
#include "catalogue/measures.h"
#include "coreapi/operations.h"
#include "measures/measures.h"
#include "support/named_memory.h"

namespace pathstat {
namespace {

constexpr std::string_view monitors_label = "pathstat/ModMeas/MeasOIDs";

void current_values(std::int32_t type, std::span<const std::int32_t> monitors, std::span<double> values,
                    std::int32_t& status) {
  switch (type) {
    case 60:
      return kvd_mon_distcurrent_(monitors, values, status), void();
    case 61:
      return kvd_mon_anglecurrent_(monitors, values, status), void();
    case 50:
      return kvd_mon_torsioncurrent_(monitors, values, status), void();
    case 54:
      return kvd_mon_planeplanecurrent_(monitors, values, status), void();
    case 59:
      return kvd_mon_inversioncurrent_(monitors, values, status), void();
    default:
      status = 1;
  }
}

/// The monitors of a model, as a named block; empty without any or on an error.
/// @param room  how many there may be
NamedBlock<std::int32_t> monitors_of(std::int32_t model, std::int32_t type, std::size_t room, std::int32_t& status) {
  const std::int32_t count = numberofmeasures_(model, type, status);
  if (status == 0 && std::cmp_greater(count, room)) status = 1;
  if (status != 0 || count < 1) return {};
  NamedBlock<std::int32_t> monitors(monitors_label, count, status);
  if (status == 0) getmeasureoids_(model, type, monitors.span(), status);
  return monitors;
}

/// Where one side of the distance monitors stands, x, y, z of each.
void positions(std::span<const std::int32_t> atoms, std::span<double> xyz, std::int32_t& status) {
  if (status == 0) kvd_xyz_(atoms, xyz, status);
}

}  // namespace

std::int32_t maxnummodelmeasures_(std::span<const std::int32_t> models, std::int32_t id, std::int32_t& status) {
  status = is_measure(id) ? 0 : 1;
  std::int32_t most = 0;
  for (const std::int32_t model : models) {
    std::int32_t error = 0;
    if (status == 0) most = std::max(most, numberofmeasures_(model, measure_family(id).monitor_type, error));
  }
  return most;
}

void getmodelmeasures_(std::int32_t type, std::int32_t model, std::span<double> values, std::int32_t& count,
                       std::int32_t& status) {
  count = 0;
  const auto monitors = monitors_of(model, type, values.size(), status);
  if (status != 0 || monitors.size() == 0) return;
  current_values(type, monitors.span(), values.first(monitors.size()), status);
  if (status == 0) count = static_cast<std::int32_t>(monitors.size());
}

void getmodeldistvectors_(std::int32_t model, std::int32_t& count, std::span<double> values, std::int32_t& status) {
  constexpr std::int32_t distance_monitor = 60;
  count = 0;
  const auto monitors = monitors_of(model, distance_monitor, values.size() / 3, status);
  const auto size = static_cast<std::int64_t>(monitors.size());
  if (status != 0 || size == 0) return;
  const NamedBlock<std::int32_t> one("pathstat/ModMeas/AtOIDs1", size, status);
  if (status != 0) return;
  const NamedBlock<std::int32_t> other("pathstat/ModMeas/AtOIDs2", size, status);
  if (status != 0) return;
  const NamedBlock<double> from("pathstat/ModMeas/xyz1", 3 * size, status);
  if (status != 0) return;
  const NamedBlock<double> to("pathstat/ModMeas/xyz2", 3 * size, status);
  if (status == 0) kvd_mon_distanceobjects_(monitors.span(), one.span(), other.span(), status);
  positions(one.span(), from.span(), status);
  positions(other.span(), to.span(), status);
  if (status != 0) return;
  std::ranges::transform(to.span(), from.span(), values.begin(), std::minus<>{});
  count = static_cast<std::int32_t>(to.size());
}

}  // namespace pathstat
