#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/big_endian.h"

namespace pathstat {

/// What became of an operation on a file of length-framed records: each record is a 4-byte big-endian length,
/// that many bytes of payload, and the length again.
enum class RecordStatus : std::uint8_t {
  ok,
  end,           ///< the file ends just where a record would begin
  cut,           ///< the file ends inside the record
  wrong_length,  ///< the leading length is not the expected one, or is above the limit
  failed,        ///< the system refuses to open, read, write or give memory
};

/// Bytes between the payloads of two records that follow one another.
constexpr std::size_t bytes_between_payloads = 8;

/// Takes typed big-endian values out of a payload, one after another. A value that would overrun the payload
/// reads as 0 (as an empty text), and from then on ok() is false.
class BigEndian {
 public:
  explicit BigEndian(std::span<const std::byte> payload) : left_(payload) {}

  std::int32_t i32() { return value<std::int32_t>(); }
  float f32() { return value<float>(); }
  double f64() { return value<double>(); }
  template <std::size_t N>
  std::array<double, N> f64() {
    std::array<double, N> values{};
    fill<double>(values);
    return values;
  }
  /// Fills the whole span, or nothing of it if the payload is too short.
  template <class T>
  void fill(std::span<T> values) {
    if (const std::byte* at = take(values.size_bytes())) load_big_endian(at, values);
  }
  /// The next `length` characters; they live as long as the payload.
  std::string_view text(std::size_t length) {
    const std::byte* at = take(length);
    return at == nullptr ? std::string_view{} : std::string_view(reinterpret_cast<const char*>(at), length);
  }
  void skip(std::size_t bytes) { take(bytes); }

  std::size_t left() const { return left_.size(); }
  bool ok() const { return ok_; }

 private:
  template <class T>
  T value() {
    const std::byte* at = take(sizeof(T));
    return at == nullptr ? T{} : load_big_endian<T>(at);
  }
  const std::byte* take(std::size_t bytes);

  std::span<const std::byte> left_;
  bool ok_ = true;
};

/// Builds a payload from typed values.
class RecordBytes {
 public:
  RecordBytes& i32(std::int32_t value) { return put(value); }
  RecordBytes& f32(float value) { return put(value); }
  RecordBytes& f64(double value) { return put(value); }
  template <class T>
  RecordBytes& all(std::span<const T> values) {
    store_big_endian(values, grow(values.size_bytes()));
    return *this;
  }
  RecordBytes& text(std::string_view characters) { return text(characters, characters.size()); }
  /// The characters cut or blank-padded to the width.
  RecordBytes& text(std::string_view characters, std::size_t width);

  std::span<const std::byte> bytes() const { return bytes_; }
  void clear() { bytes_.clear(); }

 private:
  template <class T>
  RecordBytes& put(T value) {
    store_big_endian(value, grow(sizeof value));
    return *this;
  }
  std::byte* grow(std::size_t bytes);

  std::vector<std::byte> bytes_;
};

/// Owns a file descriptor.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int fd) : fd_(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~FileDescriptor() { close(); }

  bool is_open() const { return fd_ >= 0; }
  int get() const { return fd_; }
  /// False if the system reports that what was written may be lost.
  bool close();

 private:
  int fd_ = -1;
};

/// Opens a file for reading. Not open, with errno, if it is no regular file: a pipe or a device has no end, or would
/// hold whoever opens it until somebody writes.
FileDescriptor open_regular(const std::string& path);
/// Makes a file for writing, in the place of one that a killed run has left: what stands there is removed, and a link
/// to another file is never followed. Not open, with errno, where that fails.
FileDescriptor create_new(const std::string& path, unsigned permissions = 0666);
/// Why open_regular opens nothing there, in words that go on behind the path: "is a folder", "cannot be opened:
/// Permission denied"; empty if it opens a file.
std::string why_unreadable(const std::string& path);

/// Reads a file of length-framed records, or a block of memory that holds one. Offsets are 64-bit. Reads are
/// buffered: small right after a jump, so that skipped payloads are not read, and growing while records follow one
/// another; a large payload goes straight into the caller's buffer. A file that grows while it is read is followed.
///
/// After expect() or expect_any() the reader stands at the payload, and read(), load() or skip() brings it behind the
/// record. A failed call leaves the reader where it stood.
class RecordReader {
 public:
  RecordReader() = default;
  /// Reads from memory that outlives the reader.
  explicit RecordReader(std::span<const std::byte> block)
      : size_(static_cast<std::int64_t>(block.size())), window_(block) {}

  /// Opens a regular file; anything else fails, and errno says why.
  RecordStatus open(const std::string& path);

  std::int64_t position() const { return at_; }
  void seek(std::int64_t offset) { at_ = offset; }
  /// True if `bytes` more bytes are there from the position on.
  bool holds(std::int64_t bytes);

  /// Checks that the record here has this payload length and is there as a whole. Nothing of the payload is read.
  RecordStatus expect(std::int64_t length);
  /// The same for a record of any length up to `limit`; length() then tells which.
  RecordStatus expect_any(std::int64_t limit);
  /// Payload length of the record last accepted.
  std::int64_t length() const { return length_; }

  /// Reads the payload; the span's size is its length.
  RecordStatus read(std::span<std::byte> payload);
  /// Reads the payload into the reader's own buffer, where payload() shows it until the next load().
  RecordStatus load();
  std::span<const std::byte> payload() const { return payload_; }
  /// Passes the payload without reading it.
  void skip() { at_ += length_ + 4; }

  /// Plain bytes at the position, which moves behind them; for heads whose framing does not count.
  RecordStatus read_bytes(std::span<std::byte> into);
  /// Plain bytes at an offset; neither the position nor the buffer changes.
  RecordStatus read_at(std::int64_t offset, std::span<std::byte> into) const;

 private:
  RecordStatus accept_length(std::int64_t least, std::int64_t most);
  std::span<const std::byte> at_hand() const;
  RecordStatus refill();

  FileDescriptor file_;
  std::int64_t size_ = 0;
  std::int64_t at_ = 0;
  std::int64_t length_ = 0;
  std::span<const std::byte> window_;  // the bytes at hand: the whole block, or a part of the file
  std::int64_t window_start_ = 0;
  std::vector<std::byte> buffer_;
  std::int64_t reach_ = 0;
  std::vector<std::byte> payload_;
};

/// Writes a file of length-framed records. Writes are buffered; a full disk shows at the latest in flush() or close().
/// After a failure every call fails until roll_back() has cut the file at a place that is whole.
class RecordWriter {
 public:
  /// Creates the file, or empties it.
  RecordStatus create(const std::string& path);
  /// Creates the file as pathstat::create_new does.
  RecordStatus create_new(const std::string& path);
  /// Continues behind the last byte of a file that is there.
  RecordStatus append(const std::string& path);

  /// Writes one record; a payload above 2^31 - 1 bytes is a wrong length.
  RecordStatus write(std::span<const std::byte> payload);
  RecordStatus write(const RecordBytes& record) { return write(record.bytes()); }
  /// Offset behind the last record.
  std::int64_t position() const { return at_; }
  RecordStatus flush();
  /// Drops everything from the offset on; fails if what stands before it did not all reach the file.
  RecordStatus roll_back(std::int64_t offset);
  /// Flushes and closes; the destructor does the same, but cannot tell how it went.
  RecordStatus close();

  RecordWriter() = default;
  RecordWriter(const RecordWriter&) = delete;
  RecordWriter& operator=(const RecordWriter&) = delete;
  ~RecordWriter() { close(); }

 private:
  RecordStatus take(FileDescriptor file);
  RecordStatus send(std::span<const std::byte> bytes);
  void hold(std::span<const std::byte> bytes);

  FileDescriptor file_;
  std::int64_t at_ = 0;
  std::vector<std::byte> pending_;
  bool failed_ = false;
};

}  // namespace pathstat
