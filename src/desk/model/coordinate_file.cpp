#include "desk/model/coordinate_file.h"

#include <fmt/format.h>

#include <charconv>
#include <filesystem>
#include <string_view>
#include <utility>

#include "desk/model/bond_search.h"
#include "desk/model/model_edit.h"
#include "structure/crystal_coordinates.h"
#include "structure/elements.h"
#include "structure/model_numbers.h"
#include "support/record_file.h"
#include "trajectory/archive_layout.h"
#include "trajectory/archive_lines.h"

namespace pathstat::desk {
namespace {

class CoordinateFileReader {
 public:
  CoordinateFileReader(const std::string& path, int file) : path_(path), lines_(file) {
    model_.name = std::filesystem::path(path).stem().string();
  }

  ImportedModels read() {
    if (!(header() && cell() && atoms() && turn())) {
      return {{}, fmt::format("{}, line {}: {}", path_, line_number_, problem_)};
    }
    find_bonds(model_);
    ImportedModels result;
    result.models.push_back(std::move(model_));
    return result;
  }

 private:
  bool fail(std::string problem) {
    problem_ = std::move(problem);
    return false;
  }

  bool next_line() {
    if (!lines_.next(line_)) return fail("the file ends here, in front of the end of its frame");
    ++line_number_;
    return true;
  }

  /// The title, the line of the periodicity if there is one, the frame's title and its date.
  bool header() {
    if (!next_line() || !next_line()) return false;
    switch (read_second_line(line_, periodicity_)) {
      case ArchiveSecondLine::helix:
        return fail("helical models can't be read");
      case ArchiveSecondLine::unknown:
        return fail(fmt::format("the periodicity \"{}\" is unknown", line_));
      case ArchiveSecondLine::periodicity:
        if (!next_line()) return false;
        break;
      case ArchiveSecondLine::frame:
        break;
    }
    model_.periodic_type = periodicity_.type;
    return next_line();
  }

  bool cell() {
    if (model_.periodic_type == not_periodic) return true;
    if (!next_line()) return false;
    return read_cell_line(line_, periodicity_.directions, parameters_) ||
           fail(fmt::format("the cell needs {} numbers behind the word PBC, but here is \"{}\"",
                            model_.periodic_type == periodic_3d ? 6 : 3, line_));
  }

  bool atoms() {
    for (bool ended = false; next_line();) {
      if (is_end_line(line_)) {
        if (ended) return has_atoms();
        ended = true;
        continue;
      }
      ended = false;
      if (!atom()) return false;
    }
    return false;
  }

  bool has_atoms() { return model_.atoms() > 0 || fail("the frame has no atoms"); }

  bool atom() {
    Vector3 position{};
    double charge = 0;
    const auto fields = split_words(line_);
    // A field of other white space is none to whoever reads words.
    if (!read_atom_line(line_, position.data(), charge) || fields.size() < 9) {
      return fail(fmt::format(
          "an atom has 9 fields, the second to fourth x, y, z and the ninth its charge, but here is \"{}\"", line_));
    }
    auto element = element_of_symbol(fields[7]);
    if (element == 0) element = element_of_atom_name(fields[0]);
    if (element == 0) return fail(fmt::format("neither {} nor {} tells an element", fields[7], fields[0]));

    std::int32_t residue = 0;
    std::from_chars(fields[5].data(), fields[5].data() + fields[5].size(), residue);
    append_atom(model_, static_cast<std::int32_t>(model_.atoms() + 1),
                {.element = element,
                 .position = position,
                 .name = fields[0],
                 .ff_type = fields[6],
                 .residue = fields[4],
                 .residue_id = residue,
                 .charge = charge});
    return true;
  }

  bool turn() {
    Matrix3 alignment{};
    CellVectors vectors;
    std::int32_t status = 0;
    archive_alignment(parameters_, model_.periodic_type, alignment, status);
    if (status == 0) archive_cell_vectors(parameters_, model_.periodic_type, vectors, status);
    model_.cell = {vectors.a, vectors.b, vectors.c};
    if (status != 0 || !is_usable_cell(model_.periodic_type, model_.cell)) return fail("the cell spans no space");
    if (model_.periodic_type == not_periodic) return true;
    kva_cry_transformcoordinates_(std::span(model_.positions.front().data(), 3 * model_.atoms()), alignment, status);
    return true;
  }

  std::string path_;
  ArchiveLines lines_;
  std::string_view line_;
  std::int32_t line_number_ = 0;
  MolecularModel model_;
  ArchivePeriodicity periodicity_;
  ArchiveCell parameters_{};
  std::string problem_;
};

}  // namespace

ImportedModels read_coordinate_file(const std::string& path) {
  const auto file = open_regular(path);
  if (!file.is_open()) return {{}, fmt::format("{} {}", path, why_unreadable(path))};
  return CoordinateFileReader(path, file.get()).read();
}

}  // namespace pathstat::desk
