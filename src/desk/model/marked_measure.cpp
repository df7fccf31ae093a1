#include "desk/model/marked_measure.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

#include "structure/measure_geometry.h"

namespace pathstat::desk {
namespace {

struct Kind {
  std::string_view word;
  MonitorType type;
};

constexpr std::array kinds{Kind{"distance", distance_monitor}, Kind{"angle", angle_monitor},
                           Kind{"torsion", torsion_monitor}, Kind{"plane", plane_monitor},
                           Kind{"inversion", inversion_monitor}};

/// The conventions of inversions, and the order in which their atoms are placed, each with the one that it stands
/// nearest to.
struct Convention {
  std::string_view word;
  std::int32_t number;
  std::array<std::pair<std::size_t, std::size_t>, 3> placed;
};

constexpr std::array conventions{Convention{"ijkl", inversion_ijkl, {{{2, 0}, {1, 2}, {3, 2}}}},
                                 Convention{"jilk", inversion_jilk, {{{1, 0}, {2, 0}, {3, 0}}}},
                                 Convention{"umbrella", inversion_umbrella, {{{1, 0}, {2, 0}, {3, 0}}}}};

template <class Row, std::size_t N>
const Row* row_of(const std::array<Row, N>& rows, std::string_view word) {
  const auto found = std::find_if(rows.begin(), rows.end(), [&](const Row& row) { return row.word == word; });
  return found == rows.end() ? nullptr : &*found;
}

/// An atom as the user names it.
struct NamedAtom {
  std::size_t place = 0;
  std::optional<Translation> image;
  std::string problem;
};

/// Reads "+2a-b" or "+0". @return what is wrong with it, or nothing
std::string read_image(std::string_view text, std::int32_t periodic_type, Translation& image) {
  if (text == "+0") return {};
  constexpr std::int32_t farthest = 1000;
  while (!text.empty()) {
    const std::int32_t sign = text.front() == '-' ? -1 : 1;
    std::int32_t count = 1;
    if (text.front() != '+' && text.front() != '-') return "an image is written as +a-b, +2c or +0";
    text.remove_prefix(1);
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (status == std::errc{}) text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    const auto axis = text.empty() ? std::string_view::npos : std::string_view("abc").find(text.front());
    if (axis == std::string_view::npos || count < 0 || count > farthest)
      return "an image is written as +a-b, +2c or +0";
    if (static_cast<int>(axis) < 3 - periodic_directions(periodic_type))
      return fmt::format("the model does not repeat along {}", text.front());
    image[axis] += sign * count;
    text.remove_prefix(1);
  }
  return {};
}

/// The place of the atom that a name in front of its image means. @return what is wrong, or nothing
std::string find_atom(const MolecularModel& model, std::string_view name, std::int32_t number, std::size_t& place) {
  std::size_t matches = 0;
  for (std::size_t k = 0; k < model.file_atoms; ++k) {
    const bool fits = name.empty()
                          ? model.ids[k] == number
                          : model.residue_ids[k] == number && model.names[k] == name.substr(0, name.size() - 1);
    if (fits && matches++ == 0) place = k;
  }
  const auto told = fmt::format("{}{}", name, number);
  if (matches > 1) return fmt::format("{} names {} atoms; say by its number which one is meant", told, matches);
  if (matches == 1) return {};
  if (name.empty() && std::find(model.ids.begin(), model.ids.end(), number) != model.ids.end())
    return fmt::format("atom {} is a symmetry image; measures are made between the atoms of the file", told);
  return fmt::format("there is no atom {}; an atom is named by its number or as NAME:RESIDUE", told);
}

NamedAtom read_atom(const MolecularModel& model, std::string_view text) {
  NamedAtom atom;
  const auto colon = text.find(':');
  const auto name = text.substr(0, colon == std::string_view::npos ? 0 : colon + 1);
  const auto rest = text.substr(name.size());
  std::int32_t number = 0;
  const auto [end, status] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
  if (status != std::errc{} || name == ":") {
    atom.problem = fmt::format("{} is no atom; an atom is named by its number or as NAME:RESIDUE", text);
    return atom;
  }
  atom.problem = find_atom(model, name, number, atom.place);
  const auto image = rest.substr(static_cast<std::size_t>(end - rest.data()));
  if (!atom.problem.empty() || image.empty()) return atom;
  atom.problem = read_image(image, model.periodic_type, atom.image.emplace());
  if (!atom.problem.empty()) atom.problem = fmt::format("{}: {}", text, atom.problem);
  return atom;
}

/// Puts the atoms without a stated image into the cells in which they are nearest to others.
void place_images(const MolecularModel& model, std::span<const NamedAtom> atoms, const Convention* convention,
                  Monitor& monitor) {
  for (std::size_t k = 0; k < atoms.size(); ++k) monitor.images[k] = atoms[k].image.value_or(Translation{});
  if (!is_usable_cell(model.periodic_type, model.cell) || model.periodic_type == not_periodic) return;
  const Lattice lattice(model.periodic_type, model.cell);
  for (std::size_t k = 1; k < atoms.size(); ++k) {
    const auto [at, near] = convention ? convention->placed[k - 1] : std::pair{k, k - 1};
    if (atoms[at].image) continue;
    const auto from = translated(model.positions[atoms[near].place], model.cell, monitor.images[near]);
    Vector3 between{};
    dvecsub_(model.positions[atoms[at].place], from, between);
    monitor.images[at] = lattice.nearest_image(between);
  }
}

/// True if an atom stands twice in a measure, or in one of its planes.
bool has_repeats(const Monitor& monitor) {
  std::set<std::tuple<std::size_t, std::uint32_t, Translation>> seen;
  for (std::size_t k = 0; k < monitor.atoms.size(); ++k) {
    const std::size_t side = monitor.type == plane_monitor ? k / 3 : 0;
    if (!seen.emplace(side, monitor.atoms[k], monitor.images[k]).second) return true;
  }
  return false;
}

/// "+a-2b"; empty for no move.
std::string image_text(const Translation& image) {
  std::string text;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (image[axis] == 0) continue;
    text += image[axis] < 0 ? '-' : '+';
    if (std::abs(image[axis]) != 1) text += std::to_string(std::abs(image[axis]));
    text += "abc"[axis];
  }
  return text;
}

}  // namespace

std::size_t words_before_atoms(std::span<const std::string> words) {
  const auto* kind = words.empty() ? nullptr : row_of(kinds, words[0]);
  if (!kind) return 0;
  if (kind->type != inversion_monitor) return 1;
  return words.size() > 1 && row_of(conventions, words[1]) ? 2 : 0;
}

bool is_measure(std::span<const std::string> words) {
  const auto before = words_before_atoms(words);
  return before > 0 && words.size() == monitor_atoms(row_of(kinds, words[0])->type) + before;
}

bool names_group(std::string_view word) {
  const auto is_letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  return !word.empty() && is_letter(word.front()) && word.find(':') == std::string_view::npos;
}

bool may_be_measure(std::span<const std::string> words) {
  const auto before = words_before_atoms(words);
  return is_measure(words) ||
         (before > 0 && std::any_of(words.begin() + static_cast<std::ptrdiff_t>(before), words.end(), names_group));
}

MarkedMeasure marked_measure(const MolecularModel& model, std::span<const std::string> words) {
  MarkedMeasure marked;
  auto& monitor = marked.monitor;
  monitor.type = row_of(kinds, words[0])->type;
  const auto* convention = monitor.type == inversion_monitor ? row_of(conventions, words[1]) : nullptr;
  if (convention) monitor.convention = convention->number;
  std::vector<NamedAtom> atoms;
  for (const auto& word : words.last(monitor_atoms(monitor.type))) {
    atoms.push_back(read_atom(model, word));
    monitor.atoms.push_back(static_cast<std::uint32_t>(atoms.back().place));
    if (marked.problem.empty()) marked.problem = atoms.back().problem;
  }
  monitor.images.resize(atoms.size());
  if (!marked.problem.empty()) return marked;
  place_images(model, atoms, convention, monitor);
  if (has_repeats(monitor)) marked.problem = "an atom stands there twice";
  return marked;
}

std::string measure_text(const MolecularModel& model, const Monitor& monitor) {
  const auto kind = std::find_if(kinds.begin(), kinds.end(), [&](const Kind& row) { return row.type == monitor.type; });
  std::string text(kind->word), names;
  for (const auto& convention : conventions) {
    if (monitor.type == inversion_monitor && convention.number == monitor.convention)
      text += fmt::format(" {}", convention.word);
  }
  for (std::size_t k = 0; k < monitor.atoms.size(); ++k) {
    text += fmt::format(" {}{}", model.ids[monitor.atoms[k]], image_text(monitor.image(k)));
    names += fmt::format("{}{}", k == 0 ? "" : " ", model.names[monitor.atoms[k]]);
  }
  const auto value = monitor_value(monitor, monitor_positions(model, monitor));
  return fmt::format("{} ({}): {:.6g} {}", text, names, value, monitor.type == distance_monitor ? "Å" : "degrees");
}

}  // namespace pathstat::desk
