#include "volumes/volume_file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <system_error>
#include <vector>

#include "services/file_units.h"
#include "services/text_operations.h"
#include "support/big_endian.h"
#include "support/number_format.h"
#include "support/text_field.h"
#include "volumes/volume_bricks.h"
#include "volumes/volume_frame.h"
#include "volumes/volume_grid.h"

namespace pathstat {
namespace {

constexpr std::string_view magic = "mbk_1.0";
constexpr std::size_t magic_read = 4, letter_at = 11;
constexpr std::string_view default_title = "BRICK map produced using the VL VOL routines";
constexpr std::string_view values_line = "HEADERENERGY              S";
constexpr std::string_view offsets_line = "HEADERRANDOMOFFSETFROMGRIDV";
constexpr std::size_t recognised = 10;  ///< characters by which the second is known
constexpr std::size_t scale_at = 28, offset_at = 41, number_width = 13;
constexpr std::int32_t orthogonal_frame = -1, last_frame = 6;

std::int32_t record_words(std::int32_t grid_type) { return static_cast<std::int32_t>(brick_points) / 4 * grid_type; }

char letter_of(std::int32_t grid_type) { return grid_type == 1 ? 'B' : grid_type == 2 ? 'S' : 'R'; }
std::int32_t type_of(char letter) { return letter == 'B' ? 1 : letter == 'S' ? 2 : letter == 'R' ? 4 : 0; }

/// Visits the header's fields in their order, with a function of a reference to each.
template <class Visit>
void for_header(VolumeInfo& info, std::int32_t& edge, Visit visit) {
  visit(info.first_z_high);
  for (auto* points : {&info.nx, &info.ny, &info.nz}) visit(*points);
  for (auto* bricks : {&info.bricks_x, &info.bricks_y, &info.bricks_z}) visit(*bricks);
  visit(info.z_low);
  for (auto* range : {&info.x_low, &info.x_high, &info.y_low, &info.y_high}) visit(*range);
  for (auto& number : info.cell) visit(number);
  for (auto* number : {&info.reserved, &info.offset, &info.scale}) visit(*number);
  visit(edge);
  visit(info.frame);
  for (auto* limit : {&info.value_min, &info.value_max}) visit(*limit);
}

bool is_grid(const std::array<std::int32_t, 3>& points) {
  return std::ranges::all_of(points, [](std::int32_t n) { return n >= 1 && n <= most_volume_points; });
}

void tell_grid(const std::array<std::int32_t, 3>& points) {
  std::printf(" A volume has 1 to %d points on an axis, not %d x %d x %d\n", most_volume_points, points[0], points[1],
              points[2]);
}

void describe_grid(std::int32_t nx, std::int32_t ny, std::int32_t nz) {
  volinfo_.nx = nx, volinfo_.ny = ny, volinfo_.nz = nz;
  volinfo_.bricks_x = bricks_for(nx), volinfo_.bricks_y = bricks_for(ny), volinfo_.bricks_z = bricks_for(nz);
  volinfo_.x_low = volinfo_.y_low = volinfo_.z_low = 1;
  volinfo_.x_high = nx, volinfo_.y_high = ny, volinfo_.z_high = volinfo_.first_z_high = nz;
}

bool write_text_record(std::int64_t record, std::string_view text) {
  RecordBytes bytes{};
  Text<volume_title_width> line(text);
  std::memcpy(bytes.data(), line.full().data(), volume_title_width);
  return unit_write_record(volinfo_.unit, record, record_part(bytes, volinfo_.grid_type));
}

std::string machine_line(std::string_view text, float scale, float offset) {
  return std::string(text) + formatted(volinfo_.grid_type, "(I1)") + formatted(double{scale}, "(E13.6)") +
         formatted(double{offset}, "(E13.6)");
}

bool write_head(std::span<const std::string> titles) {
  std::vector<std::string> lines(
      titles.begin(), titles.begin() + static_cast<std::ptrdiff_t>(std::min(titles.size(), most_volume_titles)));
  if (lines.empty()) lines.emplace_back(default_title);
  lines.push_back(machine_line(values_line, volinfo_.scale, volinfo_.offset));
  if (volinfo_.kind == offset_volume) {
    lines.push_back(machine_line(offsets_line, volinfo_.offset_scale, volinfo_.offset_offset));
  }
  volinfo_.title_count = static_cast<std::int32_t>(lines.size());

  RecordBytes bytes{};
  std::memcpy(bytes.data(), magic.data(), magic.size());
  store_big_endian(volinfo_.title_count, bytes.data() + magic.size());
  bytes[letter_at] = static_cast<std::byte>(letter_of(volinfo_.grid_type));
  std::int64_t record = 1;
  bool good = unit_write_record(volinfo_.unit, record, record_part(bytes, volinfo_.grid_type));
  for (const auto& line : lines) good = good && write_text_record(++record, line);

  bytes = {};
  auto* at = bytes.data();
  std::int32_t edge = brick_edge;
  for_header(volinfo_, edge, [&](auto& field) {
    store_big_endian(field, at);
    at += sizeof field;
  });
  return good && unit_write_record(volinfo_.unit, ++record, record_part(bytes, volinfo_.grid_type));
}

/// Takes a unit for a file. @param mode  read_only for one that is there
bool take_unit(std::string_view file, std::int32_t grid_type, UnitMode mode, std::int32_t& unit) {
  std::int32_t error = 0;
  kvs_fil_getunit_(unit, error);
  const auto status = mode == UnitMode::read_only ? UnitStatus::existing : UnitStatus::unknown;
  if (error == 0) {
    kvs_fil_assign_(unit, trimmed(file), record_words(grid_type), static_cast<std::int32_t>(UnitForm::unformatted),
                    static_cast<std::int32_t>(status), static_cast<std::int32_t>(mode), error);
  }
  if (error == 0) return true;
  unit = 0;
  return false;
}

/// What a volume of these limits and spacings is stored by.
void set_codings(float min, float max, const FloatVector& spacing) {
  const auto values = value_coding(volinfo_.grid_type, min, max);
  const auto offsets = offset_coding(volinfo_.grid_type, std::ranges::max(spacing));
  volinfo_.value_min = min, volinfo_.value_max = max;
  volinfo_.scale = values.scale, volinfo_.offset = values.offset;
  volinfo_.offset_scale = offsets.scale, volinfo_.offset_offset = offsets.offset;
}

/// Cell and frame in volorthog_ as those of the header.
void place_cell(const FloatVector& origin) {
  const auto& cell = volinfo_.cell;
  volorthog_.a = cell[0], volorthog_.b = cell[1], volorthog_.c = cell[2];
  volorthog_.alpha = cell[3], volorthog_.beta = cell[4], volorthog_.gamma = cell[5];
  volorthog_.frame = volinfo_.frame;
  volorthog_.origin_x = origin[0], volorthog_.origin_y = origin[1], volorthog_.origin_z = origin[2];
}

/// A stored number of a volume, at most as far from 0 as its width goes.
template <class T>
T stored(double number) {
  using Limits = std::numeric_limits<T>;
  if (std::isnan(number)) return 0;
  return static_cast<T>(std::clamp<double>(number, Limits::min(), Limits::max()));
}

/// Writes points of the whole grid as bricks, from brick record `first` on.
///
/// @param at  float(std::size_t point): what to store, before it is rounded
/// @param rounded  false to cut the decimals of 16-bit integers
template <class At>
bool write_bricks(std::int64_t first, bool rounded, At at) {
  const auto [nx, ny, nz] = volume_points();
  const auto [bricks_x, bricks_y, bricks_z] = volume_bricks();
  const auto type = volinfo_.grid_type;
  auto record = first;
  RecordBytes bytes;
  for (std::int32_t bz = 0; bz < bricks_z; ++bz) {
    for (std::int32_t by = 0; by < bricks_y; ++by) {
      for (std::int32_t bx = 0; bx < bricks_x; ++bx, ++record) {
        bytes.fill(std::byte{0});
        auto* place = bytes.data();
        for (std::int32_t k = bz * brick_step; k < bz * brick_step + brick_edge; ++k) {
          for (std::int32_t j = by * brick_step; j < by * brick_step + brick_edge; ++j) {
            for (std::int32_t i = bx * brick_step; i < bx * brick_step + brick_edge; ++i, place += type) {
              if (i >= nx || j >= ny || k >= nz) continue;
              const double number = at(point_number(i, j, k));
              if (type == 1) store_big_endian(stored<std::int8_t>(std::round(number)), place);
              if (type == 2) store_big_endian(stored<std::int16_t>(rounded ? std::round(number) : number), place);
              if (type == 4) store_big_endian(static_cast<float>(number), place);
            }
          }
        }
        if (unit_write_record(volinfo_.unit, record, record_part(bytes, type))) continue;
        std::printf("Error writing brick no %s\n", formatted(record, "(I10)").c_str());
        return false;
      }
    }
  }
  return true;
}

bool read_number(std::string_view line, std::size_t at, float& number) {
  double value = 0;
  std::int32_t error = 0;
  kvs_str_todouble_(kvS_STR_TrimWhiteSpace(line.substr(at, number_width)), value, error);
  number = static_cast<float>(value);
  return error == 0 && std::isfinite(number);
}

/// Reads the titles for the numbers of point offsets.
bool read_titles() {
  volinfo_.kind = plain_volume;
  RecordBytes bytes;
  for (std::int32_t title = 1; title <= volinfo_.title_count; ++title) {
    if (!unit_read_record(volinfo_.unit, std::int64_t{1} + title, record_part(bytes, volinfo_.grid_type))) return false;
    const std::string_view line(reinterpret_cast<const char*>(bytes.data()), volume_title_width);
    if (!line.starts_with(offsets_line.substr(0, recognised))) continue;
    volinfo_.kind = offset_volume;
    if (!read_number(line, scale_at, volinfo_.offset_scale) || volinfo_.offset_scale == 0) return false;
    if (!read_number(line, offset_at, volinfo_.offset_offset)) return false;
  }
  return true;
}

bool read_header() {
  RecordBytes bytes;
  if (!unit_read_record(volinfo_.unit, volinfo_.title_count + first_records, record_part(bytes, volinfo_.grid_type)))
    return false;
  const auto* at = bytes.data();
  std::int32_t edge = 0;
  for_header(volinfo_, edge, [&](auto& field) {
    load_big_endian(at, std::span(&field, 1));
    at += sizeof field;
  });
  volinfo_.z_high = volinfo_.first_z_high;
  if (!is_grid(volume_points())) {
    tell_grid(volume_points());
    return false;
  }
  const auto points = volume_points(), bricks = volume_bricks(), low = volume_low(), high = volume_high();
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (bricks[axis] != bricks_for(points[axis])) return false;
    if (std::int64_t{high[axis]} - low[axis] + 1 != points[axis]) return false;
  }
  const bool numbers = std::isfinite(volinfo_.scale) && volinfo_.scale != 0 && std::isfinite(volinfo_.offset) &&
                       !std::isnan(volinfo_.value_min) && !std::isnan(volinfo_.value_max);
  return edge == brick_edge && numbers && volinfo_.frame <= last_frame;
}

/// What is read of record 1, the file being open with the shortest records.
std::int32_t read_first(std::int32_t unit) {
  RecordBytes bytes;
  if (!unit_read_record(unit, 1, record_part(bytes, 1))) return volume_status::bad_first_record;
  if (std::memcmp(bytes.data(), magic.data(), magic_read) != 0) return volume_status::no_volume;
  volinfo_.grid_type = type_of(static_cast<char>(bytes[letter_at]));
  if (volinfo_.grid_type == 0) return volume_status::unknown_type;
  load_big_endian(bytes.data() + magic.size(), std::span(&volinfo_.title_count, 1));
  return volinfo_.title_count < 0 ? volume_status::bad_header : 0;
}

/// Cell, frame and matrix of a volume whose header was read.
bool settle_cell(FloatVector& origin, FloatVector& spacing) {
  auto& cell = volinfo_.cell;
  origin = {cell[0], cell[1], cell[2]};
  FloatVector start{};
  if (volinfo_.frame < 1) {
    start = origin;
    cell = {cell[3], cell[4], cell[5], 90, 90, 90};
    volinfo_.frame = 1;
  }
  const auto points = volume_points();
  for (std::size_t axis = 0; axis < 3; ++axis) spacing[axis] = cell[axis] / static_cast<float>(points[axis]);
  place_cell(start);
  std::int32_t status = 0;
  kva_vol_corfrm_(status);
  return status == 0;
}

std::int32_t open_volume(std::string_view file, FloatVector& origin, FloatVector& spacing) {
  volinfo_ = {};
  if (!take_unit(file, 1, UnitMode::read_only, volinfo_.unit)) return volume_status::not_assigned;
  if (const auto status = read_first(volinfo_.unit); status != 0) return status;
  if (volinfo_.grid_type != 1) {
    kvs_fil_closeunit_(volinfo_.unit);
    if (!take_unit(file, volinfo_.grid_type, UnitMode::read_only, volinfo_.unit)) return volume_status::not_assigned;
  }
  return read_titles() && read_header() && settle_cell(origin, spacing) ? 0 : volume_status::bad_header;
}

}  // namespace

void kva_vol_createvolume_(std::string_view file, std::int32_t& unit, std::int32_t grid_type, float min, float max,
                           const FloatVector& origin, std::int32_t nx, std::int32_t ny, std::int32_t nz,
                           std::int32_t orthogonal, const FloatVector& spacing, std::span<const std::string> titles,
                           std::int32_t kind, std::int32_t& status) {
  unit = 0;
  status = 0;
  if (!is_grid_type(grid_type)) {
    std::printf(" Unrecognised grid type %d\n", grid_type);
    status = volume_status::unknown_type;
  } else if (!is_grid({nx, ny, nz})) {
    tell_grid({nx, ny, nz});
    status = volume_status::no_volume;
  } else if (kind != plain_volume && kind != offset_volume) {
    std::printf(" Unrecognised volume kind %d\n", kind);
    status = volume_status::no_volume;
  }
  if (status != 0) return;

  volinfo_.grid_type = grid_type;
  volinfo_.kind = kind;
  describe_grid(nx, ny, nz);
  set_codings(min, max, spacing);
  if (orthogonal == 1) {
    volinfo_.frame = orthogonal_frame;
    volinfo_.cell = {origin[0],
                     origin[1],
                     origin[2],
                     spacing[0] * static_cast<float>(nx),
                     spacing[1] * static_cast<float>(ny),
                     spacing[2] * static_cast<float>(nz)};
  }
  std::error_code failure;
  const bool assigned = take_unit(file, grid_type, UnitMode::read_write, volinfo_.unit);
  if (assigned) std::filesystem::resize_file(unit_file(volinfo_.unit), 0, failure);
  if (!assigned || failure) {
    std::printf(" Problems opening file for bricked map output\n");
    status = volume_status::not_assigned;
  } else if (!write_head(titles)) {
    std::printf(" Problems writing the header of a bricked map\n");
    status = volume_status::bad_header;
  }
  if (status != 0) kvs_fil_closeunit_(volinfo_.unit);
  unit = volinfo_.unit = status == 0 ? volinfo_.unit : 0;
}

void kva_vol_writeall_(std::int32_t unit, std::span<const float> values, std::span<const float> offsets) {
  if (!kvs_fil_isunitopen_(unit) || unit != volinfo_.unit) {
    std::printf("Need to open the map first\n");
    return;
  }
  const auto count = volume_size();
  const bool has_offsets = volinfo_.kind == offset_volume;
  if (values.size() != count || (has_offsets && offsets.size() != 3 * count)) {
    std::printf("The map has %zu points, which is not the number of values\n", count);
    return;
  }
  const auto bricks = volume_bricks();
  const std::int64_t brick_count = std::int64_t{bricks[0]} * bricks[1] * bricks[2];
  const auto first = volinfo_.title_count + first_records + 1;
  bool good = write_bricks(first, true, [&](std::size_t point) {
    const float value = std::min(std::max(volinfo_.value_min, values[point]), volinfo_.value_max);
    return volinfo_.grid_type == 4 ? value : (double{value} + volinfo_.offset) * volinfo_.scale;
  });
  for (std::size_t axis = 0; has_offsets && axis < 3; ++axis) {
    good = good && write_bricks(first + (std::int64_t{1} + static_cast<std::int64_t>(axis)) * brick_count, false,
                                [&](std::size_t point) {
                                  const float offset = offsets[3 * point + axis];
                                  return (double{offset} + volinfo_.offset_offset) * volinfo_.offset_scale;
                                });
  }
}

void kva_vol_closevolume_(std::int32_t& unit, std::int32_t& status) {
  status = unit < 1 || !unit_close(unit) ? 1 : 0;
  if (unit == volinfo_.unit) volinfo_.unit = 0;
  unit = 0;
}

void kva_vol_openvolume_(std::string_view file, std::int32_t& unit, std::int32_t& grid_type, std::int32_t& kind,
                         std::int32_t& nx, std::int32_t& ny, std::int32_t& nz, float& min, float& max,
                         FloatVector& origin, FloatVector& spacing, std::int32_t& status) {
  status = open_volume(file, origin, spacing);
  if (status != 0) {
    kvs_fil_closeunit_(volinfo_.unit);
    volinfo_ = {};
  }
  unit = volinfo_.unit;
  grid_type = volinfo_.grid_type;
  kind = volinfo_.kind;
  nx = volinfo_.nx, ny = volinfo_.ny, nz = volinfo_.nz;
  min = volinfo_.value_min, max = volinfo_.value_max;
}

}  // namespace pathstat
