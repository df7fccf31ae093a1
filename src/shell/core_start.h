#pragma once

#include <cstdint>

#include "corelink/connection.h"

namespace pathstat {

/// The buffer in which the frame of a call is put together.
constexpr std::int32_t call_buffer_bytes = 4096;

/// Connects to the Core that RJMACHINE, RJPROTOCOL and RJSERVER name, and sends the greeting.
/// @return a text on success; null on failure, with the error text set
const char* RJ_execed(Connection& record);

/// Makes kvC_API_pnc and connects it with a buffer for calls. A failure is told on the standard streams.
/// Ends the process if the new connection is unusable.
bool connect_to_core();

}  // namespace pathstat
