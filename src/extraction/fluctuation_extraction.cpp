#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "catalogue/catalogue.h"
#include "catalogue/catalogue_rows.h"
#include "coreapi/messages.h"
#include "extraction/extraction.h"
#include "extraction/frame_points.h"
#include "extraction/scratch_file.h"
#include "services/file_names.h"
#include "services/file_units.h"
#include "state/analysis_settings.h"
#include "support/named_memory.h"
#include "trajectory/front_end.h"
#include "trajectory/open_trajectory.h"

namespace pathstat {
namespace {

constexpr std::int32_t dielectric_constant = 901;
constexpr std::int32_t dipole_vector = 302;

/// A column of the file: the number of a key times a factor; key 0 leaves the column as it is.
struct Column {
  std::int32_t key;
  double factor = 1.0;
};

constexpr Column filled_elsewhere{0};
constexpr Column pressure_in_pascal{400057, 1e9};
constexpr Column volume{400058};
constexpr Column temperature{400020};
constexpr Column total_energy{400049};
constexpr Column potential_energy{400025};
constexpr Column kinetic_energy{400050};
constexpr Column enthalpy{400150};

using Columns = std::span<const Column>;

constexpr std::array constant_energy_columns{pressure_in_pascal, volume, temperature, potential_energy, kinetic_energy};
constexpr std::array constant_temperature_columns{pressure_in_pascal, volume, temperature, total_energy,
                                                  potential_energy};
constexpr std::array isothermal_isobaric_columns{pressure_in_pascal, volume, temperature, enthalpy};
constexpr std::array constant_pressure_columns{pressure_in_pascal, volume, temperature, kinetic_energy};
constexpr std::array dielectric_columns{filled_elsewhere, volume,           temperature,
                                        filled_elsewhere, filled_elsewhere, filled_elsewhere};

bool is_thermodynamic(std::int32_t id) { return id >= 801 && id <= 810; }

/// The columns of a row's file; none where the ensemble is not known.
Columns columns_of(std::int32_t id) {
  if (id == dielectric_constant) return dielectric_columns;
  if (!is_thermodynamic(id)) return {};
  switch (trj_gui_i_.ensemble) {
    case ensemble_code::constant_energy:
      return constant_energy_columns;
    case ensemble_code::constant_temperature:
      return constant_temperature_columns;
    case ensemble_code::constant_temperature_and_pressure:
      return isothermal_isobaric_columns;
    case ensemble_code::constant_pressure:
      return constant_pressure_columns;
    default:
      return {};
  }
}

/// A run of fixed volume without a cell has none; -1 stands for it.
bool has_no_volume(std::int32_t id) {
  return is_thermodynamic(id) && ensemble_code::keeps_volume(trj_gui_i_.ensemble) && trj_gui_i_.periodicity != 3;
}

void fetch(const OpenTrajectory& trajectory, std::int32_t id, Columns columns, std::span<double> row,
           std::int32_t& status) {
  for (std::size_t column = 0; column < columns.size() && status == 0; ++column) {
    const auto [key, factor] = columns[column];
    if (key == 0) continue;
    if (key == volume.key && has_no_volume(id)) {
      row[column] = -1.0;
      continue;
    }
    trj_dvalue_(trajectory.handle(), key, row[column], status);
    row[column] *= factor;
  }
}

/// Puts the dipole vectors of the chosen frames into the last three of six columns. They must be of the same frames.
void fill_dipoles(std::span<double> table, const FrameRange& range, std::int32_t& status) {
  RecordReader file;
  ScratchHead head;
  const std::string path = property_file(property_rows[property_row_of(dipole_vector)].extension);
  status = file.open(path) == RecordStatus::ok ? 0 : unit_error::open_failed;
  if (status == 0 && read_scratch_head(file, head) != RecordStatus::ok) status = scratch_file_damaged;
  if (status == 0 && (head.values != 3 || head.points != range.points)) status = scratch_file_damaged;
  for (std::int32_t k = 0; k < range.points && status == 0; ++k) {
    if (file.expect(12 + 3 * 8) != RecordStatus::ok || file.load() != RecordStatus::ok) {
      status = scratch_file_damaged;
      break;
    }
    BigEndian in(file.payload());
    if (in.i32() != range.frame(k)) status = scratch_file_damaged;
    in.f64();
    in.fill(table.subspan(static_cast<std::size_t>(k) * dielectric_columns.size() + 3, 3));
  }
  if (status == 0) return;
  show_message("PATHSTAT_MSG_4");
}

/// The file of one row is the file of all rows with its extension.
void mark_on_disk(std::int32_t id) {
  const CatalogueTable table = fluctuation_table();
  for (std::size_t row = 0; row < table.size(); ++row) {
    const bool shares_file = is_thermodynamic(id) && is_thermodynamic(table.ids[row]);
    if (table.ids[row] == id || shares_file) table.on_disk[row] = true;
  }
}

void extract(const OpenTrajectory& trajectory, std::int32_t id, const std::string& file, std::int32_t& status) {
  const Columns columns = columns_of(id);
  const FrameRange range = chosen_frames();
  if (columns.empty() || range.points == 0) return;
  const auto width = static_cast<std::int32_t>(columns.size());
  FramePoints points(range, status);
  if (status != 0) return;
  const NamedBlock<double> table("pathstat/DTD/DataVals", std::int64_t{range.points} * width, status);
  if (status == 0 && id == dielectric_constant) fill_dipoles(table.span(), range, status);
  for (std::int32_t k = 0; k < range.points && status == 0; ++k) {
    points.read(trajectory, k, status);
    const auto row = table.span().subspan(static_cast<std::size_t>(k) * columns.size(), columns.size());
    if (status == 0) fetch(trajectory, id, columns, row, status);
  }
  if (status != 0) return;
  writescratchfile_(kind_frames, file, points.numbers(), points.x(), table.span(), width, width, 1, {}, {}, {}, status);
  if (status == 0) mark_on_disk(id);
}

}  // namespace

void fluctdatatodisk_(std::string_view file, std::int32_t& status) {
  const OpenTrajectory trajectory(file, trj_gui_i_.trajectory_model, status);
  for (std::size_t row = 0; row < fluctuation_table().size() && status == 0; ++row) {
    const CatalogueTable table = fluctuation_table();
    const std::string scratch = fluctuation_file(table.extensions[row]);
    if (!table.is_wanted(row) || (table.on_disk[row] && kvs_fil_exists_(scratch))) continue;
    extract(trajectory, table.ids[row], scratch, status);
  }
}

}  // namespace pathstat
