#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_input.h"
#include "volumes/table_file.h"

/// Any bytes as a table file: it opens or is refused, and each function that it names can be asked for.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace pathstat;
  const fuzz::MemoryFile file(data, size);
  const auto path = file.path();
  std::int32_t functions = 0, lines = 0, count = 0, status = 0;
  kvA_TBL_GetInfo(path, functions, lines, status);
  std::vector<std::string> names(static_cast<std::size_t>(functions));
  kvA_TBL_GetFunctionNames(path, names, count, status);
  for (std::size_t k = 0; k < names.size() && k < 16; ++k) {
    std::array<char, 20> title;
    std::array<float, 10> few;
    std::vector<float> values(static_cast<std::size_t>(lines));
    kvA_TBL_GetFunctionTitle(path, title, names[k], status);
    kvA_TBL_GetFunction(path, names[k], few, count, status);
    kvA_TBL_GetFunction(path, names[k], values, count, status);
    if (count > lines) __builtin_trap();
  }
  kvA_TBL_Close(status);
  return 0;
}
