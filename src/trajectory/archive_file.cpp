#include "trajectory/archive_file.h"

#include <algorithm>
#include <limits>

#include "structure/crystal_coordinates.h"
#include "support/text_field.h"
#include "trajectory/front_end.h"

namespace pathstat {

using namespace trajectory_status;

ArchiveFile::ArchiveFile(int descriptor, std::int32_t& status) : lines_(descriptor) {
  header_.form = lines_.form();
  status = read_header();
  if (status == 0) status = count_first_frame();
}

bool ArchiveFile::next(std::string_view& line, std::int32_t missing, std::int32_t& status) {
  if (!lines_.next(line)) status = lines_.failed() ? read_error : missing;
  return status == 0;
}

std::int32_t ArchiveFile::read_header() {
  const std::int32_t cut = is_text() ? header_cut : fixed_header_cut;
  std::int32_t status = 0;
  std::string_view line;
  if (!next(line, cut, status)) return status;
  header_.title = trimmed(line);
  first_frame_ = lines_.place();
  header_.header_lines = 1;
  if (!next(line, cut, status)) return status;
  switch (read_second_line(line, header_.periodicity)) {
    case ArchiveSecondLine::helix:
      return helical;
    case ArchiveSecondLine::unknown:
      return is_text() && lines_.last_is_open() ? cut : unknown_periodicity;
    case ArchiveSecondLine::periodicity:
      first_frame_ = lines_.place();
      header_.header_lines = 2;
      break;
    case ArchiveSecondLine::frame:
      lines_.go_to(first_frame_);
      break;
  }
  return 0;
}

std::int32_t ArchiveFile::count_first_frame() {
  const std::int32_t cut = is_text() ? header_cut : fixed_header_cut;
  constexpr std::int64_t shortest_atom = 8;  // bytes of a line, and far below those of one that can be read
  std::int32_t status = 0;
  std::string_view line;
  if (!next(line, cut, status)) return status;
  header_.has_energy = has_energy_column(line);
  for (std::int32_t k = 1; k < head_lines(); ++k) {
    if (!next(line, cut, status)) return status;
  }
  std::int64_t lines = head_lines(), atoms = 0;
  for (std::int32_t ends = 0; ends < 2; ++lines) {
    if (!next(line, cut, status)) return status;
    ends = is_end_line(line) ? ends + 1 : 0;
    atoms += ends == 0 ? 1 : 0;
  }
  // The arrays of the atoms are never larger than a small multiple of the file.
  const bool possible = atoms <= (lines_.place() - first_frame_) / shortest_atom;
  if (!possible || lines > std::numeric_limits<std::int32_t>::max()) return read_error;
  header_.lines_per_frame = static_cast<std::int32_t>(lines);
  header_.atoms = static_cast<std::int32_t>(atoms);
  places_.assign(1, first_frame_);
  return 0;
}

template <class Take>
std::int32_t ArchiveFile::read_body(Take take) {
  const std::int32_t cut = is_text() ? end_of_file : read_error;
  std::int32_t status = 0, atom = 0;
  bool ended = false;
  for (std::int32_t left = header_.lines_per_frame - head_lines(); left > 0; --left) {
    std::string_view line;
    if (!next(line, cut, status)) return status;
    const bool end = is_end_line(line);
    if (end && ended) return left == 1 && atom == header_.atoms ? 0 : read_error;
    ended = end;
    if (end) continue;
    if (atom == header_.atoms || !take(line, static_cast<std::size_t>(atom))) return bad_line();
    ++atom;
  }
  return read_error;  // no end where the first frame has its own
}

std::int32_t ArchiveFile::bad_line() const { return is_text() && lines_.last_is_open() ? end_of_file : read_error; }

std::int32_t ArchiveFile::pass_frame() {
  std::int32_t status = 0;
  std::string_view line;
  for (std::int32_t k = 0; k < head_lines(); ++k) {
    if (!next(line, end_of_file, status)) return status;
  }
  return read_body([](std::string_view, std::size_t) { return true; });
}

std::int32_t ArchiveFile::go_to_frame(std::int64_t frame) {
  constexpr auto record = static_cast<std::int64_t>(ArchiveLines::width);
  if (frame < 1) return read_error;
  if (!is_text()) {
    std::int64_t bytes = 0;
    if (__builtin_mul_overflow(record * header_.lines_per_frame, frame - 1, &bytes)) return end_of_file;
    lines_.go_to(first_frame_ + bytes);
    return 0;
  }
  while (static_cast<std::int64_t>(places_.size()) < frame) {
    lines_.go_to(places_.back());
    const std::int32_t status = pass_frame();
    if (status != 0) return status;
    places_.push_back(lines_.place());
  }
  lines_.go_to(places_[static_cast<std::size_t>(frame - 1)]);
  return 0;
}

std::int32_t ArchiveFile::read_head(ArchiveFrame& values) {
  std::int32_t status = 0;
  std::string_view line;
  if (!next(line, end_of_file, status)) return status;
  if (header_.has_energy) values.energy = energy_of_title(line);
  const std::int32_t cut = is_text() ? end_of_file : read_error;
  if (!next(line, cut, status)) return status;  // the date
  if (head_lines() == 2) return 0;
  if (!next(line, cut, status)) return status;
  return read_cell_line(line, header_.periodicity.directions, values.cell) ? 0 : bad_line();
}

void ArchiveFile::read(std::int32_t frame, ArchiveFrame& values, std::span<double> positions, std::span<double> charges,
                       std::int32_t& status) {
  status = go_to_frame(frame);
  if (status == 0) status = read_head(values);
  if (status == 0) {
    status = read_body([&](std::string_view line, std::size_t atom) {
      return read_atom_line(line, &positions[3 * atom], charges[atom]);
    });
  }
  // Blank lines at the end of a file are no frame.
  const bool is_damaged = status == read_error && frame > 0 && is_text();
  if (is_damaged && !stands_behind(places_[std::min(places_.size(), static_cast<std::size_t>(frame)) - 1]))
    status = end_of_file;
  if (status != 0) return;
  behind_frame_ = lines_.place();
  if (is_text() && places_.size() == static_cast<std::size_t>(frame)) places_.push_back(behind_frame_);
  if (header_.periodicity.directions == 0) return;
  Matrix3 alignment{};
  archive_alignment(values.cell, header_.periodicity.type, alignment, status);
  if (status == 0) kva_cry_transformcoordinates_(positions.first(3 * charges.size()), alignment, status);
  if (status != 0) status = read_error;
}

bool ArchiveFile::goes_on() { return stands_behind(behind_frame_); }

bool ArchiveFile::stands_behind(std::int64_t place) {
  lines_.go_to(place);
  std::string_view line;
  while (lines_.next(line)) {
    if (!trimmed(line).empty()) return true;
  }
  return lines_.holds_part();
}

}  // namespace pathstat
