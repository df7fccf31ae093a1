#include "building/unit_actions.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>
#include <optional>
#include <string>

#include "building/asymmetric_unit.h"
#include "building/model_draft.h"
#include "coreapi/messages.h"
#include "shell/arguments.h"
#include "structure/crystal_cell.h"
#include "structure/elements.h"

namespace pathstat::unit_actions {
namespace {

constexpr double shortest_length = 0.01, longest_length = 1.0e6;  // Å
constexpr double least_angle = 0.1, largest_angle = 179.9;        // degrees
constexpr double largest_fraction = 1.0e6;
constexpr std::int32_t last_group = 230;

/// Reads arguments one after another; `status` is the first that is not 0.
struct Reader {
  std::int32_t index = 1;
  std::int32_t status = 0;

  double number(double low, double high) {
    double value = 0.0;
    if (status == 0) kvz_argdouble_(value, index++, low, high, status);
    if (status == 0 && !std::isfinite(value)) status = 1;
    return value;
  }
  template <std::size_t N>
  void text(Text<N>& target) {
    if (status == 0) kvz_argfillstring_(target, index++, 0, "", status);
  }
};

/// The number that the whole text is; nothing for any other text.
std::optional<std::int32_t> as_number(std::string_view text) {
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

bool encloses_volume(const std::array<double, 3>& lengths, const std::array<double, 3>& angles) {
  constexpr double degree = std::numbers::pi / 180.0;
  double volume = 0.0;
  std::int32_t status = 0;
  kva_cry_3dparamtocellvolume_(lengths[0], lengths[1], lengths[2], angles[0] * degree, angles[1] * degree,
                               angles[2] * degree, volume, status);
  return status == 0 && volume > 0.0;
}

}  // namespace

std::int32_t cell() {
  Reader read;
  std::array<double, 3> lengths{}, angles{};
  for (auto& length : lengths) length = read.number(shortest_length, longest_length);
  for (auto& angle : angles) angle = read.number(least_angle, largest_angle);
  if (read.status != 0) return read.status;
  if (!encloses_volume(lengths, angles)) return refuse("STRUCTURE_CELL_IMPOSSIBLE", angles[0], angles[1], angles[2]);
  asymmetric_unit.lengths = lengths;
  asymmetric_unit.angles = angles;
  return 0;
}

std::int32_t space_group() {
  Reader read;
  Text<80> name, setting;
  read.text(name);
  if (kvZ_ArgumentTotal() > 1) read.text(setting);
  std::int32_t option = 0;
  const bool numbered = as_number(setting.view()).has_value();
  if (read.status == 0 && numbered) kvz_argint_(option, 2, 1, 99, read.status);
  if (read.status != 0) return read.status;
  std::string stated_name(name.view());
  // A setting that is no number belongs to the name, as H and R do.
  if (!setting.view().empty()) stated_name.append(numbered ? " " : ":").append(setting.view());
  const auto number = as_number(numbered || setting.view().empty() ? name.view() : stated_name);
  if (name.view().empty() || (number && (*number < 1 || *number > last_group))) {
    return refuse("STRUCTURE_GROUP_UNKNOWN", stated_name);
  }
  AsymmetricUnit stated;
  stated.group = number ? std::string_view{} : numbered ? name.view() : std::string_view(stated_name);
  stated.group_number = number.value_or(0);
  stated.group_option = option;
  if (stated_group(stated) == 0) return refuse("STRUCTURE_GROUP_UNKNOWN", stated_name);
  asymmetric_unit.group = stated.group;
  asymmetric_unit.group_number = stated.group_number;
  asymmetric_unit.group_option = option;
  return 0;
}

std::int32_t site() {
  Reader read;
  Text<16> symbol;
  read.text(symbol);
  Site site;
  for (auto& coordinate : site.fractional) coordinate = read.number(-largest_fraction, largest_fraction);
  if (read.status != 0) return read.status;
  site.element = element_of_symbol(symbol.view());
  const auto& element = elements()[static_cast<std::size_t>(site.element)];
  const bool is_known = element.mass > 0 && element.symbol == symbol.view();
  if (!is_known) return refuse("STRUCTURE_ELEMENT_UNKNOWN", symbol.view());
  asymmetric_unit.sites.push_back(site);
  return 0;
}

std::int32_t clear_sites() {
  asymmetric_unit.sites.clear();
  return 0;
}

}  // namespace pathstat::unit_actions
