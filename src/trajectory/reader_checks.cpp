#include "trajectory/reader_checks.h"

#include "coreapi/messages.h"
#include "services/file_names.h"
#include "trajectory/front_end.h"

namespace pathstat {
namespace {

using namespace trajectory_status;

template <class... Arguments>
std::int32_t refused(std::int32_t status, std::string_view key, const Arguments&... arguments) {
  show_message(key, arguments...);
  return status;
}

}  // namespace

std::int32_t check_open(std::string_view name, std::int32_t mode) {
  if (mode != 1) return refused(bad_mode, "PATHSTAT_ERROR_106");
  return kvs_fil_exists_(name) ? 0 : refused(no_file, "PATHSTAT_ERROR_107", name);
}

std::int32_t check_attach(std::span<const std::int32_t> models, bool is_open, bool (*fits)(std::int32_t model)) {
  if (models.size() > 1) return refused(attach_refused, "PATHSTAT_ERROR_111");
  if (models.empty() || !is_open) return attach_refused;
  return fits(models[0]) ? 0 : refused(attach_refused, "PATHSTAT_ERROR_112");
}

}  // namespace pathstat
