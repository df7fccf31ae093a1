#pragma once

#include <cstdint>

namespace pathstat {

/// The local host's name: HOSTNAME_PREFER if it has an address, otherwise the system's if the host data base knows it.
/// Null on failure, with the error text set. The first answer is kept.
const char* COM_gethostname();

/// The dotted address of a host name, null if it has none. One static block.
const char* COM_inet_n2a(const char* name);

/// The dotted address of the local host, which is kept; null on failure, told on standard error.
const char* COM_gethostaddr();

/// 1 if a machine's name is the local host's, "localhost" or the local address, else 0.
std::int32_t COM_its_local(const char* machine);

}  // namespace pathstat
