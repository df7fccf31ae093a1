#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/record_file.h"
#include "trajectory/binary_layout.h"

namespace pathstat {

/// The head of a binary trajectory. A new one is that of an empty trajectory of the newest version.
struct BinaryHeader {
  std::string magic = "    ";
  std::array<std::int32_t, 20> integers{2010};  ///< the first is the version, the others are carried unchanged
  std::vector<std::string> titles;              ///< 80 characters each
  std::vector<std::string> comments;            ///< 80 characters each
  BinaryFlags flags{};
  std::int32_t groups = 1;
  std::vector<std::int32_t> group_movable;  ///< empty in a file without groups, and in a file to be written
  std::vector<std::int32_t> group_atoms;
  std::vector<std::string> group_names{std::string(8, ' ')};  ///< 8 characters each
  std::int32_t movable = 0;                                   ///< atoms of a frame
  std::int32_t total = 0;
  std::vector<std::int32_t> movable_ids;  ///< empty: the identifiers are 0, 1, ..., movable - 1
  std::array<std::optional<std::string>, 2> texts;

  std::int32_t version() const { return integers[0]; }
};

/// Longest title, comment or free text that can be written, and longest group name.
constexpr std::size_t line_width = 80;
constexpr std::size_t group_name_width = 8;

/// Reads the head of any version and leaves the file at the first frame. Every count is held against the bytes that
/// are left before it is used. The lengths of the records are not compared.
/// @return false if the file ends inside the head, or a count is negative or cannot be true
bool read_binary_header(RecordReader& file, BinaryHeader& header);

/// Writes the head in version 2010 form. More than one group cannot be written.
bool write_binary_header(RecordWriter& file, const BinaryHeader& header);

}  // namespace pathstat
