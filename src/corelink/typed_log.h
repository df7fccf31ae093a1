#pragma once

#include <cstdint>
#include <span>

#include "corelink/connection.h"

namespace pathstat {

/// Level of the log of values: -1 until set, 0 nothing, 1 the values, 2 also the strings' blocks.
inline std::int32_t pd_debug = -1;

/// Reads PD_DEBUG, and then the transport's settings.
void PD_InitDebug();

/// Writes a formatted line to the transport's log and flushes it.
[[gnu::format(printf, 1, 2)]] void PD_debug(const char* format, ...);

/// True if values are logged; reads the settings on first use.
inline bool typed_log_on(std::int32_t level = 1) {
  if (pd_debug < 0) PD_InitDebug();
  return pd_debug >= level;
}

/// Log the values of one call. Element types: char, int16_t, int32_t, float, double.
template <class T>
void log_sent(const Connection& record, std::span<const T> values);

/// @param values  what was asked for; only the elements that `got` bytes hold are shown
template <class T>
void log_received(const Connection& record, std::span<const T> values, std::int64_t got);

}  // namespace pathstat
