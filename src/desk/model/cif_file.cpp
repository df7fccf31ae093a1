#include "desk/model/cif_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <gemmi/numb.hpp>
#include <initializer_list>
#include <limits>
#include <numbers>

#include "desk/model/cif_text.h"
#include "desk/model/model_edit.h"
#include "desk/model/stated_symmetry.h"
#include "structure/crystal_orientation.h"
#include "structure/elements.h"

namespace pathstat::desk {
namespace {

constexpr std::uintmax_t most_bytes = 1u << 29;
constexpr double largest_fraction = 1e6, not_known = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t most_name = 16;

/// The values of a tag; empty if the block has none.
const std::vector<std::string>& values_of(const CifBlock& block, const std::string& tag) {
  static const std::vector<std::string> none;
  const auto found = block.columns.find(tag);
  return found == block.columns.end() ? none : found->second;
}

/// The text of the first of several tags that a block has; empty if there is none.
std::string text_of(const CifBlock& block, std::initializer_list<const char*> tags) {
  for (const auto* tag : tags) {
    if (const auto& values = values_of(block, tag); !values.empty()) return values.front();
  }
  return {};
}

/// The number of a value, with or without its uncertainty; no number for any other text.
double number_of(const std::string& text) { return gemmi::cif::as_number(text); }

/// A name as the columns of models hold it: without blanks, quotes and parentheses.
std::string plain_name(std::string name) {
  name.resize(std::min(name.size(), most_name));
  for (auto& c : name) {
    const bool good = std::isgraph(static_cast<unsigned char>(c)) != 0 &&
                      std::string_view("()\"'\\").find(c) == std::string_view::npos;
    if (!good) c = '_';
  }
  return name;
}

/// The element of a type symbol such as "Na1+", or of a label such as "Na12".
std::uint8_t element_of(const std::string& type, const std::string& label) {
  if (type.empty()) return element_of_atom_name(label);
  const auto letters = std::find_if(type.begin(), type.end(), [](unsigned char c) { return std::isalpha(c) == 0; });
  return element_of_symbol(std::string_view(type.data(), static_cast<std::size_t>(letters - type.begin())));
}

/// Reads one data block.
class BlockReader {
 public:
  explicit BlockReader(const CifBlock& block) : block_(block) {}

  bool has_atoms() const {
    return !values_of(block_, "_atom_site_label").empty() || !values_of(block_, "_atom_site_type_symbol").empty() ||
           block_.columns.contains("_atom_site_fract_x");
  }

  /// @return what is wrong, or nothing
  std::string read(MolecularModel& model) {
    model.name = plain_label(block_.name);
    auto problem = cell(model);
    if (problem.empty()) problem = symmetry(model);
    if (problem.empty()) problem = sites(model);
    return problem;
  }

 private:
  static std::string plain_label(const std::string& name) {
    std::string kept = name.substr(0, 80);
    for (auto& c : kept) {
      if (std::isgraph(static_cast<unsigned char>(c)) == 0) c = '_';
    }
    return kept;
  }

  std::string cell(MolecularModel& model) {
    constexpr std::array tags{"_cell_length_a",    "_cell_length_b",   "_cell_length_c",
                              "_cell_angle_alpha", "_cell_angle_beta", "_cell_angle_gamma"};
    std::array<double, 6> values{};
    for (std::size_t k = 0; k < 6; ++k) {
      if (k == 0 && !block_.columns.contains(tags[k])) return {};
      const auto text = text_of(block_, {tags[k]});
      if (text.empty()) return fmt::format("{} is missing", tags[k]);
      values[k] = number_of(text);
      if (!(values[k] > 0 && values[k] < 1e6))
        return fmt::format("{} is no size of a cell: {}", tags[k], plain_name(text));
    }
    constexpr std::int32_t a_on_x_b_in_xy = 4;
    constexpr double degree = std::numbers::pi / 180;
    auto& [a, b, c] = model.cell;
    std::int32_t status = 0;
    kva_cry_3dparamtocell_(values[0], values[1], values[2], values[3] * degree, values[4] * degree, values[5] * degree,
                           a_on_x_b_in_xy, a, b, c, status);
    if (status != 0 || !is_usable_cell(periodic_3d, model.cell)) return "the cell spans no space";
    has_cell_ = true;
    stated_.alpha = values[3], stated_.gamma = values[5];
    return {};
  }

  std::string symmetry(MolecularModel& model) {
    if (!has_cell_) return {};
    for (const auto* tag : {"_space_group_symop_operation_xyz", "_symmetry_equiv_pos_as_xyz"}) {
      if (stated_.triplets.empty()) stated_.triplets = values_of(block_, tag);
    }
    stated_.hall = text_of(block_, {"_space_group_name_hall", "_symmetry_space_group_name_hall"});
    stated_.name = text_of(block_, {"_space_group_name_h-m_alt", "_symmetry_space_group_name_h-m"});
    const auto number = text_of(block_, {"_space_group_it_number", "_symmetry_int_tables_number"});
    if (!number.empty()) {
      const double value = number_of(number);
      stated_.number = value >= 1 && value <= 230 ? static_cast<std::int32_t>(value) : -1;
    }
    auto found = find_symmetry(stated_);
    model.symmetry = std::move(found.operators);
    return found.problem;
  }

  std::string sites(MolecularModel& model) {
    const std::string place = has_cell_ ? "_atom_site_fract_" : "_atom_site_cartn_";
    const Columns columns{
        {&values_of(block_, place + "x"), &values_of(block_, place + "y"), &values_of(block_, place + "z")},
        values_of(block_, "_atom_site_label"),
        values_of(block_, "_atom_site_type_symbol"),
        values_of(block_, "_atom_site_occupancy")};
    const auto count = columns.x[0]->size();
    if (count == 0) return fmt::format("there are no sites with {}x, y and z", place);
    const auto is_whole = [count](const auto& column, bool required) {
      return column.size() == count || (!required && column.empty());
    };
    const bool whole = is_whole(*columns.x[1], true) && is_whole(*columns.x[2], true) &&
                       is_whole(columns.labels, false) && is_whole(columns.types, false) &&
                       is_whole(columns.occupancies, false);
    if (!whole) return "the columns of the sites are not of one length";
    for (std::size_t k = 0; k < count; ++k) {
      if (auto problem = site(model, columns, k); !problem.empty()) {
        return fmt::format("site {} ({}): {}", k + 1, plain_name(word(columns.labels, k)), problem);
      }
    }
    return {};
  }

  struct Columns {
    std::array<const std::vector<std::string>*, 3> x;
    const std::vector<std::string>&labels, &types, &occupancies;
  };
  static std::string word(const std::vector<std::string>& column, std::size_t k) {
    return column.empty() ? std::string{} : column[k];
  }

  std::string site(MolecularModel& model, const Columns& columns, std::size_t k) const {
    const auto label = word(columns.labels, k), type = word(columns.types, k);
    const auto element = element_of(type, label);
    if (element == 0) return fmt::format("\"{}\" is no element", plain_name(type.empty() ? label : type));
    Vector3 position{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const auto& text = (*columns.x[axis])[k];
      const double x = text.empty() ? not_known : number_of(text);
      if (!(std::abs(x) <= largest_fraction))
        return fmt::format("\"{}\" is no coordinate", text.empty() ? "?" : plain_name(text));
      if (has_cell_) {
        for (std::size_t to = 0; to < 3; ++to) position[to] += x * model.cell[axis][to];
      } else {
        position[axis] = x;
      }
    }
    const auto share = word(columns.occupancies, k);
    const double occupancy = share.empty() ? 1 : number_of(share);
    if (!(occupancy >= 0 && occupancy < 1e6)) return fmt::format("\"{}\" is no occupancy", plain_name(share));
    const auto name = label.empty() ? std::string{} : plain_name(label);
    append_atom(model, static_cast<std::int32_t>(model.atoms() + 1),
                {.element = element, .position = position, .name = name, .occupancy = occupancy});
    return {};
  }

  const CifBlock& block_;
  StatedSymmetry stated_;
  bool has_cell_ = false;
};

/// The whole text of a file of sensible size; a problem names the file.
std::string text_of_file(const std::string& path, std::string& problem) {
  std::error_code error;
  const auto size =
      std::filesystem::is_regular_file(path, error) ? std::filesystem::file_size(path, error) : most_bytes + 1;
  std::ifstream file(path, std::ios::binary);
  if (error || !file)
    problem = fmt::format("{} can't be opened", path);
  else if (size > most_bytes)
    problem = fmt::format("{} is no file of a size that can be read", path);
  if (!problem.empty()) return {};
  std::string text(static_cast<std::size_t>(size), '\0');
  file.read(text.data(), static_cast<std::streamsize>(size));
  text.resize(static_cast<std::size_t>(file.gcount()));
  return text;
}

}  // namespace

ImportedModels read_cif_file(const std::string& path) {
  ImportedModels imported;
  const auto text = text_of_file(path, imported.problem);
  if (!imported.problem.empty()) return imported;
  const auto split = split_cif(text, path);
  if (!split.problem.empty()) return {{}, fmt::format("{} is no whole CIF: {}", path, split.problem)};
  for (const auto& block : split.blocks) {
    BlockReader reader(block);
    if (!reader.has_atoms()) continue;
    MolecularModel model;
    if (auto problem = reader.read(model); !problem.empty())
      return {{}, fmt::format("{}, data_{}: {}", path, plain_name(block.name), problem)};
    imported.models.push_back(std::move(model));
  }
  if (imported.models.empty()) imported.problem = fmt::format("{} holds no sites of atoms", path);
  return imported;
}

}  // namespace pathstat::desk
