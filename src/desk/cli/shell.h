#pragma once

#include "desk/script/script_run.h"

namespace pathstat::desk {

/// Runs lines as they are typed, until the end of the input; lines that do not come from a terminal are run as a
/// script.
/// @return an exit code
int run_shell(const RunOptions& options);

}  // namespace pathstat::desk
