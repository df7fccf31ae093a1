#include "desk/export/text_formats.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

#include "desk/export/frame_source.h"
#include "desk/model/stated_symmetry.h"
#include "desk/model/symmetry.h"
#include "structure/elements.h"

namespace pathstat::desk {
namespace {

template <class... Values>
void add(std::string& text, fmt::format_string<Values...> form, Values&&... values) {
  fmt::format_to(std::back_inserter(text), form, std::forward<Values>(values)...);
}

/// A text without what would break columns and lines: letters of ASCII alone, blanks where they may stand.
std::string plain(std::string_view text, std::size_t most, bool with_blanks = false) {
  std::string kept(text.substr(0, most));
  for (auto& c : kept) {
    if (c < ' ' || c > '~' || (c == ' ' && !with_blanks)) c = '_';
  }
  return kept;
}

std::string_view symbol(const MolecularModel& model, std::size_t k) { return elements()[model.elements[k]].symbol; }

std::string atom_name(const MolecularModel& model, std::size_t k, std::size_t width) {
  const auto name = model.names[k];
  return plain(name.empty() ? symbol(model, k) : name, width);
}

std::string residue_name(const MolecularModel& model, std::size_t k, std::size_t width) {
  return model.residues[k].empty() ? "UNK" : plain(model.residues[k], width);
}

/// A number in columns that it may be too long for: its last digits.
std::int64_t wrapped(std::int64_t number, std::int64_t limit) {
  return number < 0 ? number % (limit / 10) : number % limit;
}

std::string title(const ExportedFrame& frame) {
  auto text = plain(frame.model.name, 60, true);
  if (frame.time) text += fmt::format(" t= {:.5f}", *frame.time);
  return text;
}

/// True if a number fits eight columns with so many decimals.
bool fits_eight(double x, int decimals) {
  const double half = 0.5 * std::pow(10.0, -decimals), above = std::pow(10.0, 7 - decimals);
  return x < above - half && x > -above / 10 + half;
}

/// Why positions do not fit eight columns with three decimals; empty if they do.
std::string why_too_far(const MolecularModel& model, const std::vector<Vector3>& positions, double unit,
                        std::string_view unit_name, std::string_view format) {
  for (std::size_t k = 0; k < positions.size(); ++k) {
    for (const double x : positions[k]) {
      if (fits_eight(x * unit, 3)) continue;
      return fmt::format("atom {} stands at {:g} {}, which the columns of {} can't hold", model.ids[k], x * unit,
                         unit_name, format);
    }
  }
  return {};
}

std::vector<Vector3> turned(const StandardOrientation& orientation, const std::vector<Vector3>& vectors) {
  std::vector<Vector3> result;
  result.reserve(vectors.size());
  for (const auto& vector : vectors) result.push_back(orientation.turned(vector));
  return result;
}

/// Four columns of a name: the symbol of an element stands right in the first two.
std::string pdb_name(const MolecularModel& model, std::size_t k) {
  const auto name = atom_name(model, k, 4);
  const auto element = symbol(model, k);
  const auto same = [](char a, char b) { return (a | 0x20) == (b | 0x20); };
  const bool two_letters =
      element.size() == 2 && name.size() >= 2 && std::equal(element.begin(), element.end(), name.begin(), same);
  return name.size() == 4 || two_letters ? fmt::format("{:<4}", name) : fmt::format(" {:<3}", name);
}

/// The symbol in columns for elements; blank for what is none.
std::string pdb_element(const MolecularModel& model, std::size_t k) {
  std::string text(symbol(model, k));
  if (text == "X") text.clear();
  for (auto& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

constexpr std::int64_t pdb_serials = most_pdb_serials + 1, pdb_residues = 10000, gro_numbers = 100000;

/// The vectors of a cell in the form that the format asks for: those that lean too far are replaced by others of the
/// same lattice.
Cell reduced(Cell cell) {
  const auto lean_back = [&](std::size_t k, std::size_t against) {
    const double times = std::round(cell[k][against] / cell[against][against]);
    for (std::size_t axis = 0; axis < 3; ++axis) cell[k][axis] -= times * cell[against][axis];
  };
  lean_back(2, 1);
  lean_back(2, 0);
  lean_back(1, 0);
  return cell;
}

void add_gro_box(const StandardOrientation& orientation, std::string& text) {
  if (!orientation.has_cell) {
    text += "   0.00000   0.00000   0.00000\n";
    return;
  }
  const auto cell = reduced(orientation.cell);
  const auto& [a, b, c] = cell;
  add(text, "{:10.5f}{:10.5f}{:10.5f}", a[0] / 10, b[1] / 10, c[2] / 10);
  if (b[0] != 0 || c[0] != 0 || c[1] != 0) {
    for (const double x : {a[1], a[2], b[0], b[2], c[0], c[1]}) add(text, "{:10.5f}", x / 10);
  }
  text += '\n';
}

}  // namespace

std::string add_pdb(const ExportedFrame& frame, std::string& text) {
  const auto& model = frame.model;
  const StandardOrientation orientation(model);
  const auto positions = turned(orientation, model.positions);
  if (auto problem = why_too_far(model, positions, 1, "Å", "PDB"); !problem.empty()) return problem;
  if (orientation.has_cell) {
    const auto [a, b, c, alpha, beta, gamma] = cell_parameters(orientation.cell);
    if (std::max({a, b, c}) >= 99999.9995) return "the cell is too large for the columns of PDB";
    add(text, "TITLE     {}\nCRYST1{:9.3f}{:9.3f}{:9.3f}{:7.2f}{:7.2f}{:7.2f} P 1           1\n", title(frame), a, b, c,
        alpha, beta, gamma);
  } else {
    add(text, "TITLE     {}\n", title(frame));
  }
  if (frame.of_several) add(text, "MODEL     {:4}\n", wrapped(frame.number, pdb_residues));
  for (std::size_t k = 0; k < model.atoms(); ++k) {
    const auto& [x, y, z] = positions[k];
    add(text, "ATOM  {:5} {} {:<4} {:4}    {:8.3f}{:8.3f}{:8.3f}{:6.2f}{:6.2f}          {:>2}  \n",
        wrapped(static_cast<std::int64_t>(k) + 1, pdb_serials), pdb_name(model, k), residue_name(model, k, 4),
        wrapped(model.residue_ids[k], pdb_residues), x, y, z, std::clamp(model.occupancies[k], 0.0, 1.0), 0.0,
        pdb_element(model, k));
  }
  if (frame.of_several) text += "ENDMDL\n";
  return {};
}

void end_pdb(const ExportedFrame& frame, std::string& text) {
  const auto& model = frame.model;
  constexpr std::size_t most_in_record = 4;
  if (model.atoms() <= most_pdb_serials) {
    std::vector<std::vector<std::uint32_t>> partners(model.atoms());
    for (const auto& [a, b] : model.bonds) {
      partners[a].push_back(b);
      partners[b].push_back(a);
    }
    for (std::size_t k = 0; k < partners.size(); ++k) {
      for (std::size_t first = 0; first < partners[k].size(); ++first) {
        if (first % most_in_record == 0) add(text, "{}CONECT{:5}", first == 0 ? "" : "\n", k + 1);
        add(text, "{:5}", partners[k][first] + 1);
      }
      if (!partners[k].empty()) text += '\n';
    }
  }
  text += "END\n";
}

/// What is 0 but for rounding is written as 0, so that -0 and 1e-16 do not make one structure two.
Vector3 without_dust(Vector3 vector) {
  constexpr double dust = 5e-9;  // of the last place that is written, a half
  for (auto& x : vector) x = std::abs(x) < dust ? 0.0 : x;
  return vector;
}

std::string add_xyz(const ExportedFrame& frame, std::string& text) {
  const auto& model = frame.model;
  add(text, "{}\n", model.atoms());
  if (model.periodic_type == periodic_3d) {
    const auto a = without_dust(model.cell[0]), b = without_dust(model.cell[1]), c = without_dust(model.cell[2]);
    add(text, "Lattice=\"{} {} {} {} {} {} {} {} {}\" ", a[0], a[1], a[2], b[0], b[1], b[2], c[0], c[1], c[2]);
  }
  text += "Properties=species:S:1:pos:R:3";
  if (frame.time) add(text, " Time={}", *frame.time);
  text += '\n';
  for (std::size_t k = 0; k < model.atoms(); ++k) {
    const auto [x, y, z] = without_dust(model.positions[k]);
    if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(z))
      return fmt::format("atom {} stands nowhere: a coordinate is no number", model.ids[k]);
    add(text, "{:<3} {:15.8f} {:15.8f} {:15.8f}\n", symbol(model, k), x, y, z);
  }
  return {};
}

std::string add_gro(const ExportedFrame& frame, std::string& text) {
  const auto& model = frame.model;
  const StandardOrientation orientation(model);
  const auto positions = turned(orientation, model.positions);
  if (auto problem = why_too_far(model, positions, 0.1, "nm", "GRO"); !problem.empty()) return problem;
  const auto found = model.vectors.find(velocity_name);
  const auto velocities = found == model.vectors.end() ? std::vector<Vector3>{} : turned(orientation, found->second);
  add(text, "{}\n{:5}\n", title(frame), model.atoms());
  for (std::size_t k = 0; k < model.atoms(); ++k) {
    const auto& [x, y, z] = positions[k];
    add(text, "{:5}{:<5}{:>5}{:5}{:8.3f}{:8.3f}{:8.3f}", wrapped(model.residue_ids[k], gro_numbers),
        residue_name(model, k, 5), atom_name(model, k, 5), wrapped(static_cast<std::int64_t>(k) + 1, gro_numbers),
        x / 10, y / 10, z / 10);
    for (std::size_t axis = 0; axis < 3 && !velocities.empty(); ++axis) {
      const double v = velocities[k][axis] / 10;
      if (!fits_eight(v, 4))
        return fmt::format("atom {} has a velocity that the columns of GRO can't hold", model.ids[k]);
      add(text, "{:8.4f}", v);
    }
    text += '\n';
  }
  add_gro_box(orientation, text);
  return {};
}

namespace {

/// The operators of a model in the cell of its standard orientation, which turns a left-handed cell round.
SymmetryOperators stated_operators(const MolecularModel& model) {
  auto operators = model.symmetry;
  const auto& [a, b, c] = model.cell;
  if (dvectrip_(a, b, c) > 0) return operators;
  for (auto& translation : operators.translations) dvecscale_(translation, -1.0, translation);
  return operators;
}

void add_cif_symmetry(const SymmetryOperators& operators, std::string& text) {
  const auto stated = stated_symmetry(operators);
  if (stated.number > 0) {
    add(text, "_symmetry_space_group_name_H-M '{}'\n_symmetry_space_group_name_Hall '{}'\n", stated.name, stated.hall);
    add(text, "_symmetry_Int_Tables_number {}\n", stated.number);
  }
  text += "loop_\n_symmetry_equiv_pos_as_xyz\n";
  for (const auto& triplet : stated.triplets) add(text, "'{}'\n", triplet);
}

}  // namespace

std::string add_cif(const ExportedFrame& frame, std::string& text) {
  const auto& model = frame.model;
  const bool as_unit = frame.as_unit && model.symmetry.size() > 0 && is_usable_cell(periodic_3d, model.cell);
  const auto orientation = as_unit ? StandardOrientation(model.cell) : StandardOrientation(model);
  auto name = plain(model.name.empty() ? "model" : model.name, 60);
  add(text, "data_{}\n", name);
  const bool crystal = orientation.has_cell;
  if (crystal) {
    const auto [a, b, c, alpha, beta, gamma] = cell_parameters(orientation.cell);
    add(text, "_cell_length_a {:.6f}\n_cell_length_b {:.6f}\n_cell_length_c {:.6f}\n", a, b, c);
    add(text, "_cell_angle_alpha {:.6f}\n_cell_angle_beta {:.6f}\n_cell_angle_gamma {:.6f}\n", alpha, beta, gamma);
    add_cif_symmetry(as_unit ? stated_operators(model) : SymmetryOperators{{identity_rotation}, {Vector3{}}}, text);
  }
  text += "loop_\n_atom_site_label\n_atom_site_type_symbol\n";
  for (const char axis : {'x', 'y', 'z'}) add(text, "_atom_site_{}_{}\n", crystal ? "fract" : "Cartn", axis);
  text += "_atom_site_occupancy\n";
  const Lattice lattice(crystal ? periodic_3d : not_periodic, orientation.cell);
  const auto atoms = as_unit ? model.file_atoms : model.atoms();
  for (std::size_t k = 0; k < atoms; ++k) {
    const auto [x, y, z] = lattice.fractional(orientation.turned(model.positions[k]));
    add(text, "{0}{1} {0} {2:.8f} {3:.8f} {4:.8f} {5:g}\n", symbol(model, k), k + 1, x, y, z, model.occupancies[k]);
  }
  return {};
}

std::string add_car(const ExportedFrame& frame, std::string& text) {
  const auto& model = frame.model;
  const StandardOrientation orientation(model);
  if (model.periodic_type != not_periodic && !orientation.has_cell)
    return "a coordinate file holds models that repeat in three directions or in none";
  const auto positions = turned(orientation, model.positions);
  add(text, "!coordinates of {}\nPBC={}\n{}\n!DATE\n", plain(model.name, 60), orientation.has_cell ? "ON" : "OFF",
      plain(model.name, 60));
  if (orientation.has_cell) {
    text += "PBC";
    for (const double number : cell_parameters(orientation.cell)) add(text, "{:12.6f}", number);
    text += '\n';
  }
  for (std::size_t k = 0; k < model.atoms(); ++k) {
    const auto& [x, y, z] = positions[k];
    if (!std::ranges::all_of(positions[k], [](double each) { return std::abs(each) < 1e6; }))
      return fmt::format("atom {} stands too far away for a coordinate file", model.ids[k]);
    const bool near = std::ranges::all_of(positions[k], [](double each) { return -999 < each && each < 9999; });
    const int digits = near ? 9 : 6;  // a blank stays in front of each number
    if (k > 0 && model.residue_ids[k] != model.residue_ids[k - 1]) text += "end\n";
    add(text, "{:<5}{:15.{}f}{:15.{}f}{:15.{}f} {:<4} {:<7}{:<7}{:<2} {:6.3f}\n", atom_name(model, k, 5), x, digits, y,
        digits, z, digits, residue_name(model, k, 4), model.residue_ids[k],
        model.ff_types[k].empty() ? "?" : plain(model.ff_types[k], 6), symbol(model, k), model.charges[k]);
  }
  text += "end\nend\n";
  return {};
}

}  // namespace pathstat::desk
