#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "trajectory/history_adapter.h"
#include "trajectory/history_file.h"

namespace {

using namespace pathstat;

void ask_for_everything() {
  std::int32_t count = 0, status = 0;
  std::array<double, 64> numbers;
  for (std::int32_t key = 400017; key <= 400180; ++key) gethisdatadble_(1, key, numbers, count, status);
  constexpr Matrix3 turn{0, 1, 0, -1, 0, 0, 0, 0, 1};
  for (const auto which : {HistoryVectors::positions, HistoryVectors::velocities}) {
    get_history_vectors(which, nullptr, numbers, status);
    get_history_vectors(which, &turn, std::span(numbers).first(7), status);
  }
  std::array<std::int32_t, 4> integers;
  for (std::int32_t key = 200000; key <= 200180; ++key) gethisdataint_(1, key, integers, count, status);
  std::array<char, 100> fields;
  gethisdatachar_(1, 2, fields, 50, count, status);
}

}  // namespace

/// Any bytes: each operation ends, with a status, and every key is answered inside its capacity.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::int32_t status = 0;
  open_history(RecordReader(std::as_bytes(std::span(data, size))), status);
  if (status != 0) return 0;
  histrj_i_.his_unit = 1;  // as if a file had been opened for it
  for (const std::int32_t frame : {1, 2, 5, 3, 1, 2147483647}) {
    read_history_frame(frame, status);
    trj_i_.trj_current_frame = history_frame();
    ask_for_everything();
  }
  close_history();
  return 0;
}
