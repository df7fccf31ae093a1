#include "trajectory/archive_lines.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "support/read_failure.h"

namespace pathstat {

namespace {

// The buffer grows as far as the file goes on, so that a short file takes little.
constexpr std::size_t first_bytes = std::size_t{1} << 12;
constexpr std::size_t most_bytes = std::size_t{1} << 18;

std::string_view shown(const char* first, std::size_t length) {
  if (length > 0 && first[length - 1] == '\r') --length;
  return {first, std::min(length, ArchiveLines::width)};
}

}  // namespace

ArchiveLines::ArchiveLines(int descriptor) : descriptor_(descriptor), buffer_(first_bytes) {
  while (held() <= width && read_more()) continue;
  const bool line_feed = std::memchr(buffer_.data(), '\n', std::min(held(), width + 1)) != nullptr;
  form_ = line_feed ? ArchiveForm::text : ArchiveForm::records;
}

bool ArchiveLines::next(std::string_view& line) {
  return form_ == ArchiveForm::text ? next_text(line) : next_record(line);
}

bool ArchiveLines::next_text(std::string_view& line) {
  const void* found = nullptr;
  std::size_t searched = 0;
  do {
    found = std::memchr(buffer_.data() + begin_ + searched, '\n', held() - searched);
    // Of a line longer than the buffer only the first characters are wanted.
    if (found == nullptr && held() == buffer_.size()) end_ = begin_ + width;
    searched = held();
  } while (found == nullptr && read_more());
  last_is_open_ = found == nullptr;
  if (failed_ || (last_is_open_ && held() == 0)) return false;
  const char* first = buffer_.data() + begin_;
  const std::size_t length = last_is_open_ ? held() : static_cast<std::size_t>(static_cast<const char*>(found) - first);
  line = shown(first, length);
  begin_ += length + (last_is_open_ ? 0 : 1);
  return true;
}

bool ArchiveLines::next_record(std::string_view& line) {
  while (held() < width) {
    if (!read_more()) return false;
  }
  line = shown(buffer_.data() + begin_, width);
  begin_ += width;
  return true;
}

bool ArchiveLines::read_more() {
  const bool was_filled = end_ == buffer_.size();
  if (begin_ > 0) {
    std::memmove(buffer_.data(), buffer_.data() + begin_, held());
    end_ = held();
    begin_ = 0;
  }
  if (was_filled && buffer_.size() < most_bytes) buffer_.resize(2 * buffer_.size());
  ssize_t got = 0;
  do {
    got = ::pread(descriptor_, buffer_.data() + end_, buffer_.size() - end_, read_to_);
  } while (got < 0 && errno == EINTR);
  failed_ = got < 0;
  if (failed_) tell_failed_read(descriptor_);
  if (got <= 0) return false;
  end_ += static_cast<std::size_t>(got);
  read_to_ += got;
  return true;
}

void ArchiveLines::go_to(std::int64_t place) {
  const std::int64_t ahead = place - this->place();
  if (ahead >= 0 && ahead <= static_cast<std::int64_t>(held())) {
    begin_ += static_cast<std::size_t>(ahead);
    return;
  }
  begin_ = end_ = 0;
  read_to_ = place;
}

}  // namespace pathstat
