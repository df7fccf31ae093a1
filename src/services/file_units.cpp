#include "services/file_units.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <memory>
#include <new>

#include "services/unit_paths.h"
#include "support/read_failure.h"
#include "support/text_field.h"

namespace pathstat {
namespace {

struct StreamCloser {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};

struct OpenFile {
  std::unique_ptr<std::FILE, StreamCloser> stream;
  std::string path;
  std::int64_t record_bytes = 0;  ///< 0 for sequential access
  struct stat identity {};
  bool writing = false;  ///< the last access to the stream was a write
  bool at_end = false;
};

std::array<OpenFile, unit_count> files;

/// The file on a unit; null for a number out of range and for a unit that is not open.
OpenFile* open_file(std::int32_t unit) {
  if (unit < 1 || unit > unit_count) return nullptr;
  OpenFile& file = files[static_cast<std::size_t>(unit - 1)];
  return file.stream == nullptr ? nullptr : &file;
}

bool is_regular(const OpenFile& file) { return S_ISREG(file.identity.st_mode); }

/// Closes every unit that holds the file, be it under another name or, by name, one that has been deleted since.
void close_holders(const std::string& path) {
  struct stat wanted {};
  const bool exists = ::stat(path.c_str(), &wanted) == 0;
  for (std::int32_t unit = 1; unit <= unit_count; ++unit) {
    const OpenFile* file = open_file(unit);
    if (file == nullptr || path.empty()) continue;
    const bool same_file = exists && file->identity.st_dev == wanted.st_dev && file->identity.st_ino == wanted.st_ino;
    if (same_file || file->path == path) unit_close(unit);
  }
}

int open_flags(UnitStatus status, UnitMode mode) {
  const int access = mode == UnitMode::read_only ? O_RDONLY : O_RDWR;
  if (status == UnitStatus::fresh) return access | O_CREAT | O_EXCL | O_CLOEXEC;
  // A missing file opened for reading only would be an empty one.
  if (status == UnitStatus::unknown && mode != UnitMode::read_only) return access | O_CREAT | O_CLOEXEC;
  return access | O_CLOEXEC | O_NONBLOCK;  // a pipe would hold it until somebody writes
}

/// What is read has an end; what is written may be a device.
bool fits(mode_t kind, UnitMode mode) { return mode == UnitMode::read_only ? S_ISREG(kind) : !S_ISDIR(kind); }

std::FILE* open_named(const std::string& path, UnitStatus status, UnitMode mode) {
  constexpr mode_t permissions = 0666;
  const int descriptor = ::open(path.c_str(), open_flags(status, mode), permissions);
  if (descriptor < 0) {
    // Whether the file is there may be all that is asked.
    if (errno != ENOENT && errno != EEXIST) tell_failed_open(path.c_str());
    return nullptr;
  }
  struct stat info {};
  std::FILE* stream = nullptr;
  if (::fstat(descriptor, &info) == 0 && fits(info.st_mode, mode)) {
    stream = ::fdopen(descriptor, mode == UnitMode::read_only ? "r" : "r+");
  }
  if (stream == nullptr) ::close(descriptor);
  return stream;
}

bool is_known(UnitForm form) { return form >= UnitForm::unformatted && form <= UnitForm::binary; }
bool is_known(UnitStatus status) { return status >= UnitStatus::scratch && status <= UnitStatus::fresh; }

void assign(std::int32_t unit, std::string_view path, std::int32_t record_length, const UnitOptions& options,
            std::int32_t& error) {
  error = unit_error::open_failed;
  if (unit < 1 || unit > unit_count) return;
  std::string name = unit_path(path);
  if (options.mode != UnitMode::read_only) close_holders(name);
  checkaccess_(path, static_cast<std::int32_t>(options.mode), error);
  if (error != 0) return;
  kvs_fil_closeunit_(unit);

  error = unit_error::open_failed;
  if (!is_known(options.form) || !is_known(options.status) || record_length < 0) return;
  const bool scratch = options.status == UnitStatus::scratch;
  if (!scratch && name.size() > longest_unit_path) return;
  OpenFile file;
  file.stream.reset(scratch ? std::tmpfile() : open_named(name, options.status, options.mode));
  if (file.stream == nullptr || ::fstat(::fileno(file.stream.get()), &file.identity) != 0) return;
  if (!scratch) {
    file.path = std::move(name);
    file.record_bytes = std::int64_t{4} * record_length;
    const bool at_end = options.mode == UnitMode::append && record_length == 0;
    if (at_end && ::fseeko(file.stream.get(), 0, SEEK_END) != 0) return;
  }
  files[static_cast<std::size_t>(unit - 1)] = std::move(file);
  error = 0;
}

/// The place of a direct record in its file; -1 if the unit has no such record or `bytes` is longer than one.
std::int64_t record_offset(const OpenFile* file, std::int64_t k, std::size_t bytes) {
  if (file == nullptr || file->record_bytes == 0 || k < 1) return -1;
  if (bytes > static_cast<std::uint64_t>(file->record_bytes)) return -1;
  if (k > std::numeric_limits<std::int64_t>::max() / file->record_bytes) return -1;
  return (k - 1) * file->record_bytes;
}

bool write_all(int descriptor, std::span<const std::byte> bytes, std::int64_t offset) {
  while (!bytes.empty()) {
    const ssize_t written = ::pwrite(descriptor, bytes.data(), bytes.size(), offset);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
    offset += written;
  }
  return true;
}

}  // namespace

void kvs_fil_getunit_(std::int32_t& unit, std::int32_t& error) {
  error = 0;
  for (std::int32_t k = unit_count; k >= 1; --k) {
    if (kvs_fil_isunitopen_(k)) continue;
    unit = k;
    return;
  }
  error = unit_error::none_free;
}

void kvs_fil_assign_(std::int32_t unit, std::string_view path, std::int32_t record_length, std::int32_t form,
                     std::int32_t status, std::int32_t mode, std::int32_t& error) try {
  const UnitOptions options{record_length, UnitForm{form}, UnitStatus{status}, UnitMode{mode}};
  assign(unit, path, record_length, options, error);
} catch (const std::bad_alloc&) {
  error = unit_error::open_failed;
}

void kvs_fil_closeunit_(std::int32_t unit) { unit_close(unit); }
void kvs_fil_unit_close_(std::int32_t unit) { kvs_fil_closeunit_(unit); }

bool kvs_fil_isunitopen_(std::int32_t unit) { return open_file(unit) != nullptr; }

std::FILE* unit_reader(std::int32_t unit) {
  OpenFile* file = open_file(unit);
  if (file == nullptr) return nullptr;
  if (file->writing && ::fseeko(file->stream.get(), 0, SEEK_CUR) != 0) return nullptr;
  file->writing = false;
  return file->stream.get();
}

std::FILE* unit_writer(std::int32_t unit) {
  OpenFile* file = open_file(unit);
  if (file == nullptr) return nullptr;
  std::FILE* stream = file->stream.get();
  if (!file->writing && is_regular(*file)) {
    if (::fseeko(stream, 0, SEEK_CUR) != 0 || ::ftruncate(::fileno(stream), ::ftello(stream)) != 0) return nullptr;
  }
  file->writing = true;
  return stream;
}

std::string unit_file(std::int32_t unit) {
  const OpenFile* file = open_file(unit);
  return file == nullptr ? std::string() : file->path;
}

bool unit_rewind(std::int32_t unit) {
  OpenFile* file = open_file(unit);
  if (file == nullptr || ::fseeko(file->stream.get(), 0, SEEK_SET) != 0) return false;
  file->writing = false;
  file->at_end = false;
  return true;
}

bool unit_read_line(std::int32_t unit, std::string& line, std::size_t width) {
  line.clear();
  std::FILE* stream = unit_reader(unit);
  if (stream == nullptr) return false;
  int letter = ::getc_unlocked(stream);
  const bool nothing = letter == EOF;
  for (; letter != EOF && letter != '\n'; letter = ::getc_unlocked(stream)) {
    if (line.size() < width) line.push_back(static_cast<char>(letter));
  }
  const bool failed = std::ferror(stream) != 0;
  open_file(unit)->at_end = nothing && !failed;
  if (line.ends_with('\r')) line.pop_back();
  return !nothing && !failed;
}

bool unit_write_line(std::int32_t unit, std::string_view line) {
  std::FILE* stream = unit_writer(unit);
  return stream != nullptr && std::fwrite(line.data(), 1, line.size(), stream) == line.size() &&
         std::fputc('\n', stream) != EOF;
}

bool unit_read_record(std::int32_t unit, std::int64_t k, std::span<std::byte> record) {
  OpenFile* file = open_file(unit);
  std::int64_t offset = record_offset(file, k, record.size());
  if (offset < 0) return false;
  file->at_end = false;
  while (!record.empty()) {
    const ssize_t got = ::pread(::fileno(file->stream.get()), record.data(), record.size(), offset);
    if (got < 0 && errno == EINTR) continue;
    file->at_end = got == 0;
    if (got <= 0) return false;
    record = record.subspan(static_cast<std::size_t>(got));
    offset += got;
  }
  return true;
}

bool unit_write_record(std::int32_t unit, std::int64_t k, std::span<const std::byte> record) {
  const OpenFile* file = open_file(unit);
  std::int64_t offset = record_offset(file, k, record.size());
  if (offset < 0) return false;
  const int descriptor = ::fileno(file->stream.get());
  if (!write_all(descriptor, record, offset)) return false;
  constexpr std::array<std::byte, 4096> zeros{};
  const std::int64_t end = offset + file->record_bytes;
  for (offset += static_cast<std::int64_t>(record.size()); offset < end;) {
    const auto padding = std::span(zeros).first(std::min(zeros.size(), static_cast<std::size_t>(end - offset)));
    if (!write_all(descriptor, padding, offset)) return false;
    offset += static_cast<std::int64_t>(padding.size());
  }
  return true;
}

bool unit_at_end(std::int32_t unit) {
  const OpenFile* file = open_file(unit);
  return file != nullptr && file->at_end;
}

bool unit_close(std::int32_t unit) {
  OpenFile* file = open_file(unit);
  if (file == nullptr) return true;
  std::FILE* stream = file->stream.release();
  *file = OpenFile{};
  const bool sound = std::ferror(stream) == 0;
  return std::fclose(stream) == 0 && sound;
}

FileUnit::FileUnit(std::string_view path, const UnitOptions& options, std::int32_t& error) {
  std::int32_t unit = 0;
  kvs_fil_getunit_(unit, error);
  if (error != 0) return;
  kvs_fil_assign_(unit, path, options.record_words, static_cast<std::int32_t>(options.form),
                  static_cast<std::int32_t>(options.status), static_cast<std::int32_t>(options.mode), error);
  if (error == 0) unit_ = unit;
}

FileUnit& FileUnit::operator=(FileUnit&& other) noexcept {
  if (this == &other) return *this;
  close();
  unit_ = other.release();
  return *this;
}

std::int32_t FileUnit::release() {
  const std::int32_t unit = unit_;
  unit_ = 0;
  return unit;
}

bool FileUnit::close() { return unit_close(release()); }

}  // namespace pathstat
