#include "desk/model/model_import.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <map>
#include <string_view>
#include <utility>

#include "desk/model/symmetry.h"
#include "structure/elements.h"
#include "structure/model_file.h"
#include "structure/model_numbers.h"
#include "support/record_file.h"

namespace pathstat::desk {
namespace {

/// An attribute that has been read: where it stands and how many values it has.
struct Seen {
  std::int32_t line = 0;
  std::size_t count = 0;
};

/// A fault of an object: at an attribute, or of the object as a whole.
struct Fault {
  std::int32_t line = 0;
  std::string attribute;
  std::string text;
};

/// An object while it is being read.
template <class Target>
struct Draft {
  Target target;
  std::int32_t line = 0;
  std::map<std::string_view, Seen> seen;
};

struct MonitorParts {
  std::int32_t type = 0;
  std::int32_t convention = 0;
  std::vector<std::int32_t> atoms;
  std::vector<std::int32_t> images;
};

/// What a model's attributes give that does not go into its columns as it stands.
struct ModelParts {
  MolecularModel model;
  std::vector<Vector3> cell;
  std::vector<std::int32_t> movable;
  std::vector<std::int32_t> bonds;
  std::vector<double> rotations;
  std::vector<double> translations;
  std::vector<std::int32_t> bond_cells;
  std::vector<std::int32_t> image_parents, image_operators, image_cells;
  std::vector<Draft<MonitorParts>> monitors;
};

// How a value becomes numbers or words. Each gives what is wrong, or an empty text.

std::string take(std::string_view text, std::vector<std::int32_t>& values) {
  return read_numbers(text, values) ? "" : "is not made of integers";
}

std::string take(std::string_view text, std::vector<double>& values) {
  if (!read_numbers(text, values)) return "is not made of numbers";
  const bool finite = std::all_of(values.begin(), values.end(), [](double x) { return std::isfinite(x); });
  return finite ? "" : "has a value that is not finite";
}

std::string take(std::string_view text, std::vector<Vector3>& vectors) {
  std::vector<double> numbers;
  if (auto problem = take(text, numbers); !problem.empty()) return problem;
  if (numbers.size() % 3 != 0) return "is not made of vectors of three numbers";
  vectors.resize(numbers.size() / 3);
  for (std::size_t k = 0; k < numbers.size(); ++k) vectors[k / 3][k % 3] = numbers[k];
  return {};
}

std::string take(std::string_view text, WordColumn& words) {
  using Word = std::pair<std::string_view, std::size_t>;  // with its hash
  const auto split = [](std::string_view piece) {
    std::vector<Word> found;
    for (const auto word : split_words(piece)) found.emplace_back(word, WordColumn::hash(word));
    return found;
  };
  read_by_pieces(text, split, [&](const std::vector<Word>& found) {
    for (const auto& [word, hash] : found) words.push_back(word, hash);
  });
  return {};
}

std::string take(std::string_view text, std::vector<std::uint8_t>& symbols) {
  std::string problem;
  read_by_pieces(text, split_words, [&](const std::vector<std::string_view>& words) {
    for (const auto word : words) {
      if (!problem.empty()) return;
      const auto element = element_of_symbol(word);
      symbols.push_back(element);
      if (element == 0) problem = fmt::format("has {} for atom {}, which is not an element", word, symbols.size());
    }
  });
  return problem;
}

std::string take(std::string_view text, std::int32_t& value) {
  std::vector<std::int32_t> values;
  if (auto problem = take(text, values); !problem.empty()) return problem;
  if (values.size() != 1) return fmt::format("has {} values instead of one", values.size());
  value = values.front();
  return {};
}

template <class T>
std::size_t count_of(const T& column) {
  if constexpr (std::is_same_v<T, std::int32_t>) {
    return 1;
  } else {
    return column.size();
  }
}

/// One attribute of a class of objects.
template <class Target>
struct AttributeRule {
  std::string_view name;
  AttributeType type;
  bool required;
  bool per_atom;  ///< has one value for each atom of the model
  std::string (*take)(Target& target, std::string_view text, std::size_t& count);
};

template <auto member>
std::string into_model(ModelParts& parts, std::string_view text, std::size_t& count) {
  auto& column = parts.model.*member;
  auto problem = take(text, column);
  count = count_of(column);
  return problem;
}

std::string into_velocities(ModelParts& parts, std::string_view text, std::size_t& count) {
  auto& column = parts.model.vectors["Velocity"];
  auto problem = take(text, column);
  count = column.size();
  return problem;
}

template <auto member, class Target>
std::string into(Target& parts, std::string_view text, std::size_t& count) {
  auto& column = parts.*member;
  auto problem = take(text, column);
  count = count_of(column);
  return problem;
}

template <auto member>
constexpr auto into_parts = into<member, ModelParts>;
template <auto member>
constexpr auto into_monitor = into<member, MonitorParts>;

using Model = MolecularModel;

constexpr std::array<AttributeRule<ModelParts>, 21> model_rules{{
    {"PeriodicType", attribute_int, true, false, into_model<&Model::periodic_type>},
    {"Cell", attribute_vector, false, false, into_parts<&ModelParts::cell>},
    {"AtomId", attribute_int, true, true, into_model<&Model::ids>},
    {"Name", attribute_text, false, true, into_model<&Model::names>},
    {"Element", attribute_text, true, true, into_model<&Model::elements>},
    {"FFType", attribute_text, false, true, into_model<&Model::ff_types>},
    {"Charge", attribute_double, false, true, into_model<&Model::charges>},
    {"Mass", attribute_double, false, true, into_model<&Model::masses>},
    {"Occupancy", attribute_double, false, true, into_model<&Model::occupancies>},
    {"XYZ", attribute_vector, true, true, into_model<&Model::positions>},
    {"Velocity", attribute_vector, false, true, into_velocities},
    {"Movable", attribute_int, false, true, into_parts<&ModelParts::movable>},
    {"Bond", attribute_int, false, false, into_parts<&ModelParts::bonds>},
    {"Residue", attribute_text, false, true, into_model<&Model::residues>},
    {"ResidueId", attribute_int, false, true, into_model<&Model::residue_ids>},
    {"Rotation", attribute_double, false, false, into_parts<&ModelParts::rotations>},
    {"Translation", attribute_double, false, false, into_parts<&ModelParts::translations>},
    {"BondCell", attribute_int, false, false, into_parts<&ModelParts::bond_cells>},
    {"ImageOf", attribute_int, false, false, into_parts<&ModelParts::image_parents>},
    {"ImageOperator", attribute_int, false, false, into_parts<&ModelParts::image_operators>},
    {"ImageCell", attribute_int, false, false, into_parts<&ModelParts::image_cells>},
}};

constexpr std::array<AttributeRule<MonitorParts>, 4> monitor_rules{{
    {"Type", attribute_int, true, false, into_monitor<&MonitorParts::type>},
    {"Atoms", attribute_int, true, false, into_monitor<&MonitorParts::atoms>},
    {"Images", attribute_int, false, false, into_monitor<&MonitorParts::images>},
    {"Convention", attribute_int, false, false, into_monitor<&MonitorParts::convention>},
}};

/// Integers and 32-bit floats may stand for doubles.
bool is_of_type(std::int32_t type, AttributeType scalar) {
  if (type == scalar) return true;
  const auto element = type >= attribute_int_array && type <= attribute_vector_array ? type - 5 : type;
  return element == scalar || (scalar == attribute_double && (element == attribute_float || element == attribute_int));
}

template <class Target, std::size_t N>
bool take_attribute(Draft<Target>& draft, const std::array<AttributeRule<Target>, N>& rules, const ModelItem& item,
                    std::int32_t line, Fault& fault) {
  const auto rule = std::find_if(rules.begin(), rules.end(), [&](const auto& r) { return r.name == item.name; });
  if (rule == rules.end()) return true;
  fault = {line, std::string(rule->name), {}};
  const auto [seen, is_new] = draft.seen.try_emplace(rule->name, Seen{line, 0});
  if (!is_new) {
    fault.text = fmt::format("stands in line {} already", seen->second.line);
  } else if (!is_of_type(item.id_or_type, rule->type)) {
    fault.text = "has values of another type";
  } else {
    fault.text = rule->take(draft.target, item.value, seen->second.count);
  }
  return fault.text.empty();
}

template <class Target, std::size_t N>
bool has_required(const Draft<Target>& draft, const std::array<AttributeRule<Target>, N>& rules, Fault& fault) {
  for (const auto& rule : rules) {
    if (!rule.required || draft.seen.contains(rule.name)) continue;
    fault = {draft.line, std::string(rule.name), "is missing"};
    return false;
  }
  return true;
}

/// Checks a model that has been read to its end and completes it.
class ModelFinisher {
 public:
  explicit ModelFinisher(Draft<ModelParts>& draft)
      : draft_(draft), parts_(draft.target), model_(draft.target.model), atoms_(model_.atoms()) {}

  bool finish(Fault& fault) {
    const bool good = has_required(draft_, model_rules, fault_) && lengths() && periodicity() && identifiers() &&
                      amounts() && bonds() && bond_cells() && symmetry() && images() && monitors() && defaults();
    fault = fault_;
    return good;
  }

 private:
  bool fail(std::string_view attribute, std::string text) {
    const auto seen = draft_.seen.find(attribute);
    return fail_at(seen == draft_.seen.end() ? draft_.line : seen->second.line, attribute, std::move(text));
  }

  bool fail_at(std::int32_t line, std::string_view attribute, std::string text) {
    fault_ = {line, std::string(attribute), std::move(text)};
    return false;
  }

  bool has(std::string_view attribute) const { return draft_.seen.contains(attribute); }

  bool lengths() {
    if (atoms_ == 0) return fail("AtomId", "names no atom");
    for (const auto& rule : model_rules) {
      const auto seen = draft_.seen.find(rule.name);
      if (!rule.per_atom || seen == draft_.seen.end() || seen->second.count == atoms_) continue;
      return fail(rule.name, fmt::format("has {} values, but the model has {} atoms", seen->second.count, atoms_));
    }
    return true;
  }

  bool periodicity() {
    const auto type = model_.periodic_type;
    if (type != not_periodic && periodic_directions(type) == 0) {
      return fail("PeriodicType", fmt::format("is {} instead of 0, 100, 101 or 102", type));
    }
    if (type == not_periodic) return take_cell_to_build_with();
    if (!has("Cell")) return fail("Cell", "is missing from a periodic model");
    if (parts_.cell.size() != 3) return fail("Cell", fmt::format("has {} vectors instead of 3", parts_.cell.size()));
    std::copy(parts_.cell.begin(), parts_.cell.end(), model_.cell.begin());
    return is_usable_cell(type, model_.cell) || fail("Cell", "spans no space");
  }

  /// A model that is not periodic may have a cell, that of the crystal or slab that can be built of it; any other is
  /// passed over.
  bool take_cell_to_build_with() {
    if (parts_.cell.size() != 3) return true;
    Cell cell{};
    std::copy(parts_.cell.begin(), parts_.cell.end(), cell.begin());
    if (is_usable_cell(periodic_3d, cell) || is_usable_cell(periodic_2d, cell)) model_.cell = cell;
    return true;
  }

  bool identifiers() {
    auto sorted = model_.ids;
    if (!std::is_sorted(sorted.begin(), sorted.end())) std::sort(sorted.begin(), sorted.end());
    if (sorted.front() < 0) return fail("AtomId", fmt::format("has the negative identifier {}", sorted.front()));
    const auto repeated = std::adjacent_find(sorted.begin(), sorted.end());
    return repeated == sorted.end() || fail("AtomId", fmt::format("has the identifier {} more than once", *repeated));
  }

  bool amounts() {
    const auto negative = [](double x) { return x < 0; };
    if (std::any_of(model_.masses.begin(), model_.masses.end(), negative)) return fail("Mass", "has a negative value");
    return std::none_of(model_.occupancies.begin(), model_.occupancies.end(), negative) ||
           fail("Occupancy", "has a negative value");
  }

  bool is_position(std::int32_t position) const {
    return position >= 1 && static_cast<std::size_t>(position) <= atoms_;
  }

  std::string out_of_range(std::int32_t position) const {
    return fmt::format("has the position {}, but the model has {} atoms", position, atoms_);
  }

  bool fail_at_itself(std::int32_t position) {
    return fail("Bond", fmt::format("connects the position {} with itself", position));
  }

  bool bonds() {
    const auto& list = parts_.bonds;
    if (list.size() % 2 != 0) return fail("Bond", "has a position without a partner");
    model_.bonds.reserve(list.size() / 2);
    for (std::size_t k = 0; k < list.size(); k += 2) {
      for (const auto position : {list[k], list[k + 1]}) {
        if (!is_position(position)) return fail("Bond", out_of_range(position));
      }
      if (list[k] == list[k + 1] && !has("BondCell")) return fail_at_itself(list[k]);
      model_.bonds.emplace_back(list[k] - 1, list[k + 1] - 1);
    }
    return true;
  }

  /// Three numbers of a list as a translation. @return false if it leads in a direction that does not repeat
  bool take_translation(const std::vector<std::int32_t>& numbers, std::size_t k, Translation& translation) const {
    std::copy_n(numbers.begin() + static_cast<std::ptrdiff_t>(3 * k), 3, translation.begin());
    const auto fixed = static_cast<std::size_t>(3 - periodic_directions(model_.periodic_type));
    return std::all_of(translation.begin(), translation.begin() + static_cast<std::ptrdiff_t>(fixed),
                       [](std::int32_t cells) { return cells == 0; });
  }

  bool bond_cells() {
    const auto& list = parts_.bond_cells;
    if (!has("BondCell")) return true;
    if (list.size() != 3 * model_.bonds.size()) {
      return fail("BondCell", fmt::format("has {} values for {} bonds", list.size(), model_.bonds.size()));
    }
    model_.bond_cells.resize(model_.bonds.size());
    for (std::size_t k = 0; k < model_.bonds.size(); ++k) {
      if (!take_translation(list, k, model_.bond_cells[k]))
        return fail("BondCell", "leads in a direction in which the model does not repeat");
      const auto [one, other] = model_.bonds[k];
      if (one == other && model_.bond_cells[k] == Translation{})
        return fail_at_itself(static_cast<std::int32_t>(one) + 1);
    }
    return true;
  }

  /// Symmetry images that the file has itself, which stand behind the other atoms.
  bool images() {
    const auto &parents = parts_.image_parents, &operators = parts_.image_operators, &cells = parts_.image_cells;
    if (!has("ImageOf")) return true;
    const auto count = parents.size();
    if (count == 0 || count >= atoms_) return fail("ImageOf", "names more images than there can be");
    if (model_.periodic_type != periodic_3d || model_.symmetry.size() < 2)
      return fail("ImageOf", "needs a three-dimensionally periodic model with symmetry");
    if (operators.size() != count)
      return fail("ImageOperator", fmt::format("has {} values for {} images", operators.size(), count));
    if (cells.size() != 3 * count)
      return fail("ImageCell", fmt::format("has {} values for {} images", cells.size(), count));
    model_.file_atoms = atoms_ - count;
    model_.atom_images.resize(model_.file_atoms);
    for (std::size_t k = 0; k < count; ++k) {
      const bool known = parents[k] >= 1 && std::cmp_less_equal(parents[k], model_.file_atoms);
      if (!known) return fail("ImageOf", fmt::format("has the position {}, which is no atom with images", parents[k]));
      if (operators[k] < 1 || std::cmp_greater(operators[k], model_.symmetry.size()))
        return fail("ImageOperator", fmt::format("has the number {}, which no operator has", operators[k]));
      ImageOrigin origin{static_cast<std::uint32_t>(parents[k] - 1), operators[k], {}};
      take_translation(cells, k, origin.shift);
      model_.atom_images[origin.parent].push_back(static_cast<std::uint32_t>(model_.file_atoms + k));
      model_.image_origins.push_back(origin);
    }
    const auto in_file = [&](const auto& bond) { return std::max(bond.first, bond.second) < model_.file_atoms; };
    const auto first_other = std::find_if_not(model_.bonds.begin(), model_.bonds.end(), in_file);
    model_.file_bonds = static_cast<std::size_t>(first_other - model_.bonds.begin());
    return std::none_of(first_other, model_.bonds.end(), in_file) ||
           fail("Bond", "has a bond between atoms behind one of their images");
  }

  bool symmetry() {
    const auto &turns = parts_.rotations, &shifts = parts_.translations;
    if (!has("Rotation") && !has("Translation")) return true;
    const bool may_have = model_.periodic_type == periodic_3d ||
                          (model_.periodic_type == not_periodic && is_usable_cell(periodic_3d, model_.cell));
    if (!may_have) return fail("Rotation", "needs a three-dimensionally periodic model or the cell to build one");
    if (turns.empty() || turns.size() % 9 != 0)
      return fail("Rotation", "is not made of nine numbers for each operator");
    const auto operators = turns.size() / 9;
    if (shifts.size() != 3 * operators) {
      return fail("Translation", fmt::format("has {} values for {} operators", shifts.size(), operators));
    }
    model_.symmetry.rotations.resize(operators);
    model_.symmetry.translations.resize(operators);
    for (std::size_t k = 0; k < turns.size(); ++k) model_.symmetry.rotations[k / 9][k % 9] = turns[k];
    for (std::size_t k = 0; k < shifts.size(); ++k) model_.symmetry.translations[k / 3][k % 3] = shifts[k];
    if (model_.symmetry.rotations.front() != identity_rotation) return fail("Rotation", "does not begin with identity");
    return model_.symmetry.translations.front() == Vector3{} || fail("Translation", "does not begin with identity");
  }

  bool monitors() {
    for (const auto& draft : parts_.monitors) {
      if (!monitor(draft)) return false;
    }
    return true;
  }

  bool monitor(const Draft<MonitorParts>& draft) {
    const auto& parts = draft.target;
    const auto line = [&](std::string_view attribute) {
      const auto seen = draft.seen.find(attribute);
      return seen == draft.seen.end() ? draft.line : seen->second.line;
    };
    const auto wanted = monitor_atoms(parts.type);
    if (wanted == 0) return fail_at(line("Type"), "Type", fmt::format("is {}, which is no monitor", parts.type));
    if (parts.atoms.size() != wanted) {
      return fail_at(line("Atoms"), "Atoms", fmt::format("has {} positions instead of {}", parts.atoms.size(), wanted));
    }
    Monitor monitor{parts.type, parts.convention, {}, {}};
    for (const auto position : parts.atoms) {
      if (!is_position(position)) return fail_at(line("Atoms"), "Atoms", out_of_range(position));
      monitor.atoms.push_back(static_cast<std::uint32_t>(position - 1));
    }
    const auto convention = parts.convention;
    if (parts.type == inversion_monitor && convention != 1 && convention != 2 && convention != 4) {
      return fail_at(line("Convention"), "Convention", fmt::format("is {} instead of 1, 2 or 4", convention));
    }
    if (const auto problem = take_images(parts, monitor); !problem.empty()) {
      return fail_at(line("Images"), "Images", problem);
    }
    model_.monitors.push_back(std::move(monitor));
    return true;
  }

  /// Gives a monitor the cells of its atoms. @return what is wrong with them, or nothing
  std::string take_images(const MonitorParts& parts, Monitor& monitor) const {
    if (parts.images.empty()) return {};
    if (parts.images.size() != 3 * parts.atoms.size()) return "is not made of three numbers for each atom";
    monitor.images.resize(parts.atoms.size());
    for (std::size_t k = 0; k < parts.images.size(); ++k) {
      const bool repeats = std::cmp_greater_equal(k % 3, 3 - periodic_directions(model_.periodic_type));
      if (!repeats && parts.images[k] != 0) return "moves an atom in a direction in which the model does not repeat";
      monitor.images[k / 3][k % 3] = parts.images[k];
    }
    return {};
  }

  bool defaults() {
    if (!has("Name")) {
      for (std::size_t k = 0; k < atoms_; ++k) {
        model_.names.push_back(fmt::format("{}{}", elements()[model_.elements[k]].symbol, model_.ids[k]));
      }
    }
    if (!has("FFType")) model_.ff_types.assign(atoms_, "");
    if (!has("Residue")) model_.residues.assign(atoms_, "");
    if (!has("Charge")) model_.charges.assign(atoms_, 0.0);
    if (!has("Occupancy")) model_.occupancies.assign(atoms_, 1.0);
    if (!has("ResidueId")) model_.residue_ids.assign(atoms_, 0);
    if (!has("Mass")) {
      for (const auto element : model_.elements) model_.masses.push_back(elements()[element].mass);
    }
    model_.movable.assign(atoms_, 1);
    for (std::size_t k = 0; k < parts_.movable.size(); ++k) model_.movable[k] = parts_.movable[k] != 0 ? 1 : 0;
    return true;
  }

  Draft<ModelParts>& draft_;
  ModelParts& parts_;
  MolecularModel& model_;
  std::size_t atoms_;
  Fault fault_;
};

/// Follows the objects of a file and builds the models among them.
class ModelFileReader {
 public:
  explicit ModelFileReader(const std::string& path) : path_(path) {}

  ImportedModels read() {
    // What the reader of the format has to say would go to a Core; here its faults are told with file and line.
    set_model_file_messages([](std::string_view, std::initializer_list<ModelFileMessageArgument>) {});
    const ModelFile file(FIL_QFXioCreate(path_));
    if (!file || FIL_QFXioOpenRead(*file) != 0) return {{}, fmt::format("{} can't be opened", path_)};
    while (true) {
      line_ = file->line + 1;
      const auto item = next_model_item(*file);
      if (item.kind == item_end_of_file) break;
      if (!take(item)) return {{}, told()};
    }
    if (!open_.empty()) {
      fail("the file ends inside an object");
      return {{}, told()};
    }
    if (models_.empty()) return {{}, fmt::format("{} holds no model", path_)};
    return {std::move(models_), {}};
  }

 private:
  enum class Open { model, monitor, other };

  bool take(const ModelItem& item) {
    switch (item.kind) {
      case item_attribute:
        return attribute(item);
      case item_object:
        return begin(item);
      case item_object_end:
        return end();
      case item_reference:
        return true;
      default:
        return fail("this is neither an object nor an attribute");
    }
  }

  bool begin(const ModelItem& item) {
    if (open_.empty() && item.name == "Model") {
      open_.push_back(Open::model);
      model_ = {};
      model_.line = line_;
      model_.target.model.name =
          item.value.empty() ? std::filesystem::path(path_).stem().string() : std::string(item.value);
    } else if (!open_.empty() && open_.back() == Open::model && item.name == "Monitor") {
      open_.push_back(Open::monitor);
      model_.target.monitors.emplace_back().line = line_;
    } else {
      open_.push_back(Open::other);
    }
    return true;
  }

  bool attribute(const ModelItem& item) {
    if (open_.empty()) return true;
    switch (open_.back()) {
      case Open::model:
        return take_attribute(model_, model_rules, item, line_, fault_);
      case Open::monitor:
        return take_attribute(model_.target.monitors.back(), monitor_rules, item, line_, fault_);
      case Open::other:
        break;
    }
    return true;
  }

  bool end() {
    if (open_.empty()) return fail("a parenthesis closes nothing");
    const auto kind = open_.back();
    open_.pop_back();
    if (kind == Open::monitor) return has_required(model_.target.monitors.back(), monitor_rules, fault_);
    if (kind != Open::model) return true;
    if (!ModelFinisher(model_).finish(fault_)) return false;
    models_.push_back(std::move(model_.target.model));
    return true;
  }

  bool fail(std::string text) {
    fault_ = {line_, {}, std::move(text)};
    return false;
  }

  std::string told() const {
    if (fault_.attribute.empty()) return fmt::format("{}, line {}: {}", path_, fault_.line, fault_.text);
    return fmt::format("{}, line {}: the attribute {} {}", path_, fault_.line, fault_.attribute, fault_.text);
  }

  std::string path_;
  std::int32_t line_ = 0;
  std::vector<Open> open_;
  Draft<ModelParts> model_;
  std::vector<MolecularModel> models_;
  Fault fault_;
};

}  // namespace

ImportedModels read_model_file(const std::string& path) {
  if (const auto why = why_unreadable(path); !why.empty()) return {{}, fmt::format("{} {}", path, why)};
  return ModelFileReader(path).read();
}

}  // namespace pathstat::desk
