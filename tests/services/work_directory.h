#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "services/file_host.h"

namespace pathstat {

/// A test in a directory of its own, as current directory, with the host's answers at hand instead of a Core.
class WorkDirectory : public testing::Test {
 protected:
  WorkDirectory() : host_(file_host()), start_(std::filesystem::current_path()) {
    std::string pattern = (std::filesystem::temp_directory_path() / "servicesXXXXXX").string();
    directory_ = std::filesystem::canonical(mkdtemp(pattern.data()));
    std::filesystem::permissions(directory_, std::filesystem::perms{0755});
    std::filesystem::current_path(directory_);
    file_host() = {[this] { ++alerts_; },
                   [this](std::string_view variable) { return static_cast<std::int32_t>(items(variable).size()); },
                   [this](std::string_view variable, std::int32_t k) {
                     return items(variable).at(static_cast<std::size_t>(k - 1));
                   },
                   [this](std::int32_t code) { reported_.push_back(code); }};
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
  const std::vector<std::string>& items(std::string_view variable) { return path_variables_[std::string(variable)]; }

  std::filesystem::path directory_;
  std::map<std::string, std::vector<std::string>> path_variables_;
  int alerts_ = 0;
  std::vector<std::int32_t> reported_;

 private:
  FileHost host_;
  std::filesystem::path start_;
};

}  // namespace pathstat
