#include <array>
#include <string>

#include "analysis/actions.h"
#include "analysis/returned_values.h"
#include "services/coded_number.h"
#include "shell/arguments.h"
#include "shell/return_list.h"
#include "state/statistics_settings.h"
#include "state/trajectory_frames.h"
#include "support/number_format.h"

namespace pathstat {
namespace {

std::string without_blanks_in_front(std::string text) {
  text.erase(0, text.find_first_not_of(' '));
  return text;
}

std::string whole(std::int32_t value) { return without_blanks_in_front(formatted(value, "(i12)")); }

std::string time_text(double time_ps) {
  constexpr std::int32_t width = 16;
  constexpr std::int32_t digits = 10;
  constexpr std::int32_t zeros = 3;
  Text<width> text;
  kvs_fmt_codedouble_(text, time_ps, width, digits, zeros);
  return without_blanks_in_front(text.str());
}

double time_of_frame(std::int32_t frame) {
  return trj_frames_.frame_first_time + trj_frames_.frame_time_step * (frame - 1);
}

struct ReturnedValue {
  std::string_view key;
  std::string (*value)();
};

const std::array returned_values{
    ReturnedValue{"NUMBER_OF_FRAMES", [] { return whole(trj_frames_.frames_in_file); }},
    ReturnedValue{"NUMBER_OF_FRAMES_SELECTED", [] { return whole(trj_frames_.frames_in_range); }},
    ReturnedValue{"FIRST_FRAME_SELECTED", [] { return whole(trj_frames_.first_frame); }},
    ReturnedValue{"LAST_FRAME_SELECTED", [] { return whole(trj_frames_.last_frame); }},
    ReturnedValue{"FIRST_FRAME_SELECTED_TIME", [] { return time_text(trj_frames_.frame_first_time); }},
    ReturnedValue{"LAST_FRAME_SELECTED_TIME", [] { return time_text(time_of_frame(trj_frames_.last_frame)); }},
    ReturnedValue{"FRAME_STEP_TIME", [] { return time_text(trj_frames_.frame_time_step); }},
    ReturnedValue{"TRAJECTORY_FILE_NAME", [] { return trj_frames_c_.trj_file_name.str(); }},
    ReturnedValue{"TABLES_FILE_NAME", [] { return trj_stats_c_.stats_filename.str(); }},
};

}  // namespace

void mdanaltclreturn_(std::string_view key, std::int32_t& status) {
  for (const auto& row : returned_values) {
    if (!same_text(key, row.key)) continue;
    status = 0;
    kvz_addtoreturnlist_(row.value());
    kvz_setreturnfromlist_();
    return;
  }
  status = 1;
}

std::int32_t actions::get() {
  Text<32> key;
  std::int32_t status = 0;
  kvz_argfillstring_(key, 1, 0, actions::returned_keys, status);
  if (status > 0) return status;
  mdanaltclreturn_(key, status);
  return status;
}

}  // namespace pathstat
