#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "catalogue/catalogue.h"
#include "catalogue/frame_sources.h"
#include "extraction/extraction.h"
#include "extraction/frame_measures.h"
#include "extraction/frame_points.h"
#include "extraction/scratch_file.h"
#include "services/file_names.h"
#include "state/analysis_settings.h"
#include "structure/measure_geometry.h"
#include "support/named_memory.h"
#include "support/parallel.h"
#include "trajectory/front_end.h"
#include "trajectory/open_trajectory.h"

namespace pathstat {
namespace {

constexpr std::int32_t molecule_count_key = 200177;

/// One series on its way to its file.
struct Series {
  std::size_t row;
  FrameSource source;
  std::int32_t width;   ///< numbers per frame
  std::int32_t offset;  ///< place in the common row of all series, from 0
  std::int32_t status = 0;
};

/// The numbers of a frame that are written: of stress and cell, those along periodic directions only.
struct Slice {
  std::int32_t first;  ///< from 1
  std::int32_t values;
};

Slice slice_of(const Series& series) {
  if (series.source.extent != FrameExtent::six) return {1, series.width};
  switch (trj_gui_i_.periodicity) {
    case 1:
      return {3, 1};
    case 2:
      return {2, 3};
    default:
      return {1, 6};
  }
}

bool is_missing(const CatalogueTable& table, std::size_t row) {
  return table.is_wanted(row) && (!table.on_disk[row] || !kvs_fil_exists_(property_file(table.extensions[row])));
}

/// The numbers that a frame has of a row; 0 for none, or if the row is on disk.
std::int32_t missing_width(const OpenTrajectory& trajectory, std::size_t row, FrameExtent extent,
                           FrameMeasures& measures) {
  const CatalogueTable table = property_table();
  if (extent == FrameExtent::measures) return table.is_wanted(row) ? measures.prepare(row) : 0;
  if (!is_missing(table, row)) return 0;
  if (extent == FrameExtent::per_molecule) return trajectory.integer(molecule_count_key, 0);
  return extent == FrameExtent::six ? 6 : 1;
}

/// The wanted rows whose files are missing, side by side in one common row. A row without numbers is left out.
std::vector<Series> missing_series(const OpenTrajectory& trajectory, FrameMeasures& measures) {
  const CatalogueTable table = property_table();
  std::vector<Series> missing;
  std::int32_t offset = 0;
  for (std::size_t row = 0; row < table.size(); ++row) {
    const auto source = std::ranges::find(frame_sources, table.ids[row], &FrameSource::id);
    if (source == frame_sources.end()) continue;
    const std::int32_t width = missing_width(trajectory, row, source->extent, measures);
    if (width < 1 || width > std::numeric_limits<std::int32_t>::max() - offset) continue;
    missing.push_back({row, *source, width, offset});
    offset += width;
  }
  return missing;
}

/// Turns the trajectory's numbers into those of the catalogue.
void convert(std::int32_t id, std::span<double> numbers) {
  constexpr std::int32_t cell_parameters = 206;
  constexpr std::int32_t density = 207;
  if (id == cell_parameters) {
    for (double& angle : numbers.last(3)) angle *= degrees_per_radian;
  } else if (id == density) {
    numbers[0] = trj_gui_d_.model_mass * density_factor / numbers[0];
  }
}

bool runs_beside(const Series& series) {
  return series.source.extent == FrameExtent::measures && FrameMeasures::may_run_beside(series.source.id);
}

/// Fetches the numbers of one series in the frame that is loaded; the first failure stays with the series.
void fetch(const OpenTrajectory& trajectory, const FrameMeasures& measures, Series& series,
           std::span<double> common_row) {
  if (series.status != 0) return;
  const auto numbers =
      common_row.subspan(static_cast<std::size_t>(series.offset), static_cast<std::size_t>(series.width));
  if (series.source.extent == FrameExtent::measures) return measures.put(series.source.id, numbers, series.status);
  std::int32_t count = 0;
  trj_dvalue_(trajectory.handle(), series.source.key, numbers, count, series.status);
  if (series.status == 0) convert(series.source.id, numbers);
}

/// Fetches the numbers of all series, frame after frame. Measures are computed while the next frame is read.
class FrameFetch {
 public:
  FrameFetch(const OpenTrajectory& trajectory, FrameMeasures& measures, std::span<Series> all)
      : trajectory_(trajectory), measures_(measures), all_(all) {}

  /// Takes the frame that is loaded. @param common_row  stays until the next one, or finish()
  void take(std::span<double> common_row) {
    std::int32_t coordinates = 0;
    if (!measures_.empty()) measures_.take_frame(coordinates);
    finish();
    measures_.turn();
    for (Series& series : all_) {
      if (series.source.extent == FrameExtent::measures && series.status == 0) series.status = coordinates;
      if (!runs_beside(series)) fetch(trajectory_, measures_, series, common_row);
    }
    if (!measures_.empty()) beside_.emplace(1, [this, common_row](auto, auto) { fetch_beside(common_row); });
  }

  /// Ends what is computed for the frame taken last.
  void finish() {
    if (beside_) beside_->finish();
    beside_.reset();
  }

 private:
  void fetch_beside(std::span<double> common_row) {
    for (Series& series : all_) {
      if (runs_beside(series)) fetch(trajectory_, measures_, series, common_row);
    }
  }

  const OpenTrajectory& trajectory_;
  FrameMeasures& measures_;
  std::span<Series> all_;
  std::optional<ParallelBlocks> beside_;
};

void write(const Series& series, const FramePoints& points, std::span<const double> table, std::int32_t stride,
           std::int32_t& status) {
  const auto [first, values] = slice_of(series);
  const std::string file = property_file(property_table().extensions[series.row]);
  writescratchfile_(kind_frames, file, points.numbers(), points.x(), table, values, stride, series.offset + first, {},
                    {}, {}, status);
  if (status == 0) property_table().on_disk[series.row] = true;
}

}  // namespace

void propsdatatodisktrj_(std::string_view file, std::int32_t& status) {
  const OpenTrajectory trajectory(file, trj_gui_i_.trajectory_model, status);
  if (status != 0) return;
  FrameMeasures measures(trajectory);
  std::vector<Series> missing = missing_series(trajectory, measures);
  if (missing.empty()) return;
  const std::int32_t stride = missing.back().offset + missing.back().width;
  FramePoints points(chosen_frames(), status);
  if (status != 0 || points.size() == 0) return;
  const NamedBlock<double> table("pathstat/DTD/DataVals", std::int64_t{points.size()} * stride, status);
  FrameFetch fetching(trajectory, measures, missing);
  for (std::int32_t k = 0; k < points.size() && status == 0; ++k) {
    points.read(trajectory, k, status);
    const auto row_length = static_cast<std::size_t>(stride);
    if (status == 0) fetching.take(table.span().subspan(static_cast<std::size_t>(k) * row_length, row_length));
  }
  fetching.finish();
  std::int32_t first_failure = 0;
  for (const Series& series : missing) {
    if (status != 0) return;
    if (series.status == 0) write(series, points, table.span(), stride, status);
    if (first_failure == 0) first_failure = series.status;
  }
  if (status == 0) status = first_failure;
}

}  // namespace pathstat
