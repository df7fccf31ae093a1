#include "trajectory/binary_frame.h"

#include <algorithm>

#include "support/big_endian.h"
#include "support/parallel.h"

namespace pathstat {
namespace {

constexpr std::array groups{AtomGroup::positions, AtomGroup::velocities, AtomGroup::forces};

/// Atoms that one thread turns at a time; fewer are not worth a second one.
constexpr std::size_t atoms_together = 32768;

/// Turns three packed axes into interleaved doubles, in one pass over the memory.
template <class T>
void interleave(const std::byte* x, const std::byte* y, const std::byte* z, std::size_t atoms, double* out) {
  for_pieces(atoms, atoms_together, [=](std::size_t first, std::size_t end) {
    for (std::size_t k = first; k < end; ++k) {
      out[3 * k] = load_big_endian<T>(x + k * sizeof(T));
      out[3 * k + 1] = load_big_endian<T>(y + k * sizeof(T));
      out[3 * k + 2] = load_big_endian<T>(z + k * sizeof(T));
    }
  });
}

template <class T>
void widen(const std::byte* at, std::span<double> values) {
  for (std::size_t k = 0; k < values.size(); ++k) values[k] = load_big_endian<T>(at + k * sizeof(T));
}

}  // namespace

BinaryFrame::BinaryFrame(const FrameLayout& layout, std::int32_t version, std::int32_t atoms)
    : layout_(layout), width_(coordinate_width(version)), atoms_(atoms) {
  current_.scalars.resize(static_cast<std::size_t>(layout.bytes()));
  next_.scalars.resize(current_.scalars.size());
}

RecordStatus BinaryFrame::read(RecordReader& file) {
  const auto status = scan(file);
  if (status != RecordStatus::ok) return status;
  std::swap(current_, next_);
  for (auto& arrays : arrays_) arrays.loaded = false;
  return status;
}

RecordStatus BinaryFrame::scan(RecordReader& file) {
  for (int record = 1; record <= frame_records; ++record) {
    const auto length = layout_.length(record);
    if (length == 0) continue;
    if (const auto status = file.expect(length); status != RecordStatus::ok) return status;
    const auto payload =
        std::span(next_.scalars)
            .subspan(static_cast<std::size_t>(layout_.start(record)), static_cast<std::size_t>(length));
    if (const auto status = file.read(payload); status != RecordStatus::ok) return status;
  }
  for (const auto group : groups) {
    if (!has(next_.scalars, group)) continue;
    for (int axis = 0; axis < 3; ++axis) {
      const auto status = file.expect(static_cast<std::int64_t>(axis_bytes()));
      if (status != RecordStatus::ok) return status;
      if (axis == 0) next_.axes_at[index(group)] = file.position();
      file.skip();
    }
  }
  return RecordStatus::ok;
}

RecordStatus BinaryFrame::load(AtomGroup group, const RecordReader& file) {
  auto& arrays = arrays_[index(group)];
  if (arrays.loaded) return RecordStatus::ok;
  arrays.axes.resize(group_bytes());
  const auto status = file.read_at(current_.axes_at[index(group)], arrays.axes);
  if (status != RecordStatus::ok) return status;
  arrays.loaded = true;
  return RecordStatus::ok;
}

RecordStatus BinaryFrame::write(RecordWriter& file, const BinaryFlags& flags) const {
  for (int record = 1; record <= frame_records; ++record) {
    if (!has_frame_record(record, 2010, flags)) continue;
    const auto payload =
        std::span(current_.scalars)
            .subspan(static_cast<std::size_t>(layout_.start(record)), static_cast<std::size_t>(layout_.length(record)));
    if (const auto status = file.write(payload); status != RecordStatus::ok) return status;
  }
  for (const auto group : groups) {
    if (!has(group)) continue;
    const std::span axes(arrays_[index(group)].axes);
    if (axes.size() != group_bytes()) return RecordStatus::failed;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const auto status = file.write(axes.subspan(axis_start(axis), axis_bytes()));
      if (status != RecordStatus::ok) return status;
    }
  }
  return RecordStatus::ok;
}

void BinaryFrame::get(const FieldPlace& place, std::span<double> values) const {
  const std::byte* at = current_.scalars.data() + place.offset;
  const auto stored = values.first(place.stored);
  if (place.type == FieldType::f64) {
    widen<double>(at, stored);
  } else {
    widen<float>(at, stored);
  }
  std::ranges::fill(values.subspan(place.stored, std::size_t{place.count} - place.stored), 0.0);
}

void BinaryFrame::set(const FieldPlace& place, std::span<const double> values) {
  store_big_endian(values.first(place.stored), current_.scalars.data() + place.offset);
}

std::int32_t BinaryFrame::integer(std::span<const std::byte> scalars, std::int32_t key) const {
  const auto place = layout_.place(key);
  return place.exists() ? load_big_endian<std::int32_t>(scalars.data() + place.offset) : 0;
}

void BinaryFrame::set_integer(std::int32_t key, std::int32_t value) {
  store_big_endian(value, current_.scalars.data() + layout_.place(key).offset);
}

bool BinaryFrame::has(std::span<const std::byte> scalars, AtomGroup group) const {
  switch (group) {
    case AtomGroup::positions:
      return true;
    case AtomGroup::velocities:
      return integer(scalars, 3008) != 0;
    case AtomGroup::forces:
      return integer(scalars, 3009) != 0;
  }
  return false;
}

void BinaryFrame::get(AtomGroup group, std::span<double> values) const {
  const std::byte* axes = arrays_[index(group)].axes.data();
  const auto turn = width_ == 8 ? interleave<double> : interleave<float>;
  turn(axes, axes + axis_start(1), axes + axis_start(2), static_cast<std::size_t>(atoms_), values.data());
}

void BinaryFrame::set(AtomGroup group, std::span<const double> values) {
  auto& axes = arrays_[index(group)].axes;
  axes.resize(group_bytes());
  for (std::size_t k = 0; k < values.size(); ++k) {
    store_big_endian(values[k], axes.data() + axis_start(k % 3) + (k / 3) * sizeof(double));
  }
  if (group == AtomGroup::velocities) set_integer(3008, 1);
  if (group == AtomGroup::forces) set_integer(3009, 1);
}

}  // namespace pathstat
