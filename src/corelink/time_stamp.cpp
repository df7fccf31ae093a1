#include "corelink/time_stamp.h"

#include <sys/time.h>

#include <array>
#include <cstdio>
#include <ctime>

#include "corelink/last_error.h"

namespace pathstat {

const char* COM_timestamp() {
  static std::array<char, 64> text{};
  timeval now{};
  tm local{};
  if (::gettimeofday(&now, nullptr) != 0 || ::localtime_r(&now.tv_sec, &local) == nullptr) {
    std::snprintf(text.data(), text.size(), "COM_timestamp:could not determine time of day%s", PLE_system_error());
    return text.data();
  }
  const std::size_t used = std::strftime(text.data(), text.size(), "%H:%M:%S", &local);
  std::snprintf(text.data() + used, text.size() - used, ".%d", static_cast<int>(now.tv_usec));
  return text.data();
}

}  // namespace pathstat
