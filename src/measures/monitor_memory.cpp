#include <algorithm>
#include <utility>

#include "catalogue/measure_families.h"
#include "catalogue/measures.h"
#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "measures/measures.h"
#include "services/file_names.h"
#include "support/named_memory.h"
#include "support/sorting.h"

namespace pathstat {
namespace {

const MeasureFamily* family_of_type(std::int32_t type) {
  const auto found = std::ranges::find(measure_families, type, &MeasureFamily::monitor_type);
  return found == measure_families.end() ? nullptr : &*found;
}

/// The identifiers that the last set-up left with the Core, ascending.
void remembered_monitors(const MeasureFamily& family, std::span<std::int32_t> monitors, std::int32_t& status) {
  const std::int32_t application = monitor_memory(status);
  if (status == 0) kvd_ud_findobjectarray_(application, family.data_key, monitors, status);
  if (status == 0) isort_(monitors);
}

}  // namespace

void getmeasureoids_(std::int32_t model, std::int32_t type, std::span<std::int32_t> monitors, std::int32_t& status) {
  std::int32_t listed = 0;
  kvd_mon_monitorlist_(model, type, monitor_selector, monitors, listed, status);
  if (status == 0 && !std::cmp_equal(listed, monitors.size())) status = 1;
  if (status == 0) isort_(monitors);
}

bool measureschanged_(std::int32_t model, std::int32_t type, std::int32_t& status) {
  const auto* family = family_of_type(type);
  status = family == nullptr ? 1 : 0;
  if (status != 0) return true;
  const std::int32_t count = numberofmeasures_(model, type, status);
  if (status != 0 || count != trjmeasures_i_.*family->count) return true;
  if (count < 1) return false;
  const NamedBlock<std::int32_t> present("pathstat/MChange/MeasOids", count, status);
  if (status != 0) return true;
  const NamedBlock<std::int32_t> earlier("pathstat/MChange/OldMeasOids", count, status);
  if (status == 0) getmeasureoids_(model, type, present.span(), status);
  if (status == 0) remembered_monitors(*family, earlier.span(), status);
  return status != 0 || !std::ranges::equal(present.span(), earlier.span());
}

void domeasures_(std::int32_t model, std::int32_t id, std::string_view file, Logical& on_disk, bool& do_it,
                 std::int32_t& count, std::int32_t& status) {
  count = 0;
  do_it = false;
  status = is_measure(id) ? 0 : 1;
  if (status != 0) return;
  const MeasureFamily& family = measure_family(id);
  std::int32_t error = 0;
  if (measureschanged_(model, family.monitor_type, error) && kvs_fil_exists_(file)) kvs_fil_delete_(file, error);
  count = numberofmeasures_(model, family.monitor_type, error);
  if (count < 1) {
    on_disk = false;
    show_message("PATHSTAT_WARN_6", family.word);
    return;
  }
  do_it = !on_disk || !kvs_fil_exists_(file);
}

}  // namespace pathstat
