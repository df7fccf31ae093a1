#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "support/record_file.h"
#include "trajectory/binary_layout.h"

namespace pathstat {

/// The coordinate groups of a frame: three records each, one per axis.
enum class AtomGroup : std::uint8_t { positions, velocities, forces };
constexpr std::size_t atom_groups = 3;

/// The current frame of a binary trajectory, in the bytes of the file. Reading takes in the scalar records and only
/// locates the coordinates, which come in when they are asked for.
class BinaryFrame {
 public:
  BinaryFrame() = default;
  BinaryFrame(const FrameLayout& layout, std::int32_t version, std::int32_t atoms);

  const FrameLayout& layout() const { return layout_; }
  std::int32_t atoms() const { return atoms_; }
  /// For a new file, before coordinates are set.
  void set_atoms(std::int32_t atoms) { atoms_ = atoms; }
  /// Numbers of a coordinate group: 3 x atoms.
  std::int64_t coordinates() const { return std::int64_t{3} * atoms_; }

  /// Reads the frame at the file's position; the file then stands behind it. The framing of every record is checked,
  /// that of the coordinates too. After a failure the frame is what it was.
  RecordStatus read(RecordReader& file);
  /// Passes a frame with the same checks.
  RecordStatus pass(RecordReader& file) { return scan(file); }
  /// Brings in a coordinate group of the frame, unless it is there.
  RecordStatus load(AtomGroup group, const RecordReader& file);
  /// Writes the records that the flags ask for, and the coordinates.
  RecordStatus write(RecordWriter& file, const BinaryFlags& flags) const;

  /// The place's numbers, widened; `values` has room for the place's count.
  void get(const FieldPlace& place, std::span<double> values) const;
  /// Stores as many f64 as the place has.
  void set(const FieldPlace& place, std::span<const double> values);
  /// Integer and logical keys; 0 where the file does not hold the value.
  std::int32_t integer(std::int32_t key) const { return integer(current_.scalars, key); }
  void set_integer(std::int32_t key, std::int32_t value);

  /// True if the frame has the group: positions always, velocities and forces by the frame's flags.
  bool has(AtomGroup group) const { return has(current_.scalars, group); }
  /// True once arrays for the group were made.
  bool has_arrays(AtomGroup group) const { return !arrays_[index(group)].axes.empty(); }
  /// A loaded group as x1, y1, z1, x2, ...; `values` has room for all coordinates.
  void get(AtomGroup group, std::span<double> values) const;
  /// The inverse, f64; an empty span stands for zeros. Raises the frame's flag for velocities or forces.
  void set(AtomGroup group, std::span<const double> values);

 private:
  using Bytes = std::vector<std::byte>;
  struct Records {
    Bytes scalars;
    std::array<std::int64_t, atom_groups> axes_at{};  // file offset of each group's first payload
  };
  struct Arrays {
    Bytes axes;  // all x, all y, all z, as far apart as in the file
    bool loaded = false;
  };

  static constexpr std::size_t index(AtomGroup group) { return static_cast<std::size_t>(group); }
  std::size_t axis_bytes() const { return static_cast<std::size_t>(atoms_) * static_cast<std::size_t>(width_); }
  std::size_t axis_start(std::size_t axis) const { return axis * (axis_bytes() + bytes_between_payloads); }
  std::size_t group_bytes() const { return axis_start(2) + axis_bytes(); }
  std::int32_t integer(std::span<const std::byte> scalars, std::int32_t key) const;
  bool has(std::span<const std::byte> scalars, AtomGroup group) const;
  RecordStatus scan(RecordReader& file);

  FrameLayout layout_;
  std::int32_t width_ = 8;
  std::int32_t atoms_ = 0;
  Records current_;
  Records next_;  // a frame that is being read, until it is found whole
  std::array<Arrays, atom_groups> arrays_;
};

}  // namespace pathstat
