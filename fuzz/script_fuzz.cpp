// Any text as a script: every line is understood or complained of.
#include "desk/script/script.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace pathstat::desk;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (size > 600) return 0;  // each word that is not known is held against all that are
  const Script script = read_script(text);
  for (const auto& line : script.lines) {
    if (line.number < 1) __builtin_trap();
    with_resolved_path(line.word, line.arguments, "/folder");
    open_mark(line.arguments);
    words_of(line.arguments);
  }
  return 0;
}
