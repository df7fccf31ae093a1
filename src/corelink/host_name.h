#pragma once

namespace pathstat {

/// The local host's name: HOSTNAME_PREFER if it has an address, otherwise the system's if the host data base knows it.
/// Null on failure, with the error text set. The first answer is kept.
const char* COM_gethostname();

/// The dotted address of a host name, null if it has none. One static block.
const char* COM_inet_n2a(const char* name);

}  // namespace pathstat
