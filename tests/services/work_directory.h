#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "services/file_host.h"

namespace pathstat {

/// A test in a directory of its own, as current directory, without a Core.
class WorkDirectory : public testing::Test {
 protected:
  WorkDirectory() : host_(file_host()), start_(std::filesystem::current_path()) {
    std::string pattern = (std::filesystem::temp_directory_path() / "servicesXXXXXX").string();
    directory_ = std::filesystem::canonical(mkdtemp(pattern.data()));
    std::filesystem::current_path(directory_);
    file_host() = {[] {}, [](std::string_view) { return 0; },
                   [](std::string_view, std::int32_t) { return std::string(); }, [](std::int32_t) {}};
  }
  ~WorkDirectory() override {
    file_host() = host_;
    std::filesystem::current_path(start_);
    std::filesystem::remove_all(directory_);
  }

  std::string path(const std::string& name) const { return (directory_ / name).string(); }
  static void write(const std::string& name, const std::string& content) {
    std::ofstream(name, std::ios::binary) << content;
  }
  static std::string content(const std::string& name) {
    std::ifstream in(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  std::filesystem::path directory_;

 private:
  FileHost host_;
  std::filesystem::path start_;
};

}  // namespace pathstat
