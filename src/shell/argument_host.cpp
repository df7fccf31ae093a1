#include "shell/argument_host.h"

#include <array>

#include "coreapi/error_reporting.h"
#include "coreapi/operations.h"

namespace pathstat {
namespace {

bool find_in_core(std::string_view name, std::int32_t type, std::int32_t& object) {
  std::int32_t found = 0;
  std::int32_t error = 0;
  kva_ref_dereferenceobject_(name, found, error);
  if (error != 0 || found == 0) return false;
  if (type != 0) {
    const std::array objects{found};
    std::array<std::int32_t, 1> is_of_type{};
    kvd_isa_(objects, type, is_of_type, error);
    if (error != 0 || is_of_type[0] == 0) return false;
  }
  object = found;
  return true;
}

}  // namespace

ArgumentHost& argument_host() {
  static ArgumentHost host{
      [](std::string_view text) { kvu_msg_args_(text); },
      [](std::int32_t number) { kvu_msg_argi_(number); },
      [](std::int32_t severity, std::string_view key) {
        std::int32_t error = 0;
        kvu_msg_display_(severity, key, error);
      },
      [](std::int32_t status) { kvU_ERR_Handler(status); },
      find_in_core,
      [](std::string_view text) {
        std::int32_t error = 0;
        kvz_setcharacterreturn_(text, error);
      },
  };
  return host;
}

}  // namespace pathstat
