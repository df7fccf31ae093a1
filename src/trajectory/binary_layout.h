#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace pathstat {

/// Flag words of a binary trajectory: the periodicity P (0 to 3 periodic directions), then F1 to F7 (0 or 1).
using BinaryFlags = std::array<std::int32_t, 8>;

/// The scalar records of a frame; the coordinate records follow them.
constexpr int frame_records = 9;

/// True if the frames of a file with this version and these flags have the record (1 to 9).
bool has_frame_record(int record, std::int32_t version, const BinaryFlags& flags);

/// Payload length of a frame record in the version.
std::int32_t frame_record_length(int record, std::int32_t version);

/// Width of one coordinate in the version: 8 bytes (f64) or 4 (f32).
constexpr std::int32_t coordinate_width(std::int32_t version) { return version == 2010 ? 8 : 4; }

enum class FieldType : std::uint8_t { i32, f32, f64 };

/// Where the value of a key stands in the frame buffer of a file.
struct FieldPlace {
  std::int32_t offset = -1;  ///< from the start of the frame buffer; -1 if the file does not hold the value
  FieldType type = FieldType::i32;
  std::uint8_t stored = 0;  ///< numbers that the file holds
  std::uint8_t count = 0;   ///< numbers that the key yields; those that are not stored are 0

  bool exists() const { return offset >= 0; }
};

/// The frame buffer of a file: the payloads of its scalar records, one behind the other, just as they are on disk.
class FrameLayout {
 public:
  FrameLayout() = default;
  /// The records that the frames of such a file have.
  FrameLayout(std::int32_t version, const BinaryFlags& flags);
  /// All nine records of the version, whatever the flags.
  static FrameLayout with_every_record(std::int32_t version);

  std::int32_t bytes() const { return bytes_; }
  /// Payload length of a record; 0 if the frames do not have it.
  std::int32_t length(int record) const { return lengths_[static_cast<std::size_t>(record - 1)]; }
  /// Offset of a record in the frame buffer.
  std::int32_t start(int record) const { return starts_[static_cast<std::size_t>(record - 1)]; }
  /// Place of a frame value: keys 1000 to 1102, 2011 to 2016, 3008 and 3009. Other keys have none.
  FieldPlace place(std::int32_t key) const;

 private:
  void add(int record, std::int32_t version);

  static constexpr std::size_t keys = 103 + 6 + 2;
  std::array<std::int32_t, frame_records> lengths_{};
  std::array<std::int32_t, frame_records> starts_{};
  std::array<FieldPlace, keys> places_{};
  std::int32_t bytes_ = 0;
};

}  // namespace pathstat
