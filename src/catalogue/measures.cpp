#include "catalogue/measures.h"

#include "coreapi/operations.h"

namespace pathstat {
namespace {

constexpr std::int32_t monitor_selector = 4;

}  // namespace

std::int32_t numberofmeasures_(std::int32_t model, std::int32_t monitor_type, std::int32_t& status) {
  std::int32_t count = 0;
  kvd_mon_nummonitors_(model, monitor_type, monitor_selector, count, status);
  return status == 0 ? count : 0;
}

}  // namespace pathstat
