#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

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

}  // namespace pathstat
