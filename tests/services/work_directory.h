#pragma once

#include "scratch_folder.h"
#include "services/file_host.h"
#include "testing.h"

namespace pathstat {

/// A test in a directory of its own, as current directory, without a Core.
class WorkDirectory : public testing::Test {
 protected:
  WorkDirectory() : host_(file_host()), start_(std::filesystem::current_path()) {
    std::filesystem::current_path(directory_);
    file_host() = {[] {}, [](std::string_view) { return 0; },
                   [](std::string_view, std::int32_t) { return std::string(); }, [](std::int32_t) {}};
  }
  ~WorkDirectory() override {
    file_host() = host_;
    std::filesystem::current_path(start_);
  }

  std::string path(const std::string& name) const { return (directory_ / name).string(); }
  static void write(const std::string& name, const std::string& content) {
    std::ofstream(name, std::ios::binary) << content;
  }
  static std::string content(const std::string& name) { return content_of(name); }

 private:
  const ScratchFolder scratch_;

 protected:
  const std::filesystem::path directory_ = scratch_.path();

 private:
  FileHost host_;
  std::filesystem::path start_;
};

}  // namespace pathstat
