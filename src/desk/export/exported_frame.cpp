#include "desk/export/exported_frame.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "desk/export/frame_source.h"

namespace pathstat::desk {
namespace {

constexpr std::uint32_t absent = std::numeric_limits<std::uint32_t>::max();
constexpr double degrees = 180 / std::numbers::pi;

template <class Column>
Column chosen(const Column& column, std::span<const std::uint32_t> atoms) {
  Column part;
  part.reserve(atoms.size());
  for (const auto place : atoms) part.push_back(column[place]);
  return part;
}

double cosine(const Vector3& a, const Vector3& b) {
  return std::clamp(dvecdot_(a, b) / (dveclen_(a) * dveclen_(b)), -1.0, 1.0);
}

double angle(const Vector3& a, const Vector3& b) { return std::acos(cosine(a, b)) * degrees; }

/// The cell of the same lengths and angles with a on x and b in the xy plane.
Cell standard(const Cell& cell) {
  const auto& [a, b, c] = cell;
  const double la = dveclen_(a), lb = dveclen_(b), lc = dveclen_(c);
  const double cos_alpha = cosine(b, c), cos_beta = cosine(a, c), cos_gamma = cosine(a, b);
  const double sin_gamma = std::sqrt(1 - cos_gamma * cos_gamma);
  const double cx = lc * cos_beta, cy = lc * (cos_alpha - cos_beta * cos_gamma) / sin_gamma;
  return {{{la, 0, 0}, {lb * cos_gamma, lb * sin_gamma, 0}, {cx, cy, std::sqrt(lc * lc - cx * cx - cy * cy)}}};
}

Matrix3 columns(const Cell& cell) {
  Matrix3 m{};
  for (std::size_t k = 0; k < 9; ++k) m[k] = cell[k / 3][k % 3];
  return m;
}

}  // namespace

MolecularModel part_of(const MolecularModel& model, std::span<const std::uint32_t> atoms) {
  MolecularModel part;
  part.name = model.name;
  part.periodic_type = model.periodic_type;
  part.symmetry = model.symmetry;
  part.ids = chosen(model.ids, atoms);
  part.elements = chosen(model.elements, atoms);
  part.names = chosen(model.names, atoms);
  part.ff_types = chosen(model.ff_types, atoms);
  part.residues = chosen(model.residues, atoms);
  part.residue_ids = chosen(model.residue_ids, atoms);
  part.charges = chosen(model.charges, atoms);
  part.masses = chosen(model.masses, atoms);
  part.occupancies = chosen(model.occupancies, atoms);
  part.movable = chosen(model.movable, atoms);
  part.positions.resize(atoms.size());
  refresh_part(model, atoms, part);

  std::vector<std::uint32_t> place_in_part(model.atoms(), absent);
  for (std::uint32_t k = 0; k < atoms.size(); ++k) place_in_part[atoms[k]] = k;
  for (const auto& [a, b] : model.bonds) {
    if (place_in_part[a] != absent && place_in_part[b] != absent)
      part.bonds.emplace_back(place_in_part[a], place_in_part[b]);
  }
  for (auto monitor : model.monitors) {
    for (auto& atom : monitor.atoms) atom = place_in_part[atom];
    if (std::find(monitor.atoms.begin(), monitor.atoms.end(), absent) == monitor.atoms.end())
      part.monitors.push_back(std::move(monitor));
  }
  part.file_atoms = part.atoms();
  part.file_bonds = part.bonds.size();
  return part;
}

void refresh_part(const MolecularModel& model, std::span<const std::uint32_t> atoms, MolecularModel& part) {
  part.cell = model.cell;
  for (std::size_t k = 0; k < atoms.size(); ++k) part.positions[k] = model.positions[atoms[k]];
  const auto velocities = model.vectors.find(velocity_name);
  if (velocities == model.vectors.end())
    part.vectors.erase(velocity_name);
  else
    part.vectors[velocity_name] = chosen(velocities->second, atoms);
}

StandardOrientation::StandardOrientation(const MolecularModel& model) {
  if (model.periodic_type != periodic_3d || !is_usable_cell(periodic_3d, model.cell)) return;
  *this = StandardOrientation(model.cell);
}

StandardOrientation::StandardOrientation(const Cell& usable_cell) : has_cell(true), cell(usable_cell) {
  if (dvectrip_(cell[0], cell[1], cell[2]) < 0) {
    for (auto& vector : cell) dvecscale_(vector, -1.0, vector);
  }
  const auto& [a, b, c] = cell;
  const bool stands = a[1] == 0 && a[2] == 0 && b[2] == 0 && a[0] > 0 && b[1] > 0;
  if (stands) return;
  Matrix3 inverse{};
  std::int32_t status = 0;
  dmatinv_(columns(cell), inverse, status);
  cell = standard(cell);
  dmatmat_(columns(cell), inverse, turn);
}

Vector3 StandardOrientation::turned(const Vector3& vector) const {
  Vector3 result{};
  dmatvecmul_(turn, vector, result);
  return result;
}

std::array<double, 6> cell_parameters(const Cell& cell) {
  const auto& [a, b, c] = cell;
  return {dveclen_(a), dveclen_(b), dveclen_(c), angle(b, c), angle(a, c), angle(a, b)};
}

}  // namespace pathstat::desk
