#include "desk/advice/limits.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "desk/script/script.h"

namespace pathstat::desk {
namespace {

using Value = std::optional<double>;
using Source = Value (*)(Present& present);

/// One end of what a word may be, at present.
struct Edge {
  Source value = nullptr;  ///< null: open
  std::string_view name = {};
  std::string_view remedy = {};
};

/// Limits of some words. A time is taken to the nearest frame, so that half of `grain` beyond an end is still within.
struct LimitRow {
  std::string_view words;  ///< with blanks between
  std::string_view unit;
  Source grain = nullptr;
  Edge low, high;
};

template <const auto& word>
Value present_value(Present& present) {
  return present.number(std::string(word));
}
constexpr std::string_view first_no = "FIRST_FRAME_NO", last_no = "LAST_FRAME_NO", first_time = "FIRST_FRAME_TIME",
                           last_time = "LAST_FRAME_TIME", increment_time = "INCREMENT_TIME", min_fit = "MIN_FIT_TIME",
                           max_fit = "MAX_FIT_TIME", displacement_end = "MSD_MAX_INTERVAL";

Value one(Present&) { return 1.0; }
Value frame_time(Present& present) { return present.frame_time(); }
Value last_of_file(Present& present) { return present.frames_in_file(); }
Value file_start(Present& present) { return present.time_of(1.0); }
Value file_end(Present& present) { return present.time_of(present.frames_in_file()); }
Value range_frames(Present& present) { return present.frames_in_range(); }

Value range_length(Present& present) {
  const auto first = present.number("FIRST_FRAME_NO"), last = present.number("LAST_FRAME_NO");
  return first && last ? Value(*last - *first + 1) : std::nullopt;
}

Value range_span(Present& present) {
  const auto length = range_length(present), step = present.frame_time();
  return length && step ? Value(*length * *step) : std::nullopt;
}

Value longest_lag(Present& present) {
  const auto frames = present.frames_in_range();
  return frames ? Value(std::max(*frames - 1, 1.0)) : frames;
}

Value longest_lag_time(Present& present) {
  const auto frames = longest_lag(present), step = present.number("INCREMENT_TIME");
  return frames && step ? Value(*frames * *step) : std::nullopt;
}

Value half_cell(Present& present) {
  const auto width = present.cell_width();
  return width ? Value(*width / 2) : width;
}

constexpr Edge file_begins{one, "the first frame of the file"};
constexpr std::string_view range_cut = "the longest lag (one frame less than the range has)";

// For each word the first row with a broken limit is told: those of the file stand before those of other words.
// clang-format off
constexpr std::array limit_rows{
    LimitRow{"FIRST_FRAME_NO LAST_FRAME_NO EXTRACT_FRAME_NO", "", nullptr, file_begins, {last_of_file, "the last frame of the file"}},
    LimitRow{"FIRST_FRAME_TIME LAST_FRAME_TIME EXTRACT_FRAME_TIME", " ps", frame_time, {file_start, "the time of the first frame of the file"}, {file_end, "the time of the last frame of the file"}},
    LimitRow{"FIRST_FRAME_NO", "", nullptr, {}, {present_value<last_no>, "the present LAST_FRAME_NO", "raise LAST_FRAME_NO first"}},
    LimitRow{"LAST_FRAME_NO", "", nullptr, {present_value<first_no>, "the present FIRST_FRAME_NO", "lower FIRST_FRAME_NO first"}, {}},
    LimitRow{"FIRST_FRAME_TIME", " ps", frame_time, {}, {present_value<last_time>, "the present LAST_FRAME_TIME", "raise LAST_FRAME_TIME first"}},
    LimitRow{"LAST_FRAME_TIME", " ps", frame_time, {present_value<first_time>, "the present FIRST_FRAME_TIME", "lower FIRST_FRAME_TIME first"}, {}},
    LimitRow{"INCREMENT_NO", "", nullptr, {one, "the shortest step"}, {range_length, "the length of the range in frames"}},
    LimitRow{"INCREMENT_TIME", " ps", frame_time, {frame_time, "the time between two frames of the file"}, {range_span, "the length of the range"}},
    LimitRow{"CURRENT_FRAME_NUMBER BLOCK_WIDTH_NO BLOCK_INTERVAL_NO", "", nullptr, {one, "the first"}, {range_frames, "the frames of the range"}},
    LimitRow{"MAX_INTERVAL_NO MSD_MAX_INTERVAL_NO VAC_MAX_INTERVAL_NO DAC_MAX_INTERVAL_NO", "", nullptr, {one, "one frame"}, {longest_lag, range_cut}},
    LimitRow{"MAX_INTERVAL MSD_MAX_INTERVAL VAC_MAX_INTERVAL DAC_MAX_INTERVAL", " ps", present_value<increment_time>, {present_value<increment_time>, "one step of the range"}, {longest_lag_time, range_cut}},
    LimitRow{"ORIGIN_STEP MSD_ORIGIN_STEP VAC_ORIGIN_STEP DAC_ORIGIN_STEP BLOCK_WIDTH BLOCK_INTERVAL", " ps", present_value<increment_time>, {present_value<increment_time>, "one step of the range"}, {longest_lag_time, range_cut}},
    LimitRow{"MIN_FIT_TIME", " ps", nullptr, {}, {present_value<max_fit>, "the present MAX_FIT_TIME", "raise MAX_FIT_TIME first"}},
    LimitRow{"MAX_FIT_TIME", " ps", nullptr, {present_value<min_fit>, "the present MIN_FIT_TIME", "lower MIN_FIT_TIME first"}, {present_value<displacement_end>, "the longest lag of the displacement, MSD_MAX_INTERVAL"}},
    LimitRow{"RDF_CUTOFF", " Å", nullptr, {}, {half_cell, "half the width of the cell, beyond which atoms meet images of their own neighbours"}},
};
// clang-format on

bool names(std::string_view words, std::string_view word) {
  const auto all = words_of(words);
  return std::find(all.begin(), all.end(), word) != all.end();
}

std::string sentence(double value, std::string_view relation, double end, const LimitRow& row, const Edge& edge) {
  auto text = fmt::format("{:.6g}{} is {} {:.6g}{}, {}", value, row.unit, relation, end, row.unit, edge.name);
  if (!edge.remedy.empty()) text += fmt::format(": {}", edge.remedy);
  return text;
}

/// The value of a source; none for one that is not there.
Value ask(Source source, Present& present) { return source ? source(present) : std::nullopt; }

std::string broken_limit(const LimitRow& row, double value, Present& present) {
  // Answers come with few digits, so that a value may differ from its own limit by what was cut.
  constexpr double digits_cut = 1e-5;
  const double slack = ask(row.grain, present).value_or(0) / 2;
  const auto low = ask(row.low.value, present), high = ask(row.high.value, present);
  const auto room = [&](double end) { return slack + digits_cut * std::abs(end); };
  if (low && value < *low - room(*low)) return sentence(value, "below", *low, row, row.low);
  if (high && value > *high + room(*high)) return sentence(value, "above", *high, row, row.high);
  return {};
}

}  // namespace

std::string beyond_limits(std::string_view word, double value, Present& present) {
  for (const auto& row : limit_rows) {
    if (!names(row.words, word)) continue;
    if (auto text = broken_limit(row, value, present); !text.empty()) return text;
  }
  return {};
}

}  // namespace pathstat::desk
