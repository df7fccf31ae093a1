#include "building/builder_actions.h"

#include <cmath>
#include <string>

#include "building/asymmetric_unit.h"
#include "building/build_settings.h"
#include "building/model_draft.h"
#include "building/structure_report.h"
#include "coreapi/messages.h"
#include "crystals/crystal_builder.h"
#include "crystals/model_contents.h"
#include "shell/arguments.h"
#include "state/analysis_settings.h"
#include "structure/crystal_cell.h"

namespace pathstat::builder_actions {
namespace {

constexpr std::int32_t most_slab_atoms = 10'000'000;
constexpr std::int32_t preferred_options = 0, with_report = 1;

/// Tells why nothing was built, unless the builder has done so. @return the status
std::int32_t not_built(std::int32_t status) {
  if (status != cell_contradicts_lattice) show_message("STRUCTURE_BUILD_FAILED", status);
  return status;
}

/// Builds a crystal and tells of it.
std::int32_t build_unit(std::int32_t model) {
  std::int32_t status = 0;
  kva_cry_buildcrystal_(model, preferred_options, with_report, status);
  if (status != 0) return not_built(status);
  report_structure(model);
  return 0;
}

/// Gives a model the cell and the group that words have stated. @return the word's result
std::int32_t put_stated_symmetry(std::int32_t model, CellVectors& cell) {
  if (!asymmetric_unit.has_cell()) return refuse("STRUCTURE_NO_CELL");
  const auto group = stated_group(asymmetric_unit);
  if (group == 0) return refuse("STRUCTURE_GROUP_UNKNOWN", asymmetric_unit.group.view());
  std::int32_t status = 0;
  cell = stated_cell(status);
  if (status == 0) kvd_mod_set3dcellvector_(model, cell[0], cell[1], cell[2], status);
  if (status == 0) kvd_mod_set3dsymmetry_(model, group, status);
  return status == 0 ? 0 : not_built(status);
}

std::int32_t build_of_sites() {
  std::int32_t status = 0;
  ModelDraft model("Crystal", status);
  CellVectors cell{};
  if (status != 0) return not_built(status);
  if (const auto result = put_stated_symmetry(model.id(), cell); result != 0) return result;
  place_sites(model.id(), cell, status);
  if (status != 0) return not_built(status);
  if (const auto result = build_unit(model.id()); result != 0) return result;
  model.keep();
  asymmetric_unit.sites.clear();
  return 0;
}

std::int32_t build_of_model(std::int32_t model) {
  if (type_of_model(model) != periodic_type::none) return refuse("STRUCTURE_PERIODIC_ALREADY");
  const bool has_group = group_of_model(model) != 0;
  CellVectors cell{};
  std::int32_t result = has_group ? 0 : put_stated_symmetry(model, cell);
  if (result == 0) result = build_unit(model);
  std::int32_t error = 0;
  if (result != 0 && !has_group) kvd_mod_set3dsymmetry_(model, 0, error);
  return result;
}

/// Makes the settings count and answers with what a builder of models says.
template <class OfSites, class OfModel>
std::int32_t build_something(OfSites of_sites, OfModel of_model) {
  std::int32_t status = 0;
  put_build_preferences(status);
  if (status != 0) return not_built(status);
  if (!asymmetric_unit.sites.empty()) return of_sites();
  const auto model = current_model();
  return model == 0 ? refuse("STRUCTURE_NO_MODEL") : of_model(model);
}

/// The current model if it repeats as is asked for; 0 after a message.
std::int32_t current_of_type(std::int32_t type, std::string_view key) {
  const auto model = current_model();
  if (model != 0 && type_of_model(model) == type) return model;
  show_message(key);
  return 0;
}

std::int32_t unbuild(std::int32_t type, std::string_view key, void (*take_back)(std::int32_t, std::int32_t&)) {
  const auto model = current_of_type(type, key);
  if (model == 0) return 1;
  std::int32_t status = 0;
  take_back(model, status);
  return status == 0 ? 0 : not_built(status);
}

// Slabs

std::int32_t build_slab_model(std::int32_t model) {
  std::int32_t status = 0;
  kva_sfc_buildsurfacefrommodel_(model, preferred_options, status);
  if (status != 0) return not_built(status);
  report_structure(model);
  return 0;
}

std::int32_t slab_of_sites() {
  if (!asymmetric_unit.has_cell()) return refuse("STRUCTURE_NO_CELL");
  std::int32_t status = 0;
  ModelDraft model("Slab", status);
  const auto cell = stated_cell(status);
  if (status == 0) kvd_mod_set2dcellvector_(model.id(), cell[0], cell[1], status);
  if (status == 0) place_sites(model.id(), cell, status);
  if (status != 0) return not_built(status);
  if (const auto result = build_slab_model(model.id()); result != 0) return result;
  model.keep();
  asymmetric_unit.sites.clear();
  return 0;
}

/// The atoms of a crystal in so many cells along c, the first of which starts at the origin.
struct Layers {
  std::vector<std::int32_t> elements;
  std::vector<double> xyz;

  Layers(std::int32_t crystal, const CellVectors& cell, std::int32_t count, std::int32_t& status) {
    const auto atoms = atoms_of(crystal, AtomSelector::with_images, status);
    std::vector<std::int32_t> of_cell(atoms.size());
    std::vector<double> positions(3 * atoms.size());
    if (status == 0) kvd_type_(atoms, of_cell, status);
    if (status == 0) kvd_xyz_(atoms, positions, status);
    Matrix3 to_fractional{};
    if (status == 0) kva_cry_3dcarttofracmatrix_(cell[0], cell[1], cell[2], to_fractional, status);
    if (status != 0) return;
    for (std::int32_t layer = 0; layer < count; ++layer) {
      elements.insert(elements.end(), of_cell.begin(), of_cell.end());
      for (std::size_t k = 0; k < atoms.size(); ++k)
        add(std::span<const double, 3>(&positions[3 * k], 3), cell[2], to_fractional, layer);
    }
  }

 private:
  void add(std::span<const double, 3> position, const Vector3& c, const Matrix3& to_fractional, std::int32_t layer) {
    constexpr double on_the_face = 1e-6;
    Vector3 fraction{};
    dmatmul_(to_fractional, position, fraction);
    const double cells = layer - std::floor(fraction[2] + on_the_face);
    for (std::size_t axis = 0; axis < 3; ++axis) xyz.push_back(position[axis] + cells * c[axis]);
  }
};

std::int32_t slab_of_crystal(std::int32_t crystal, std::int32_t layers) {
  std::int32_t status = 0;
  CellVectors cell{};
  kvd_mod_3dcellvector_(crystal, cell[0], cell[1], cell[2], status);
  if (status != 0) return not_built(status);
  const auto atoms_of_cell = static_cast<std::int64_t>(atoms_of(crystal, AtomSelector::with_images, status).size());
  if (atoms_of_cell * layers > most_slab_atoms) return refuse("STRUCTURE_TOO_MANY_ATOMS", most_slab_atoms);
  const Layers contents(crystal, cell, layers, status);
  ModelDraft model(name_of_model(crystal) + "_slab", status);
  if (status == 0) kvd_mod_set2dcellvector_(model.id(), cell[0], cell[1], status);
  std::vector<std::int32_t> atoms(contents.elements.size());
  if (status == 0) kvd_atm_create_(model.id(), contents.elements, contents.xyz, atoms, status);
  if (status != 0) return not_built(status);
  const auto result = build_slab_model(model.id());
  if (result == 0) model.keep();
  return result;
}

std::int32_t slab_of_model(std::int32_t model, std::int32_t layers) {
  const auto type = type_of_model(model);
  if (type == periodic_type::three_dimensional) return slab_of_crystal(model, layers);
  if (type != periodic_type::none) return refuse("STRUCTURE_PERIODIC_ALREADY");
  if (group_of_model(model) != 0) return refuse("STRUCTURE_SLAB_OF_UNIT");
  Vector3 u{}, v{};
  std::int32_t error = 0;
  kvd_mod_2dcellvector_(model, u, v, error);
  if (error != 0) {
    if (!asymmetric_unit.has_cell()) return refuse("STRUCTURE_NO_CELL");
    std::int32_t status = 0;
    const auto cell = stated_cell(status);
    if (status == 0) kvd_mod_set2dcellvector_(model, cell[0], cell[1], status);
    if (status != 0) return not_built(status);
  }
  return build_slab_model(model);
}

}  // namespace

std::int32_t build_crystal() { return build_something(build_of_sites, build_of_model); }

std::int32_t add_to_crystal() {
  const auto crystal = current_of_type(periodic_type::three_dimensional, "STRUCTURE_NO_CRYSTAL");
  if (crystal == 0) return 1;
  if (asymmetric_unit.sites.empty()) return refuse("STRUCTURE_NO_SITES");
  std::int32_t status = 0;
  CellVectors cell{};
  kvd_mod_3dcellvector_(crystal, cell[0], cell[1], cell[2], status);
  const auto atoms = place_sites(crystal, cell, status);
  if (status != 0) return not_built(status);
  kva_cry_addtocrystal_(crystal, atoms, preferred_options, with_report, status);
  if (status != 0) {
    std::int32_t error = 0;
    kvd_delete_(atoms, error);
    return not_built(status);
  }
  asymmetric_unit.sites.clear();
  report_structure(crystal);
  return 0;
}

std::int32_t unbuild_crystal() {
  return unbuild(periodic_type::three_dimensional, "STRUCTURE_NO_CRYSTAL", kva_cry_unbuildcrystal_);
}

std::int32_t build_slab() {
  constexpr std::int32_t most_layers = 1000;
  std::int32_t layers = 1, status = 0;
  if (kvZ_ArgumentTotal() > 0) kvz_argint_(layers, 1, 1, most_layers, status);
  if (status != 0) return status;
  return build_something(slab_of_sites, [layers](std::int32_t model) { return slab_of_model(model, layers); });
}

std::int32_t unbuild_slab() {
  return unbuild(periodic_type::two_dimensional, "STRUCTURE_NO_SLAB", kva_sfc_unbuildsurface_);
}

}  // namespace pathstat::builder_actions
