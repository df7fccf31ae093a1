#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>

#include "catalogue/catalogue.h"
#include "catalogue/measure_families.h"
#include "catalogue/model_selection.h"
#include "coreapi/messages.h"
#include "coreapi/operations.h"
#include "extraction/extraction.h"
#include "extraction/frame_points.h"
#include "extraction/radius_of_gyration.h"
#include "extraction/scratch_file.h"
#include "measures/measures.h"
#include "state/analysis_settings.h"
#include "structure/crystal_maths.h"
#include "structure/measure_geometry.h"
#include "support/named_memory.h"
#include "trajectory/frame_cell.h"

namespace pathstat {
namespace {

constexpr std::int32_t cluster = periodic_type::none;
constexpr std::int32_t crystal = periodic_type::three_dimensional;
constexpr std::int32_t layer = periodic_type::two_dimensional;

/// The numbers of one model; how many are valid, 0 for none.
using ModelNumbers = std::int32_t (*)(std::int32_t model, std::int32_t type, std::span<double> numbers);

/// The cell of a crystal or a layer, of which the first vector stands for the direction that does not repeat.
CellVectors cell_of(std::int32_t model, std::int32_t type) {
  std::int32_t error = 0;
  CellVectors cell = cell_of_model(model, type, error);
  if (type == layer) cell.a = {1, 0, 0};
  return cell;
}

std::int32_t gyration_radius(std::int32_t model, std::int32_t type, std::span<double> numbers) {
  if (type != cluster) return 0;
  std::int32_t status = 0;
  calcradgyr_(model, numbers[0], status);
  return status == 0 ? 1 : 0;
}

std::int32_t cell_volume(std::int32_t model, std::int32_t type, std::span<double> numbers) {
  if (type != crystal) return 0;
  const auto [a, b, c] = cell_of(model, type);
  std::int32_t status = 0;
  kva_cry_3dabctocellvolume_(a, b, c, numbers[0], status);
  return status == 0 ? 1 : 0;
}

std::int32_t cell_area(std::int32_t model, std::int32_t type, std::span<double> numbers) {
  if (type != layer) return 0;
  const auto [a, b, c] = cell_of(model, type);
  std::int32_t status = 0;
  kva_cry_2duvtocellarea_(b, c, numbers[0], status);
  return status == 0 ? 1 : 0;
}

std::int32_t density(std::int32_t model, std::int32_t type, std::span<double> numbers) {
  double volume = 0;
  if (cell_volume(model, type, std::span(&volume, 1)) == 0) return 0;
  double mass = 0;
  std::int32_t error = 0;
  kva_cmp_mass_(model, mass, error);
  numbers[0] = mass * density_factor / volume;
  return 1;
}

std::int32_t cell_parameters(std::int32_t model, std::int32_t type, std::span<double> numbers) {
  if (type != crystal && type != layer) return 0;
  const auto [a, b, c] = cell_of(model, type);
  std::int32_t status = 0;
  kva_cry_3dcelltoparam_(a, b, c, numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], numbers[5], status);
  if (status != 0) return 0;
  for (double& angle : numbers.subspan(3, type == crystal ? 3 : 1)) angle *= degrees_per_radian;
  return type == crystal ? 6 : 3;
}

/// Models without monitors of a kind have no point.
template <std::int32_t id>
std::int32_t measures(std::int32_t model, std::int32_t, std::span<double> numbers) {
  std::int32_t count = 0;
  std::int32_t status = 0;
  if constexpr (measure_family(id).values == 3) {
    getmodeldistvectors_(model, count, numbers, status);
  } else {
    getmodelmeasures_(measure_family(id).monitor_type, model, numbers, count, status);
  }
  return status == 0 ? count : 0;
}

/// A row that selected models have; of measures, the numbers of one.
struct ModelSource {
  std::int32_t id;
  std::int32_t width;
  ModelNumbers numbers;
};

constexpr auto model_sources = std::to_array<ModelSource>({
    {202, 1, gyration_radius},
    {204, 1, cell_volume},
    {206, 6, cell_parameters},
    {207, 1, density},
    {208, 1, cell_area},
    {501, 1, measures<501>},
    {502, 1, measures<502>},
    {503, 1, measures<503>},
    {504, 1, measures<504>},
    {505, 1, measures<505>},
    {506, 3, measures<506>},
});

/// The message of a row that these models cannot serve; empty if they can.
std::string_view refusal(std::int32_t id, const ModelSelection& selection) {
  const bool some_crystal = selection.count_of(crystal) > 0;
  const bool some_layer = selection.count_of(layer) > 0;
  switch (id) {
    case 202:
      return selection.count_of(cluster) > 0 ? "" : "PATHSTAT_ERROR_94";
    case 204:
      return some_crystal ? "" : "PATHSTAT_ERROR_95";
    case 208:
      return some_layer ? "" : "PATHSTAT_ERROR_96";
    case 207:
      return some_crystal ? "" : "PATHSTAT_ERROR_97";
    case 206:
      return !some_crystal && !some_layer ? "PATHSTAT_ERROR_98" : some_crystal && some_layer ? "PATHSTAT_ERROR_99" : "";
    default:
      return "";
  }
}

/// The points of one row, one for each model that has numbers of it.
class ModelPoints {
 public:
  ModelPoints(std::int32_t models, std::int32_t width, std::int32_t& status)
      : width_(width), x_("pathstat/DTD/XData", models, status) {
    if (status == 0) numbers_ = NamedBlock<std::int32_t>("pathstat/DTD/FrameNumber", models, status);
    if (status == 0) ids_ = NamedBlock<std::int32_t>("pathstat/DTD/ModelIds", models, status);
    if (status == 0) sizes_ = NamedBlock<std::int32_t>("pathstat/DTD/NDataPerPt", models, status);
    if (status == 0) table_ = NamedBlock<double>("pathstat/DTD/DataVals", std::int64_t{models} * width, status);
  }

  void add(const ModelSource& source, std::int32_t place, std::int32_t model, std::int32_t type) {
    const auto row_length = static_cast<std::size_t>(width_);
    const std::int32_t valid = source.numbers(model, type, table_.span().subspan(count_ * row_length, row_length));
    if (valid < 1) return;
    numbers_.span()[count_] = place;
    x_.span()[count_] = place;
    ids_.span()[count_] = model;
    sizes_.span()[count_] = valid;
    ++count_;
  }

  bool empty() const { return count_ == 0; }

  void write(const std::string& file, std::int32_t first, std::int32_t values, std::int32_t& status) const {
    writescratchfile_(kind_models, file, numbers_.span().first(count_), x_.span(), table_.span(), values, width_, first,
                      ids_.span(), sizes_.span(), {}, status);
  }

 private:
  std::int32_t width_;
  NamedBlock<double> x_;
  NamedBlock<std::int32_t> numbers_;
  NamedBlock<std::int32_t> ids_;
  NamedBlock<std::int32_t> sizes_;
  NamedBlock<double> table_;
  std::size_t count_ = 0;
};

/// The numbers of a point: of measures, room for those of the model with most. 0 if there is nothing.
std::int32_t width_of(const ModelSource& source, const ModelSelection& selection) {
  if (!is_measure(source.id)) return source.width;
  std::int32_t status = 0;
  const std::int32_t most = maxnummodelmeasures_(selection.models(), source.id, status);
  return most <= std::numeric_limits<std::int32_t>::max() / source.width ? most * source.width : 0;
}

void extract(std::size_t row, const ModelSource& source, const ModelSelection& selection, std::int32_t& status) {
  const std::int32_t width = width_of(source, selection);
  if (width < 1) return;
  ModelPoints points(selection.size(), width, status);
  if (status != 0) return;
  for (std::int32_t k = 0; k < selection.size(); ++k) {
    const auto at = static_cast<std::size_t>(k);
    points.add(source, k + 1, selection.models()[at], selection.periodic_types()[at]);
  }
  if (points.empty()) return;
  const bool layer_cell = source.id == 206 && selection.count_of(crystal) == 0;
  const std::string file = property_file(property_table().extensions[row]);
  points.write(file, layer_cell ? 2 : 1, layer_cell ? 3 : width, status);
  if (status == 0) property_table().on_disk[row] = true;
}

}  // namespace

void propsdatatodiskmodel_(std::int32_t& status) {
  const ModelSelection selection("pathstat/DTD/ModelOIDs", "pathstat/DTD/ModelPeriod", status);
  for (std::size_t row = 0; row < property_table().size() && status == 0; ++row) {
    const CatalogueTable table = property_table();
    if (!table.is_wanted(row)) continue;
    const std::int32_t id = table.ids[row];
    if (const auto key = refusal(id, selection); !key.empty()) {
      show_message(key);
      continue;
    }
    const auto source = std::ranges::find(model_sources, id, &ModelSource::id);
    if (source != model_sources.end()) extract(row, *source, selection, status);
  }
}

}  // namespace pathstat
