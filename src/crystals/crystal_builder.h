#pragma once

#include <cstdint>
#include <span>

/// Builds crystals and slabs of the Core from models, adds atoms to crystals, and takes both apart again.
///
/// The options word has five fields, those of build_option; a field of 0 means the user's preference. The report 1
/// gives the messages of the checks.
namespace pathstat {

constexpr std::int32_t build_on_periodic_model = 50307;
constexpr std::int32_t add_to_other_model = 50308;
constexpr std::int32_t model_without_symmetry = 50309;
constexpr std::int32_t cell_contradicts_lattice = 50310;
constexpr std::int32_t atoms_do_not_match = 50311;

/// Turns a model whose atoms are an asymmetric unit into a crystal.
/// @param status  0; 1 a periodic model or no memory; the codes above; that of the Core
void kva_cry_buildcrystal_(std::int32_t model, std::int32_t options, std::int32_t report, std::int32_t& status);
/// The same with the options as they are to be, which are fields of build_option.
/// @param tolerance  Å
void crystal_buildcrystal_(std::int32_t model, std::int32_t special, double tolerance, std::int32_t bonding,
                           std::int32_t display, std::int32_t faces, std::int32_t alignment, std::int32_t report,
                           std::int32_t& status);
/// Gives atoms of a crystal that have no symmetry images yet their images and bonds.
/// @param status  0; 1 a model that is no crystal; the codes above; that of the Core
void kva_cry_addtocrystal_(std::int32_t model, std::span<const std::int32_t> atoms, std::int32_t options,
                           std::int32_t report, std::int32_t& status);
/// The same with the options as they are to be.
void crystal_addtocrystal_(std::int32_t model, std::span<const std::int32_t> atoms, std::int32_t special,
                           double tolerance, std::int32_t bonding, std::int32_t display, std::int32_t faces,
                           std::int32_t report, std::int32_t& status);
/// The engine of both. @param build  1 to build from all atoms of a model, 0 to add atoms to a crystal
void crystalbuilder_(std::int32_t model, std::int32_t build, std::span<const std::int32_t> atoms, std::int32_t special,
                     double tolerance, std::int32_t bonding, std::int32_t display, std::int32_t faces,
                     std::int32_t report, std::int32_t& status);
/// Takes a crystal back to its asymmetric unit: images go, copies across faces that the model had come back. A model
/// that is no crystal stays as it is.
/// @param status  0; 1 file numbers of more than half of 32 bits or no memory; atoms_do_not_match; that of the Core
void kva_cry_unbuildcrystal_(std::int32_t model, std::int32_t& status);

/// Sees whether the operators of a group are a group.
/// @param status  0; that of the first product of two of them that isn't one of them; that of the group's table
void checksym_(std::int32_t group, std::int32_t& status);

/// Turns a model with the cell vectors U and V into a slab; there is no symmetry. The atoms are moved into the cell.
/// Of the options there are the bonding field and the two of the display.
/// @param status  0; 1 a periodic model or no memory; that of the crystal routines; that of the Core
void kva_sfc_buildsurfacefrommodel_(std::int32_t model, std::int32_t options, std::int32_t& status);
/// Takes a slab back to a model that isn't periodic. @param status  as of kva_cry_unbuildcrystal_
void kva_sfc_unbuildsurface_(std::int32_t model, std::int32_t& status);

inline constexpr auto& kvA_CRY_BuildCrystal = kva_cry_buildcrystal_;
inline constexpr auto& kvA_CRY_AddToCrystal = kva_cry_addtocrystal_;
inline constexpr auto& kvA_CRY_UnBuildCrystal = kva_cry_unbuildcrystal_;
inline constexpr auto& kvA_SFC_BuildSurfaceFromModel = kva_sfc_buildsurfacefrommodel_;
inline constexpr auto& kvA_SFC_UnBuildSurface = kva_sfc_unbuildsurface_;

}  // namespace pathstat
