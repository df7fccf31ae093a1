#pragma once

#include <sys/time.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

#include "corelink/connection.h"

namespace pathstat {

/// Level of the log: -1 until set, 0 nothing, 1 one line a transfer, 2 also each read and write, 3 everything.
inline std::int32_t pnc_debug = -1;
/// Where the log goes; null stands for standard output.
inline std::FILE* pnc_log = nullptr;

/// Reads PNC_DEBUG and PNC_LOG; does nothing once the level is set.
void PNC_InitDebug();

/// Writes a formatted line to the log and flushes it.
[[gnu::format(printf, 1, 2)]] void PNC_debug(const char* format, ...);

inline bool verbose_log() { return pnc_debug >= 3; }
inline std::FILE* log_stream() { return pnc_log != nullptr ? pnc_log : stdout; }

/// The text, or "NULL" for a missing one.
inline const char* or_null(const char* text) { return text != nullptr ? text : "NULL"; }
inline const char* or_null(const std::string& text) { return text.empty() ? "NULL" : text.c_str(); }

/// The local host's name as the log shows it.
const char* logged_host();

/// The first eight bytes at most, in hexadecimal.
std::string leading_bytes(std::span<const std::byte> bytes);

/// The time of day; a failure is told on standard error with `place` in front.
timeval logged_time(const char* place);

/// The line of one PNC_send or PNC_receive: `verb` and `arrow` are "send" "->" or "recv" "<-".
void log_transfer(const char* verb, const char* arrow, const Connection& record, std::span<const std::byte> bytes,
                  const timeval& start, const timeval& end);

}  // namespace pathstat
