#include <fmt/format.h>

#include "desk/panel/panel.h"

namespace pathstat::desk {

int run_panel(const RunOptions&, const PanelOptions&) {
  fmt::print(stderr,
             "pathdesk: this program was built without the panel: it needs Boost's headers, Node 18 or newer and npm, "
             "which ./dev installs; everything else is there\n");
  return exit_code::not_run;
}

}  // namespace pathstat::desk
