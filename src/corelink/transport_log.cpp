#include "corelink/transport_log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <string_view>

#include "corelink/byte_dump.h"
#include "corelink/host_name.h"
#include "corelink/last_error.h"
#include "corelink/product.h"
#include "corelink/time_stamp.h"

namespace pathstat {
namespace {

std::int32_t level_of(const char* setting) {
  if (setting == nullptr) return 0;
  const std::string_view text(setting);
  if (text == "LOG") return 1;
  return text == "VERBOSE" ? 3 : 2;
}

void open_log() {
  const char* path = std::getenv("PNC_LOG");
  if (path == nullptr) return;
  pnc_log = std::fopen(path, "a");
  if (pnc_log == nullptr) {
    std::fprintf(stderr, "PNC_InitDebug: Cannot open PNC log file %s:%s\n", path, PLE_system_error());
  }
}

}  // namespace

void PNC_InitDebug() {
  if (pnc_debug >= 0) return;
  pnc_debug = level_of(std::getenv("PNC_DEBUG"));
  if (pnc_debug == 0) return;
  open_log();
  logged_host();  // looked up now, so that no later line can overwrite an error text
  PNC_debug("=== Starting pnc log by %s at %s ===\n", PRODUCT_EXE, COM_timestamp());
}

void PNC_debug(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(log_stream(), format, arguments);
  va_end(arguments);
  std::fflush(log_stream());
}

const char* logged_host() {
  static const std::string name = or_null(COM_gethostname());
  return name.c_str();
}

std::string leading_bytes(std::span<const std::byte> bytes) {
  constexpr std::size_t shown = 8;
  return COM_scdump(bytes.first(std::min(bytes.size(), shown)));
}

timeval logged_time(const char* place) {
  timeval now{};
  if (::gettimeofday(&now, nullptr) != 0) {
    std::fprintf(stderr, "%s: Cannot determine time of day:%s", place, PLE_system_error());
  }
  return now;
}

void log_transfer(const char* verb, const char* arrow, const Connection& record, std::span<const std::byte> bytes,
                  const timeval& start, const timeval& end) {
  const auto duration_us = end.tv_usec - start.tv_usec + 1000000 * (end.tv_sec - start.tv_sec);
  PNC_debug("%s %s %s %s %s (%s) %d b. %d ms  0x%s\n", verb, COM_timestamp(), logged_host(), arrow,
            or_null(record.peer), or_null(record.server), static_cast<int>(bytes.size()), static_cast<int>(duration_us),
            leading_bytes(bytes).c_str());
}

}  // namespace pathstat
