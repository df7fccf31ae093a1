#include <array>
#include <string>
#include <vector>

#include "building/field_actions.h"
#include "building/field_settings.h"
#include "coreapi/messages.h"
#include "plots/graph.h"
#include "plots/labels.h"
#include "shell/arguments.h"
#include "support/record_file.h"
#include "volumes/table_file.h"

namespace pathstat::field_actions {
namespace {

constexpr std::size_t title_width = 82;  ///< the longest title and its end

std::string joined_names(std::string_view path, std::int32_t functions) {
  std::vector<std::string> names(static_cast<std::size_t>(functions));
  std::int32_t count = 0, status = 0;
  kvA_TBL_GetFunctionNames(path, names, count, status);
  std::string all;
  for (const auto& name : names) {
    if (!name.empty()) all += (all.empty() ? "\"" : ", \"") + name + "\"";
  }
  return all.empty() ? "none that has a name" : all;
}

std::string title_of(std::string_view path, std::string_view function, std::int32_t& status) {
  std::array<char, title_width> title{};
  kvA_TBL_GetFunctionTitle(path, title, function, status);
  return status == 0 && std::string_view(title.data()) != "none" ? title.data() : std::string(function);
}

/// The values of a column against their rows, from 1.
std::vector<float> points_of(std::string_view path, std::string_view function, std::int32_t& status) {
  std::int32_t functions = 0, lines = 0, count = 0;
  kvA_TBL_GetInfo(path, functions, lines, status);
  if (status != 0) return {};
  std::vector<float> values(static_cast<std::size_t>(lines)), xy;
  kvA_TBL_GetFunction(path, function, values, count, status);
  for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k) {
    xy.push_back(static_cast<float>(k + 1));
    xy.push_back(values[k]);
  }
  return xy;
}

}  // namespace

std::int32_t table() {
  Text<1024> path;
  std::int32_t status = 0, functions = 0, lines = 0;
  kvz_argfillstring_(path, 1, 0, "", status);
  if (status != 0) return status;
  status = open_table_file(path.view());
  if (status != 0) {
    if (status != table_status::not_opened) {
      refuse("STRUCTURE_TABLE_UNUSABLE", path.view());
    } else {
      const auto why = why_unreadable(std::string(path.view()));
      refuse("STRUCTURE_TABLE_MISSING", path.view(), why.empty() ? "cannot be opened" : why);
    }
    return status;
  }
  kvA_TBL_GetInfo(path.view(), functions, lines, status);
  current_table = path;
  show_message("STRUCTURE_TABLE", path.view(), functions, lines, joined_names(path.view(), functions));
  return 0;
}

std::int32_t table_column() {
  Text<80> name;
  std::int32_t status = 0;
  kvz_argfillstring_(name, 1, 0, "", status);
  if (status != 0) return status;
  const auto path = current_table.view();
  const auto title = title_of(path, name.view(), status);
  if (status == table_status::no_function) return refuse("STRUCTURE_TABLE_NO_COLUMN", name.view());
  const auto points = status == 0 ? points_of(path, name.view(), status) : std::vector<float>{};
  if (status == 0 && points.empty()) return refuse("STRUCTURE_TABLE_EMPTY", name.view());
  if (status != 0) {
    refuse("STRUCTURE_TABLE_UNUSABLE", path);
    return status;
  }
  const PlotTransaction plots;
  const auto viewer = take_viewer();
  const auto graph = take_graph(title);
  if (!graph) return 1;
  const auto set = take_data_set(name.view(), colourwheel_(0), DrawStyle::curve, name.view());
  write_points(set, points);
  lay_out(*graph, {&set, 1}, {.title = title, .x_label = "Row", .y_label = name.view()});
  show_graphs(viewer, {&*graph, 1});
  return 0;
}

}  // namespace pathstat::field_actions
