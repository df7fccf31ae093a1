#include "correlation/dipole_spectrum.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <span>
#include <utility>
#include <vector>

#include "coreapi/messages.h"
#include "correlation/column_plots.h"
#include "correlation/correlation_series.h"
#include "correlation/dipole_autocorrelation.h"
#include "extraction/scratch_file.h"
#include "plots/graph.h"
#include "state/analysis_settings.h"
#include "support/named_memory.h"
#include "transforms/transforms.h"

namespace pathstat {
namespace {

constexpr double light_cm_per_ps = 0.03;
constexpr double highest_wavenumber = 7000.0;
constexpr double longest_transform = 131073.0;

constexpr ColumnTexts names{"DAC Power Spectrum XX", "DAC Power Spectrum YY", "DAC Power Spectrum ZZ",
                            "DAC Power Spectrum XY", "DAC Power Spectrum XZ", "DAC Power Spectrum YZ",
                            "DAC Power Spectrum"};

/// Points of the transform, those with a frequency, and the distance of these.
struct Band {
  std::size_t transformed = 0;
  std::size_t shown = 0;
  double step_per_cm = 0.0;
};

/// @param status  1 if there are too few points or too many
Band band_of(const CorrelationSeries& series, double max_time, std::int32_t& status) {
  const double points = max_time / series.spacing_ps();
  status = points >= 2.0 && points < longest_transform + 1.0 ? 0 : 1;
  if (status != 0) return {};
  Band band;
  band.transformed = static_cast<std::size_t>(points);
  band.step_per_cm = 0.5 / (static_cast<double>(band.transformed) * series.spacing_ps() * light_cm_per_ps);
  const double shown = std::min(static_cast<double>(band.transformed), highest_wavenumber / band.step_per_cm + 1.0);
  band.shown = static_cast<std::size_t>(shown);
  return band;
}

/// The spectra by frequency and column, with their graphs.
class Spectra {
 public:
  Spectra(const CorrelationSeries& series, const Band& band, std::int32_t& status) : series_(series), band_(band) {
    const auto m = static_cast<std::int64_t>(band.transformed);
    frequencies_ = NamedBlock<double>("fftDAC/FTime", m, status);
    if (status == 0) numbers_ = NamedBlock<std::int32_t>("fftDAC/FNum", m, status);
    if (status == 0) table_ = NamedBlock<double>("fftDAC/fftDAC", m * std::int64_t{correlation_columns}, status);
    if (status == 0) data_ = NamedBlock<double>("fftDAC/fftData", m, status);
    if (status == 0) points_ = NamedBlock<float>("fftDAC/PlotData", 2 * m, status);
    if (status != 0) return;
    const auto numbers = series.numbers().first(std::min(series.size(), band.transformed));
    std::ranges::copy(numbers, numbers_.span().begin());
    for (std::size_t i = 1; i < band.shown; ++i) {
      frequencies_.span()[i] = frequencies_.span()[i - 1] + band.step_per_cm;
      points_.span()[2 * i] = static_cast<float>(frequencies_.span()[i]);
    }
  }

  void make_plots() {
    const auto end = static_cast<float>(static_cast<double>(band_.shown / 2) * band_.step_per_cm);
    for (std::size_t column = series_.first(); column < correlation_columns; ++column) {
      const auto plot = make_column_plot(column, names[column], " ");
      if (!plot) continue;
      lay_out(plot->graph, std::span(&plot->data_set, 1),
              {.title = column == total_column ? "Total DAC Power Spectrum" : names[column],
               .x_label = "1/cm",
               .y_label = " ",
               .text_code = 7,
               .x_range = std::pair{0.0F, end}});
      plots_.push_back(*plot);
    }
    viewer_ = hand_to_viewer(plots_, true);
  }

  /// Transforms one column and draws it. The value at frequency 0 stays 0.
  void transform(std::size_t column) {
    const auto data = data_.span();
    std::ranges::fill(data, 0.0);
    for (std::size_t i = 0; i < std::min(data.size(), series_.size()); ++i) data[i] = series_.value(i, column);
    fftcos_(data, data);
    for (std::size_t i = 1; i < data.size(); ++i) {
      const double value = data[i] * series_.spacing_ps();
      table_.span()[i * correlation_columns + column] = value * value;
    }
    const auto plot = std::ranges::find(plots_, column, &ColumnPlot::column);
    if (plot == plots_.end()) return;
    for (std::size_t i = 1; i < band_.shown; ++i) {
      points_.span()[2 * i + 1] = static_cast<float>(table_.span()[i * correlation_columns + column]);
    }
    write_points(plot->data_set, points_.span().first(2 * band_.shown));
    redraw(viewer_);
  }

  void save(std::int32_t& status) const {
    const auto first = static_cast<std::int32_t>(series_.first());
    constexpr auto columns = static_cast<std::int32_t>(correlation_columns);
    writescratchfile_(kind_frames, dipole_spectrum_file, numbers_.span(), frequencies_.span(), table_.span(),
                      columns - first, columns, first + 1, {}, {}, {}, status);
  }

 private:
  const CorrelationSeries& series_;
  Band band_;
  NamedBlock<double> frequencies_, table_, data_;
  NamedBlock<std::int32_t> numbers_;
  NamedBlock<float> points_;
  std::vector<ColumnPlot> plots_;
  std::int32_t viewer_ = 0;
};

}  // namespace

void runfftdac_(std::string_view trajectory, std::string_view atoms, std::int32_t intervals, bool monitor,
                std::int32_t origin_step, bool anisotropic, double max_time, std::int32_t& status) try {
  status = 0;
  if (!trj_gui_l_.trj_gui_l_3) {
    show_message("PATHSTAT_MSG_38");
    rundac_(trajectory, atoms, intervals, monitor, origin_step, anisotropic, status);
    if (status != 0) return;
  }
  const CorrelationSeries series(dipole_correlation_file, "fftDAC/DAC", "fftDAC/Lags", {}, status);
  if (status != 0) return;
  const Band band = band_of(series, max_time, status);
  if (status != 0) return;
  if (band.transformed < 3) {
    fftcos_({}, {});  // shows that it needs more
    status = 1;
    return;
  }
  Spectra spectra(series, band, status);
  if (status != 0) return;
  spectra.make_plots();
  for (std::size_t column = series.first(); column < correlation_columns; ++column) spectra.transform(column);
  spectra.save(status);
} catch (const std::bad_alloc&) {
  status = 1;
}

}  // namespace pathstat
