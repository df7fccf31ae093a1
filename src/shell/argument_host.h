#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace pathstat {

/// Where the argument and return routines report and look things up. As it stands it leads to the Core; a test puts
/// its own functions here.
struct ArgumentHost {
  /// Arguments of the next message.
  std::function<void(std::string_view text)> text_argument;
  std::function<void(std::int32_t number)> number_argument;
  std::function<void(std::int32_t severity, std::string_view key)> display;
  /// Takes the status with which a routine ends, 0 included.
  std::function<void(std::int32_t status)> report;
  /// The object of this name, which is of this class unless the class is 0. False if there is none.
  std::function<bool(std::string_view name, std::int32_t type, std::int32_t& object)> find_object;
  std::function<void(std::string_view text)> set_return;
};

/// The one instance.
ArgumentHost& argument_host();

}  // namespace pathstat
