#include "desk/link/output_follower.h"

#include <array>
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

void OutputFollower::follow() {
  if (!stream_.is_open()) {
    stream_.open(file_, std::ios::binary);
    stream_.seekg(static_cast<std::streamoff>(handed_on_));
  }
  if (!stream_.is_open()) return;
  stream_.clear();
  std::array<char, 16384> block;
  while (stream_.read(block.data(), block.size()), stream_.gcount() > 0) {
    begun_.append(block.data(), static_cast<std::size_t>(stream_.gcount()));
    handed_on_ += static_cast<std::uintmax_t>(stream_.gcount());
    std::size_t from = 0;
    for (auto end = begun_.find('\n'); end != std::string::npos; end = begun_.find('\n', from)) {
      hand_on(std::string_view(begun_).substr(from, end - from));
      from = end + 1;
    }
    begun_.erase(0, from);
    if (begun_.size() > longest_line) hand_on(std::exchange(begun_, {}));
  }
}

void OutputFollower::finish() {
  follow();
  if (!begun_.empty()) hand_on(std::exchange(begun_, {}));
}

}  // namespace pathstat::desk
