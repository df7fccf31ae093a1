// Lines of any text as the messages of a page: each is served or dropped. pathstat is lost to the panel, and nothing
// can be written or started.
#include <cstdlib>
#include <string_view>

#include "desk/panel/panel_session.h"
#include "fuzz_input.h"

namespace {

constexpr const char* nowhere = "/proc/self/fdinfo";

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  for (const char* name : {"PATHSTAT_SCRIPTS", "TMPDIR"}) ::setenv(name, nowhere, 1);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace pathstat::desk;
  PageRequests requests;
  std::string_view text(reinterpret_cast<const char*>(data), size);
  for (std::size_t left = PageRequests::most_waiting - 1; left > 0 && !text.empty(); --left) {
    const auto end = std::min(text.find('\n'), text.size());
    if (!requests.take(1 + left % 2, std::string(text.substr(0, end)))) __builtin_trap();
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  requests.take(1, R"({"do":"line","text":"exit"})");

  const StartFolder folder(nowhere);
  LineRunner runner({.name = "fuzz", .place = {}, .folder = folder.path(), .stop_on_error = false},
                    {nowhere, nowhere, nowhere, nowhere, nowhere, {}});
  PageServer server("token", {});
  Downloads downloads;
  PanelSession(runner, server, requests, downloads, folder, nowhere).run({});
  return 0;
}
