#pragma once

#include <cstdint>

namespace pathstat {

/// The table that the properties of a command are gathered in.
struct TablesaveI {
  std::int32_t table_columns = 0;
  std::int32_t table_rows = 0;
};
inline TablesaveI tablesave_i_;

/// Addresses of the table's named blocks "pathstat/TO/...", one entry per column; 0 without a table.
struct TablesaveP {
  std::intptr_t row = 0;             ///< doubles: one row at a time
  std::intptr_t column_names = 0;    ///< texts of 80
  std::intptr_t column_types = 0;    ///< integers
  std::intptr_t column_lengths = 0;  ///< integers: rows that the column fills
};
inline TablesaveP tablesave_p_;

}  // namespace pathstat
