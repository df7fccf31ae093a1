#include "desk/model/coordinate_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>
#include <string_view>
#include <utility>

#include "desk/model/bond_search.h"
#include "desk/model/elements.h"
#include "structure/crystal_coordinates.h"
#include "structure/crystal_orientation.h"
#include "structure/model_numbers.h"

namespace pathstat::desk {
namespace {

constexpr std::size_t record_bytes = 80;
constexpr std::int32_t orientation_of_files_3d = 4, orientation_of_models_3d = 1;
constexpr std::int32_t orientation_of_files_2d = 102, orientation_of_models_2d = 112;

std::string upper(std::string_view text) {
  std::string result(text);
  for (auto& c : result) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return result;
}

bool is_end(std::string_view line) { return upper(line.substr(0, 3)) == "END"; }

bool read_number(std::string_view text, double& value) {
  if (text.starts_with('+')) text.remove_prefix(1);
  const auto* end = text.data() + text.size();
  const auto [at, status] = std::from_chars(text.data(), end, value);
  return status == std::errc{} && at == end && std::isfinite(value);
}

/// The lines of a text, or its records of 80 bytes if there is no line end where the first one has to be.
class Lines {
 public:
  explicit Lines(std::string_view text)
      : rest_(text), has_line_ends_(text.substr(0, record_bytes + 1).find('\n') != std::string_view::npos) {}

  bool next(std::string_view& line) {
    if (rest_.empty()) return false;
    ++number_;
    const auto length =
        has_line_ends_ ? std::min(rest_.find('\n'), rest_.size()) : std::min(record_bytes, rest_.size());
    line = rest_.substr(0, length);
    rest_.remove_prefix(std::min(length + (has_line_ends_ ? 1 : 0), rest_.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    return true;
  }
  std::int32_t number() const { return number_; }

 private:
  std::string_view rest_;
  bool has_line_ends_;
  std::int32_t number_ = 0;
};

class CoordinateFileReader {
 public:
  CoordinateFileReader(const std::string& path, std::string_view text) : path_(path), lines_(text) {
    model_.name = std::filesystem::path(path).stem().string();
  }

  ImportedModels read() {
    if (!(header() && cell() && atoms() && turn())) {
      return {{}, fmt::format("{}, line {}: {}", path_, lines_.number(), problem_)};
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

  bool next_line() { return lines_.next(line_) || fail("the file ends here, in front of the end of its frame"); }

  /// The title, the line of the periodicity if there is one, the frame's title and its date.
  bool header() {
    if (!next_line() || !next_line()) return false;
    const auto second = upper(line_);
    if (second.starts_with("HELIX")) return fail("helical models can't be read");
    if (second.starts_with("PBC")) {
      const auto word = std::string_view(second).substr(std::min<std::size_t>(4, second.size()));
      if (word.starts_with('3') || word.starts_with("ON")) {
        model_.periodic_type = periodic_3d;
      } else if (word.starts_with('2')) {
        model_.periodic_type = periodic_2d;
      } else if (!word.starts_with("OFF")) {
        return fail(fmt::format("the periodicity {} is unknown", word));
      }
      if (!next_line()) return false;
    }
    return next_line();
  }

  bool cell() {
    if (model_.periodic_type == not_periodic) return true;
    if (!next_line()) return false;
    const auto fields = split_words(line_);
    const std::size_t numbers = model_.periodic_type == periodic_3d ? 6 : 3;
    if (fields.size() <= numbers) return fail(fmt::format("the cell needs {} numbers behind the word PBC", numbers));
    for (std::size_t k = 0; k < numbers; ++k) {
      if (!read_number(fields[k + 1], parameters_[k]))
        return fail(fmt::format("the cell has {} as a number", fields[k + 1]));
    }
    return true;
  }

  bool atoms() {
    for (bool ended = false; next_line();) {
      if (is_end(line_)) {
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
    const auto fields = split_words(line_);
    if (fields.size() < 9) return fail(fmt::format("an atom has 9 fields, but here are {}", fields.size()));
    Vector3 position{};
    double charge = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      if (!read_number(fields[k + 1], position[k]))
        return fail(fmt::format("the coordinate {} is no number", fields[k + 1]));
    }
    if (!read_number(fields[8], charge)) return fail(fmt::format("the charge {} is no number", fields[8]));
    auto element = element_of_symbol(fields[7]);
    if (element == 0) element = element_of_atom_name(fields[0]);
    if (element == 0) return fail(fmt::format("neither {} nor {} tells an element", fields[7], fields[0]));

    std::int32_t residue = 0;
    std::from_chars(fields[5].data(), fields[5].data() + fields[5].size(), residue);
    model_.ids.push_back(static_cast<std::int32_t>(model_.atoms() + 1));
    model_.elements.push_back(element);
    model_.names.push_back(fields[0]);
    model_.residues.push_back(fields[4]);
    model_.residue_ids.push_back(residue);
    model_.ff_types.push_back(fields[6]);
    model_.charges.push_back(charge);
    model_.masses.push_back(elements()[element].mass);
    model_.occupancies.push_back(1);
    model_.movable.push_back(1);
    model_.positions.push_back(position);
    return true;
  }

  bool turn() {
    Matrix3 alignment{};
    std::int32_t status = 0;
    if (model_.periodic_type == periodic_3d) status = turn_3d(alignment);
    if (model_.periodic_type == periodic_2d) status = turn_2d(alignment);
    if (status != 0 || !is_usable_cell(model_.periodic_type, model_.cell)) return fail("the cell spans no space");
    if (model_.periodic_type == not_periodic) return true;
    kva_cry_transformcoordinates_(std::span(model_.positions.front().data(), 3 * model_.atoms()), alignment, status);
    return true;
  }

  double angle(std::size_t k) const { return parameters_[k] * std::numbers::pi / 180; }

  std::int32_t turn_3d(Matrix3& alignment) {
    const auto& p = parameters_;
    auto& [a, b, c] = model_.cell;
    std::int32_t status = 0;
    kva_cry_3dparamtocell_(p[0], p[1], p[2], angle(3), angle(4), angle(5), orientation_of_files_3d, a, b, c, status);
    if (status == 0) kva_cry_3dalignmentmatrix_(a, b, c, orientation_of_models_3d, alignment, status);
    if (status != 0) return status;
    kva_cry_3dparamtocell_(p[0], p[1], p[2], angle(3), angle(4), angle(5), orientation_of_models_3d, a, b, c, status);
    return status;
  }

  /// The first vector of the file becomes the model's c, the second its b, as in the cells of trajectories.
  std::int32_t turn_2d(Matrix3& alignment) {
    const auto& p = parameters_;
    auto& [a, b, c] = model_.cell;
    std::int32_t status = 0;
    a = {1, 0, 0};
    kva_cry_2dparamtocell_(p[0], p[1], angle(2), orientation_of_files_2d, c, b, status);
    if (status == 0) kva_cry_2dalignmentmatrix_(b, c, orientation_of_models_2d, alignment, status);
    if (status == 0) kva_cry_2dparamtocell_(p[1], p[0], angle(2), orientation_of_models_2d, b, c, status);
    return status;
  }

  std::string path_;
  Lines lines_;
  std::string_view line_;
  MolecularModel model_;
  std::array<double, 6> parameters_{};
  std::string problem_;
};

}  // namespace

ImportedModels read_coordinate_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(file)), {});
  if (!file) return {{}, fmt::format("{} can't be opened", path)};
  return CoordinateFileReader(path, text).read();
}

}  // namespace pathstat::desk
