#include "desk/report/model_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

#include "desk/messages/visible_text.h"
#include "structure/elements.h"

namespace pathstat::desk {
namespace {

constexpr std::size_t most_atoms = 10;

/// "2 H, 1 O", by symbol.
std::string composition(const MolecularModel& model) {
  std::map<std::string_view, std::size_t> counts;
  for (const auto element : model.elements) ++counts[elements()[element].symbol];
  std::string text;
  for (const auto& [symbol, count] : counts) text += fmt::format("{}{} {}", text.empty() ? "" : ", ", count, symbol);
  return text;
}

std::string periodicity(std::int32_t type) {
  const auto directions = periodic_directions(type);
  return directions == 0 ? std::string("not periodic") : fmt::format("periodic in {} dimensions", directions);
}

double sum(const std::vector<double>& values) { return std::accumulate(values.begin(), values.end(), 0.0); }

}  // namespace

std::vector<Fact> model_facts(const MolecularModel& model) {
  std::vector<Fact> facts{{"atoms", fmt::format("{} ({})", model.atoms(), composition(model))},
                          {"periodicity", periodicity(model.periodic_type)}};
  // A model that repeats in two or one dimensions does so along the last vectors.
  for (int axis = 3 - periodic_directions(model.periodic_type); axis < 3; ++axis) {
    const auto& vector = model.cell[static_cast<std::size_t>(axis)];
    facts.push_back({fmt::format("cell vector {}", "abc"[axis]),
                     fmt::format("{:10.5f} {:10.5f} {:10.5f} Å", vector[0], vector[1], vector[2])});
  }
  const double charge = sum(model.charges);
  facts.push_back({"mass", fmt::format("{:.6g} u", sum(model.masses))});
  facts.push_back({"charge", fmt::format("{:.4g}", std::abs(charge) < 1e-9 ? 0.0 : charge)});
  facts.push_back({"bonds", fmt::format("{}", model.bonds.size())});
  facts.push_back({"kinds of residues", fmt::format("{}", model.residues.words().size())});
  facts.push_back({"monitors", fmt::format("{}", model.monitors.size())});
  return facts;
}

std::string facts_text(const std::vector<Fact>& facts) {
  std::string text;
  for (const auto& [name, value] : facts) text += fmt::format("{}  {:<20}{}", text.empty() ? "" : "\n", name, value);
  return text;
}

Vector3 centre_of_mass(const MolecularModel& model) {
  const bool weighted = sum(model.masses) > 0;
  Vector3 centre{};
  double mass = 0;
  for (std::size_t k = 0; k < model.atoms(); ++k) {
    const double weight = weighted ? model.masses[k] : 1.0;
    mass += weight;
    for (std::size_t axis = 0; axis < 3; ++axis) centre[axis] += weight * model.positions[k][axis];
  }
  for (auto& part : centre) part /= std::max(mass, 1e-300);
  return centre;
}

std::string atoms_text(const MolecularModel& model) {
  const auto count = std::min(model.atoms(), most_atoms);
  std::string text = fmt::format("  {:>7}  {:<8} {:<7} {:<8}{:>11}{:>11}{:>11}", "number", "name", "element", "type",
                                 "x (Å)", "y (Å)", "z (Å)");
  for (std::size_t k = 0; k < count; ++k) {
    const auto& at = model.positions[k];
    text += fmt::format("\n  {:>7}  {:<8} {:<7} {:<8}{:11.5f}{:11.5f}{:11.5f}", model.ids[k], visible(model.names[k]),
                        elements()[model.elements[k]].symbol, visible(model.ff_types[k]), at[0], at[1], at[2]);
  }
  if (model.atoms() > count) text += fmt::format("\n  {:>7}  and {} more", "...", model.atoms() - count);
  return text;
}

}  // namespace pathstat::desk
