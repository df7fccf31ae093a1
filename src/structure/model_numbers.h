#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "support/parallel.h"

/// Numbers and words of a model file's values, as fast as they can be read and written.
namespace pathstat {

/// Appends the number as "%d" writes it.
void append_number(std::string& text, std::int32_t value);
/// Appends the number as "%.8G" writes it.
void append_number(std::string& text, float value);
/// Appends the number as "%.17G" writes it, so that it reads back the same.
void append_number(std::string& text, double value);

/// Reads all numbers of a value, parted by white space and parentheses of any depth.
/// @return false if something else stands there or a number is out of range; values then has those in front of it
bool read_numbers(std::string_view text, std::vector<std::int32_t>& values);
bool read_numbers(std::string_view text, std::vector<double>& values);

/// The words of a value, parted by white space. They are parts of the text.
std::vector<std::string_view> split_words(std::string_view text);

/// Characters of a long value that one thread reads at a time.
constexpr std::size_t text_piece = 1 << 17;
/// The pieces of a value, none of which ends within a number or a word.
std::vector<std::string_view> text_pieces(std::string_view text);

/// Reads a value on all cores.
/// @param read  gives what a piece holds
/// @param join  takes that of one piece after the other
template <class Read, class Join>
void read_by_pieces(std::string_view text, const Read& read, const Join& join) {
  const auto pieces = text_pieces(text);
  std::vector<decltype(read(text))> found(thread_count());
  for_blocks(
      std::ssize(pieces),
      [&](std::int64_t piece, std::size_t worker) { found[worker] = read(pieces[static_cast<std::size_t>(piece)]); },
      [&](std::int64_t, std::size_t worker) { join(found[worker]); });
}

}  // namespace pathstat
