#include "desk/graphs/graph_kind.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "desk/graphs/axis_text.h"

namespace pathstat::desk {
namespace {

constexpr std::size_t longest_name = 80;

struct GraphKind {
  std::string_view start;  ///< of the title
  std::string_view file, heading, y_text;
  bool of_second = false;  ///< of the second set of a pair, around the first
};
constexpr std::array kinds{
    GraphKind{"MSD/LineFit", "diffusion", "Diffusion", "Mean square displacement (Å²)"},
    GraphKind{"Total MSD", "msd", "Mean square displacement", "Mean square displacement (Å²)"},
    GraphKind{"MSD component", "msd", "Mean square displacement", "Mean product of displacements (Å²)"},
    GraphKind{"Total VAC", "vac", "Velocity autocorrelation", "Velocity autocorrelation (Å²/ps²)"},
    GraphKind{"VAC component", "vac", "Velocity autocorrelation", "Velocity autocorrelation (Å²/ps²)"},
    GraphKind{"Power Spectrum", "power-spectrum", "Power spectrum", "Power (Å⁴/ps²)"},
    GraphKind{"Total RDF", "rdf", "Radial distribution", ""},
    GraphKind{"Components of RDF", "rdf-parts", "Radial distribution within and between molecules", "g(r)"},
    GraphKind{"Running coordination number", "coordination", "Running coordination number", "Neighbours within r",
              true},
    GraphKind{"Total S(k)", "structure-factor", "Structure factor", ""},
    GraphKind{"Components of S(k)", "structure-factor-parts", "Structure factor within and between molecules", "S(k)"},
};

constexpr std::array<std::string_view, 6> axes{"XX", "YY", "ZZ", "XY", "XZ", "YZ"};

/// The axes of a component, which stand as a word of the title; empty for a total.
std::string_view component_of(std::string_view title) {
  for (const auto& pair : axes) {
    const auto at = title.find(pair);
    if (at == std::string_view::npos || title[at - 1] != ' ') continue;
    const auto end = at + pair.size();
    if (end == title.size() || !std::isalpha(static_cast<unsigned char>(title[end]))) return pair;
  }
  return {};
}

/// "O-H" of "O and H", "element-O" of "the 216 selected atoms (element O)"; empty for all atoms.
std::string tag_of(std::string_view atoms) {
  if (atoms == "all atoms") return {};
  if (const auto open = atoms.find('('); open != std::string_view::npos) return file_name_of(atoms.substr(open));
  if (atoms.ends_with("selected atoms")) return "selected";
  std::string tag(atoms);
  if (const auto at = tag.find(" and "); at != std::string::npos) tag.replace(at, 5, "-");
  return file_name_of(tag);
}

/// "H around O" of "O and H".
std::string second_around_first(std::string_view atoms) {
  constexpr std::string_view between = " and ";
  const auto at = atoms.find(between);
  if (at == std::string_view::npos) return std::string(atoms);
  return std::string(atoms.substr(at + between.size())).append(" around ").append(atoms.substr(0, at));
}

}  // namespace

GraphText graph_text(std::string_view title, std::string_view atoms) {
  const auto kind = std::ranges::find_if(kinds, [&](const auto& row) { return title.starts_with(row.start); });
  if (kind == kinds.end()) return {};
  GraphText text{{}, {}, std::string(kind->y_text)};
  if (atoms.empty()) return text;
  text.file = kind->file;
  text.heading = kind->heading;
  text.heading.append(" of ").append(kind->of_second ? second_around_first(atoms) : std::string(atoms));
  const auto component = component_of(title);
  if (!component.empty()) text.heading.append(", ").append(component);
  for (const auto& part : {tag_of(atoms), std::string(component)}) {
    if (!part.empty()) text.file.append("-").append(part);
  }
  return text;
}

std::string curve_label(std::string_view label) {
  if (label == "MSD") return "mean square displacement";
  if (label == "FIT") return "line of least squares";
  return typeset(label);
}

std::string file_name_of(std::string_view title) {
  std::string name;
  for (const unsigned char c : title) {
    if (name.size() >= longest_name) break;
    if (c < 0x80 && std::isalnum(c)) {
      name += static_cast<char>(c);
    } else if (!name.empty() && name.back() != '-') {
      name += '-';
    }
  }
  while (!name.empty() && name.back() == '-') name.pop_back();
  return name.empty() ? "graph" : name;
}

}  // namespace pathstat::desk
