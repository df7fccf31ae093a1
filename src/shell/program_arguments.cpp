#include "shell/program_arguments.h"

#include <cstring>

namespace pathstat {

std::int32_t iargc_() { return main_argc - 1; }

void getarg_(std::int32_t index, TextField buffer) {
  buffer.set(index >= 0 && index < main_argc ? main_argv[index] : "");
}

const char* program_name() {
  if (main_argc < 1) return "";
  const char* slash = std::strrchr(main_argv[0], '/');
  return slash != nullptr ? slash + 1 : main_argv[0];
}

}  // namespace pathstat
