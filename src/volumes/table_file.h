#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "support/text_field.h"

/// Table files: a text that names functions in its first lines, and behind them one column of numbers for each. One
/// file is open at a time; an operation that names another one closes it and opens that.
namespace pathstat {

namespace table_status {
constexpr std::int32_t no_function = 1;
constexpr std::int32_t not_opened = 50503;
constexpr std::int32_t not_a_table = 50516;
}  // namespace table_status

/// Longer lines make a file no table.
constexpr std::size_t longest_table_line = 2047;

// All but kvA_TBL_Close open the file first. `status` is 0 or a value of table_status; what is wrong with a file is
// told on standard error, and no table is open then.

/// kvA_TBL_Open for a caller who tells himself what is wrong. @return the status
std::int32_t open_table_file(std::string_view file);
void kvA_TBL_Open(std::string_view file, std::int32_t& status);
void kvA_TBL_Close(std::int32_t& status);

/// @param functions  of the file, which is also the number of its columns
/// @param lines      of data, those that begin with "#" left out
void kvA_TBL_GetInfo(std::string_view file, std::int32_t& functions, std::int32_t& lines, std::int32_t& status);

/// Gives the functions' names in the order of their columns, as many as there is room for.
/// @param count  names given
void kvA_TBL_GetFunctionNames(std::string_view file, std::span<std::string> names, std::int32_t& count,
                              std::int32_t& status);

/// Gives the title of a function as a terminated text; one that doesn't fit is cut to the buffer's size less 2.
/// @param title   empty with no_function
void kvA_TBL_GetFunctionTitle(std::string_view file, std::span<char> title, std::string_view function,
                              std::int32_t& status);

/// Reads a function's column, from its first line to the first that has no number in the column.
/// @param count  values read, at most values.size()
void kvA_TBL_GetFunction(std::string_view file, std::string_view function, std::span<float> values, std::int32_t& count,
                         std::int32_t& status);

// The same with texts as blank-padded fields.

void kva_tbl_open_(std::string_view file, std::int32_t& status);
void kva_tbl_close_(std::int32_t& status);
void kva_tbl_getinfo_(std::string_view file, std::int32_t& functions, std::int32_t& lines, std::int32_t& status);
void kva_tbl_getfunctionnames_(std::string_view file, std::span<TextField> names, std::int32_t& count,
                               std::int32_t& status);
void kva_tbl_getfunctiontitle_(std::string_view file, TextField title, std::string_view function, std::int32_t& status);
void kva_tbl_getfunction_(std::string_view file, std::string_view function, std::span<float> values,
                          std::int32_t& count, std::int32_t& status);

}  // namespace pathstat
