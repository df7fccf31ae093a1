#pragma once

namespace pathstat {

/// Has the signals that end a process tell the Core and end it with status 1, and SIGUSR1 print a notice and call a
/// detached process back to the Core.
void install_signal_handlers();

}  // namespace pathstat
