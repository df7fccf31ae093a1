#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <string>
#include <vector>

#include "building/field_actions.h"
#include "building/field_settings.h"
#include "building/frame_density.h"
#include "coreapi/messages.h"
#include "shell/arguments.h"
#include "state/analysis_settings.h"
#include "state/trajectory_frames.h"
#include "state/volume_state.h"
#include "support/record_file.h"
#include "volumes/cell_volume.h"
#include "volumes/surface_from_data.h"

namespace pathstat::field_actions {
namespace {

constexpr double farthest = 1e9;  // Å, and of values

/// Reads as many numbers as there is room for, from the first argument on. @return the status of the first bad one
std::int32_t read_numbers(std::span<double> numbers) {
  std::int32_t status = 0;
  for (std::size_t k = 0; k < numbers.size() && status == 0; ++k) {
    kvz_argdouble_(numbers[k], static_cast<std::int32_t>(k) + 1, -farthest, farthest, status);
    if (status == 0 && !std::isfinite(numbers[k])) status = 1;
  }
  return status;
}

void close_volume() {
  std::int32_t status = 0;
  if (current_volume.is_open()) kvA_VOL_CloseVolume(current_volume.unit, status);
}

CurrentVolume opened(std::string_view path, std::int32_t& status) {
  CurrentVolume v;
  v.path = path;
  kvA_VOL_OpenVolume(path, v.unit, v.type, v.kind, v.nx, v.ny, v.nz, v.min, v.max, v.origin, v.spacing, status);
  return v;
}

/// Opens a volume in the place of the present one, which stays if that fails.
std::int32_t open_volume(std::string_view path) {
  std::int32_t status = 0, ignored = 0;
  const auto before = current_volume;
  close_volume();
  current_volume = opened(path, status);
  if (status == 0) return 0;
  current_volume = before.is_open() ? opened(before.path.view(), ignored) : CurrentVolume{};
  constexpr std::array reasons{"it does not begin as one", "its type is unknown", "its titles or header are damaged",
                               "its first record is cut off", "it cannot be opened"};
  const auto reason = std::clamp<std::size_t>(static_cast<std::size_t>(status), 1, reasons.size()) - 1;
  const auto why = why_unreadable(std::string(path));
  refuse("STRUCTURE_VOLUME_UNUSABLE", path, why.empty() ? reasons[reason] : "it " + why);
  return status;
}

void tell_volume() {
  const auto& v = current_volume;
  show_message("STRUCTURE_VOLUME", v.path.view(), v.nx, v.ny, v.nz, v.type, v.min, v.max);
}

std::size_t points_of_volume() {
  return static_cast<std::size_t>(current_volume.nx) * static_cast<std::size_t>(current_volume.ny) *
         static_cast<std::size_t>(current_volume.nz);
}

std::int32_t refuse_region(std::int32_t status) {
  refuse("STRUCTURE_VOLUME_NOTHING");
  return status;
}

double mean_of(std::span<const float> values) {
  return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

std::int32_t normals_wanted() {
  if (field_settings.normals == "NONE") return surface_normals::none;
  return field_settings.normals == "INWARDS" ? surface_normals::along_gradient : surface_normals::flipped;
}

/// The values of a volume in the order of surfaces, z fastest.
std::vector<double> reordered(std::span<const float> values) {
  const auto nx = static_cast<std::size_t>(current_volume.nx), ny = static_cast<std::size_t>(current_volume.ny),
             nz = static_cast<std::size_t>(current_volume.nz);
  std::vector<double> all(values.size());
  for (std::size_t k = 0; k < nz; ++k) {
    for (std::size_t j = 0; j < ny; ++j) {
      const auto* const row = &values[(k * ny + j) * nx];
      for (std::size_t i = 0; i < nx; ++i) all[(i * ny + j) * nz + k] = row[i];
    }
  }
  return all;
}

/// The edge of the grid along an axis: it ends at the last point.
Vector3 grid_edge(std::size_t axis) {
  const std::array points{current_volume.nx, current_volume.ny, current_volume.nz};
  const double part = static_cast<double>(points[axis] - 1) / points[axis];
  const auto* const column = &volorthog_.to_space[3 * axis];
  return {part * column[0], part * column[1], part * column[2]};
}

Vector3 first_point() { return {volorthog_.origin_x, volorthog_.origin_y, volorthog_.origin_z}; }

/// The values of all points, x fastest. @return false if some cannot be read
bool read_all(std::vector<float>& values) {
  FloatVector low, high;
  for (std::size_t k = 0; k < 3; ++k) {
    low[k] = static_cast<float>(first_point()[k]);
    high[k] = static_cast<float>(first_point()[k] + grid_edge(0)[k] + grid_edge(1)[k] + grid_edge(2)[k]);
  }
  values.resize(points_of_volume());
  std::int32_t count = 0, status = 0;
  kvA_VOL_GetRegion(current_volume.unit, low, high, count, values, {}, {}, 0, status);
  return status == 0 && static_cast<std::size_t>(count) == values.size();
}

std::string counted(std::int64_t number, std::string_view thing) {
  return (std::to_string(number) + " ").append(thing) + (number == 1 ? "" : "s");
}

}  // namespace

std::int32_t density_centre(std::int32_t atom) {
  field_settings.density_centre = atom;
  return 0;
}

std::int32_t density_axis(std::int32_t atom) {
  field_settings.density_axis = atom;
  return 0;
}

std::int32_t density_plane(std::int32_t atom) {
  field_settings.density_plane = atom;
  return 0;
}

std::int32_t density_spacing(double spacing) {
  field_settings.density_spacing = spacing;
  return 0;
}

std::int32_t density_type(std::int32_t type) {
  if (type == 3) return refuse("STRUCTURE_DENSITY_TYPE", type);
  field_settings.density_type = type;
  return 0;
}

std::int32_t density() {
  const DensityRequest request{.trajectory = trj_frames_c_.trj_file_name.view(),
                               .model = trj_gui_i_.trajectory_model,
                               .first = trj_frames_.first_frame,
                               .last = trj_frames_.last_frame,
                               .step = trj_frames_.frame_step,
                               .selected = field_settings.density_atoms == "SELECTED",
                               .centre = field_settings.density_centre,
                               .axis = field_settings.density_axis,
                               .plane = field_settings.density_plane,
                               .spacing = field_settings.density_spacing};
  FrameDensity density;
  if (const auto status = mean_density(request, density); status != 0) return status;

  const auto path = field_settings.density_file.str();
  const auto before = current_volume;
  close_volume();
  current_volume = {};
  const auto around = density.molecules == 0 ? std::string() : " around " + counted(density.molecules, "molecule");
  const std::vector titles{"Mean number density of " + counted(density.atoms, "atom") + around + " over " +
                               counted(density.frames, "frame") + ", atoms per cubic Angstrom",
                           "Frames of " + std::string(request.trajectory)};
  bool turned = false;
  std::int32_t status = 0, ignored = 0;
  write_cell_volume(path, field_settings.density_type, density.field, titles, turned, status);
  if (status != 0) {
    if (before.is_open()) current_volume = opened(before.path.view(), ignored);
    refuse("STRUCTURE_DENSITY_FILE", path);
    return status;
  }
  if (turned) show_message("STRUCTURE_DENSITY_TURNED");
  show_message("STRUCTURE_DENSITY", static_cast<std::int32_t>(density.atoms), static_cast<std::int32_t>(density.frames),
               mean_of(density.field.values));
  status = open_volume(path);
  if (status == 0) tell_volume();
  return status;
}

std::int32_t volume() {
  Text<1024> path;
  std::int32_t status = 0;
  kvz_argfillstring_(path, 1, 0, "", status);
  if (status == 0) status = open_volume(path.view());
  if (status == 0) tell_volume();
  return status;
}

std::int32_t volume_region() {
  std::array<double, 6> corners{};
  if (const auto status = read_numbers(corners); status != 0) return status;
  const auto corner = [&](std::size_t first) {
    return FloatVector{static_cast<float>(corners[first]), static_cast<float>(corners[first + 1]),
                       static_cast<float>(corners[first + 2])};
  };
  auto low = corner(0), high = corner(3);
  std::vector<float> values(points_of_volume());
  std::int32_t count = 0, status = 0;
  kvA_VOL_GetRegion(current_volume.unit, low, high, count, values, {}, {}, 1, status);
  if (status != 0) return refuse_region(status);
  std::erase(values, volume_not_read);
  if (values.empty()) return refuse_region(1);
  const auto [least, most] = std::ranges::minmax(values);
  show_message("STRUCTURE_VOLUME_REGION", count, low[0], low[1], low[2], high[0], high[1], high[2], least, most,
               mean_of(values));
  return 0;
}

std::int32_t volume_values() {
  std::array<double, 2> limits{};
  std::int32_t status = read_numbers(limits);
  if (status != 0) return status;
  auto low = static_cast<float>(limits[0]), high = static_cast<float>(limits[1]);
  std::int32_t count = 0;
  kvA_VOL_SizeValues(current_volume.unit, low, high, count, 1, status);
  if (status != 0) return refuse_region(status);
  show_message("STRUCTURE_VOLUME_VALUES", count, low, high, 100.0 * count / static_cast<double>(points_of_volume()));
  return 0;
}

std::int32_t isosurface() {
  std::array<double, 1> value{};
  std::int32_t status = read_numbers(value);
  if (status != 0) return status;
  std::vector<float> values;
  if (!read_all(values)) return refuse("STRUCTURE_VOLUME_CUT", current_volume.path.view());
  std::int32_t surface = 0;
  kvA_SUR_CreateSurfaceFromData(value[0], reordered(values), first_point(), grid_edge(0), grid_edge(1), grid_edge(2),
                                current_volume.nx, current_volume.ny, current_volume.nz, normals_wanted(), surface,
                                status);
  return status;
}

void forget_fields() {
  close_volume();
  current_volume = {};
  current_table = Text<1024>{};
  field_settings = {};
}

}  // namespace pathstat::field_actions
