// Calls of any operations with any inputs, served by pathdesk's data model: each one byte for the operation, then what
// comes over the wire.
#include "desk/model/data_model.h"
#include "desk/model/model_edit.h"
#include "desk/ops/frame_codec.h"
#include "desk/ops/model_operations.h"
#include "desk/ops/user_interface.h"
#include "fuzz_input.h"

namespace {

using namespace pathstat;
using namespace pathstat::desk;

/// Four atoms in a cell, with a bond and a monitor of a distance.
MolecularModel small_model() {
  MolecularModel model;
  model.name = "small";
  model.periodic_type = 100;
  model.cell = {Vector3{10, 0, 0}, Vector3{0, 11, 0}, Vector3{0, 0, 12}};
  for (int k = 0; k < 4; ++k) {
    append_atom(model, k + 1,
                {.element = 6,
                 .position = {1.5 * k, 0.5 * k, 0},
                 .name = "C",
                 .ff_type = "c",
                 .residue = "A",
                 .residue_id = 1});
  }
  model.bonds = {{0, 1}};
  model.monitors.push_back({distance_monitor, 0, {0, 2}, {}});
  return model;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  DataModel model;
  model.set_folder("/proc/self/fdinfo");  // where nothing can be written
  UserInterface ui{{}};
  OperationServer server;
  register_data_model_operations(server, model);
  register_analysis_operations(server, model);
  register_interface_operations(server, ui);
  model.set_current_model(model.add_model(small_model()));
  fuzz::MemoryStream stream(std::as_bytes(std::span(data, size)));
  const auto rows = all_operations();
  std::array<std::byte, 1> choice{};
  while (stream.read(choice)) {
    OperationCall call{rows[std::to_integer<std::size_t>(choice[0]) % rows.size()], {}};
    if (!read_call(stream, call.row, call.inputs).empty()) return 0;
    write_reply(stream, call, server.serve(call));
  }
  return 0;
}
