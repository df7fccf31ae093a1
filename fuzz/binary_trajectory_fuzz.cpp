#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "trajectory/binary_trajectory.h"

namespace {

using namespace pathstat;

void ask_for_everything(std::int32_t handle) {
  std::int32_t count = 0, status = 0;
  std::array<double, 64> numbers;
  for (std::int32_t key = 999; key <= 1103; ++key) kvA_TRJ_ValueDouble(handle, key, numbers, count, status);
  std::array<float, 6> narrow;
  kvA_TRJ_ValueFloat(handle, 1071, narrow, count, status);
  std::array<std::int32_t, 64> integers;
  for (std::int32_t key = 2000; key <= 2021; ++key) kvA_TRJ_ValueInt(handle, key, integers, count, status);
  std::array<Logical, 1> logicals;
  for (std::int32_t key = 3000; key <= 3010; ++key) kvA_TRJ_ValueLogical(handle, key, logicals, count, status);
  std::array<char, 200> fields;
  for (std::int32_t key = 4000; key <= 4007; ++key) kva_trj_valuechar_(handle, key, fields, 20, count, status);
}

}  // namespace

/// Any bytes: each operation ends, with a status, and every key is answered inside its capacity.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::int32_t handle = 0, status = 0;
  open_binary_trajectory(std::as_bytes(std::span(data, size)), handle, status);
  if (status != 0) return 0;
  for (const std::int32_t frame : {1, 2, 5, 3, 1, 2147483647}) {
    kvA_TRJ_ReadFrame(handle, frame, status);
    ask_for_everything(handle);
  }
  kvA_TRJ_Close(handle, status);
  return 0;
}
