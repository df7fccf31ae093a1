// Any text as the arguments of a command, asked for in every way.
#include "shell/arguments.h"

#include <array>
#include <cstdint>

#include "shell/argument_host.h"

namespace {

using namespace pathstat;

void ask(std::int32_t index, std::string_view key) {
  std::int32_t integer = 0, status = 0;
  double number = 0;
  float narrow = 0;
  bool logical = false;
  const char* text = nullptr;
  std::array<char, 8> block{};
  std::string all;
  kvZ_ArgInt(integer, index, 1, 100, status);
  kvZ_ArgDouble(number, index, -1e3, 1e3, status);
  kvZ_ArgFloat(narrow, index, -1e3F, 1e3F, status);
  kvZ_ArgLogical(logical, index, status);
  kvZ_ArgString(text, index, "first,second\\,third", status);
  kvZ_ArgFillString(std::span<char>(block), index, {}, status);
  kvZ_ArgObject(integer, index, 0, status);
  kvZ_KEY_ArgInt(key, integer, index, 1, 100, status);
  kvZ_KEY_ArgDouble(key, number, index, -1e3, 1e3, status);
  kvZ_KEY_ArgLogical(key, logical, index, status);
  kvZ_KEY_ArgString(key, text, index, {}, status);
  kvZ_KEY_AllArgs(key, std::span<char>(block), status);
  kvZ_AllArgs(all, status);
}

void read_ranges(std::string_view text) {
  std::int32_t low = 0, high = 0, status = 0;
  double lowest = 0, highest = 0;
  kvZ_GetIntRange(text, low, high, status);
  kvZ_GetDoubleRange(text, lowest, highest, status);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  argument_host() = {[](std::string_view) {},
                     [](std::int32_t) {},
                     [](std::int32_t, std::string_view) {},
                     [](std::int32_t) {},
                     [](std::string_view, std::int32_t, std::int32_t&) { return false; },
                     [](std::string_view) {}};
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::int32_t count = 0, status = 0;
  sch_PrepareArguments(text, count);
  if (count < 0 || static_cast<std::size_t>(count) > size) __builtin_trap();
  kvZ_DefineMinArgCount(2, status);
  for (const std::int32_t index : {-1, 0, 1, 2, count, count + 1}) ask(index, "-key");
  kvZ_KEY_FlagValue("-key", status);
  kvZ_KEY_ArgumentTotal("-key", status);
  read_ranges(text);
  kvZ_AllOutputArgsP(text.c_str());
  return 0;
}
