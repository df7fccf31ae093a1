#include "desk/model/model_export.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

#include "desk/model/part_file.h"
#include "structure/elements.h"
#include "structure/model_file.h"

namespace pathstat::desk {
namespace {

/// White space, which ends a word.
bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Words stand without quotes: a parenthesis without its partner would end their array, and any would end a word that
/// stands alone.
bool is_plain(std::string_view word, bool alone) {
  if (alone && word.find_first_of("()'") != std::string_view::npos) return false;
  int depth = 0;
  for (const char c : word) {
    if (c == '(') ++depth;
    if (c == ')' && --depth < 0) return false;
    if (c == '"' || c == '\\' || is_space(c)) return false;
  }
  return depth == 0;
}

std::string label_of(std::string name) {
  std::replace_if(
      name.begin(), name.end(),
      [](char c) { return is_space(c) || std::string_view("()\"'\\").find(c) != std::string_view::npos; }, '_');
  return name;
}

class ModelWriter {
 public:
  /// Where cells of bonds are known, as in a crystal that was built, images do not simply follow from the operators.
  ModelWriter(const MolecularModel& model, QFXio& file)
      : model_(model),
        file_(file),
        with_images_(!model.bond_cells.empty() && !model.image_origins.empty()),
        atoms_(with_images_ ? model.atoms() : model.file_atoms) {}

  /// @return empty, or which column can't be written
  std::string write() {
    good_ = FIL_PushObject(file_, 1, "Model", label_of(model_.name)) == 0;
    integers("PeriodicType", std::vector{model_.periodic_type});
    if (model_.periodic_type != not_periodic || model_.cell != Cell{}) vectors("Cell", model_.cell);
    integers("AtomId", first(model_.ids));
    words("Name", model_.names);
    symbols();
    words("FFType", model_.ff_types);
    doubles("Charge", first(model_.charges));
    doubles("Mass", first(model_.masses));
    doubles("Occupancy", first(model_.occupancies));
    vectors("XYZ", first(model_.positions));
    const auto velocities = model_.vectors.find("Velocity");
    if (velocities != model_.vectors.end()) vectors("Velocity", first(velocities->second));
    integers("Movable", std::vector<std::int32_t>(model_.movable.begin(), model_.movable.begin() + signed_atoms()));
    bonds();
    words("Residue", model_.residues);
    integers("ResidueId", first(model_.residue_ids));
    symmetry();
    images();
    monitors();
    good_ = good_ && FIL_PopObject(file_) == 0;
    return good_ ? problem_ : "the file can't be written";
  }

 private:
  std::ptrdiff_t signed_atoms() const { return static_cast<std::ptrdiff_t>(atoms_); }

  template <class T>
  std::span<const T> first(const std::vector<T>& column) const {
    return std::span<const T>(column).first(atoms_);
  }

  void put(std::string_view name, AttributeType type, const AttributeValues& values) {
    good_ = good_ && FIL_WriteAttr(file_, name, type, values) == 0;
  }

  void integers(std::string_view name, std::span<const std::int32_t> values) { put(name, attribute_int, values); }
  void triples(std::string_view name, std::span<const Translation> values) {
    integers(name, std::span<const std::int32_t>(values.front().data(), 3 * values.size()));
  }
  void doubles(std::string_view name, std::span<const double> values) { put(name, attribute_double, values); }
  void vectors(std::string_view name, std::span<const Vector3> values) {
    put(name, attribute_vector, std::span<const double>(values.front().data(), 3 * values.size()));
  }

  /// A column in which any atom has no word is left out: an array has no place for one.
  void words(std::string_view name, const WordColumn& column) {
    std::vector<std::string> list(atoms_);
    for (std::size_t k = 0; k < atoms_; ++k) list[k] = column[k];
    if (std::any_of(list.begin(), list.end(), [](const std::string& word) { return word.empty(); })) return;
    for (const auto& word : column.words()) {
      if (!is_plain(word, atoms_ == 1))
        problem_ = fmt::format("the word {} of the attribute {} can't be stored", word, name);
    }
    put(name, attribute_text, std::span<const std::string>(list));
  }

  void symbols() {
    std::vector<std::string> list(atoms_);
    for (std::size_t k = 0; k < atoms_; ++k) list[k] = elements()[model_.elements[k]].symbol;
    put("Element", attribute_text, std::span<const std::string>(list));
  }

  void bonds() {
    std::vector<std::int32_t> positions;
    const auto count = with_images_ ? model_.bonds.size() : model_.file_bonds;
    positions.reserve(2 * count);
    for (const auto& [one, other] : std::span(model_.bonds).first(count)) {
      positions.push_back(static_cast<std::int32_t>(one) + 1);
      positions.push_back(static_cast<std::int32_t>(other) + 1);
    }
    if (positions.empty()) return;
    integers("Bond", positions);
    if (!model_.bond_cells.empty()) triples("BondCell", std::span(model_.bond_cells).first(count));
  }

  /// Of each image, all of which stand behind the other atoms: its atom, operator and cell.
  void images() {
    if (!with_images_) return;
    std::vector<std::int32_t> parents, operators;
    std::vector<Translation> cells;
    for (const auto& origin : model_.image_origins) {
      parents.push_back(static_cast<std::int32_t>(origin.parent) + 1);
      operators.push_back(origin.op);
      cells.push_back(origin.shift);
    }
    integers("ImageOf", parents);
    integers("ImageOperator", operators);
    triples("ImageCell", cells);
  }

  void symmetry() {
    const auto& operators = model_.symmetry;
    if (operators.size() == 0) return;
    doubles("Rotation", std::span<const double>(operators.rotations.front().data(), 9 * operators.size()));
    doubles("Translation", std::span<const double>(operators.translations.front().data(), 3 * operators.size()));
  }

  void monitors() {
    std::int32_t id = 1;
    for (const auto& monitor : model_.monitors) {
      good_ = good_ && FIL_PushObject(file_, ++id, "Monitor", "") == 0;
      integers("Type", std::vector{monitor.type});
      std::vector<std::int32_t> positions;
      for (const auto place : monitor.atoms) positions.push_back(static_cast<std::int32_t>(place) + 1);
      integers("Atoms", positions);
      std::vector<std::int32_t> images;
      for (const auto& image : monitor.images) images.insert(images.end(), image.begin(), image.end());
      if (std::ranges::any_of(images, [](std::int32_t step) { return step != 0; })) integers("Images", images);
      if (monitor.type == inversion_monitor) integers("Convention", std::vector{monitor.convention});
      good_ = good_ && FIL_PopObject(file_) == 0;
    }
  }

  const MolecularModel& model_;
  QFXio& file_;
  bool with_images_;
  std::size_t atoms_;
  bool good_ = true;
  std::string problem_;
};

}  // namespace

std::string write_model_file(const MolecularModel& model, const std::string& path) {
  const PartFile whole(path);
  if (auto problem = whole.make(); !problem.empty()) return problem;
  const ModelFile file(FIL_QFXioCreate(whole.part().string()));
  if (!file || FIL_QFXioOpenWrite(*file) != 0) return fmt::format("{} can't be opened for writing", path);
  auto problem = ModelWriter(model, *file).write();
  if (FIL_QFXioClose(*file) != 0 && problem.empty()) problem = "the file can't be written";
  return problem.empty() ? whole.keep() : fmt::format("{}: {}", path, problem);
}

}  // namespace pathstat::desk
