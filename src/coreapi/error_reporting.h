#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// Remembers, for the next message, the name of the routine that reports (at most 79 characters).
void kvU_ERR_SetCurrentAPIName(std::string_view name);

/// The common end of a local routine: shows the message of a code other than 0 through the Core and keeps the code.
/// Showing a message never shows a second one from within.
/// @return 0 for a code of 0 or less, 2 for a positive code of severity 3, 1 for any other positive code
std::int32_t kvU_ERR_Handler(std::int32_t code);

/// The code that kvU_ERR_Handler was given last.
std::int32_t last_error_code();

/// Always 0: this process is never part of the Core.
std::int32_t kvZ_IsApplicationInternal();

}  // namespace pathstat
