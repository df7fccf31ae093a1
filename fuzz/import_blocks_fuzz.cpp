// Any blocks of a topology: a model whose arrays belong together and whose bonds lead to its atoms, or a sentence that
// tells why not.
#include <array>
#include <string_view>

#include "desk/import/topology_blocks.h"
#include "fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::array<std::string_view, 13> tags{"counts", "ids",   "resids", "masses",   "charges",
                                                  "bonds",  "names", "types",  "elements", "residues",
                                                  "series", "frame", ""};
  constexpr std::size_t head = 3;  // tag and length of a block
  pathstat::desk::TopologyBlocks blocks;
  auto bytes = std::as_bytes(std::span(data, size));
  while (bytes.size() >= head) {
    const auto tag = tags.at(std::to_integer<std::size_t>(bytes[0]) % tags.size());
    const auto length = std::to_integer<std::size_t>(bytes[1]) | std::to_integer<std::size_t>(bytes[2]) << 8;
    const auto payload = bytes.subspan(head, std::min(length, bytes.size() - head));
    bytes = bytes.subspan(head + payload.size());
    if (std::ssize(payload) > blocks.longest(tag)) continue;
    if (!blocks.take(tag, payload).empty()) return 0;
  }
  if (blocks.atoms() > size) return 0;  // nothing came that bears this count out; it would only take memory
  std::string problem;
  const auto model = blocks.give_model("fuzz", problem);
  if (!problem.empty()) return 0;
  const auto n = model.atoms();
  if (n != blocks.atoms() || model.masses.size() != n || model.charges.size() != n || model.names.size() != n ||
      model.residue_ids.size() != n) {
    __builtin_trap();
  }
  for (const auto& [one, other] : model.bonds) {
    if (one >= other || other >= n) __builtin_trap();
  }
  return 0;
}
