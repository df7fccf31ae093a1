#pragma once

namespace pathstat {

/// Local time as "HH:MM:SS.microseconds", the latter without padding. One static block.
const char* COM_timestamp();

}  // namespace pathstat
