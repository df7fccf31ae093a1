#pragma once

namespace pathstat {

/// Says on the standard error output which file the system fails to read, and why (errno): what the readers hand on is
/// a status that a damaged file has as well.
void tell_failed_read(int descriptor);
/// The same of a file that the system fails to open.
void tell_failed_open(const char* path);

}  // namespace pathstat
