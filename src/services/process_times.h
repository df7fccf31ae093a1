#pragma once

#include <array>
#include <cstdint>

namespace pathstat {

/// The present time as "Www Mmm dd hh:mm:ss yyyy" and a line end. One static block; null on failure, with the error
/// text set.
const char* COM_getdate();

/// Processor time of this process and of the system for it, in s. @return their sum
float COM_etime(std::array<float, 2>& user_and_system);
inline float com_etime_fortran_(std::array<float, 2>& user_and_system) { return COM_etime(user_and_system); }

/// The local hour, minute and second.
void COM_itime(std::array<std::int32_t, 3>& clock);
inline void com_itime_fortran_(std::array<std::int32_t, 3>& clock) { COM_itime(clock); }

}  // namespace pathstat
