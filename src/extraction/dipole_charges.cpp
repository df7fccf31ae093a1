#include "extraction/dipole_charges.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

#include "catalogue/model_selection.h"
#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "state/analysis_settings.h"
#include "support/identifier_index.h"
#include "support/text_field.h"
#include "trajectory/model_frame.h"

namespace pathstat {
namespace {

constexpr std::int32_t failed = 1;
constexpr auto with_images = static_cast<std::int32_t>(ModelAtoms::with_images);

/// Puts values into another order: value k becomes what stood at order[k].
void reorder(std::span<std::int32_t> values, std::span<const std::int32_t> order, std::span<std::int32_t> work) {
  std::ranges::copy(values, work.begin());
  for (std::size_t k = 0; k < order.size(); ++k) values[k] = work[static_cast<std::size_t>(order[k])];
}

}  // namespace

DipoleChoice::DipoleChoice(std::string_view atoms, std::string_view kind)
    : all_atoms(same_text(atoms, "ALL")), by_molecules(same_text(kind, "MOLECULES")) {}

DipoleAtoms::DipoleAtoms(std::int32_t model, std::int32_t periodic_type, DipoleChoice choice, std::int32_t& status) {
  std::int32_t count = 0, error = 0;
  if (choice.all_atoms) {
    count_atoms(model, with_images, count, error);
  } else {
    count_selected(model, atom_class, count, error);
  }
  status = error != 0 ? failed : 0;
  if (status == 0 && !choice.all_atoms) make_room(count, status);
  if (status != 0) return;
  if (!choice.all_atoms) {
    list_selected(model, status);
  } else if (choice.by_molecules) {
    list_molecules(model, count, status);
  } else {
    list_all(model, count, status);
  }
  if (status == 0 && !choice.by_molecules) std::ranges::fill(tags_.span(), 1);
  if (status == 0 && choice.by_molecules && !choice.all_atoms) tag_selected(status);
  if (status == 0) order_by_molecules(status);
  if (status == 0) images_ = NamedBlock<std::int32_t>("pathstat/DIP/Trans", 3 * std::ssize(atoms()), status);
  if (status == 0) charges_ = NamedBlock<double>("pathstat/DIP/Charges", std::ssize(atoms()), status);
  if (status != 0 || atoms().empty()) return;
  if (periodic_type == periodic_type::three_dimensional) {
    find_images(choice.all_atoms && !choice.by_molecules, status);
  }
  if (status == 0) kvd_atm_charge_(atoms(), charges_.span(), error);
  if (error != 0) status = failed;
}

void DipoleAtoms::make_room(std::int64_t count, std::int32_t& status) {
  atoms_.release();
  atoms_ = NamedBlock<std::int32_t>("pathstat/DIP/AtOids", count, status);
  if (status != 0) return;
  tags_.release();
  tags_ = NamedBlock<std::int32_t>("pathstat/DIP/MolTags", count, status);
}

/// Cuts the room to what the Core has listed.
void DipoleAtoms::keep(std::int32_t listed, std::int32_t error, std::int32_t& status) {
  if (error != 0) status = failed;
  const auto count = std::clamp<std::int64_t>(listed, 0, std::ssize(atoms()));
  if (status == 0) atoms_.resize(count, status);
  if (status == 0) tags_.resize(count, status);
}

/// A list may be longer than the model has atoms, where it gives an atom in several cells.
void DipoleAtoms::list_molecules(std::int32_t model, std::int32_t count, std::int32_t& status) {
  std::int32_t listed = count, error = 0;
  for (int tries = 0; tries < 2 && error == 0 && listed > std::ssize(atoms()); ++tries) {
    make_room(listed, status);
    if (status != 0) return;
    kva_con_molecularlist_(model, atoms_.span(), listed, tags_.span(), molecules_, error);
    if (!is_object_count(listed)) error = impossible_count;
  }
  keep(listed, error, status);
}

void DipoleAtoms::list_all(std::int32_t model, std::int32_t count, std::int32_t& status) {
  make_room(count, status);
  if (status != 0) return;
  std::int32_t listed = 0, error = 0;
  if (count > 0) kvd_mod_atomlist_(model, with_images, atoms_.span(), listed, error);
  keep(listed, error, status);
}

void DipoleAtoms::list_selected(std::int32_t model, std::int32_t& status) {
  std::int32_t listed = 0, error = 0;
  if (!atoms().empty()) kvd_sel_findselected_(model, atom_class, atoms_.span(), listed, error);
  keep(listed, error, status);
}

/// Numbers the molecules in the order of their first selected atoms, whatever numbers the Core gives them.
void DipoleAtoms::tag_selected(std::int32_t& status) {
  molecules_ = 0;
  if (atoms().empty()) return;
  std::int32_t given = 0, error = 0;
  kva_con_moleculartag_(atoms(), tags_.span(), given, error);
  if (error != 0) status = failed;
  if (status != 0) return;
  const IdentifierIndex first_places(tags(), status);
  if (status != 0) return;
  const auto numbers = tags_.span();
  for (std::size_t k = 0; k < numbers.size(); ++k) {
    const auto first = static_cast<std::size_t>(first_places.find(numbers[k]));
    numbers[k] = first == k ? ++molecules_ : numbers[first];
  }
}

/// Makes each molecule one run of atoms, which keep their order in it.
void DipoleAtoms::order_by_molecules(std::int32_t& status) {
  const bool known = std::ranges::all_of(tags(), [&](std::int32_t tag) { return tag >= 1 && tag <= molecules_; });
  if (!known || molecules_ < 0 || molecules_ > std::max<std::int64_t>(1, std::ssize(atoms()))) status = failed;
  if (status != 0 || std::ranges::is_sorted(tags())) return;
  const NamedBlock<std::int32_t> order("pathstat/DIP/AtIndex", std::ssize(atoms()), status);
  if (status != 0) return;
  const NamedBlock<std::int32_t> work("pathstat/DIP/SortAtOids", std::ssize(atoms()), status);
  if (status != 0) return;
  const NamedBlock<std::int32_t> starts("pathstat/DIP/MolSizes", std::int64_t{molecules_} + 1, status);
  if (status != 0) return;
  for (const auto tag : tags()) ++starts.span()[static_cast<std::size_t>(tag)];
  std::partial_sum(starts.span().begin(), starts.span().end(), starts.span().begin());
  for (std::size_t k = 0; k < tags().size(); ++k) {
    const auto to = starts.span()[static_cast<std::size_t>(tags()[k] - 1)]++;
    order.span()[static_cast<std::size_t>(to)] = static_cast<std::int32_t>(k);
  }
  reorder(atoms_.span(), order.span(), work.span());
  reorder(tags_.span(), order.span(), work.span());
}

/// @param whole_molecules  images that make molecules whole instead of those that the atoms are listed in
void DipoleAtoms::find_images(bool whole_molecules, std::int32_t& status) {
  std::int32_t error = 0;
  if (whole_molecules) {
    kvd_atm_cell0offset_(atoms(), images_.span(), error);
    if (error != 0) status = failed;
    return;
  }
  kvd_per_translation_(atoms(), images_.span(), error);
  if (error != 0) status = failed;
  if (status != 0) return;
  const NamedBlock<std::int32_t> parents("pathstat/DIP/MolOids", std::ssize(atoms()), status);
  if (status != 0) return;
  kvd_per_periodicparent_(atoms(), parents.span(), error);
  if (error != 0) status = failed;
  if (status == 0) std::ranges::copy(parents.span(), atoms_.span().begin());
}

DipoleCharges::DipoleCharges(const DipoleAtoms& atoms, std::span<const std::int32_t> places, std::int32_t& status) {
  positive_ = pick(atoms, places, true,
                   {"pathstat/DIP/PosMolTags", "pathstat/DIP/PosAtoms", "pathstat/DIP/PosTrans",
                    "pathstat/DIP/PosCharges", "pathstat/DIP/NPosAtoms"},
                   status);
  if (status != 0) return;
  negative_ = pick(atoms, places, false,
                   {"pathstat/DIP/NegMolTags", "pathstat/DIP/NegAtoms", "pathstat/DIP/NegTrans",
                    "pathstat/DIP/NegCharges", "pathstat/DIP/NNegAtoms"},
                   status);
}

DipoleCharges::Sign DipoleCharges::pick(const DipoleAtoms& atoms, std::span<const std::int32_t> places, bool positive,
                                        const Labels& labels, std::int32_t& status) {
  const auto of_sign = [&](double charge) { return positive ? charge > 0.0 : charge < 0.0; };
  const auto count = std::ranges::count_if(atoms.charges(), of_sign);
  Sign sign;
  sign.tags = NamedBlock<std::int32_t>(labels.tags, count, status);
  if (status == 0) sign.atoms = NamedBlock<std::int32_t>(labels.atoms, count, status);
  if (status == 0) sign.images = NamedBlock<std::int32_t>(labels.images, 3 * count, status);
  if (status == 0) sign.charges = NamedBlock<double>(labels.charges, count, status);
  if (status == 0) sign.counts = NamedBlock<std::int32_t>(labels.counts, atoms.molecules(), status);
  if (status != 0) return sign;
  std::size_t to = 0;
  for (std::size_t k = 0; k < places.size(); ++k) {
    if (!of_sign(atoms.charges()[k])) continue;
    sign.tags.span()[to] = atoms.tags()[k];
    sign.atoms.span()[to] = places[k];
    sign.charges.span()[to] = atoms.charges()[k];
    const auto image = atoms.images().subspan(3 * k, 3);
    std::ranges::copy(image, sign.images.span().begin() + static_cast<std::ptrdiff_t>(3 * to));
    ++sign.counts.span()[static_cast<std::size_t>(atoms.tags()[k] - 1)];
    ++to;
  }
  return sign;
}

DipoleMoment DipoleCharges::moment(std::span<const double> xyz, std::int32_t periodic_type, MatrixIn<double> cell,
                                   std::int32_t& status) const {
  DipoleMoment sum;
  std::size_t positive = 0, negative = 0;
  status = 0;
  for (std::size_t m = 0; m < positive_.counts.size() && status == 0; ++m) {
    const auto of_positive = static_cast<std::size_t>(positive_.counts.span()[m]);
    const auto of_negative = static_cast<std::size_t>(negative_.counts.span()[m]);
    DipoleMoment molecule;
    calcdipole_(xyz, periodic_type, cell, static_cast<std::int32_t>(m + 1),
                positive_.list().part(positive, of_positive), negative_.list().part(negative, of_negative), molecule,
                status);
    dvecadd_(sum.dipole, molecule.dipole, sum.dipole);
    dvecadd_(sum.origin, molecule.origin, sum.origin);
    dvecadd_(sum.positive_centre, molecule.positive_centre, sum.positive_centre);
    dvecadd_(sum.negative_centre, molecule.negative_centre, sum.negative_centre);
    sum.net_charge += molecule.net_charge;
    positive += of_positive;
    negative += of_negative;
  }
  sum.magnitude = dveclen_(sum.dipole);
  return sum;
}

}  // namespace pathstat
