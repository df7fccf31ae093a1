#include <algorithm>
#include <limits>
#include <vector>

#include "coreapi/operations.h"
#include "crystals/crystal_builder.h"
#include "crystals/unit_atoms.h"
#include "state/analysis_settings.h"
#include "support/within_memory.h"

namespace pathstat {
namespace {

/// What an atom is a copy of, and by which translation.
struct Copies {
  std::vector<std::int32_t> parents, shifts;
};

Copies periodic_copies(std::span<const std::int32_t> atoms, std::int32_t& status) {
  Copies copies{std::vector<std::int32_t>(atoms.size()), std::vector<std::int32_t>(3 * atoms.size())};
  kvd_per_periodicparent_(atoms, copies.parents, status);
  if (status == 0) kvd_per_translation_(atoms, copies.shifts, status);
  return copies;
}

/// The atoms of the asymmetric unit that atoms are images of; a periodic image counts as one of its atom's.
void to_symmetry_parents(std::vector<std::int32_t>& parents, std::int32_t& status) {
  const auto atoms = parents;
  std::vector<std::int32_t> operators(atoms.size()), shifts(3 * atoms.size());
  kvd_sym_parents_(atoms, parents, operators, shifts, status);
}

/// Atoms and what the Core remembers of their origin.
struct Origins {
  std::vector<std::int32_t> told, shifts, id_told, ids;

  Origins(std::span<const std::int32_t> atoms, const BuildNames& names, std::int32_t& status)
      : told(atoms.size()), shifts(3 * atoms.size()), id_told(atoms.size()), ids(atoms.size()) {
    kvd_ud_intvectors_(atoms, names.origin, told, shifts, status);
    if (status == 0) kvd_ud_ints_(atoms, names.origin_id, id_told, ids, status);
  }

  /// True if the image stands where the model had an atom.
  bool is_from_model(std::size_t k, std::span<const std::int32_t> translations) const {
    return told[k] != 0 && std::ranges::equal(std::span(shifts).subspan(3 * k, 3), translations.subspan(3 * k, 3));
  }
};

void unbuild(std::int32_t model, const BuildNames& names, bool has_symmetry, std::int32_t& status) {
  const auto atoms = atoms_of(model, AtomSelector::with_all_images, status);
  if (status != 0 || atoms.empty()) return;

  auto copies = periodic_copies(atoms, status);
  if (status == 0 && has_symmetry) to_symmetry_parents(copies.parents, status);
  const Origins origins(atoms, names, status);
  std::vector<std::int32_t> ids(atoms.size());
  if (status == 0) kvd_id_(atoms, ids, status);
  constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max() / 2;
  const auto can_double = [](std::int32_t id) { return id >= -most && id <= most; };
  if (!std::ranges::all_of(ids, can_double) || !std::ranges::all_of(origins.ids, can_double)) status = 1;
  if (status == 0 && has_symmetry) kvd_sym_clear_(model, status);
  const std::vector<std::int32_t> zeros(3 * atoms.size());
  if (status == 0) kvd_atm_setcell0offset_(atoms, zeros, status);
  if (status == 0) kvd_atm_setfaceflags_(atoms, zeros, status);
  if (status == 0) kvd_mod_setperiodictype_(model, periodic_type::none, status);
  if (status != 0) return;

  std::vector<std::int32_t> gone, kept, kept_ids, restored;
  for (std::size_t k = 0; k < atoms.size(); ++k) {
    const bool is_own_parent = copies.parents[k] == atoms[k];
    if (!is_own_parent && !origins.is_from_model(k, copies.shifts)) {
      gone.push_back(atoms[k]);
      continue;
    }
    if (!is_own_parent) restored.push_back(atoms[k]);
    const bool old = !is_own_parent && origins.id_told[k] != 0;
    kept.push_back(atoms[k]);
    kept_ids.push_back(old ? 2 * origins.ids[k] - 1 : 2 * ids[k]);
  }
  if (!restored.empty()) {
    kvd_ud_removefrom_(restored, names.origin, status);
    if (status == 0) kvd_ud_removefrom_(restored, names.origin_id, status);
  }
  if (status == 0 && !gone.empty()) kvd_delete_(gone, status);
  if (status == 0) kvd_setid_(kept, kept_ids, status);
  if (status == 0) kvd_reassignids_(model, status);
}

/// @param periodic  the type that the model must have
template <class Reset>
void unbuild_model(std::int32_t model, std::int32_t periodic, const BuildNames& names, Reset reset,
                   std::int32_t& status) {
  std::int32_t type = 0;
  kvd_mod_periodictype_(model, type, status);
  if (status != 0 || type != periodic) return;
  const bool has_symmetry = periodic == periodic_type::three_dimensional;
  if (!within_memory([&] { unbuild(model, names, has_symmetry, status); })) status = 1;
  if (status == 0) reset(model, status);
}

}  // namespace

void kva_cry_unbuildcrystal_(std::int32_t model, std::int32_t& status) {
  unbuild_model(model, periodic_type::three_dimensional, crystal_names, crystal_resetbuildinfo_, status);
}

void kva_sfc_unbuildsurface_(std::int32_t model, std::int32_t& status) {
  unbuild_model(model, periodic_type::two_dimensional, slab_names, surface_resetbuildinfo_, status);
}

}  // namespace pathstat
