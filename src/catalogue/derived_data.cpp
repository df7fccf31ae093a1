#include "catalogue/derived_data.h"

#include <algorithm>
#include <array>

#include "catalogue/catalogue.h"
#include "state/analysis_settings.h"

namespace pathstat {
namespace {

/// Rows whose data come from commands of their own.
constexpr std::array<std::string_view, 4> rows_of_commands{"Dipole Vector", "Dipole Magnitude", "Free Volume",
                                                           "Fractional Free Volume"};

}  // namespace

void killcache_(std::int32_t& status) {
  status = 0;
  const auto properties = property_table();
  for (std::size_t row = 0; row < properties.size(); ++row) {
    const auto name = properties.names[row].view();
    properties.on_disk[row] = false;
    properties.calculated[row] = std::ranges::find(rows_of_commands, name) == rows_of_commands.end();
    properties.selected[row] = properties.selected[row] && properties.calculated[row];
  }
  trj_gui_l_.any_property_selected = properties.any_wanted();
  forget_measures();
  const auto fluctuations = fluctuation_table();
  std::ranges::fill(fluctuations.on_disk, Logical(false));
  trj_gui_l_.any_fluctuation_selected = fluctuations.any_wanted();
}

}  // namespace pathstat
