#pragma once

#include <initializer_list>
#include <vector>

#include "desk/ops/typed_stream.h"

namespace pathstat::desk {

/// A stream whose input is a block of bytes and whose output is kept.
class MemoryStream : public ByteStream {
 public:
  explicit MemoryStream(std::vector<std::byte> bytes = {}) : input_(std::move(bytes)) {}

  bool read(std::span<std::byte> bytes) override {
    if (bytes.size() > input_.size() - at_) return false;
    std::copy_n(input_.begin() + static_cast<std::ptrdiff_t>(at_), bytes.size(), bytes.begin());
    at_ += bytes.size();
    return true;
  }
  bool write(std::span<const std::byte> bytes) override {
    output.insert(output.end(), bytes.begin(), bytes.end());
    return true;
  }
  bool flush() override { return true; }
  std::size_t left() const { return input_.size() - at_; }

  std::vector<std::byte> output;

 private:
  std::vector<std::byte> input_;
  std::size_t at_ = 0;
};

inline std::vector<std::byte> bytes_of(std::initializer_list<int> values) {
  std::vector<std::byte> bytes;
  for (const int value : values) bytes.push_back(static_cast<std::byte>(value));
  return bytes;
}

}  // namespace pathstat::desk
