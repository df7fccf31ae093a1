#pragma once

#include <span>

#include "scratch_folder.h"
#include "testing.h"
#include "trajectory/binary_bytes.h"
#include "trajectory/binary_trajectory.h"

namespace pathstat::testing_bytes {

/// What a getter gave.
template <class T>
struct Answer {
  std::int32_t status = -1;
  std::int32_t count = 0;
  std::vector<T> values;
};

/// A trajectory that is read from memory for the length of a test.
class Opened {
 public:
  explicit Opened(const Bytes& content) : Opened(content.all()) {}
  explicit Opened(std::span<const std::byte> content) : content_(content.begin(), content.end()) {
    open_binary_trajectory(content_, handle, status);
  }
  Opened(const Opened&) = delete;
  ~Opened() {
    std::int32_t closed = 0;
    if (handle != 0) kvA_TRJ_Close(handle, closed);
  }

  std::int32_t read(std::int32_t frame) { return status_of(kvA_TRJ_ReadFrame, handle, frame); }
  Answer<double> doubles(std::int32_t key, std::size_t capacity) {
    return ask<double>(kvA_TRJ_ValueDouble, key, capacity);
  }
  Answer<float> floats(std::int32_t key, std::size_t capacity) { return ask<float>(kvA_TRJ_ValueFloat, key, capacity); }
  Answer<std::int32_t> integers(std::int32_t key, std::size_t capacity) {
    return ask<std::int32_t>(kvA_TRJ_ValueInt, key, capacity);
  }
  bool logical(std::int32_t key) {
    const auto answer = ask<Logical>(kvA_TRJ_ValueLogical, key, 1);
    EXPECT_EQ(answer.status, 0) << "key " << key;
    return answer.values[0];
  }
  Answer<std::string> text(std::int32_t key, std::size_t capacity, std::int32_t width) {
    Answer<std::string> answer;
    answer.values.resize(capacity);
    kvA_TRJ_ValueChar(handle, key, answer.values, width, answer.count, answer.status);
    return answer;
  }

  std::int32_t handle = 0;
  std::int32_t status = -1;

 private:
  template <class T, class Getter>
  Answer<T> ask(Getter getter, std::int32_t key, std::size_t capacity) {
    Answer<T> answer;
    answer.values.resize(capacity);
    getter(handle, key, answer.values, answer.count, answer.status);
    return answer;
  }

  std::vector<std::byte> content_;
};

/// A file that goes when the test ends.
class FileOnDisk {
 public:
  explicit FileOnDisk(std::span<const std::byte> content = {}, const std::string& ending = ".trj")
      : path_(folder_.file("file" + ending)) {
    if (!content.empty()) replace(content);
  }

  const std::string& path() const { return path_; }
  void replace(std::span<const std::byte> content) const {
    std::ofstream file(path_, std::ios::binary);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
  }
  std::vector<std::byte> content() const {
    std::vector<std::byte> all(std::filesystem::file_size(path_));
    std::ifstream file(path_, std::ios::binary);
    file.read(reinterpret_cast<char*>(all.data()), static_cast<std::streamsize>(all.size()));
    return all;
  }

 private:
  const ScratchFolder folder_;
  const std::string path_;
};

}  // namespace pathstat::testing_bytes
