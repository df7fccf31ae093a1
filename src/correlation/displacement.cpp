#include "correlation/displacement.h"

#include "correlation/correlation_run.h"

namespace pathstat {
namespace {

constexpr CorrelationKind displacement{
    .of_velocities = false,
    .total = add_squared_displacement,
    .products = add_displacement_products,
    .totals = add_squared_displacements,
    .cross_factor = 1.0,
    .file = displacement_file,
    .titles = {"MSD component XX", "MSD component YY", "MSD component ZZ", "MSD component XY", "MSD component XZ",
               "MSD component YZ", "Total MSD"},
    .y_label = "A*A per atom",
    .wide_graphs = false,
    .cache_messages = {"PATHSTAT_ERROR_13", "PATHSTAT_ERROR_25", "PATHSTAT_ERROR_26", "PATHSTAT_ERROR_16",
                       "PATHSTAT_ERROR_17"},
    .memory_message = "PATHSTAT_ERROR_27",
    .memory_statuses = {1, 1, 1},
    .frame_labels = {"PathStat/MSD/x1", "PathStat/MSD/y1", "PathStat/MSD/z1", "PathStat/MSD/x2", "PathStat/MSD/y2",
                     "PathStat/MSD/z2"},
    .table_label = "PathStat/MSD/MSD",
    .count_label = "PathStat/MSD/contrib",
    .lag_label = "PathStat/MSD/MSDx",
    .number_label = "PathStat/MSD/DummyFN",
    .plot_label = "PathStat/MSD/PlotData",
};

}  // namespace

void run_msd_(std::int32_t intervals, std::int32_t frames, std::string_view trajectory, std::int32_t model,
              std::int32_t first, std::int32_t last, std::int32_t step, bool monitor, std::string_view atoms,
              std::int32_t origin_step, bool anisotropic, bool& available, std::int32_t& status) {
  run_correlation(displacement,
                  {intervals, frames, trajectory, model, first, last, step, monitor, atoms, origin_step, anisotropic},
                  available, status);
}

}  // namespace pathstat
