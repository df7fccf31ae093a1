#include "crystals/unit_atoms.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "coreapi/operations.h"
#include "crystals/coincident_atoms.h"

namespace pathstat {
namespace {

template <class T>
NamedBlock<T> block(std::string_view label, std::size_t count, std::int32_t& status) {
  return status == 0 ? NamedBlock<T>(label, static_cast<std::int64_t>(count), status) : NamedBlock<T>();
}

/// A copy that became a periodic image of another atom.
struct Image {
  std::int32_t parent;
  CellShift shift;
};

/// The bonds of images as bonds of their atoms: an end at an image is the end at its atom in another cell.
std::vector<CellBond> carried_bonds(std::span<const CellBond> bonds,
                                    const std::unordered_map<std::int32_t, Image>& images,
                                    std::span<const std::int32_t> deleted) {
  BondSet known;
  for (const auto& bond : bonds) known.add(bond);
  std::vector<CellBond> carried;
  for (auto bond : bonds) {
    const auto first = images.find(bond.first), second = images.find(bond.second);
    if (first == images.end() && second == images.end()) continue;
    if (std::ranges::binary_search(deleted, bond.first) || std::ranges::binary_search(deleted, bond.second)) continue;
    if (first != images.end()) {
      bond.first = first->second.parent;
      bond.shift = plus(bond.shift, first->second.shift, -1);
    }
    if (second != images.end()) {
      bond.second = second->second.parent;
      bond.shift = plus(bond.shift, second->second.shift);
    }
    if (known.add(bond)) carried.push_back(bond);
  }
  return carried;
}

}  // namespace

/// What becomes of copies, as arrays for the Core.
struct UnitAtoms::Copies {
  std::vector<std::int32_t> deleted;
  std::vector<std::int32_t> images, parents, shifts, ids;
};

UnitAtoms::UnitAtoms(const PeriodicFrame& frame, std::span<const std::int32_t> atoms, std::int32_t& status)
    : frame_(frame), count_(atoms.size()) {
  oid_ = block<std::int32_t>("crystal/oid", count_, status);
  id_ = block<std::int32_t>("crystal/id", count_, status);
  type_ = block<std::int32_t>("crystal/type", count_, status);
  disp_ = block<std::int32_t>("crystal/disp", 3 * count_, status);
  xx_ = block<double>("crystal/xx", 3 * count_, status);
  fxx_ = block<double>("crystal/fxx", 3 * count_, status);
  charge_ = block<double>("crystal/charge", count_, status);
  if (status != 0) return;
  std::ranges::copy(atoms, oid_.span().begin());
  kvd_xyz_(objects(), xx_.span(), status);
  if (status == 0) kvd_type_(objects(), type_.span(), status);
  if (status == 0) kvd_id_(objects(), id_.span(), status);
  if (status == 0) kvd_atm_charge_(objects(), charge_.span(), status);
  if (status == 0) fold(status);
}

void UnitAtoms::fold(std::int32_t& status) {
  for (std::size_t atom = 0; atom < count_; ++atom) {
    const auto fraction = frame_.fractional(position(atom));
    if (!can_be_folded(fraction)) return void(status = 1);
    const auto place = folded(frame_, fraction, false);
    std::ranges::copy(place.fraction, fxx_.span().subspan(3 * atom).begin());
    std::ranges::copy(place.offset, disp_.span().subspan(3 * atom).begin());
  }
}

CellShift UnitAtoms::offset(std::size_t atom) const {
  const auto at = disp_.span().subspan(3 * atom);
  return {at[0], at[1], at[2]};
}

void UnitAtoms::move_into_cell(std::int32_t& status) {
  kvd_atm_movebycells_(objects(), disp_.span().first(3 * count_), status);
  if (status != 0) return;
  dmatvecmul_(frame_.to_cartesian, fxx_.span().first(3 * count_), xx_.span().first(3 * count_));
  std::ranges::fill(disp_.span(), 0);
}

UnitAtoms::Copies UnitAtoms::sort_copies(std::span<const std::int32_t> links) const {
  const auto source_of = [&](std::size_t atom) {
    while (links[atom] < 0) atom = static_cast<std::size_t>(-links[atom] - 1);
    return atom;
  };
  const auto stored = [&](std::size_t atom) {
    auto f = fraction(atom);
    for (std::size_t axis = 0; axis < 3; ++axis) f[axis] -= offset(atom)[axis];
    return f;
  };
  Copies copies;
  std::set<std::tuple<std::size_t, CellShift>> seen;
  for (std::size_t atom = 0; atom < count_; ++atom) {
    if (links[atom] >= 0) continue;
    const auto source = source_of(atom);
    Vector3 difference;
    dvecsub_(stored(atom), stored(source), difference);
    const auto shift = frame_.nearest_shift(difference);
    const auto object = objects()[atom];
    if (shift == CellShift{} || !seen.emplace(source, shift).second) {
      copies.deleted.push_back(object);
      continue;
    }
    copies.images.push_back(object);
    copies.parents.push_back(objects()[source]);
    copies.shifts.insert(copies.shifts.end(), shift.begin(), shift.end());
    copies.ids.push_back(ids()[atom]);
  }
  std::ranges::sort(copies.deleted);
  return copies;
}

void UnitAtoms::pack(std::span<const std::int32_t> links) {
  std::size_t kept = 0;
  for (std::size_t atom = 0; atom < count_; ++atom) {
    if (links[atom] < 0) continue;
    for (const auto* column : {&oid_, &id_, &type_}) column->span()[kept] = column->span()[atom];
    charge_.span()[kept] = charge_.span()[atom];
    for (std::size_t axis = 0; axis < 3; ++axis) {
      for (const auto* column : {&xx_, &fxx_}) column->span()[3 * kept + axis] = column->span()[3 * atom + axis];
      disp_.span()[3 * kept + axis] = disp_.span()[3 * atom + axis];
    }
    ++kept;
  }
  count_ = kept;
}

void UnitAtoms::remove_duplicates(std::int32_t model, const BuildNames& names, std::int32_t report,
                                  std::int32_t& status) {
  const auto links = block<std::int32_t>("crystal/link", count_, status);
  if (status != 0) return;
  std::ranges::fill(links.span(), 1);
  check_trans_dup_(frame_, fxx_.span().first(3 * count_), ids(), types(), charge_.span().first(count_), links.span(),
                   report, status);
  if (status != 0 || std::ranges::all_of(links.span(), [](std::int32_t link) { return link > 0; })) return;

  const auto copies = sort_copies(links.span());
  const auto bonds = bonds_of_model(model, status);
  if (status == 0 && !copies.deleted.empty()) kvd_delete_(copies.deleted, status);
  if (status == 0 && !copies.images.empty()) {
    kvd_per_makeperiodic_(copies.images, copies.parents, copies.shifts, status);
    if (status == 0) kvd_ud_setintvectors_(copies.images, names.origin, copies.shifts, status);
    if (status == 0) kvd_ud_setints_(copies.images, names.origin_id, copies.ids, status);
    std::unordered_map<std::int32_t, Image> images;
    for (std::size_t k = 0; k < copies.images.size(); ++k) {
      const auto* shift = &copies.shifts[3 * k];
      images.emplace(copies.images[k], Image{copies.parents[k], {shift[0], shift[1], shift[2]}});
    }
    if (status == 0) make_bonds(carried_bonds(bonds, images, copies.deleted), status);
  }
  pack(links.span());
}

}  // namespace pathstat
