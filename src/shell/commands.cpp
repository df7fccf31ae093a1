#include <cmath>

#include "shell/analysis.h"
#include "shell/analysis_state.h"
#include "shell/arguments.h"
#include "shell/command_words.h"
#include "shell/messages.h"
#include "shell/running_analysis.h"
#include "state/analysis_settings.h"
#include "state/correlation_settings.h"

namespace pathstat {
namespace {

constexpr std::int32_t refused = 1;

struct GuardRow {
  Guard guard;
  bool (*holds)();
  std::string_view key;
};

constexpr std::array guard_rows{
    GuardRow{Guard::property_selected, [] { return bool(trj_gui_l_.any_property_selected); }, "PATHSTAT_MSG_30"},
    GuardRow{Guard::source_is_trajectory, [] { return !(trj_gui_c_.input_source == from_selected_models); },
             "PATHSTAT_ERROR_77"},
    GuardRow{Guard::loaded, [] { return bool(trj_gui_l_.trajectory_loaded); }, "PATHSTAT_ERROR_57"},
    GuardRow{Guard::loaded_if_trajectory,
             [] { return !(trj_gui_c_.input_source == from_trajectory) || trj_gui_l_.trajectory_loaded; },
             "PATHSTAT_ERROR_57"},
    GuardRow{Guard::fluctuation_selected, [] { return bool(trj_gui_l_.any_fluctuation_selected); }, "PATHSTAT_MSG_34"},
    GuardRow{Guard::time_axis, [] { return bool(trj_gui_l_.has_time_axis); }, "PATHSTAT_ERROR_113"},
    GuardRow{Guard::displacement_done, [] { return bool(trj_gui_l_.msd_done); }, "PATHSTAT_ERROR_28"},
    GuardRow{Guard::velocities_done, [] { return bool(trj_gui_l_.vac_done); }, "PATHSTAT_ERROR_73"},
    GuardRow{Guard::distribution_done, [] { return bool(trj_gui_l_.rdf_done); }, "PATHSTAT_ERROR_71"},
    GuardRow{Guard::dipole_interval_set, [] { return trj_vac_msd_i_.max_interval_no_dac != 0; }, "PATHSTAT_ERROR_114"},
};

/// Carries out the effect of one word.
class Command {
 public:
  explicit Command(const CommandWord& row) : row_(row) {}

  std::int32_t operator()(const Action& action) const {
    for (const auto wanted : action.guards.view()) {
      const auto& row = guard_rows[static_cast<std::size_t>(wanted)];
      if (row.holds()) continue;
      return wanted == Guard::source_is_trajectory ? refuse(row.key, action.source_word) : refuse(row.key);
    }
    if (action.nesting == Nesting::free) return action.run();
    if (RunningAnalysis::any()) return decline(row_.word, another_analysis_runs);
    if (action.nesting == Nesting::frames) return action.run();
    const RunningAnalysis running;
    return action.run();
  }

  std::int32_t operator()(const TextSetting& setting) const {
    if (setting.rebuilds && RunningAnalysis::any()) return decline(row_.word, another_analysis_runs);
    std::int32_t status = 0;
    kvz_argfillstring_(TextField(setting.field), 1, 0, setting.allowed, status);
    if (status > 0) return status;
    return setting.after == nullptr ? 0 : setting.after();
  }

  std::int32_t operator()(const LogicalSetting& setting) const {
    std::int32_t status = 0;
    kvz_arglogical_(*setting.target, 1, status);
    if (status > 0) return status;
    if (setting.after != nullptr) setting.after();
    return 0;
  }

  std::int32_t operator()(const IntegerSetting& setting) const {
    std::int32_t value = 0;
    std::int32_t status = 0;
    kvz_argint_(value, 1, setting.low.now(), setting.high.now(), status);
    return status > 0 ? status : setting.store(value);
  }

  std::int32_t operator()(const DoubleSetting& setting) const {
    double value = 0.0;
    std::int32_t status = 0;
    kvz_argdouble_(value, 1, setting.low.now(), setting.high.now(), status);
    if (status > 0) return status;
    return std::isfinite(value) ? setting.store(value) : refused;
  }

  std::int32_t operator()(const Label&) const { return 0; }

 private:
  const CommandWord& row_;
};

constexpr bool rows_stand_by_guard() {
  for (std::size_t k = 0; k < guard_rows.size(); ++k) {
    if (static_cast<std::size_t>(guard_rows[k].guard) != k) return false;
  }
  return true;
}
static_assert(rows_stand_by_guard());

}  // namespace

std::int32_t set_pathstat_(std::string_view command, std::string_view arguments) {
  const ArgumentsAside outer;
  std::int32_t count = 0;
  sch_preparearguments_(arguments, count);
  const CommandWord* row = find_command_word(command);
  if (row == nullptr) return refuse("KVZ_CMD_UNDEF", application_key, trimmed(command));
  return std::visit(Command(*row), row->effect);
}

}  // namespace pathstat
