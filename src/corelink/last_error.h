#pragma once

namespace pathstat {

/// Sets the process's last error text, cut to 1023 characters.
[[gnu::format(printf, 1, 2)]] void PLE_error(const char* format, ...);

/// The last error text; it stays as it is until the next error.
const char* PLE_get_error();

/// Empties the text.
void PLE_reset_error();

/// Replaces the tabs of the text by blanks.
void PLE_notab_error();

/// "\n\tsystem error: TEXT" for the current errno, or "" if errno has no text. One static block.
const char* PLE_system_error();

}  // namespace pathstat
