// Any bytes as a structured model file: models that the data model takes in, or a sentence that tells why not.
#include "desk/model/model_import.h"

#include "desk/model/data_model.h"
#include "fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace pathstat;
  const fuzz::MemoryFile file(data, size);
  auto read = desk::read_model_file(file.path());
  if (!read.models.empty() && !read.problem.empty()) __builtin_trap();
  desk::DataModel model;
  for (auto& one : read.models) {
    if (one.positions.size() != one.atoms() || one.atoms() > size) __builtin_trap();
    model.add_model(std::move(one));
  }
  for (auto* one : model.models()) model.connectivity(*one);
  return 0;
}
