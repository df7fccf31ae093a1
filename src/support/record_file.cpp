#include "support/record_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>

#include "support/read_failure.h"

namespace pathstat {
namespace {

constexpr std::int64_t frame_bytes = 4;
constexpr std::int64_t first_reach = 1024;
constexpr std::int64_t longest_reach = std::int64_t{64} * 1024;
constexpr std::size_t straight_read = 4096;   // payloads from here on bypass the buffer
constexpr std::size_t pending_limit = 65536;  // bytes that wait before they are written

std::int64_t file_size(int fd) {
  struct stat info {};
  return ::fstat(fd, &info) == 0 ? static_cast<std::int64_t>(info.st_size) : -1;
}

bool is_regular(int fd) {
  struct stat info {};
  if (::fstat(fd, &info) != 0) return false;
  if (S_ISREG(info.st_mode)) return true;
  errno = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
  return false;
}

}  // namespace

FileDescriptor open_regular(const std::string& path) {
  FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.is_open() && !is_regular(file.get())) {
    const int cause = errno;
    file.close();
    errno = cause;
  }
  return file;
}

FileDescriptor create_new(const std::string& path, unsigned permissions) {
  ::unlink(path.c_str());
  return FileDescriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, permissions));
}

std::string why_unreadable(const std::string& path) {
  if (open_regular(path).is_open()) return {};
  if (errno == EISDIR) return "is a folder";
  if (errno == EINVAL || errno == ENXIO) return "is a pipe or a device, not a file";
  return std::string("cannot be opened: ") + std::strerror(errno);
}

const std::byte* BigEndian::take(std::size_t bytes) {
  if (bytes > left_.size()) {
    ok_ = false;
    left_ = {};
    return nullptr;
  }
  const std::byte* at = left_.data();
  left_ = left_.subspan(bytes);
  return at;
}

RecordBytes& RecordBytes::text(std::string_view characters, std::size_t width) {
  std::byte* at = grow(width);
  const auto used = std::min(width, characters.size());
  std::transform(characters.begin(), characters.begin() + static_cast<std::ptrdiff_t>(used), at,
                 [](char c) { return static_cast<std::byte>(c); });
  std::fill(at + used, at + width, std::byte{' '});
  return *this;
}

std::byte* RecordBytes::grow(std::size_t bytes) {
  const auto before = bytes_.size();
  bytes_.resize(before + bytes);
  return bytes_.data() + before;
}

bool FileDescriptor::close() {
  const int fd = std::exchange(fd_, -1);
  return fd < 0 || ::close(fd) == 0;
}

RecordStatus RecordReader::open(const std::string& path) {
  *this = RecordReader();
  file_ = open_regular(path);
  if (!file_.is_open()) return RecordStatus::failed;
  size_ = file_size(file_.get());
  return RecordStatus::ok;
}

bool RecordReader::holds(std::int64_t bytes) {
  if (at_ < 0) return false;
  if (bytes <= size_ - at_) return true;
  if (!file_.is_open()) return false;
  size_ = file_size(file_.get());
  return bytes <= size_ - at_;
}

RecordStatus RecordReader::expect(std::int64_t length) { return accept_length(length, length); }

RecordStatus RecordReader::expect_any(std::int64_t limit) { return accept_length(0, limit); }

RecordStatus RecordReader::accept_length(std::int64_t least, std::int64_t most) {
  if (!holds(1)) return RecordStatus::end;
  const auto start = at_;
  std::array<std::byte, frame_bytes> lead;
  if (const auto status = read_bytes(lead); status != RecordStatus::ok) return status;
  const std::int64_t found = load_big_endian<std::uint32_t>(lead.data());
  const bool fits = found >= least && found <= most;
  if (fits && holds(found + frame_bytes)) {
    length_ = found;
    return RecordStatus::ok;
  }
  at_ = start;
  return fits ? RecordStatus::cut : RecordStatus::wrong_length;
}

RecordStatus RecordReader::read(std::span<std::byte> payload) {
  if (static_cast<std::int64_t>(payload.size()) != length_) return RecordStatus::wrong_length;
  const auto status = read_bytes(payload);
  if (status == RecordStatus::ok) at_ += frame_bytes;
  return status;
}

RecordStatus RecordReader::load() {
  try {
    payload_.resize(static_cast<std::size_t>(length_));
  } catch (const std::bad_alloc&) {
    return RecordStatus::failed;
  }
  return read(payload_);
}

std::span<const std::byte> RecordReader::at_hand() const {
  const auto skipped = at_ - window_start_;
  if (skipped < 0 || skipped >= static_cast<std::int64_t>(window_.size())) return {};
  return window_.subspan(static_cast<std::size_t>(skipped));
}

RecordStatus RecordReader::read_bytes(std::span<std::byte> into) {
  const auto start = at_;
  auto status = holds(static_cast<std::int64_t>(into.size())) ? RecordStatus::ok : RecordStatus::cut;
  while (status == RecordStatus::ok && !into.empty()) {
    const auto near = at_hand();
    if (!near.empty()) {
      const auto count = std::min(near.size(), into.size());
      std::copy_n(near.begin(), count, into.begin());
      at_ += static_cast<std::int64_t>(count);
      into = into.subspan(count);
    } else if (into.size() >= straight_read) {
      status = read_at(at_, into);
      at_ += static_cast<std::int64_t>(into.size());
      into = {};
    } else {
      status = refill();
    }
  }
  if (status != RecordStatus::ok) at_ = start;
  return status;
}

RecordStatus RecordReader::refill() {
  const bool follows = at_ == window_start_ + static_cast<std::int64_t>(window_.size());
  reach_ = follows && reach_ > 0 ? std::min(2 * reach_, longest_reach) : first_reach;
  const auto count = static_cast<std::size_t>(std::min(reach_, size_ - at_));
  window_ = {};
  try {
    if (buffer_.size() < count) buffer_.resize(static_cast<std::size_t>(reach_));
  } catch (const std::bad_alloc&) {
    return RecordStatus::failed;
  }
  const auto fresh = std::span(buffer_).first(count);
  const auto status = read_at(at_, fresh);
  if (status == RecordStatus::ok) {
    window_ = fresh;
    window_start_ = at_;
  }
  return status;
}

RecordStatus RecordReader::read_at(std::int64_t offset, std::span<std::byte> into) const {
  if (!file_.is_open()) {
    const auto count = static_cast<std::int64_t>(into.size());
    if (offset < 0 || offset > size_ || count > size_ - offset) return RecordStatus::cut;
    std::copy_n(window_.begin() + offset, into.size(), into.begin());
    return RecordStatus::ok;
  }
  while (!into.empty()) {
    const auto count = ::pread(file_.get(), into.data(), into.size(), offset);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      tell_failed_read(file_.get());
      return RecordStatus::failed;
    }
    if (count == 0) return RecordStatus::cut;
    into = into.subspan(static_cast<std::size_t>(count));
    offset += count;
  }
  return RecordStatus::ok;
}

RecordStatus RecordWriter::create(const std::string& path) {
  close();
  return take(FileDescriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)));
}

RecordStatus RecordWriter::create_new(const std::string& path) {
  close();
  return take(pathstat::create_new(path));
}

RecordStatus RecordWriter::append(const std::string& path) {
  close();
  const auto status = take(FileDescriptor(::open(path.c_str(), O_WRONLY | O_CLOEXEC)));
  if (status != RecordStatus::ok) return status;
  at_ = ::lseek(file_.get(), 0, SEEK_END);
  return at_ < 0 ? RecordStatus::failed : RecordStatus::ok;
}

RecordStatus RecordWriter::take(FileDescriptor file) {
  at_ = 0;
  failed_ = false;
  file_ = std::move(file);
  return file_.is_open() ? RecordStatus::ok : RecordStatus::failed;
}

RecordStatus RecordWriter::write(std::span<const std::byte> payload) try {
  if (payload.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    return RecordStatus::wrong_length;
  }
  if (failed_ || !file_.is_open()) return RecordStatus::failed;
  std::array<std::byte, frame_bytes> length;
  store_big_endian(static_cast<std::uint32_t>(payload.size()), length.data());
  hold(length);
  if (payload.size() < pending_limit) {
    hold(payload);
  } else if (flush() != RecordStatus::ok || send(payload) != RecordStatus::ok) {
    return RecordStatus::failed;
  }
  hold(length);
  at_ += static_cast<std::int64_t>(payload.size()) + 2 * frame_bytes;
  return pending_.size() < pending_limit ? RecordStatus::ok : flush();
} catch (const std::bad_alloc&) {
  failed_ = true;
  return RecordStatus::failed;
}

void RecordWriter::hold(std::span<const std::byte> bytes) {
  pending_.insert(pending_.end(), bytes.begin(), bytes.end());
}

RecordStatus RecordWriter::flush() {
  if (failed_ || !file_.is_open()) return RecordStatus::failed;
  const auto status = send(pending_);
  pending_.clear();
  return status;
}

RecordStatus RecordWriter::send(std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const auto count = ::write(file_.get(), bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      failed_ = true;
      return RecordStatus::failed;
    }
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return RecordStatus::ok;
}

RecordStatus RecordWriter::roll_back(std::int64_t offset) {
  if (!file_.is_open()) return RecordStatus::failed;
  if (!failed_ && flush() != RecordStatus::ok) failed_ = true;
  pending_.clear();
  failed_ = file_size(file_.get()) < offset || ::ftruncate(file_.get(), offset) != 0 ||
            ::lseek(file_.get(), offset, SEEK_SET) != offset;
  if (!failed_) at_ = offset;
  return failed_ ? RecordStatus::failed : RecordStatus::ok;
}

RecordStatus RecordWriter::close() {
  if (!file_.is_open()) return RecordStatus::ok;
  const bool written = flush() == RecordStatus::ok;
  pending_.clear();
  return file_.close() && written ? RecordStatus::ok : RecordStatus::failed;
}

}  // namespace pathstat
