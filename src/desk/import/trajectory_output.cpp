#include "desk/import/trajectory_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "trajectory/binary_trajectory.h"

namespace pathstat::desk {
namespace {

constexpr double absent = std::numeric_limits<double>::quiet_NaN();

/// A value of frames: energies in kcal/mol, K, GPa, Å³, Å. Pressure and volume stand in two places each.
struct SeriesRow {
  std::string_view name;
  std::int32_t key;
};

/// The elements of the pressure tensor in the order of the file, and the keys where it stands.
constexpr std::array<std::string_view, 6> pressure_tensor{"pressure_xx", "pressure_yy", "pressure_zz",
                                                          "pressure_yz", "pressure_xz", "pressure_xy"};
constexpr std::array<std::int32_t, 2> pressure_tensor_keys{1063, 1065};

constexpr auto series_rows = std::to_array<SeriesRow>({
    {"total", 1032},         {"potential", 1006}, {"kinetic", 1034},   {"temperature", 1001},  {"bond", 1007},
    {"angle", 1008},         {"torsion", 1009},   {"inversion", 1010}, {"vdw", 1011},          {"coulomb", 1012},
    {"hydrogen_bond", 1013}, {"restraint", 1014}, {"user", 1015},      {"urey_bradley", 1074}, {"valence", 1017},
    {"nonbond", 1018},       {"pressure", 1036},  {"pressure", 1042},  {"volume", 1037},       {"volume", 1043},
    {"gyration", 1047},
});

/// Keys of the head that say how a run was controlled, as the reader puts them together with that of a cell that
/// varies.
struct EnsembleRow {
  Ensemble ensemble;
  bool thermostat;           ///< key 3002
  bool pressure_thermostat;  ///< key 3006
};

constexpr auto ensemble_rows = std::to_array<EnsembleRow>({
    {Ensemble::nve, false, false},
    {Ensemble::nvt, true, false},
    {Ensemble::nph, false, false},
    {Ensemble::npt, false, true},
});

/// A run of which nothing is known gets a combination that stands for no ensemble: the extended thermostat of constant
/// pressure in a cell that stays as it is, that of constant volume in one that varies.
EnsembleRow ensemble_row(Ensemble ensemble, bool cell_varies) {
  const auto* row = std::ranges::find(ensemble_rows, ensemble, &EnsembleRow::ensemble);
  return row == ensemble_rows.end() ? EnsembleRow{ensemble, cell_varies, !cell_varies} : *row;
}

constexpr std::size_t title_width = 80;

/// Takes every value of frames out that the layout has a place for.
void clear_values(std::int32_t handle) {
  const auto& layout = binary_trajectory(handle)->frame.layout();
  constexpr std::array<std::int32_t, 3> coordinates{1071, 1072, 1073};
  for (std::int32_t key = 1001; key <= 1102; ++key) {
    const auto place = layout.place(key);
    if (!place.exists() || std::ranges::find(coordinates, key) != coordinates.end()) continue;
    std::int32_t status = 0;
    kvA_TRJ_SetValueDouble(handle, key, std::vector<double>(place.count, absent), status);
  }
}

}  // namespace

bool is_frame_series(std::string_view name) {
  return std::ranges::find(series_rows, name, &SeriesRow::name) != series_rows.end() ||
         std::ranges::find(pressure_tensor, name) != pressure_tensor.end();
}

TrajectoryOutput::~TrajectoryOutput() {
  std::int32_t status = 0;
  if (handle_ != 0) kvA_TRJ_Close(handle_, status);
}

std::string TrajectoryOutput::failed(std::int32_t status) const {
  return fmt::format("{} cannot be written (status {}); is the disk full?", path_, status);
}

std::string TrajectoryOutput::create(const std::string& path, const TrajectoryHead& head) {
  path_ = path;
  periodic_ = head.periodic;
  pressure_tensor_.fill(absent);
  std::int32_t status = 0;
  kvA_TRJ_OpenWrite(path, binary_mode::create, handle_, status);
  if (status != 0) return failed(status);
  clear_values(handle_);
  const auto note = [&](std::int32_t result) { status = status == 0 ? result : status; };
  const auto integer = [&](std::int32_t key, std::int32_t value) {
    std::int32_t result = 0;
    kvA_TRJ_SetValueInt(handle_, key, std::span(&value, 1), result);
    note(result);
  };
  const auto flag = [&](std::int32_t key, bool value) {
    const Logical logical(value);
    std::int32_t result = 0;
    kvA_TRJ_SetValueLogical(handle_, key, std::span(&logical, 1), result);
    note(result);
  };
  const auto text = [&](std::int32_t key, std::string_view value) {
    std::int32_t result = 0;
    kvA_TRJ_SetValueChar(handle_, key, std::span(&value, 1), result);
    note(result);
  };
  const auto row = ensemble_row(head.ensemble, head.cell_varies);
  text(4001, "MDTR");
  text(4002, std::string_view(head.title).substr(0, title_width));
  integer(2018, head.periodic ? 3 : 0);
  flag(3002, row.thermostat);
  flag(3003, head.cell_varies);
  flag(3006, row.pressure_thermostat);
  std::int32_t result = 0;
  kvA_TRJ_SetValueInt(handle_, 2008, head.ids, result);
  note(result);
  integer(2020, static_cast<std::int32_t>(head.ids.size()));
  return status == 0 ? std::string{} : failed(status);
}

void TrajectoryOutput::set(std::string_view series, double value) {
  std::int32_t status = 0;
  for (const auto& row : series_rows) {
    if (row.name == series) kvA_TRJ_SetValueDouble(handle_, row.key, std::span(&value, 1), status);
  }
  const auto* element = std::ranges::find(pressure_tensor, series);
  if (element == pressure_tensor.end()) return;
  pressure_tensor_[static_cast<std::size_t>(element - pressure_tensor.begin())] = value;
  for (const auto key : pressure_tensor_keys) kvA_TRJ_SetValueDouble(handle_, key, pressure_tensor_, status);
}

std::string TrajectoryOutput::write(const FrameValues& frame) {
  std::int32_t status = 0;
  const auto put = [&](std::int32_t key, std::span<const double> values) {
    if (status == 0) kvA_TRJ_SetValueDouble(handle_, key, values, status);
  };
  put(1000, std::span(&frame.time, 1));
  if (periodic_) {
    const auto& [a, b, c] = frame.cell;
    put(1058, std::array{a[0], b[1], c[2], b[2], a[2], a[1]});
  }
  put(1071, frame.xyz);
  // A frame without velocities behind one that has them: the flag of the frame says so, which stands in no key.
  binary_trajectory(handle_)->frame.set_integer(3008, 0);
  if (!frame.velocities.empty()) put(1072, frame.velocities);
  if (status == 0) kvA_TRJ_WriteFrame(handle_, status);
  return status == 0 ? std::string{} : failed(status);
}

std::string TrajectoryOutput::close() {
  std::int32_t status = 0;
  kvA_TRJ_Close(handle_, status);
  handle_ = 0;
  return status == 0 ? std::string{} : failed(status);
}

}  // namespace pathstat::desk
