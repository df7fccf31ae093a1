// A binary trajectory of any values, written and read again: what the setters took comes back.
#include <array>
#include <cstring>
#include <map>
#include <string_view>
#include <vector>

#include "fuzz_input.h"
#include "trajectory/binary_keys.h"
#include "trajectory/binary_trajectory.h"

namespace {

using namespace pathstat;
using Values = std::vector<double>;

bool same(const Values& a, const Values& b) {
  return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

/// What comes back is what was set, unless the flags of the head leave its record out.
void compare(std::int32_t handle, const std::map<std::int32_t, Values>& set) {
  for (const auto& [key, values] : set) {
    Values found(values.size());
    std::int32_t count = 0, status = 0;
    kvA_TRJ_ValueDouble(handle, key, found, count, status);
    if (status == binary_status::not_present && !is_atom_key(key)) continue;
    if (status != 0 || static_cast<std::size_t>(count) != values.size() || !same(found, values)) __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Numbers numbers(std::span(data, size));
  const fuzz::MemoryFile file(nullptr, 0);
  std::int32_t handle = 0, status = 0;
  kvA_TRJ_Open(file.path(), binary_mode::create, handle, status);
  if (status != 0) __builtin_trap();
  const std::array<std::string_view, 1> magic{"MDTR"};
  kvA_TRJ_SetValueChar(handle, 4001, magic, status);
  std::vector<std::int32_t> ids(1 + numbers.byte() % 9);
  for (auto& id : ids) id = numbers.byte();
  const std::array<std::int32_t, 1> total{static_cast<std::int32_t>(ids.size()) + numbers.byte()};
  const std::array<std::int32_t, 1> directions{numbers.byte() % 4};
  kvA_TRJ_SetValueInt(handle, 2020, total, status);
  kvA_TRJ_SetValueInt(handle, 2018, directions, status);
  kvA_TRJ_SetValueInt(handle, 2008, ids, status);
  for (std::int32_t key = 3001; key <= 3007; ++key) {
    const Logical yes = numbers.byte() % 2 != 0;
    kvA_TRJ_SetValueLogical(handle, key, std::span(&yes, 1), status);
  }

  std::map<std::int32_t, Values> set;
  std::vector<std::map<std::int32_t, Values>> frames;
  while (!numbers.ended() && frames.size() < 4) {
    for (int k = numbers.byte() % 24; k > 0; --k) {
      const std::int32_t key = 999 + numbers.byte() % 105;
      Values values(is_atom_key(key) ? 3 * ids.size() : 1 + numbers.byte() % 9);
      for (auto& value : values) value = numbers.any();
      kvA_TRJ_SetValueDouble(handle, key, values, status);
      if (status == 0) set.insert_or_assign(key, std::move(values));
    }
    kvA_TRJ_WriteFrame(handle, status);
    if (status == 0) frames.push_back(set);
  }
  kvA_TRJ_Close(handle, status);
  if (status != 0) __builtin_trap();
  if (frames.empty()) return 0;

  kvA_TRJ_Open(file.path(), binary_mode::read, handle, status);
  if (status != 0) __builtin_trap();
  for (std::size_t k = frames.size(); k > 0; --k) {
    kvA_TRJ_ReadFrame(handle, static_cast<std::int32_t>(k), status);
    if (status != 0) __builtin_trap();
    compare(handle, frames[k - 1]);
  }
  kvA_TRJ_Close(handle, status);
  return 0;
}
