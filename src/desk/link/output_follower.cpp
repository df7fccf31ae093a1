#include "desk/link/output_follower.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace pathstat::desk {
namespace {

constexpr std::size_t lines_kept = 10;
constexpr std::size_t longest_line = 65536;

}  // namespace

void OutputFollower::hand_on(std::string_view line) {
  last_.emplace_back(line);
  if (last_.size() > lines_kept) last_.pop_front();
  if (sink_) sink_(line);
}

int OutputFollower::read_on() {
  if (!open_.is_open()) {
    open_ = FileDescriptor(::open(file_.c_str(), O_RDONLY | O_CLOEXEC));
    if (!open_.is_open()) return errno;
    ::lseek(open_.get(), static_cast<off_t>(handed_on_), SEEK_SET);
  }
  struct stat facts {};
  if (::fstat(open_.get(), &facts) != 0) return errno;
  std::array<char, 16384> block;
  while (handed_on_ < static_cast<std::uintmax_t>(facts.st_size)) {
    const auto got = ::read(open_.get(), block.data(), block.size());
    if (got == 0) return 0;
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return errno;
    begun_.append(block.data(), static_cast<std::size_t>(got));
    handed_on_ += static_cast<std::uintmax_t>(got);
    std::size_t from = 0;
    for (auto end = begun_.find('\n'); end != std::string::npos; end = begun_.find('\n', from)) {
      hand_on(std::string_view(begun_).substr(from, end - from));
      from = end + 1;
    }
    begun_.erase(0, from);
    if (begun_.size() > longest_line) hand_on(std::exchange(begun_, {}));
  }
  return 0;
}

void OutputFollower::follow() { read_on(); }

void OutputFollower::finish() {
  const int failure = read_on() == 0 ? 0 : read_on();
  if (!begun_.empty()) hand_on(std::exchange(begun_, {}));
  if (failure != 0 && failure != ENOENT)
    hand_on(std::string("what pathstat printed cannot be read: ") + std::strerror(failure));
}

}  // namespace pathstat::desk
