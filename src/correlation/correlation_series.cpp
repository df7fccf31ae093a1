#include "correlation/correlation_series.h"

#include <cmath>
#include <cstddef>
#include <string>

#include "coreapi/messages.h"
#include "extraction/scratch_format.h"
#include "services/file_names.h"
#include "support/record_file.h"

namespace pathstat {

CorrelationSeries::CorrelationSeries(std::string_view file, std::string_view table_label, std::string_view lag_label,
                                     const SeriesMessages& messages, std::int32_t& status) {
  status = 1;
  if (!kvs_fil_exists_(file)) {
    show_message("PATHSTAT_ERROR_70", file);
  } else if (!read(file, table_label, lag_label)) {
    show_message("PATHSTAT_ERROR_69", file);
  } else if (const auto message = flaw(messages); !message.empty()) {
    show_message(message);
  } else {
    status = 0;
  }
}

bool CorrelationSeries::read(std::string_view file, std::string_view table_label, std::string_view lag_label) {
  RecordReader reader;
  ScratchHead head;
  if (reader.open(std::string(file)) != RecordStatus::ok) return false;
  if (read_scratch_head(reader, head) != RecordStatus::ok || head.kind != kind_frames) return false;
  if (head.values != 1 && head.values != static_cast<std::int32_t>(correlation_columns)) return false;
  first_ = correlation_columns - static_cast<std::size_t>(head.values);
  std::int32_t status = 0;
  table_ = NamedBlock<double>(table_label, std::int64_t{7} * head.points, status);
  if (status == 0) lags_ = NamedBlock<double>(lag_label, head.points, status);
  numbers_ = PlainArray<std::int32_t>(head.points);
  const PlainArray<double> extras(head.extras);
  if (status != 0 || !numbers_.allocated() || !extras.allocated()) return false;
  const auto table = table_.span();
  const ScratchArrays arrays{numbers_.span(), lags_.span(), table, {}, {}, extras.span()};
  if (read_scratch_points(reader, head, arrays) != RecordStatus::ok) return false;
  if (first_ == total_column) {
    // The lone values stand packed at the front; from the back on each finds its place free.
    for (std::size_t k = size(); k-- > 0;) table[k * correlation_columns + total_column] = table[k];
  }
  return true;
}

/// The message of what is wrong with the points; empty if nothing is.
std::string_view CorrelationSeries::flaw(const SeriesMessages& messages) {
  constexpr double tolerance = 1e-10;
  if (size() < 2) return messages.too_few;
  spacing_ps_ = lags()[1] - lags()[0];
  if (messages.uneven.empty()) {
    spacing_ps_ = std::abs(spacing_ps_);
    return {};
  }
  for (std::size_t k = 2; k < size(); ++k) {
    const double next = lags()[k] - lags()[k - 1];
    if (!(std::abs(next - spacing_ps_) <= tolerance)) return messages.uneven;
    spacing_ps_ = next;
  }
  return spacing_ps_ > 0.0 ? std::string_view{} : messages.not_ahead;
}

}  // namespace pathstat
