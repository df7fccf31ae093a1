#pragma once

#include <cstdint>

namespace pathstat::builder_actions {

// Each routine carries out a command on the current model of the Core, or makes a model of the waiting sites, in a
// number of calls that does not grow with the atoms. It answers with the command's result: 0; 1 with a message for a
// model that the word is not for; a status of crystal_builder.h or of the Core with a message. One that is refused
// leaves the sites and the models as they were.

/// Builds a crystal of the waiting sites, which are used up, or of the current model.
std::int32_t build_crystal();
/// Adds the waiting sites with their images to the current crystal, in the way in which it was built.
std::int32_t add_to_crystal();
std::int32_t unbuild_crystal();

/// Builds a slab that repeats along a and b: of the waiting sites; as a new model of so many layers of the current
/// crystal, one cell thick each; or of a current model that isn't periodic.
std::int32_t build_slab();
std::int32_t unbuild_slab();

/// Describe the current crystal or asymmetric unit in the primitive or the conventional setting of its lattice. Its
/// atoms stay where they stand; a crystal is built again of its unit as it was built before.
std::int32_t primitive_cell();
std::int32_t conventional_cell();

}  // namespace pathstat::builder_actions
