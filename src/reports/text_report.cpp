#include "reports/text_report.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <string_view>

#include "catalogue/measure_families.h"
#include "plots/labels.h"
#include "reports/column_names.h"
#include "reports/printed_line.h"
#include "support/number_format.h"

namespace pathstat {
namespace {

/// Keys of a line, by what its x is.
struct LineKeys {
  std::string_view model;
  std::string_view conformer;
  std::string_view time;
};

constexpr LineKeys lines_of_one{"PATHSTAT_MSG_51", "PATHSTAT_MSG_8", "PATHSTAT_MSG_9"};
constexpr LineKeys lines_of_three{"PATHSTAT_MSG_50", "PATHSTAT_MSG_10", "PATHSTAT_MSG_11"};
constexpr LineKeys lines_of_six{"PATHSTAT_MSG_49", "PATHSTAT_MSG_12", "PATHSTAT_MSG_13"};
constexpr LineKeys formatted_lines{"PATHSTAT_MSG_22", "PATHSTAT_MSG_22", "PATHSTAT_MSG_22"};

/// What stands in a header behind the name of x; `plain` headers name their columns themselves.
enum class Header { plain, length_of_z, data_labels };

constexpr std::int32_t any = -1;

/// How the columns of some properties are printed.
struct TextLayout {
  std::int32_t first_id;
  std::int32_t last_id;
  std::int32_t values;  ///< numbers per row, or any
  std::int32_t group;   ///< columns side by side; more columns make further tables
  Header header;
  std::string_view models_header;
  std::string_view frames_header;
  LineKeys lines;
  bool as_text = false;  ///< each line is one formatted text
};

constexpr std::int32_t last = std::numeric_limits<std::int32_t>::max();

// clang-format off
constexpr auto layouts = std::to_array<TextLayout>({
    {302, 302,  any, 3, Header::data_labels, "PATHSTAT_MSG_59", "PATHSTAT_MSG_43", lines_of_three},
    {506, 506,  any, 3, Header::data_labels, "PATHSTAT_MSG_59", "PATHSTAT_MSG_43", lines_of_three},
    {501, 505,  any, 6, Header::data_labels, "PATHSTAT_MSG_58", "PATHSTAT_MSG_42", formatted_lines, true},
    {206, 206,    6, 6, Header::plain,       "PATHSTAT_MSG_55", "PATHSTAT_MSG_5",  lines_of_six},
    {206, 206,    3, 3, Header::plain,       "PATHSTAT_MSG_56", "PATHSTAT_MSG_6",  lines_of_three},
    {206, 206,    1, 1, Header::length_of_z, "PATHSTAT_MSG_57", "PATHSTAT_MSG_7",  lines_of_one},
    {205, 205,    6, 6, Header::plain,       "PATHSTAT_MSG_52", "PATHSTAT_MSG_14", lines_of_six},
    {205, 205,    3, 3, Header::plain,       "PATHSTAT_MSG_53", "PATHSTAT_MSG_15", lines_of_three},
    {205, 205,    1, 1, Header::length_of_z, "PATHSTAT_MSG_54", "PATHSTAT_MSG_16", lines_of_one},
    {  0, last, any, 1, Header::data_labels, "PATHSTAT_MSG_57", "PATHSTAT_MSG_7",  lines_of_one},
});
// clang-format on

const TextLayout& layout_of(const ResultSeries& series) {
  return *std::ranges::find_if(layouts, [&](const TextLayout& row) {
    return row.first_id <= series.id && series.id <= row.last_id && (row.values == any || row.values == series.values);
  });
}

/// How x is printed. The formats are those of lines that are one text.
struct XForm {
  std::string_view heading;
  std::string_view LineKeys::*key;
  std::string_view value_format;
};

constexpr XForm model_form{"MODEL NAME", &LineKeys::model, "(g11.4)"};
constexpr XForm conformer_form{"CONFORMER", &LineKeys::conformer, "(g11.4)"};
constexpr XForm time_form{"TIME", &LineKeys::time, "(g11.5)"};

const XForm& x_form(const ResultSeries& series) {
  if (series.kind == kind_models) return model_form;
  return series.has_time_axis ? time_form : conformer_form;
}

std::string x_text(const ResultSeries& series, std::size_t row) {
  if (series.kind == kind_models) return std::string(series.model_names[row].full());
  return series.has_time_axis ? formatted(series.x[row], "(f8.4)") : formatted(whole_number(series.x[row]), "(i8)");
}

void push_x(const ResultSeries& series, std::size_t row) {
  if (series.kind == kind_models) return push(series.model_names[row]);
  if (series.has_time_axis) return push(static_cast<float>(series.x[row]));
  push(whole_number(series.x[row]));
}

/// Columns side by side in one table; first and end count from 0.
struct ColumnGroup {
  std::int32_t first;
  std::int32_t end;
};

void print_header(const ResultSeries& series, const TextLayout& layout, std::int32_t first) {
  constexpr std::string_view no_label = "                                ";
  push(x_form(series).heading);
  if (layout.header == Header::length_of_z) push("|z|");
  if (layout.header == Header::data_labels) {
    for (std::int32_t column = first; column < first + layout.group; ++column) {
      push(column < series.values ? std::string_view(data_label(series.id, series.mode, column)) : no_label);
    }
  }
  print_line(series.kind == kind_models ? layout.models_header : layout.frames_header);
}

void print_row(const ResultSeries& series, const TextLayout& layout, ColumnGroup group, std::int32_t row) {
  const XForm& form = x_form(series);
  const auto at = static_cast<std::size_t>(row);
  if (layout.as_text) {
    std::string line = x_text(series, at);
    for (std::int32_t column = group.first; column < group.end; ++column) {
      line += ' ' + formatted(series.value(row, column), form.value_format);
    }
    push(line);
  } else {
    push_x(series, at);
    for (std::int32_t column = group.first; column < group.end; ++column) {
      push(static_cast<float>(series.value(row, column)));
    }
  }
  print_line(layout.lines.*form.key);
}

std::string distribution_heading(const ResultSeries& series, std::int32_t column) {
  if (is_measure(series.id)) return data_label(series.id, series.mode, column);
  if (series.id == property_id::stress) return std::string(stress_components.name(series.values, column));
  if (series.id == property_id::cell_parameters) return std::string(cell_components.name(series.values, column));
  std::string heading(trimmed(series.name));
  if (series.values > 1) heading += ' ' + std::to_string(column + 1);
  return heading;
}

std::int32_t distribution_columns(const ResultSeries& series) {
  if (!is_measure(series.id)) return series.values;
  return std::min(series.id == property_id::distance_vector ? 3 : 1, series.values);
}

void print_distribution(const ResultSeries& series) {
  for (std::int32_t column = 0; column < distribution_columns(series); ++column) {
    print_line(is_measure(series.id) ? "PATHSTAT_MSG_41" : "PATHSTAT_MSG_17", distribution_heading(series, column));
    const double width = series.bin_width(column);
    const std::int32_t bins = width == 0.0 ? 1 : series.points;
    double centre = series.first_centre(column);
    for (std::int32_t bin = 0; bin < bins; ++bin, centre += width) {
      print_line("PATHSTAT_MSG_9", static_cast<float>(centre), static_cast<float>(series.value(bin, column)));
    }
  }
}

}  // namespace

void writeprofile_(const ResultSeries& series, std::int32_t& status) {
  status = 0;
  if (series.points < 1) return;
  if (series.mode == distribution_mode) return print_distribution(series);
  const TextLayout& layout = layout_of(series);
  for (std::int32_t first = 0; first < series.values; first += layout.group) {
    const ColumnGroup group{first, std::min(first + layout.group, series.values)};
    print_header(series, layout, first);
    for (std::int32_t row = 0; row < series.points; ++row) print_row(series, layout, group, row);
  }
}

}  // namespace pathstat
