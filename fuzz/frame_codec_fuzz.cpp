// Call frames of any bytes: the first chooses the operation, the rest are what came over the wire.
#include "desk/ops/frame_codec.h"

#include "fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const auto rows = pathstat::all_operations();
  const auto& row = rows[data[0] % rows.size()];
  pathstat::fuzz::MemoryStream stream(std::as_bytes(std::span(data + 1, size - 1)));
  std::vector<pathstat::desk::SlotValue> inputs;
  pathstat::desk::read_call(stream, row, inputs);
  return 0;
}
