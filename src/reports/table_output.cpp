#include "reports/table_output.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "coreapi/operations.h"
#include "plots/labels.h"
#include "reports/column_names.h"
#include "reports/printed_line.h"
#include "services/file_names.h"
#include "services/file_units.h"
#include "state/analysis_settings.h"
#include "state/table_state.h"
#include "support/named_memory.h"
#include "support/number_format.h"
#include "support/record_file.h"
#include "support/within_memory.h"

namespace pathstat {
namespace {

namespace column_type {
constexpr std::int32_t conformer = 111;
constexpr std::int32_t component = 222;
constexpr std::int32_t number = 333;
constexpr std::int32_t model = 444;
}  // namespace column_type

using ColumnName = Text<80>;

struct TableBlock {
  std::string_view label;
  std::string_view type;
  std::int64_t width;  ///< elements per column
  std::intptr_t TablesaveP::*address;
};

constexpr std::array<TableBlock, 4> table_blocks{{
    {"pathstat/TO/TableRow", "double", 1, &TablesaveP::row},
    {"pathstat/TO/TableColumnNames", "char", sizeof(ColumnName), &TablesaveP::column_names},
    {"pathstat/TO/TableDataType", "int", 1, &TablesaveP::column_types},
    {"pathstat/TO/TableColumnLength", "int", 1, &TablesaveP::column_lengths},
}};

void free_table() {
  tablesave_i_ = {};
  for (const auto& block : table_blocks) {
    std::int32_t unknown = 0;
    kvs_msd_free_(block.label, unknown);
    tablesave_p_.*block.address = 0;
  }
}

/// The blocks as they stand for a number of columns.
struct TableColumns {
  explicit TableColumns(std::int32_t count)
      : row(pointer_at<double>(tablesave_p_.row), static_cast<std::size_t>(count)),
        names(pointer_at<ColumnName>(tablesave_p_.column_names), row.size()),
        types(pointer_at<std::int32_t>(tablesave_p_.column_types), row.size()),
        lengths(pointer_at<std::int32_t>(tablesave_p_.column_lengths), row.size()) {}

  std::span<double> row;
  std::span<ColumnName> names;
  std::span<std::int32_t> types;
  std::span<std::int32_t> lengths;
};

/// The pair of work files of a table file.
struct WorkFiles {
  explicit WorkFiles(std::string_view file) {
    const std::string path = expanded_name(trimmed(file));
    const std::string stem = path.substr(0, path.size() - std::min<std::size_t>(path.size(), 4));
    first = stem + ".bn1";
    second = stem + ".bn2";
  }
  /// The one that holds the table; empty if neither is there.
  std::string present() const {
    if (kvs_fil_exists_(first)) return first;
    return kvs_fil_exists_(second) ? second : std::string{};
  }
  void remove() const {
    ::unlink(first.c_str());
    ::unlink(second.c_str());
  }

  std::string first;
  std::string second;
};

struct NewColumn {
  std::string name;
  std::int32_t type;
};

/// Columns of the property itself, without x and frequencies.
std::int32_t value_columns(const ResultSeries& series) {
  if (series.mode != distribution_mode) return series.values;
  if (series.id == property_id::stress || series.id == property_id::cell_parameters) {
    const bool is_named = series.values == 6 || series.values == 3 || series.values == 1;
    return is_named ? series.values : 0;
  }
  return std::min(series.id == property_id::distance_vector ? 3 : 1, series.values);
}

NewColumn value_column(const ResultSeries& series, std::int32_t column) {
  const std::string name(trimmed(series.name));
  if (series.id == property_id::stress) {
    return {name + std::string(stress_components.name(series.values, column)), column_type::component};
  }
  if (series.id == property_id::cell_parameters) {
    return {name + ' ' + std::string(cell_components.name(series.values, column)), column_type::component};
  }
  return {data_label(series.id, series.mode, column), column_type::number};
}

NewColumn x_column(const ResultSeries& series, bool of_trajectory) {
  if (!of_trajectory) return {"Model Name", column_type::model};
  return series.has_time_axis ? NewColumn{"Time", column_type::number} : NewColumn{"Conformer", column_type::conformer};
}

/// A property's part of the table.
class TablePart {
 public:
  TablePart(const ResultSeries& series, std::string_view source, bool is_first)
      : series_(series),
        of_trajectory_(same_text(source, from_trajectory)),
        has_x_(is_first && series.mode != distribution_mode),
        value_columns_(value_columns(series)) {}

  std::vector<NewColumn> columns() const {
    std::vector<NewColumn> list;
    if (has_x_) list.push_back(x_column(series_, of_trajectory_));
    for (std::int32_t column = 0; column < value_columns_; ++column) {
      list.push_back(value_column(series_, column));
      if (series_.mode == distribution_mode) list.push_back({"Frequency", column_type::number});
    }
    return list;
  }
  std::int32_t rows() const { return series_.points; }
  /// Fills the cells of a row, from 0; as many as columns().
  void fill(std::int32_t row, std::span<double> cells) const {
    auto cell = cells.begin();
    if (has_x_) *cell++ = of_trajectory_ ? series_.x[static_cast<std::size_t>(row)] : row + 1.0;
    for (std::int32_t column = 0; column < value_columns_; ++column) {
      if (series_.mode == distribution_mode) *cell++ = series_.first_centre(column) + series_.bin_width(column) * row;
      *cell++ = series_.value(row, column);
    }
  }

 private:
  const ResultSeries& series_;
  bool of_trajectory_;
  bool has_x_;
  std::int32_t value_columns_;
};

/// Reads the next record into the row.
RecordStatus read_row(RecordReader& file, std::span<double> row) {
  auto status = file.expect(static_cast<std::int64_t>(row.size_bytes()));
  if (status == RecordStatus::ok) status = file.load();
  if (status == RecordStatus::ok) load_big_endian(file.payload().data(), row);
  return status;
}

/// Copies the table of `before` columns from one work file to the other, with the cells of a property behind each row.
RecordStatus copy_rows(const TablePart& part, std::size_t before, std::span<double> row, const std::string& input,
                       const std::string& output) {
  RecordReader from;
  RecordWriter to;
  auto status = to.create_new(output);
  if (status == RecordStatus::ok && before > 0) status = from.open(input);
  const std::int32_t old_rows = before > 0 ? tablesave_i_.table_rows : 0;
  const std::int32_t rows = std::max(old_rows, part.rows());
  RecordBytes record;
  for (std::int32_t k = 0; k < rows && status == RecordStatus::ok; ++k) {
    std::ranges::fill(row, 0.0);
    if (k < old_rows) status = read_row(from, row.first(before));
    if (k < part.rows()) part.fill(k, row.subspan(before));
    record.clear();
    record.all<double>(row);
    if (status == RecordStatus::ok) status = to.write(record);
  }
  return status == RecordStatus::ok ? to.close() : status;
}

void resize_table(std::int32_t columns, std::int32_t& status) {
  for (const auto& block : table_blocks) {
    kvs_msd_realloc_(block.label, columns * block.width, tablesave_p_.*block.address, status);
    if (status != 0) return;
  }
}

/// The forms of the numbers of a column.
struct CellForm {
  std::int32_t type;
  std::string_view format;
};

constexpr std::array<CellForm, 2> real_forms{{{column_type::component, "(e16.9)"}, {column_type::number, "(g24.16)"}}};

std::string cell_text(double value, std::int32_t type, std::span<const ModelName> names) {
  const std::int64_t whole = std::llround(value);
  if (type == column_type::conformer) return formatted(whole, "(i10)");
  if (type == column_type::model) {
    const bool is_known = whole >= 1 && std::cmp_less_equal(whole, names.size());
    return is_known ? names[static_cast<std::size_t>(whole - 1)].str() : std::string{};
  }
  return formatted(value, std::ranges::find(real_forms, type, &CellForm::type)->format);
}

/// Adds a cell to a line: without trailing blanks, and without characters that would end the cell.
void add_cell(std::string& line, bool is_first, std::string_view text) {
  if (!is_first) line += '\t';
  for (const char character : trimmed(text)) line += static_cast<unsigned char>(character) < ' ' ? ' ' : character;
}

bool write_lines(RecordReader& from, std::int32_t unit, const TableColumns& columns, std::span<const ModelName> names) {
  std::string line;
  for (std::size_t c = 0; c < columns.names.size(); ++c) add_cell(line, c == 0, columns.names[c]);
  if (!unit_write_line(unit, line)) return false;
  for (std::int32_t row = 0; row < tablesave_i_.table_rows; ++row) {
    if (read_row(from, columns.row) != RecordStatus::ok) return false;
    line.clear();
    for (std::size_t c = 0; c < columns.row.size(); ++c) {
      const bool is_blank = row >= columns.lengths[c];
      add_cell(line, c == 0, is_blank ? std::string{} : cell_text(columns.row[c], columns.types[c], names));
    }
    if (!unit_write_line(unit, line)) return false;
  }
  return true;
}

void write_table(const std::string& work_file, const std::string& path, std::span<const ModelName> names,
                 std::int32_t& status) {
  RecordReader from;
  status = from.open(work_file) == RecordStatus::ok ? 0 : table_failed;
  if (status != 0) return;
  FileUnit unit(path, {.form = UnitForm::formatted}, status);
  if (status != 0) return;
  bool is_written = false;
  const bool fits = within_memory(
      [&] { is_written = write_lines(from, unit.number(), TableColumns(tablesave_i_.table_columns), names); });
  if (unit.close() && fits && is_written) return;
  status = table_failed;
  ::unlink(path.c_str());
}

}  // namespace

void inittableoutput_(std::string_view file, std::int32_t& status) {
  constexpr std::int32_t not_answered = 0;
  constexpr std::int32_t replace = 1;
  status = 0;
  const auto name = trimmed(file);
  if (kvs_fil_exists_(name)) {
    std::int32_t choice = 0;
    std::int32_t error = 0;
    push(name);
    kvu_mod_getoption_("StatFilePrompt", "StatFileOptions", choice, error);
    if (choice == not_answered) print_line("PATHSTAT_MSG_31", name);
    if (choice != not_answered && choice != replace) {
      print_line("PATHSTAT_WARN_8", name);
      status = table_file_kept;
      return;
    }
    kvs_fil_delete_(name, status);
    if (status != 0) return print_line("PATHSTAT_ERROR_56", name);
  }
  free_table();
  for (const auto& block : table_blocks) {
    kvs_msd_alloc_(block.label, block.type, block.width, tablesave_p_.*block.address, status);
    if (status != 0) return free_table();
  }
}

void tableprofile_(const ResultSeries& series, std::string_view source, std::string_view file, std::int32_t& status) {
  status = 0;
  if (series.points < 1) return;
  const std::int32_t before = tablesave_i_.table_columns;
  const TablePart part(series, source, before < 1);
  const auto added = part.columns();
  if (added.empty()) return;
  const std::int32_t after = before + static_cast<std::int32_t>(added.size());
  resize_table(after, status);
  if (status != 0) return;

  const WorkFiles work(file);
  if (before < 1) work.remove();
  const std::string input = before < 1 ? std::string{} : work.present();
  const std::string& output = input == work.first ? work.second : work.first;
  const TableColumns columns(after);
  const auto old_columns = static_cast<std::size_t>(before);
  if (copy_rows(part, old_columns, columns.row, input, output) != RecordStatus::ok) {
    ::unlink(output.c_str());
    status = table_failed;
    return;
  }
  if (before > 0) ::unlink(input.c_str());
  for (std::size_t k = 0; k < added.size(); ++k) {
    columns.names[old_columns + k] = added[k].name;
    columns.types[old_columns + k] = added[k].type;
    columns.lengths[old_columns + k] = series.points;
  }
  tablesave_i_ = {after, std::max(tablesave_i_.table_rows, series.points)};
}

void finishtableoutput_(std::string_view file, std::span<const ModelName> model_names, std::int32_t& status) {
  status = 0;
  if (tablesave_i_.table_columns < 1) return;
  const std::string input = WorkFiles(file).present();
  if (input.empty()) {
    status = table_failed;
    return;
  }
  write_table(input, expanded_name(trimmed(file)), model_names, status);
  free_table();
  ::unlink(input.c_str());
}

TableScope::TableScope(std::string_view file) {
  WorkFiles work(file);
  work_files_ = {std::move(work.first), std::move(work.second)};
}

TableScope::~TableScope() {
  free_table();
  for (const auto& file : work_files_) ::unlink(file.c_str());
}

}  // namespace pathstat
