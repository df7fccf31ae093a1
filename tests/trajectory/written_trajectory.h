#pragma once

#include "scratch_folder.h"
#include "testing.h"
#include "trajectory/binary_trajectory.h"

namespace pathstat {

/// A binary trajectory of the newest version, made by the library's writer for the length of a test.
class WrittenTrajectory {
 public:
  explicit WrittenTrajectory(std::int32_t total, std::vector<std::int32_t> ids, std::int32_t directions = 0) {
    std::int32_t status = -1;
    kvA_TRJ_Open(path_, 200, handle_, status);
    EXPECT_EQ(status, 0);
    const std::array<std::string_view, 1> magic{"MDTR"}, title{"a title line"};
    kvA_TRJ_SetValueChar(handle_, 4001, magic, status);
    kvA_TRJ_SetValueChar(handle_, 4002, title, status);
    integers(2020, {total});
    integers(2018, {directions});
    integers(2008, ids);
  }
  ~WrittenTrajectory() { close(); }
  WrittenTrajectory(const WrittenTrajectory&) = delete;
  WrittenTrajectory& operator=(const WrittenTrajectory&) = delete;

  WrittenTrajectory& flag(std::int32_t key) {
    const Logical yes = true;
    return checked([&](auto& status) { kvA_TRJ_SetValueLogical(handle_, key, std::span(&yes, 1), status); });
  }
  WrittenTrajectory& integers(std::int32_t key, const std::vector<std::int32_t>& values) {
    return checked([&](auto& status) { kvA_TRJ_SetValueInt(handle_, key, values, status); });
  }
  WrittenTrajectory& set(std::int32_t key, const std::vector<double>& values) {
    return checked([&](auto& status) { kvA_TRJ_SetValueDouble(handle_, key, values, status); });
  }
  WrittenTrajectory& frame() {
    return checked([&](auto& status) { kvA_TRJ_WriteFrame(handle_, status); });
  }
  /// The whole file.
  const std::string& path() {
    close();
    return path_;
  }

 private:
  WrittenTrajectory& checked(const std::function<void(std::int32_t&)>& step) {
    std::int32_t status = -1;
    step(status);
    EXPECT_EQ(status, 0);
    return *this;
  }
  void close() {
    std::int32_t status = 0;
    if (handle_ != 0) kvA_TRJ_Close(handle_, status);
    handle_ = 0;
  }

  const ScratchFolder folder_;
  const std::string path_ = folder_.file("run.trj");
  std::int32_t handle_ = 0;
};

}  // namespace pathstat
