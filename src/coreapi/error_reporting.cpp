#include "coreapi/error_reporting.h"

#include <string>

#include "coreapi/operations.h"

namespace pathstat {
namespace {

constexpr std::size_t longest_name = 79;

std::string current_name;
bool handling_enabled = true;
std::int32_t last_code = 0;

}  // namespace

void kvU_ERR_SetCurrentAPIName(std::string_view name) {
  if (name.data() != nullptr) current_name = name.substr(0, longest_name);
}

std::int32_t kvU_ERR_Handler(std::int32_t code) {
  std::int32_t severity = code < 0 ? 1 : 2;
  if (code != 0 && handling_enabled) {
    handling_enabled = false;
    std::int32_t second = 0;
    std::int32_t error = 0;
    kvU_MSG_DisplayError(2, code, current_name, severity, second, error);
    handling_enabled = true;
  }
  last_code = code;
  current_name.clear();
  if (code <= 0) return 0;
  return severity == 3 ? 2 : 1;
}

std::int32_t last_error_code() { return last_code; }

std::int32_t kvZ_IsApplicationInternal() { return 0; }

}  // namespace pathstat
