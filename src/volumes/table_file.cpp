#include "volumes/table_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "services/text_operations.h"
#include "support/record_file.h"

namespace pathstat {
namespace {

constexpr std::size_t longest_kept = 80;
constexpr std::string_view blanks = " \t";

struct Function {
  std::string title, measurement, units, name;
};

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

struct Table {
  std::string path;
  std::unique_ptr<std::FILE, FileCloser> stream;
  std::vector<Function> functions;  ///< by column
  std::int32_t data_lines = 0;
  std::int32_t header_lines = 0;
};

std::unique_ptr<Table> open_table;

enum class Line { read, end, too_long };

/// Reads a line without its end.
Line next_line(std::FILE* stream, std::string& line) {
  std::array<char, longest_table_line + 2> buffer;
  if (std::fgets(buffer.data(), static_cast<int>(buffer.size()), stream) == nullptr) return Line::end;
  line = buffer.data();
  if (line.ends_with('\n')) {
    line.pop_back();
  } else if (line.size() > longest_table_line) {
    return Line::too_long;
  }
  if (line.ends_with('\r')) line.pop_back();
  return Line::read;
}

bool is_mark(std::string_view line) { return line.starts_with('#'); }

/// What one line of a block tells: its first word, characters to pass over behind it, and where the rest goes.
struct Entry {
  std::string_view word;
  std::size_t passed_over;
  std::string Function::*field;
};
constexpr std::array entries{
    Entry{"TITLE:", 0, &Function::title},
    Entry{"MEASUREMENT", std::string_view(" TYPE:").size(), &Function::measurement},
    Entry{"UNITS", std::string_view(" OF MEASUREMENT:").size(), &Function::units},
    Entry{"FUNCTION:", 0, &Function::name},
};

std::string kept_part(std::string_view rest) {
  const auto text = kvS_STR_TrimWhiteSpace(rest);
  return std::string(text.substr(0, text.size() > longest_kept ? longest_kept - 1 : text.size()));
}

/// @return false for a line without a word and for an empty name
bool take_line(std::string_view line, Function& function) {
  const auto begin = line.find_first_not_of(blanks);
  if (begin == std::string_view::npos) return false;
  line.remove_prefix(begin);
  const auto word = line.substr(0, line.find_first_of(blanks));
  const auto entry = std::ranges::find(entries, word, &Entry::word);
  if (entry == entries.end()) return true;
  const auto rest = line.substr(std::min(line.size(), word.size() + entry->passed_over));
  function.*entry->field = kept_part(rest);
  return entry->field != &Function::name || !function.name.empty();
}

/// Reads the lines up to the data. @return false for a format error
bool read_header(Table& table) {
  std::string line;
  const auto next = [&] {
    const auto read = next_line(table.stream.get(), line);
    if (read == Line::read) ++table.header_lines;
    return read;
  };
  Line read = next();
  while (read == Line::read && !is_mark(line)) read = next();
  bool in_block = false, at_mark = false;
  while (read == Line::read && (read = next()) == Line::read) {
    if (is_mark(line)) {
      if (at_mark) break;
      at_mark = true;
      in_block = false;
      continue;
    }
    at_mark = false;
    if (!in_block) table.functions.emplace_back();
    in_block = true;
    if (!take_line(line, table.functions.back())) return false;
  }
  for (auto& function : table.functions) {
    for (auto* text : {&function.measurement, &function.units}) {
      if (text->empty()) *text = "none";
    }
  }
  return read != Line::too_long;
}

/// @return false for a line that is too long
bool count_data_lines(Table& table) {
  std::string line;
  auto read = next_line(table.stream.get(), line);
  for (; read == Line::read; read = next_line(table.stream.get(), line)) table.data_lines += is_mark(line) ? 0 : 1;
  return read == Line::end;
}

bool parse(Table& table) {
  if (!read_header(table) || table.functions.empty()) return false;
  const auto& first = table.functions.front();
  if (first.title.empty() && first.name.empty()) return false;
  for (auto& function : table.functions) {
    if (function.title.empty()) function.title = "none";
  }
  return count_data_lines(table);
}

std::unique_ptr<Table> opened(std::string_view path, std::int32_t& status) {
  auto table = std::make_unique<Table>();
  table->path = path;
  // A folder is opened, and is no table.
  if (open_regular(table->path).is_open() || errno == EISDIR) {
    table->stream.reset(std::fopen(table->path.c_str(), "r"));
  }
  if (!table->stream) {
    status = table_status::not_opened;
  } else if (!parse(*table)) {
    status = table_status::not_a_table;
  }
  return status == 0 ? std::move(table) : nullptr;
}

/// The open table's function of that name and its column.
const Function* find_function(std::string_view name, std::size_t& column) {
  const auto& functions = open_table->functions;
  const auto found = std::ranges::find(functions, name, &Function::name);
  column = static_cast<std::size_t>(found - functions.begin());
  return found == functions.end() || name.empty() ? nullptr : &*found;
}

/// The number in a column, counted from 0; none if the line ends before it or the word there isn't one.
std::optional<float> number_in(const std::string& line, std::size_t column) {
  auto at = line.find_first_not_of(blanks);
  for (; at != std::string::npos && column > 0; --column)
    at = line.find_first_not_of(blanks, line.find_first_of(blanks, at));
  if (at == std::string::npos) return std::nullopt;
  char* end = nullptr;
  const float number = std::strtof(line.c_str() + at, &end);
  if (end == line.c_str() + at) return std::nullopt;
  return number;
}

}  // namespace

std::int32_t open_table_file(std::string_view file) {
  std::int32_t status = 0;
  if (open_table && open_table->path == file) return status;
  open_table.reset();
  open_table = opened(file, status);
  return status;
}

void kvA_TBL_Open(std::string_view file, std::int32_t& status) {
  status = open_table_file(file);
  if (status == 0) return;
  if (status == table_status::not_opened) {
    std::fprintf(stderr, "Unable to open file %s\n", std::string(file).c_str());
  } else {
    std::fputs("Not a valid TBL data file format\n", stderr);
  }
  std::fputs("Unable to open TBL file\n", stderr);
}

void kvA_TBL_Close(std::int32_t& status) {
  open_table.reset();
  status = 0;
}

void kvA_TBL_GetInfo(std::string_view file, std::int32_t& functions, std::int32_t& lines, std::int32_t& status) {
  functions = lines = 0;
  kvA_TBL_Open(file, status);
  if (status != 0) return;
  functions = static_cast<std::int32_t>(open_table->functions.size());
  lines = open_table->data_lines;
}

void kvA_TBL_GetFunctionNames(std::string_view file, std::span<std::string> names, std::int32_t& count,
                              std::int32_t& status) {
  count = 0;
  kvA_TBL_Open(file, status);
  if (status != 0) return;
  for (auto& name : names.first(std::min(names.size(), open_table->functions.size()))) {
    name = open_table->functions[static_cast<std::size_t>(count++)].name;
  }
}

void kvA_TBL_GetFunctionTitle(std::string_view file, std::span<char> title, std::string_view function,
                              std::int32_t& status) {
  std::ranges::fill(title, '\0');
  kvA_TBL_Open(file, status);
  if (status != 0) return;
  std::size_t column = 0;
  const auto* found = find_function(function, column);
  if (!found) {
    status = table_status::no_function;
    return;
  }
  const bool fits = found->title.size() < title.size();
  found->title.copy(title.data(), fits ? found->title.size() : std::max<std::size_t>(title.size(), 2) - 2);
}

void kvA_TBL_GetFunction(std::string_view file, std::string_view function, std::span<float> values, std::int32_t& count,
                         std::int32_t& status) {
  count = 0;
  kvA_TBL_Open(file, status);
  if (status != 0) return;
  std::size_t column = 0;
  if (!find_function(function, column)) {
    status = table_status::no_function;
    return;
  }
  auto* const stream = open_table->stream.get();
  std::rewind(stream);
  std::string line;
  for (std::int32_t k = 0; k < open_table->header_lines; ++k) {
    if (next_line(stream, line) == Line::read) continue;
    status = table_status::not_a_table;
    open_table.reset();
    return;
  }
  while (static_cast<std::size_t>(count) < values.size() && next_line(stream, line) == Line::read) {
    if (is_mark(line)) continue;
    const auto number = number_in(line, column);
    if (!number) return;
    values[static_cast<std::size_t>(count++)] = *number;
  }
}

void kva_tbl_open_(std::string_view file, std::int32_t& status) { kvA_TBL_Open(trimmed(file), status); }

void kva_tbl_close_(std::int32_t& status) { kvA_TBL_Close(status); }

void kva_tbl_getinfo_(std::string_view file, std::int32_t& functions, std::int32_t& lines, std::int32_t& status) {
  kvA_TBL_GetInfo(trimmed(file), functions, lines, status);
}

void kva_tbl_getfunctionnames_(std::string_view file, std::span<TextField> names, std::int32_t& count,
                               std::int32_t& status) {
  std::vector<std::string> texts(names.size());
  kvA_TBL_GetFunctionNames(trimmed(file), texts, count, status);
  for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k) names[k].set(texts[k]);
}

void kva_tbl_getfunctiontitle_(std::string_view file, TextField title, std::string_view function,
                               std::int32_t& status) {
  std::vector<char> text(title.width() + 1);
  kvA_TBL_GetFunctionTitle(trimmed(file), text, trimmed(function), status);
  title.set(text.data());
}

void kva_tbl_getfunction_(std::string_view file, std::string_view function, std::span<float> values,
                          std::int32_t& count, std::int32_t& status) {
  kvA_TBL_GetFunction(trimmed(file), trimmed(function), values, count, status);
}

}  // namespace pathstat
