#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace pathstat {

/// How the lines of an archive stand in its file. The values are those of the shared record `arctrj_i_`.
enum class ArchiveForm : std::int32_t {
  text = 87321,    ///< each line with a line feed behind it
  records = 12378  ///< 80 bytes each, one behind the other
};

/// The lines of an archive, read in large blocks, in order or from any place on.
class ArchiveLines {
 public:
  static constexpr std::size_t width = 80;

  ArchiveLines() = default;
  /// Finds the form: text if there is a line feed among the first 81 bytes.
  /// @param descriptor  of a file that the caller keeps open
  explicit ArchiveLines(int descriptor);

  ArchiveForm form() const { return form_; }
  /// Gives the next line, without its end and without a carriage return there, cut to 80 characters. It stays until
  /// the next call. False if there is none: at the end of the file, for a record that the file has only a part of, and
  /// on an error.
  bool next(std::string_view& line);
  /// True if the last line that was given has no line feed behind it: the end of the file, or a cut.
  bool last_is_open() const { return last_is_open_; }
  /// True if bytes are left, once there is no next line: a part of a record.
  bool holds_part() const { return held() > 0; }
  /// True if the system failed to read.
  bool failed() const { return failed_; }

  /// The place of the next line, in bytes from the start of the file.
  std::int64_t place() const { return read_to_ - static_cast<std::int64_t>(end_ - begin_); }
  void go_to(std::int64_t place);

 private:
  bool next_text(std::string_view& line);
  bool next_record(std::string_view& line);
  std::size_t held() const { return end_ - begin_; }
  /// Brings in bytes behind those that are held. False if there are none.
  bool read_more();

  int descriptor_ = -1;
  ArchiveForm form_ = ArchiveForm::text;
  std::vector<char> buffer_;
  std::size_t begin_ = 0, end_ = 0;  ///< the bytes of the buffer that no line has taken yet
  std::int64_t read_to_ = 0;         ///< place in the file of the byte behind them
  bool last_is_open_ = false;
  bool failed_ = false;
};

}  // namespace pathstat
