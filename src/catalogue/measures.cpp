#include "catalogue/measures.h"

#include "coreapi/object_counts.h"
#include "coreapi/operations.h"

namespace pathstat {

std::int32_t numberofmeasures_(std::int32_t model, std::int32_t monitor_type, std::int32_t& status) {
  std::int32_t count = 0;
  kvd_mon_nummonitors_(model, monitor_type, monitor_selector, count, status);
  if (status == 0 && !is_object_count(count)) status = impossible_count;
  return status == 0 ? count : 0;
}

std::int32_t monitor_memory(std::int32_t& status) {
  std::int32_t application = 0;
  kvd_app_findbyname_("MD_ANALYSIS", application, status);
  return application;
}

}  // namespace pathstat
