#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/record_file.h"

namespace pathstat::desk {

/// The folder of the scripts that this program runs: that of the environment variable PATHSTAT_SCRIPTS, else
/// share/pathstat/python beside the folder of the program.
std::filesystem::path scripts_folder();

/// The numbers that a payload has room for; they lie in it as in this machine's memory, at any alignment.
template <class T>
std::vector<T> numbers_in(std::span<const std::byte> payload) {
  std::vector<T> values(payload.size() / sizeof(T));
  if (!values.empty()) std::memcpy(values.data(), payload.data(), values.size() * sizeof(T));
  return values;
}

/// A Python script that sends blocks on its standard output: a tag of 8 characters, a length as a 64-bit integer in the
/// byte order of this machine, and that many bytes. It ends with its owner.
class ScriptStream {
 public:
  struct Block {
    std::string tag;                     ///< without the blanks behind it
    std::span<const std::byte> payload;  ///< until the next block is asked for
  };
  enum class Next { block, ended, interrupted, failed };

  ScriptStream() = default;
  ~ScriptStream();
  ScriptStream(const ScriptStream&) = delete;
  ScriptStream& operator=(const ScriptStream&) = delete;

  /// Starts a script of the folder of scripts. @return empty, or what went wrong
  std::string start(const std::string& script, const std::vector<std::string>& arguments);

  /// Waits for the next block. One longer than its tag may be (-1 for a tag that may not come) is a failure, and memory
  /// is taken only for bytes that came. A stream that ends between blocks has ended; problem() then tells how.
  Next next(Block& block, const std::function<std::int64_t(std::string_view tag)>& longest);

  /// Why the stream failed, or how a script ended that sent no end.
  const std::string& problem() const { return problem_; }

 private:
  Next fill(std::span<std::byte> bytes, std::size_t& got);
  void reap();

  FileDescriptor pipe_;
  pid_t child_ = 0;
  std::string problem_;
  std::vector<std::byte> payload_;
};

}  // namespace pathstat::desk
