#include "analysis/actions.h"

#include <cstdio>
#include <cstdlib>

#include "analysis/analysis.h"
#include "analysis/analysis_state.h"
#include "coreapi/operations.h"
#include "extraction/extraction.h"
#include "plots/labels.h"
#include "reports/fluctuations.h"
#include "reports/profile.h"
#include "state/analysis_settings.h"
#include "state/trajectory_frames.h"

namespace pathstat::actions {
namespace {

/// Extracts what is missing and reports it. A row that could not be extracted does not keep back those that were;
/// the first failure is the result.
std::int32_t report(std::string_view rows, void (*make)(std::int32_t mode, std::int32_t& status), std::int32_t mode) {
  std::int32_t extracted = 0;
  datatodisk_(trj_frames_c_.trj_file_name, trj_gui_c_.input_source, rows, extracted);
  std::int32_t reported = 0;
  make(mode, reported);
  return extracted != 0 ? extracted : reported;
}

std::int32_t report_properties(std::int32_t mode) { return report("PROPERTIES", pprofile_, mode); }
std::int32_t report_fluctuations(std::int32_t mode) { return report("FLUCTUATIONS", fluctuations_, mode); }

}  // namespace

std::int32_t profile() { return report_properties(profile_mode); }
std::int32_t running_average() { return report_properties(running_average_mode); }
std::int32_t block_average() { return report_properties(block_average_mode); }
std::int32_t distribution() { return report_properties(distribution_mode); }

std::int32_t calculate_fluctuations() { return report_fluctuations(whole_run_mode); }
std::int32_t running_average_fluctuations() { return report_fluctuations(running_average_mode); }
std::int32_t block_average_fluctuations() { return report_fluctuations(block_average_mode); }

std::int32_t reset() {
  constexpr std::int32_t agreed = 1;
  constexpr std::int32_t kept = -1;
  std::int32_t choice = 0;
  std::int32_t error = 0;
  kvu_msg_args_(application_key);
  kvu_dlg_getoption_("KVZ_CONFIRM_PROMPT", "KVZ_CONFIRM_OPTIONS", choice, 1, error);
  if (choice != agreed) return kept;
  init_pathstat_();
  kvu_gui_updateall_();
  return 0;
}

std::int32_t stop() { std::exit(0); }

std::int32_t free_volume() {
  std::puts("Free volume calculation not coded yet !");
  return 0;
}

}  // namespace pathstat::actions
