#include "reports/statistics.h"

#include <array>
#include <cstddef>

#include "reports/column_names.h"
#include "reports/moments.h"
#include "reports/printed_line.h"
#include "reports/value_set.h"

namespace pathstat {
namespace {

constexpr std::array<std::string_view, 3> vector_components{"X", "Y", "Z"};
constexpr ComponentNames cell_headings{{"|a|", "|b|", "|c|", "alpha", "beta", "gamma"}, {"|u|", "|v|", "theta"}, "|z|"};

/// False where there are too few numbers for statistics.
bool show(const Moments& moments) {
  if (moments.count < 2) {
    print_line("PATHSTAT_MSG_63");
    return false;
  }
  for (const double result :
       {moments.mean, moments.deviation, moments.skewness, moments.kurtosis, moments.smallest, moments.largest}) {
    push(static_cast<float>(result));
  }
  print_line("PATHSTAT_MSG_61");
  if (!moments.has_skewness) print_line("PATHSTAT_WARN_17");
  if (!moments.has_kurtosis) print_line("PATHSTAT_WARN_18");
  return true;
}

bool show_part(std::string_view label, std::string_view name, const ValueSet& set) {
  print_line("PATHSTAT_MSG_62", label, name);
  return show(moments_of(set));
}

}  // namespace

void calcstatistics_(std::int32_t id, std::string_view name, std::span<const double> table, std::int32_t frames,
                     std::int32_t values, std::span<const std::int32_t> row_sizes, std::int32_t& status) {
  status = 0;
  if (id == property_id::dipole_vector || id == property_id::distance_vector) {
    for (std::size_t c = 0; c < vector_components.size(); ++c) {
      const ValueSet component{table, values, frames, row_sizes, static_cast<std::int32_t>(c), 3};
      if (!show_part(vector_components[c], name, component)) return;
    }
  } else if (id == property_id::stress || id == property_id::cell_parameters) {
    const ComponentNames& headings = id == property_id::stress ? stress_components : cell_headings;
    for (std::int32_t column = 0; column < values; ++column) {
      if (!show_part(headings.name(values, column), name, column_of(table, values, frames, column))) return;
    }
  } else {
    print_line("PATHSTAT_MSG_60", name);
    show(moments_of({table, values, frames, row_sizes, 0, 1}));
  }
}

}  // namespace pathstat
