#pragma once

#include "corelink/connection.h"

namespace pathstat {

/// The one connection to the Core; null until it is made. The record is never freed.
inline Connection* kvC_API_pnc = nullptr;

/// Says that the Core is lost and ends the process with status 1.
[[noreturn]] void kvC_Error_handler(int code = 0);

}  // namespace pathstat
