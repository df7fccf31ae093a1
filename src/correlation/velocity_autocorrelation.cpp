#include "correlation/velocity_autocorrelation.h"

#include "correlation/correlation_run.h"

namespace pathstat {
namespace {

constexpr CorrelationKind autocorrelation{
    .of_velocities = true,
    .total = add_velocity_product,
    .products = add_velocity_products,
    .totals = add_velocity_products_of_pairs,
    .cross_factor = 0.5,
    .file = velocity_file,
    .titles = {"VAC component XX( A^2/ps^2 )", "VAC component YY( A^2/ps^2 )", "VAC component ZZ( A^2/ps^2 )",
               "VAC component XY( A^2/ps^2 )", "VAC component XZ( A^2/ps^2 )", "VAC component YZ( A^2/ps^2 )",
               "Total VAC ( A^2/ps^2 )"},
    .y_label = "VACF",
    .wide_graphs = true,
    .cache_messages = {"PATHSTAT_ERROR_13", "PATHSTAT_ERROR_14", "PATHSTAT_ERROR_15", "PATHSTAT_ERROR_16",
                       "PATHSTAT_ERROR_17"},
    .memory_message = "PATHSTAT_ERROR_17",
    .memory_statuses = {6, 7, 8},
    .frame_labels = {"PathStat/VAC/vx1", "PathStat/VAC/vy1", "PathStat/VAC/vz1", "PathStat/VAC/vx2", "PathStat/VAC/vy2",
                     "PathStat/VAC/vz2"},
    .table_label = "PathStat/VAC/VAC",
    .count_label = "PathStat/VAC/contrib",
    .lag_label = "PathStat/VAC/VACx",
    .number_label = "PathStat/VAC/DummyFN",
    .plot_label = "PathStat/VAC/PlotData",
};

}  // namespace

void run_vac_(std::int32_t intervals, std::int32_t frames, std::string_view trajectory, std::int32_t model,
              std::int32_t first, std::int32_t last, std::int32_t step, bool monitor, std::string_view atoms,
              std::int32_t origin_step, bool anisotropic, bool& available, std::int32_t& status) {
  run_correlation(autocorrelation,
                  {intervals, frames, trajectory, model, first, last, step, monitor, atoms, origin_step, anisotropic},
                  available, status);
}

}  // namespace pathstat
