// Call frames of any bytes: the first chooses the operation, the rest are what came over the wire.
#include <cstring>

#include "desk/ops/frame_codec.h"

namespace {

class MemoryStream : public pathstat::desk::ByteStream {
 public:
  explicit MemoryStream(std::span<const std::byte> bytes) : left_(bytes) {}
  bool read(std::span<std::byte> bytes) override {
    if (bytes.size() > left_.size()) return false;
    std::memcpy(bytes.data(), left_.data(), bytes.size());
    left_ = left_.subspan(bytes.size());
    return true;
  }
  bool write(std::span<const std::byte>) override { return true; }
  bool flush() override { return true; }

 private:
  std::span<const std::byte> left_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const auto rows = pathstat::all_operations();
  const auto& row = rows[data[0] % rows.size()];
  MemoryStream stream(std::as_bytes(std::span(data + 1, size - 1)));
  std::vector<pathstat::desk::SlotValue> inputs;
  pathstat::desk::read_call(stream, row, inputs);
  return 0;
}
