#include "services/process_times.h"

#include <sys/times.h>
#include <unistd.h>

#include <ctime>

#include "corelink/last_error.h"

namespace pathstat {

const char* COM_getdate() {
  static std::array<char, 32> text;
  const std::time_t now = std::time(nullptr);
  if (now != static_cast<std::time_t>(-1) && ::ctime_r(&now, text.data()) != nullptr) return text.data();
  PLE_error("COM_getdate: could not determine time of day%s", PLE_system_error());
  return nullptr;
}

float COM_etime(std::array<float, 2>& user_and_system) {
  tms used{};
  ::times(&used);
  const auto ticks_per_s = static_cast<float>(::sysconf(_SC_CLK_TCK));
  user_and_system = {static_cast<float>(used.tms_utime) / ticks_per_s,
                     static_cast<float>(used.tms_stime) / ticks_per_s};
  return user_and_system[0] + user_and_system[1];
}

void COM_itime(std::array<std::int32_t, 3>& clock) {
  const std::time_t now = std::time(nullptr);
  tm local{};
  ::localtime_r(&now, &local);
  clock = {local.tm_hour, local.tm_min, local.tm_sec};
}

}  // namespace pathstat
