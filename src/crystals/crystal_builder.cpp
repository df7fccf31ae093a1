#include "crystals/crystal_builder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "coreapi/messages.h"
#include "crystals/crystal_images.h"
#include "crystals/polymer_alignment.h"
#include "crystals/unit_atoms.h"
#include "state/analysis_settings.h"
#include "structure/crystal_cell.h"
#include "structure/crystal_lattice.h"
#include "structure/crystal_vectors.h"
#include "support/within_memory.h"

namespace pathstat {

using namespace build_option;

namespace {

constexpr std::int32_t operators_by_hand = 2;  ///< symmetry mode of a model whose operators come from no library

struct CellVectors {
  Vector3 a{}, b{}, c{};
};

/// Holds the cell against its lattice type. A cell that differs by no more than rounding is put right in the Core.
void check_cell(std::int32_t model, std::int32_t group, CellVectors& cell, std::int32_t& status) {
  constexpr double rounding = 0.0001;
  std::int32_t lattice = 0, result = 0;
  kvd_sgr_latticetype_(group, lattice, status);
  if (status != 0) return;
  auto right = cell;
  kva_cry_checklattice_(right.a, right.b, right.c, cell.a, cell.b, cell.c, lattice, result, status);
  if (status != 0 || result == 0) return;
  double most = 0;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    most = std::max({most, std::abs(right.a[axis] - cell.a[axis]), std::abs(right.b[axis] - cell.b[axis]),
                     std::abs(right.c[axis] - cell.c[axis])});
  }
  if (most > rounding) {
    show_message("CrystalInconsistentLattice");
    status = cell_contradicts_lattice;
    return;
  }
  cell = right;
  kvd_mod_set3dcellvector_(model, cell.a, cell.b, cell.c, status);
}

/// The polymer alignment of a build. @param links  bonds to make between segments
void align(std::int32_t model, std::int32_t& bonding, std::vector<CellBond>& links, std::int32_t& status) {
  CellVectors cell;
  kvd_mod_3dcellvector_(model, cell.a, cell.b, cell.c, status);
  if (status != 0) return;
  AlignedPolymer aligned;
  std::int32_t viable = 0, head = 0, tail = 0;
  kva_lnk_viablemonomer_(model, viable, head, tail, status);
  if (status == 0 && viable != 0) {
    align_polymer_(model, head, tail, cell.c, aligned, status);
  } else if (status == 0) {
    align_links_(model, cell.c, aligned, status);
  }
  if (status != 0) return show_message("CrystalPolAlignErr");
  if (!(aligned.length > 0)) {
    status = refuse("CrystalNoPolSeg");
    return;
  }
  const double length = crystal::length(cell.c);
  if (std::abs(aligned.length - length) > 0.001) {
    cell.c = crystal::scaled(cell.c, aligned.length / length);
    show_message("CrystalPolLength", static_cast<float>(aligned.length));
    kvd_mod_set3dcellvector_(model, cell.a, cell.b, cell.c, status);
  }
  links = aligned.links;
  if (bonding == no_new_bonds && links.empty()) bonding = bonds_across_faces;
}

/// One run of the engine.
struct Build {
  std::int32_t model;
  bool is_new;  ///< a crystal is built, not added to
  std::int32_t special;
  double tolerance;
  std::int32_t bonding, display, faces, report;

  std::int32_t check_model(CellVectors& cell, std::int32_t& group) const;
  void run(std::span<const std::int32_t> atoms, std::int32_t& status) const;
  void finish(std::int32_t& status) const;
};

std::int32_t Build::check_model(CellVectors& cell, std::int32_t& group) const {
  std::int32_t type = 0, status = 0, error = 0;
  kvd_mod_periodictype_(model, type, status);
  if (status != 0) return status;
  if (is_new && type != periodic_type::none) return build_on_periodic_model;
  if (!is_new && type != periodic_type::three_dimensional) return add_to_other_model;
  kvd_mod_3dsymmetry_(model, group, error);
  if (error != 0 || group == 0) return model_without_symmetry;
  kvd_mod_3dcellvector_(model, cell.a, cell.b, cell.c, status);
  if (status == 0) check_cell(model, group, cell, status);
  return status;
}

void Build::run(std::span<const std::int32_t> listed, std::int32_t& status) const {
  CellVectors cell;
  std::int32_t group_id = 0;
  status = check_model(cell, group_id);
  if (status != 0) return;
  const auto frame = crystal_frame(cell.a, cell.b, cell.c, tolerance, status);
  if (status != 0) return;
  const auto group = group_table(group_id, status);
  if (status != 0) return;

  std::vector<std::int32_t> atoms(listed.begin(), listed.end());
  if (is_new) {
    atoms = atoms_of(model, AtomSelector::with_images, status);
    if (status != 0) return;
    if (!listed.empty() && listed.size() != atoms.size()) return void(status = atoms_do_not_match);
    kvd_mod_applytransform_(model, status);
  }
  if (status != 0 || atoms.empty()) return;
  UnitAtoms unit(frame, atoms, status);
  if (status == 0 && is_new) kvd_mod_setperiodictype_(model, periodic_type::three_dimensional, status);
  if (status == 0 && special == check_special_positions) unit.remove_duplicates(model, crystal_names, report, status);
  if (status != 0) return;

  std::vector<std::int32_t> new_atoms;
  {
    CrystalImages images(frame, unit, group, status);
    if (status == 0 && special == check_special_positions) images.settle(report, status);
    if (status == 0) images.create(new_atoms, status);
  }
  if (status != 0) return;
  PeriodicNetwork network(model, frame, new_atoms, status);
  if (status == 0) network.copy_bonds(group, status);
  if (status == 0) network.find_bonds(bonding, "CrystalTooManyBonds", status);
  if (status == 0) network.display(display, faces, status);
  if (status == 0 && is_new) finish(status);
}

/// Numbers the atoms from 1 and writes down how the crystal was built.
void Build::finish(std::int32_t& status) const {
  const auto atoms = atoms_of(model, AtomSelector::with_images, status);
  std::vector<std::int32_t> ids(atoms.size());
  std::iota(ids.begin(), ids.end(), 1);
  if (status == 0) kvd_setid_(atoms, ids, status);
  if (status == 0) kvd_reassignids_(model, status);
  if (status == 0) crystal_settoleranceinfo_(model, tolerance, status);
  if (status == 0) crystal_setspecialpositioninfo_(model, special, status);
  if (status == 0) crystal_setbondinginfo_(model, bonding, status);
  if (status == 0) crystal_setdisplayinfo_(model, display, faces, status);
}

/// A field of the options word, or what stands for it.
template <class Preference>
std::int32_t field(std::int32_t options, std::int32_t mask, Preference preference) {
  if ((options & mask) != 0) return options & mask;
  std::int32_t value = 0, status = 0;
  preference(value, status);
  return value;
}

}  // namespace

void checksym_(std::int32_t group, std::int32_t& status) {
  const auto table = group_table(group, status);
  if (status != 0) return;
  std::vector<std::int32_t> first_of_rotation;
  for (std::size_t op = 0; op < table.size(); ++op) {
    const auto rotation = [&](std::size_t k) { return std::span(table.rotations).subspan(9 * k, 9); };
    const bool is_new = std::ranges::none_of(first_of_rotation, [&](std::int32_t number) {
      return std::ranges::equal(rotation(static_cast<std::size_t>(number - 1)), rotation(op));
    });
    if (is_new) first_of_rotation.push_back(static_cast<std::int32_t>(op + 1));
  }
  constexpr CellShift none{};
  for (const auto one : first_of_rotation) {
    for (const auto other : first_of_rotation) {
      std::int32_t product = 0;
      CellShift shift{};
      sym_multiplyfromtable_(one, none, other, none, product, shift, table.rotations, table.translations, table.codes,
                             table.index, status);
      if (status != 0) return;
    }
  }
}

void crystalbuilder_(std::int32_t model, std::int32_t build, std::span<const std::int32_t> atoms, std::int32_t special,
                     double tolerance, std::int32_t bonding, std::int32_t display, std::int32_t faces,
                     std::int32_t report, std::int32_t& status) {
  status = 0;
  const Build run{model, build == 1, special, tolerance, bonding, display, faces, report};
  if (!within_memory([&] { run.run(atoms, status); })) status = 1;
}

void crystal_buildcrystal_(std::int32_t model, std::int32_t special, double tolerance, std::int32_t bonding,
                           std::int32_t display, std::int32_t faces, std::int32_t alignment, std::int32_t report,
                           std::int32_t& status) {
  std::int32_t type = 0, mode = 0, group = 0;
  kvd_mod_periodictype_(model, type, status);
  if (status == 0 && type != periodic_type::none) status = 1;
  std::vector<CellBond> links;
  const bool aligns = status == 0 && alignment == align_polymer;
  if (aligns && !within_memory([&] { align(model, bonding, links, status); })) status = 1;
  if (status == 0) kvd_mod_symmetrymode_(model, mode, status);
  if (status == 0 && mode == operators_by_hand) {
    kvd_mod_3dsymmetry_(model, group, status);
    if (status == 0 && !within_memory([&] { checksym_(group, status); })) status = 1;
    if (status != 0) return show_message("CrystalNoGroup");
  }
  if (status == 0) kvd_sel_clearall_(status);
  if (status != 0) return;
  crystalbuilder_(model, 1, {}, special, tolerance, bonding, display, faces, report, status);
  if (status == 0) make_bonds(links, status);
}

void kva_cry_buildcrystal_(std::int32_t model, std::int32_t options, std::int32_t report, std::int32_t& status) {
  double tolerance = 0;
  crystal_symmetrytolerance_(tolerance, status);
  std::int32_t display = 0, faces = 0;
  crystal_displaypref_(display, faces, status);
  crystal_buildcrystal_(model, field(options, special_mask, crystal_specialpositionpref_), tolerance,
                        field(options, bonding_mask, crystal_bondingpref_),
                        (options & display_mask) != 0 ? options & display_mask : display,
                        (options & face_mask) != 0 ? options & face_mask : faces,
                        field(options, alignment_mask, crystal_polymeralignpref_), report, status);
}

void crystal_addtocrystal_(std::int32_t model, std::span<const std::int32_t> atoms, std::int32_t special,
                           double tolerance, std::int32_t bonding, std::int32_t display, std::int32_t faces,
                           std::int32_t report, std::int32_t& status) {
  std::int32_t type = 0;
  kvd_mod_periodictype_(model, type, status);
  if (status == 0 && type != periodic_type::three_dimensional) status = 1;
  if (status == 0) {
    crystalbuilder_(model, 0, atoms, special, tolerance, bonding, display, faces, report, status);
  }
}

void kva_cry_addtocrystal_(std::int32_t model, std::span<const std::int32_t> atoms, std::int32_t options,
                           std::int32_t report, std::int32_t& status) {
  const auto of_model = [model](auto info) {
    return [model, info](std::int32_t& value, std::int32_t& error) { info(model, value, error); };
  };
  double tolerance = 0;
  crystal_toleranceinfo_(model, tolerance, status);
  std::int32_t display = 0, faces = 0;
  crystal_displayinfo_(model, display, faces, status);
  crystal_addtocrystal_(model, atoms, field(options, special_mask, of_model(crystal_specialpositioninfo_)), tolerance,
                        field(options, bonding_mask, of_model(crystal_bondinginfo_)),
                        (options & display_mask) != 0 ? options & display_mask : display,
                        (options & face_mask) != 0 ? options & face_mask : faces, report, status);
}

}  // namespace pathstat
