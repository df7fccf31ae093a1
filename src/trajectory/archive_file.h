#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "trajectory/archive_layout.h"
#include "trajectory/archive_lines.h"

namespace pathstat {

/// What the first lines of an archive tell.
struct ArchiveHeader {
  ArchiveForm form = ArchiveForm::text;
  std::string title;
  std::int32_t header_lines = 0;  ///< in front of the first frame: 1, or 2 with a line of the periodicity
  ArchivePeriodicity periodicity;
  std::int32_t lines_per_frame = 0;
  std::int32_t atoms = 0;
  bool has_energy = false;  ///< in the titles of the frames
};

/// Where the values of a frame go.
struct ArchiveFrame {
  double energy = 0;   ///< kcal/mol; left alone in a file without energies
  ArchiveCell cell{};  ///< left alone without periodicity
};

/// The frames of an archive, one behind the other. All have as many lines as the first one. In a file with line ends
/// the place of each frame is known once the frames in front of it have been passed; going back is a seek.
class ArchiveFile {
 public:
  ArchiveFile() = default;
  /// Reads the header and counts the lines and atoms of the first frame.
  /// @param descriptor  of a file that the caller keeps open
  /// @param status      helical, unknown_periodicity, read_error; header_cut or fixed_header_cut
  ArchiveFile(int descriptor, std::int32_t& status);

  const ArchiveHeader& header() const { return header_; }

  /// Reads a frame, counted from 1.
  /// @param positions  3 x atoms, Å, as they lie in models
  /// @param charges    atoms
  /// @param status     end_of_file; read_error for a line that does not say what it has to, a frame of another number
  ///                   of lines or atoms, a cell that spans no space, and, of records, a frame that is cut
  void read(std::int32_t frame, ArchiveFrame& values, std::span<double> positions, std::span<double> charges,
            std::int32_t& status);

  /// True if more than blank lines stands behind the frame that was read last.
  bool goes_on();

 private:
  std::int32_t read_header();
  std::int32_t count_first_frame();
  /// Goes to the first line of a frame.
  std::int32_t go_to_frame(std::int64_t frame);
  std::int32_t pass_frame();
  /// Reads the lines of a frame in front of its atoms.
  std::int32_t read_head(ArchiveFrame& values);
  /// Reads the lines of a frame from its first atom on. @param take  bool(line, atom)
  template <class Take>
  std::int32_t read_body(Take take);
  /// True if more than blank lines stands from a place on.
  bool stands_behind(std::int64_t place);
  /// Reads a line. @param missing  the status if the file has none
  bool next(std::string_view& line, std::int32_t missing, std::int32_t& status);
  /// The status of a line that does not say what it has to. Where the file is cut inside of it, it is a missing one.
  std::int32_t bad_line() const;
  bool is_text() const { return header_.form == ArchiveForm::text; }
  std::int32_t head_lines() const { return header_.periodicity.directions == 0 ? 2 : 3; }

  ArchiveLines lines_;
  ArchiveHeader header_;
  std::int64_t first_frame_ = 0;
  std::int64_t behind_frame_ = 0;     ///< place behind the frame that was read last
  std::vector<std::int64_t> places_;  ///< of the frames that are known, of a file with line ends
};

}  // namespace pathstat
