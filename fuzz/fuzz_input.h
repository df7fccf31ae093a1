#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>

#include "desk/ops/typed_stream.h"

namespace pathstat::fuzz {

/// A stream whose input is a block of bytes and whose output goes nowhere.
class MemoryStream : public desk::ByteStream {
 public:
  explicit MemoryStream(std::span<const std::byte> bytes) : left_(bytes) {}
  bool read(std::span<std::byte> bytes) override {
    if (bytes.size() > left_.size()) return false;
    if (!bytes.empty()) std::memcpy(bytes.data(), left_.data(), bytes.size());
    left_ = left_.subspan(bytes.size());
    return true;
  }
  bool write(std::span<const std::byte>) override { return true; }
  bool flush() override { return true; }

 private:
  std::span<const std::byte> left_;
};

/// A file of memory with a path.
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* data, std::size_t size) : file_(::memfd_create("fuzz", 0)) {
    if (file_ < 0 || ::write(file_, data, size) != static_cast<ssize_t>(size)) __builtin_trap();
  }
  ~MemoryFile() { ::close(file_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  int descriptor() const { return file_; }
  std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

 private:
  int file_;
};

/// Takes small numbers off a block of bytes; zeros behind its end.
class Numbers {
 public:
  explicit Numbers(std::span<const std::uint8_t> bytes) : left_(bytes) {}
  bool ended() const { return left_.empty(); }
  std::uint8_t byte() {
    if (left_.empty()) return 0;
    const std::uint8_t value = left_.front();
    left_ = left_.subspan(1);
    return value;
  }
  /// From 0 to `most`.
  std::int32_t below(std::int32_t most) { return (byte() << 8 | byte()) % (most + 1); }
  /// From -1 to 1.
  double fraction() { return ((byte() << 8 | byte()) - 32768) / 32768.0; }
  /// A double of any bits.
  double any() {
    std::uint64_t bits = 0;
    for (int k = 0; k < 8; ++k) bits = bits << 8 | byte();
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }

 private:
  std::span<const std::uint8_t> left_;
};

}  // namespace pathstat::fuzz
