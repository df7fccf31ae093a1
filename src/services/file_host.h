#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace pathstat {

/// What the file services ask of the process around them. As it stands it leads to the Core; a process without one,
/// and a test, puts its own functions here.
struct FileHost {
  /// Draws the user's attention to a line on standard output: bell and text window.
  std::function<void()> alert;
  /// Directories in a path variable of the Core; 0 or less if it is none.
  std::function<std::int32_t(std::string_view variable)> path_items;
  /// The k-th of them, counted from 1.
  std::function<std::string(std::string_view variable, std::int32_t k)> path_item;
  /// Takes the code with which a service ends, 0 included.
  std::function<void(std::int32_t code)> report;
};

/// The one instance.
FileHost& file_host();

}  // namespace pathstat
