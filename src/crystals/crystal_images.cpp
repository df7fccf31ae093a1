#include "crystals/crystal_images.h"

#include <algorithm>
#include <utility>

#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "crystals/coincident_atoms.h"

namespace pathstat {
namespace {

constexpr std::int32_t of_the_unit = 1, image = 2;  ///< symmetry statuses

template <class T>
void make(NamedBlock<T>& block, std::string_view label, std::size_t count, std::int32_t& status) {
  if (status == 0) block = NamedBlock<T>(label, static_cast<std::int64_t>(count), status);
}

}  // namespace

CrystalImages::CrystalImages(const PeriodicFrame& frame, const UnitAtoms& unit, const GroupTable& group,
                             std::int32_t& status)
    : frame_(frame), unit_(unit), group_(group), atoms_(unit.size()), places_(unit.size() * group.size()) {
  if (std::cmp_greater(places_, most_objects)) status = impossible_count;
  make(xx_, "crystal/imagexx", 3 * places_, status);
  make(fxx_, "crystal/imagefxx", 3 * places_, status);
  make(link_, "crystal/imagelink", places_, status);
  make(symparent_, "crystal/symparent", places_, status);
  make(spparent_, "crystal/spparent", places_, status);
  make(holder_, "crystal/newid", places_, status);
  if (status != 0) return;
  for (std::size_t place = 0; place < places_; ++place) {
    const auto atom = atom_of(place), op = operator_of(place);
    const auto x = unit_.position(atom);
    const auto f = op == 0 ? frame_.fractional(x) : group_.applied(op, frame_.fractional(x));
    if (!can_be_folded(f)) {
      status = 1;
      return;
    }
    const auto stored = op == 0 ? x : frame_.cartesian(f);
    std::ranges::copy(stored, xx_.span().subspan(3 * place).begin());
    std::ranges::copy(folded(frame_, f, false).fraction, fxx_.span().subspan(3 * place).begin());
    link_.span()[place] = 1;
    symparent_.span()[place] = static_cast<std::int32_t>(atom + 1);
    if (op == 0) holder_.span()[place] = unit_.objects()[atom];
  }
}

void CrystalImages::set_position(std::size_t place, const Vector3& x) {
  std::ranges::copy(x, xx_.span().subspan(3 * place).begin());
  std::ranges::copy(folded(frame_, frame_.fractional(x), false).fraction, fxx_.span().subspan(3 * place).begin());
  if (holder_.span()[place] != 0) moved_.push_back(place);
}

void CrystalImages::settle(std::int32_t report, std::int32_t& status) {
  find_over_specified(report, status);
  if (status != 0) return;
  std::vector<std::size_t> dropped;
  for (std::size_t atom = 0; atom < atoms_; ++atom) {
    if (link_.span()[atom] > 0) {
      drop_coincident(atom);
    } else {
      dropped.push_back(atom);
    }
  }
  for (const auto atom : dropped) take_place_of_partner(atom);
}

/// Drops the atoms that are images of others, with all their own images.
void CrystalImages::find_over_specified(std::int32_t report, std::int32_t& status) {
  NamedBlock<std::int32_t> ids, types;
  make(ids, "crystal/imageid", places_, status);
  make(types, "crystal/imagetype", places_, status);
  if (status != 0) return;
  for (std::size_t place = 0; place < places_; ++place) {
    ids.span()[place] = unit_.ids()[atom_of(place)];
    types.span()[place] = unit_.types()[atom_of(place)];
  }
  check_over_spec_(frame_, fxx_.span(), static_cast<std::int32_t>(atoms_), ids.span(), types.span(), symparent_.span(),
                   link_.span(), report, status);
  if (status != 0) return;
  for (std::size_t atom = 0; atom < atoms_; ++atom) {
    if (link_.span()[atom] > 0) continue;
    const auto partner = static_cast<std::size_t>(symparent_.span()[atom] - 1);
    // The partner of an atom that was dropped itself is no atom of the crystal: this one then stays.
    if (link_.span()[atom_of(partner)] <= 0) {
      link_.span()[atom] = 1;
      symparent_.span()[atom] = static_cast<std::int32_t>(atom + 1);
    } else {
      for (auto place = atom + atoms_; place < places_; place += atoms_) link_.span()[place] = 0;
    }
  }
}

/// Of images of an atom that fall together, leaves the first at the mean of their positions.
void CrystalImages::drop_coincident(std::size_t atom) {
  const auto link = link_.span();
  for (auto place = atom; place < places_; place += atoms_) {
    if (link[place] <= 0) continue;
    const auto own = fraction(place);
    Vector3 sum{};  // of the differences from the place
    double count = 1;
    for (auto other = place + atoms_; other < places_; other += atoms_) {
      if (link[other] <= 0 || !frame_.coincide(own, fraction(other))) continue;
      link[other] = 0;
      spparent_.span()[other] = static_cast<std::int32_t>(place + 1);
      Vector3 difference;
      dvecsub_(fraction(other), own, difference);
      const auto cell = frame_.nearest_shift(difference);
      for (std::size_t axis = 0; axis < 3; ++axis) sum[axis] += difference[axis] - cell[axis];
      ++count;
    }
    if (count == 1) continue;
    for (auto& component : sum) component /= count;
    Vector3 x;
    dvecadd_(position(place), frame_.cartesian(sum), x);
    set_position(place, x);
  }
}

std::size_t CrystalImages::survivor_of(std::size_t place) const {
  while (spparent_.span()[place] > 0) place = static_cast<std::size_t>(spparent_.span()[place] - 1);
  return place;
}

/// Brings back an atom of the unit that was dropped in favour of an image: it becomes that image, and where it is
/// closer than the tolerance it moves there.
void CrystalImages::take_place_of_partner(std::size_t atom) {
  const auto place = survivor_of(static_cast<std::size_t>(symparent_.span()[atom] - 1));
  auto& holder = holder_.span()[place];
  if (holder != 0) deleted_.push_back(holder);
  holder = std::exchange(holder_.span()[atom], 0);
  const auto own = unit_.position(atom), partner = position(place);
  double most = 0;
  for (std::size_t axis = 0; axis < 3; ++axis) most = std::max(most, std::abs(own[axis] - partner[axis]));
  set_position(place, most < frame_.length ? partner : own);
}

void CrystalImages::create(std::vector<std::int32_t>& new_atoms, std::int32_t& status) {
  std::ranges::sort(deleted_);
  const auto is_gone = [&](std::int32_t object) { return std::ranges::binary_search(deleted_, object); };
  std::vector<std::size_t> kept, made;
  std::vector<std::int32_t> sources;
  for (std::size_t place = 0; place < places_; ++place) {
    if (link_.span()[place] <= 0) continue;
    kept.push_back(place);
    if (holder_.span()[place] != 0) continue;
    made.push_back(place);
    sources.push_back(holder_.span()[atom_of(place)]);
  }
  if (!sources.empty()) {
    std::vector<std::int32_t> copies(sources.size());
    kvd_copy_(sources, copies, status);
    if (status != 0) return;
    for (std::size_t k = 0; k < made.size(); ++k) holder_.span()[made[k]] = copies[k];
  }

  std::vector<std::int32_t> objects, parents, operators, shifts, statuses, placed;
  std::vector<double> xyz;
  for (const auto place : kept) {
    const auto parent = atom_of(place);
    Vector3 difference;
    dvecsub_(frame_.fractional(position(place)),
             group_.applied(operator_of(place), frame_.fractional(position(parent))), difference);
    const auto shift = frame_.nearest_shift(difference);
    objects.push_back(holder_.span()[place]);
    parents.push_back(holder_.span()[parent]);
    operators.push_back(static_cast<std::int32_t>(operator_of(place) + 1));
    statuses.push_back(operator_of(place) == 0 ? of_the_unit : image);
    shifts.insert(shifts.end(), shift.begin(), shift.end());
  }
  made.insert(made.end(), moved_.begin(), moved_.end());
  for (const auto place : made) {
    placed.push_back(holder_.span()[place]);
    for (const auto x : position(place)) xyz.push_back(x);
  }
  if (!placed.empty()) kvd_setxyz_(placed, xyz, status);
  if (status == 0) kvd_sym_setstatus_(objects, statuses, status);
  if (status == 0) kvd_sym_setparents_(objects, parents, operators, shifts, status);
  if (status == 0 && !deleted_.empty()) kvd_delete_(deleted_, status);
  std::erase_if(objects, is_gone);
  new_atoms = std::move(objects);
}

}  // namespace pathstat
