// Any bytes as a CIF: crystals whose arrays belong together, or a sentence that tells why not.
#include "desk/model/cif_file.h"

#include "fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const pathstat::fuzz::MemoryFile file(data, size);
  const auto read = pathstat::desk::read_cif_file(file.path());
  if (read.models.empty() == read.problem.empty()) __builtin_trap();
  for (const auto& model : read.models) {
    if (model.positions.size() != model.atoms() || model.atoms() > size) __builtin_trap();
  }
  return 0;
}
