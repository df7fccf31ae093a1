#pragma once

namespace pathstat::desk {

/// How often the user has asked to stop: the first interrupt key asks the process to end what it does, the second gives
/// it up, and a third ends this program as it would any other. A request to terminate counts as two.
/// Writing to a process or a pager that is gone becomes an error instead of the end.
void watch_interrupts();
int interrupts();
/// Asks to stop as the interrupt key does; from any thread.
void request_interrupt();
/// Begins to count anew, for the next line that is typed.
void forget_interrupts();

}  // namespace pathstat::desk
