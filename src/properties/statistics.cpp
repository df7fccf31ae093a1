#include "properties/statistics.h"

#include <array>
#include <cstddef>

#include "coreapi/operations.h"
#include "properties/moments.h"
#include "properties/value_set.h"

namespace pathstat {
namespace {

constexpr std::int32_t stress = 205;
constexpr std::int32_t cell_parameters = 206;
constexpr std::int32_t dipole_vector = 302;
constexpr std::int32_t distance_vector = 506;

constexpr std::array<std::string_view, 3> component_labels{"X", "Y", "Z"};

/// What the columns of stress and cell parameters are called, by their number.
struct ColumnHeadings {
  std::array<std::string_view, 6> of_six;
  std::array<std::string_view, 3> of_three;
  std::string_view of_any;

  std::string_view heading(std::int32_t values, std::size_t column) const {
    if (values == 6) return of_six[column];
    return values == 3 ? of_three[column] : of_any;
  }
};

constexpr ColumnHeadings stress_headings{{"xx", "yy", "zz", "yz", "xz", "xy"}, {"yy", "zz", "yz"}, "zz"};
constexpr ColumnHeadings cell_headings{{"|a|", "|b|", "|c|", "alpha", "beta", "gamma"}, {"|u|", "|v|", "theta"}, "|z|"};

void display(std::string_view key) {
  std::int32_t error = 0;
  kvu_msg_display_(2, key, error);
}

/// False where there are too few numbers for statistics.
bool show(const Moments& moments) {
  if (moments.count < 2) {
    display("PATHSTAT_MSG_63");
    return false;
  }
  for (const double result :
       {moments.mean, moments.deviation, moments.skewness, moments.kurtosis, moments.smallest, moments.largest}) {
    kvu_msg_argf_(static_cast<float>(result));
  }
  display("PATHSTAT_MSG_61");
  if (!moments.has_skewness) display("PATHSTAT_WARN_17");
  if (!moments.has_kurtosis) display("PATHSTAT_WARN_18");
  return true;
}

bool show_part(std::string_view label, std::string_view name, const ValueSet& set) {
  kvu_msg_args_(label);
  kvu_msg_args_(name);
  display("PATHSTAT_MSG_62");
  return show(moments_of(set));
}

}  // namespace

void calcstatistics_(std::int32_t id, std::string_view name, std::span<const double> table, std::int32_t frames,
                     std::int32_t values, std::span<const std::int32_t> row_sizes, std::int32_t& status) {
  status = 0;
  if (id == dipole_vector || id == distance_vector) {
    for (std::size_t c = 0; c < component_labels.size(); ++c) {
      const ValueSet component{table, values, frames, row_sizes, static_cast<std::int32_t>(c), 3};
      if (!show_part(component_labels[c], name, component)) return;
    }
  } else if (id == stress || id == cell_parameters) {
    const ColumnHeadings& headings = id == stress ? stress_headings : cell_headings;
    for (std::int32_t column = 0; column < values; ++column) {
      const std::string_view heading = headings.heading(values, static_cast<std::size_t>(column));
      if (!show_part(heading, name, column_of(table, values, frames, column))) return;
    }
  } else {
    kvu_msg_args_(name);
    display("PATHSTAT_MSG_60");
    show(moments_of({table, values, frames, row_sizes, 0, 1}));
  }
}

}  // namespace pathstat
