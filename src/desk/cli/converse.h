#pragma once

#include "desk/script/script_run.h"

namespace pathstat::desk {

/// Runs lines for another program, which sends one JSON object a line on the standard input and gets one for each on
/// the standard output, until its input ends. docs/python.md lists what they hold.
/// @return an exit code
int run_converse(const RunOptions& options);

}  // namespace pathstat::desk
