#include "trajectory/scan.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "coreapi/interrupt.h"
#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "support/text_field.h"
#include "trajectory/front_end.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat {
namespace {

constexpr std::int32_t failed = 1;
constexpr std::int32_t frames_between_reports = 50;

/// Kinds of files whose frames carry times.
constexpr std::array<std::int32_t, 3> kinds_with_times{1, 2, 6};

void print_comments(std::int32_t handle) {
  constexpr std::int32_t most_lines = 10;
  constexpr std::int32_t width = 80;
  std::array<Text<width>, most_lines> lines;
  std::int32_t count = 0;
  std::int32_t status = 0;
  trj_cvalue_(handle, trajectory_key::comments, {lines[0].begin(), sizeof lines}, width, count, status);
  count = status == 0 ? std::clamp(count, 0, most_lines) : 0;
  if (count > 0) std::puts("Trajectory contains comments:");
  for (std::int32_t k = 0; k < count; ++k) std::puts(lines[static_cast<std::size_t>(k)].str().c_str());
}

/// Shows how far the count has come. @return true if the user asks to stop
bool report_and_poll(std::int32_t frames) {
  std::int32_t error = 0;
  kvu_msg_argi_(frames);
  kvu_int_reportstatus_("PATHSTAT_MSG_67", 1, error);
  if (kvu_int_requestinterrupt_() != 1) return false;
  show_message("PATHSTAT_WARN_19", frames);
  return true;
}

struct Count {
  std::int32_t frames = 0;
  double first_time = 0.0;
  double latest_time = 0.0;
  bool damaged = false;
};

Count count_frames(std::int32_t handle, bool tells_time) {
  Count count;
  while (true) {
    if (count.frames % frames_between_reports == 0 && report_and_poll(count.frames)) return count;
    std::int32_t status = 0;
    trj_readframe_(handle, count.frames + 1, status);
    if (status != 0) {
      count.damaged = status != trajectory_status::end_of_file;
      return count;
    }
    ++count.frames;
    if (!tells_time) continue;
    trj_dvalue_(handle, trajectory_key::time, count.latest_time, status);
    if (count.frames == 1) count.first_time = count.latest_time;
  }
}

void clear_report() {
  std::int32_t error = 0;
  kvu_int_reportstatus_(" ", 0, error);
}

}  // namespace

void scanfile_(std::string_view path, std::int32_t& reader_code, std::int32_t& file_kind, std::int32_t& version,
               bool& has_time_axis, double& first_time, double& time_step, std::int32_t& frames, std::int32_t& status) {
  has_time_axis = false;
  first_time = time_step = 0.0;
  frames = 0;
  std::int32_t handle = 0;
  trj_openread_(path, 1, handle, status);
  const bool is_open = status == 0;
  if (!is_open && status != trajectory_status::header_cut) {
    const bool cut = status == trajectory_status::fixed_header_cut;
    return show_message(cut ? "PATHSTAT_ERROR_117" : "Traj_OpenProblem", trimmed(path));
  }
  Count count;
  bool tells_time = false;
  if (is_open) {
    trj_ivalue_(handle, trajectory_key::reader_code, reader_code, status);
    trj_ivalue_(handle, trajectory_key::file_kind, file_kind, status);
    trj_ivalue_(handle, trajectory_key::version, version, status);
    print_comments(handle);
    tells_time = std::ranges::find(kinds_with_times, file_kind) != kinds_with_times.end();
    count = count_frames(handle, tells_time);
  }
  if (!is_open || count.damaged) show_message(count.frames == 0 ? "PATHSTAT_ERROR_47" : "PATHSTAT_WARN_7");
  clear_report();
  std::int32_t closed = 0;
  if (is_open) trj_close_(handle, closed);
  frames = count.frames;
  status = frames == 0 ? failed : 0;
  if (frames == 0 || !tells_time) return;
  constexpr double step_of_single_frame = 0.001;
  first_time = count.first_time;
  time_step = frames == 1 ? step_of_single_frame : (count.latest_time - count.first_time) / (frames - 1);
  if (!std::isfinite(time_step) || !std::isfinite(first_time)) first_time = time_step = 0.0;
  has_time_axis = time_step != 0.0;
}

}  // namespace pathstat
