#include "coreapi/operations.h"
#include "crystals/crystal_builder.h"
#include "crystals/periodic_network.h"
#include "crystals/unit_atoms.h"
#include "state/analysis_settings.h"
#include "support/within_memory.h"

namespace pathstat {

using namespace build_option;

namespace {

struct SlabOptions {
  double tolerance = 0;
  std::int32_t bonding = 0, display = 0, faces = 0;
};

SlabOptions resolved(std::int32_t options) {
  SlabOptions resolved;
  std::int32_t status = 0;
  crystal_symmetrytolerance_(resolved.tolerance, status);
  surface_bondingpref_(resolved.bonding, status);
  surface_displaypref_(resolved.display, resolved.faces, status);
  if ((options & bonding_mask) != 0) resolved.bonding = options & bonding_mask;
  if ((options & display_mask) != 0) resolved.display = options & display_mask;
  if ((options & face_mask) != 0) resolved.faces = options & face_mask;
  return resolved;
}

void build_slab(std::int32_t model, const SlabOptions& options, std::int32_t& status) {
  constexpr std::int32_t no_report = 0;
  Vector3 u{}, v{};
  kvd_mod_2dcellvector_(model, u, v, status);
  if (status != 0) return;
  const auto frame = slab_frame(u, v, options.tolerance, status);
  if (status != 0) return;
  const auto atoms = atoms_of(model, AtomSelector::with_images, status);
  if (status == 0) kvd_mod_applytransform_(model, status);
  if (status != 0) return;
  UnitAtoms unit(frame, atoms, status);
  if (status == 0) kvd_mod_setperiodictype_(model, periodic_type::two_dimensional, status);
  if (status == 0 && !atoms.empty()) {
    unit.move_into_cell(status);
    if (status == 0) unit.remove_duplicates(model, slab_names, no_report, status);
  }
  if (status != 0) return;
  PeriodicNetwork network(model, frame, atoms, status);
  if (status == 0) network.find_bonds(options.bonding, "sfcBuild1", status);
  if (status == 0) network.display(options.display, options.faces, status);
  if (status == 0)
    surface_setbuildinfo_(model, options.tolerance, options.bonding, options.display, options.faces, status);
}

}  // namespace

void kva_sfc_buildsurfacefrommodel_(std::int32_t model, std::int32_t options, std::int32_t& status) {
  std::int32_t type = 0;
  kvd_mod_periodictype_(model, type, status);
  if (status == 0 && type != periodic_type::none) status = 1;
  if (status == 0 && !within_memory([&] { build_slab(model, resolved(options), status); })) status = 1;
}

}  // namespace pathstat
