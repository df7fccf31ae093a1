#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

namespace pathstat {

/// Files on numbered units, 1 to 99. A unit holds at most one open file. Three kinds of access:
///   text         unit_read_line, unit_write_line                    form `formatted`
///   direct       unit_read_record, unit_write_record, any order     a record length above 0
///   sequential   a RecordReader or RecordWriter on unit_file, or the plain stream of unit_reader and unit_writer
/// A text or a stream ends behind what was written last: the first write after a read cuts off what stood there.
constexpr std::int32_t unit_count = 99;

namespace unit_error {
constexpr std::int32_t access_refused = 1;
constexpr std::int32_t open_failed = 21005;
constexpr std::int32_t none_free = 21008;
}  // namespace unit_error

enum class UnitForm : std::int32_t { unformatted = 0, formatted = 1, binary = 2 };
enum class UnitStatus : std::int32_t { scratch = -1, unknown = 0, existing = 1, fresh = 2 };
enum class UnitMode : std::int32_t { read_write = 0, read_only = 1, append = 2 };

/// The highest unit that is not open. It is not reserved. With none free, `unit` keeps its value.
/// @param error  0 or unit_error::none_free
void kvs_fil_getunit_(std::int32_t& unit, std::int32_t& error);

/// Opens a file on a unit, which is closed first, as is any other unit that holds the same file unless the mode is
/// read_only. Codes as in the enumerations above.
/// @param path           expanded by unit_path; not used for a scratch file
/// @param record_length  0 for sequential access, else the direct record's length in 4-byte words
/// @param error          0, unit_error::access_refused or open_failed; the unit is then closed or as it was
void kvs_fil_assign_(std::int32_t unit, std::string_view path, std::int32_t record_length, std::int32_t form,
                     std::int32_t status, std::int32_t mode, std::int32_t& error);

/// Closes the unit if it is open.
void kvs_fil_closeunit_(std::int32_t unit);
void kvs_fil_unit_close_(std::int32_t unit);

bool kvs_fil_isunitopen_(std::int32_t unit);

/// The unit's stream, set up for reading (or, at the start of the file or behind what was read or written last, for
/// writing); null if the unit is not open. The unit keeps it.
std::FILE* unit_reader(std::int32_t unit);
std::FILE* unit_writer(std::int32_t unit);

/// The expanded path of the file on a unit; empty for a scratch file and a closed unit.
std::string unit_file(std::int32_t unit);

/// Goes back to the start of the file.
bool unit_rewind(std::int32_t unit);

/// Reads a line without its end (a line feed, or the two characters return and line feed). A longer line than `width`
/// is cut to it. False at the end of the file and on an error; unit_at_end tells which.
bool unit_read_line(std::int32_t unit, std::string& line, std::size_t width = 65536);

/// Writes the text as one line. False on an error such as a full disk.
bool unit_write_line(std::int32_t unit, std::string_view line);

/// Reads the first record.size() bytes of direct record k, counted from 1; at most the record's length. False if the
/// file does not hold them or on an error; unit_at_end tells which.
bool unit_read_record(std::int32_t unit, std::int64_t k, std::span<std::byte> record);

/// Writes direct record k; bytes that `record` lacks up to the record's length are 0. False on an error such as a
/// full disk.
bool unit_write_record(std::int32_t unit, std::int64_t k, std::span<const std::byte> record);

/// True if the last read on the unit failed because the file ended.
bool unit_at_end(std::int32_t unit);

/// Hands everything written to the system and closes. False if something could not be written.
bool unit_close(std::int32_t unit);

/// How FileUnit opens its file.
struct UnitOptions {
  std::int32_t record_words = 0;  ///< 0 for sequential access
  UnitForm form = UnitForm::unformatted;
  UnitStatus status = UnitStatus::unknown;
  UnitMode mode = UnitMode::read_write;
};

/// Owner of one unit: takes a free one, opens a file on it, and closes it at the end of its scope.
class FileUnit {
 public:
  FileUnit() = default;
  /// @param error  0, or that of kvs_fil_getunit_ or kvs_fil_assign_; the owner then holds no unit
  FileUnit(std::string_view path, const UnitOptions& options, std::int32_t& error);
  /// Takes over a unit that is open already; 0 for none.
  explicit FileUnit(std::int32_t unit) : unit_(unit) {}
  ~FileUnit() { close(); }
  FileUnit(FileUnit&& other) noexcept : unit_(other.release()) {}
  FileUnit& operator=(FileUnit&& other) noexcept;

  /// The unit's number; 0 if there is none.
  std::int32_t number() const { return unit_; }
  explicit operator bool() const { return unit_ > 0; }
  /// Gives the unit to the caller, who closes it.
  std::int32_t release();
  /// False if something written did not reach the file.
  bool close();

 private:
  std::int32_t unit_ = 0;
};

}  // namespace pathstat
