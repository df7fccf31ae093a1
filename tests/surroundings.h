#pragma once

#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <utility>

// What a test changes of its process for a while.

namespace pathstat {

/// Sets a variable, or unsets it for null, as long as it lives.
class ScopedVariable {
 public:
  ScopedVariable(std::string name, const char* value) : name_(std::move(name)) {
    const char* before = std::getenv(name_.c_str());
    was_set_ = before != nullptr;
    if (was_set_) before_ = before;
    set(value);
  }
  ~ScopedVariable() { set(was_set_ ? before_.c_str() : nullptr); }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  void set(const char* value) const {
    value != nullptr ? ::setenv(name_.c_str(), value, 1) : ::unsetenv(name_.c_str());
  }
  std::string name_;
  std::string before_;
  bool was_set_ = false;
};

/// No file grows beyond so many bytes as long as it lives; what would make it grow fails.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  void (*handler_)(int) = std::signal(SIGXFSZ, SIG_IGN);
  rlimit before_{};
};

}  // namespace pathstat
