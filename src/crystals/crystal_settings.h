#pragma once

#include <array>
#include <cstdint>

/// How crystals and slabs are built: what the user prefers, and what a model was built with.
///
/// Preferences are user data of the Core's application "CRYSTAL" (slabs: "SURFACE"); a reader gives the default where
/// the application or the value is missing. What a model was built with is user data of the model; its readers fall
/// back on the preferences. Writers set the status to that of the Core, or 1 without the application.
namespace pathstat {

namespace build_option {
constexpr std::int32_t check_special_positions = 1;
constexpr std::int32_t no_new_bonds = 4, bonds_across_faces = 8, bonds_everywhere = 0x10;
constexpr std::int32_t display_as_stored = 0x20, display_molecules = 0x80, display_whole_molecules = 0xC0;
constexpr std::int32_t face_flags = 0x100;
constexpr std::int32_t align_polymer = 0x400;
/// The fields of the options word; a field of 0 means the preference.
constexpr std::int32_t special_mask = 3, bonding_mask = 0x1C, display_mask = 0xE0, face_mask = 0x300,
                       alignment_mask = 0xC00;
}  // namespace build_option

/// How atoms are displayed: the display field and the face field of the options word.
using DisplaySetting = std::array<std::int32_t, 2>;

void crystal_symmetrytolerance_(double& tolerance, std::int32_t& status);
void crystal_setsymmetrytolerance_(double tolerance, std::int32_t& status);
void crystal_specialpositionpref_(std::int32_t& special, std::int32_t& status);
void crystal_setspecialpositionpref_(std::int32_t special, std::int32_t& status);
void crystal_bondingpref_(std::int32_t& bonding, std::int32_t& status);
void crystal_setbondingpref_(std::int32_t bonding, std::int32_t& status);
void crystal_displaypref_(std::int32_t& display, std::int32_t& faces, std::int32_t& status);
void crystal_setdisplaypref_(std::int32_t display, std::int32_t faces, std::int32_t& status);
void crystal_polymeralignpref_(std::int32_t& alignment, std::int32_t& status);
void crystal_setpolymeralignpref_(std::int32_t alignment, std::int32_t& status);

void crystal_toleranceinfo_(std::int32_t model, double& tolerance, std::int32_t& status);
void crystal_settoleranceinfo_(std::int32_t model, double tolerance, std::int32_t& status);
void crystal_specialpositioninfo_(std::int32_t model, std::int32_t& special, std::int32_t& status);
void crystal_setspecialpositioninfo_(std::int32_t model, std::int32_t special, std::int32_t& status);
void crystal_bondinginfo_(std::int32_t model, std::int32_t& bonding, std::int32_t& status);
void crystal_setbondinginfo_(std::int32_t model, std::int32_t bonding, std::int32_t& status);
void crystal_displayinfo_(std::int32_t model, std::int32_t& display, std::int32_t& faces, std::int32_t& status);
void crystal_setdisplayinfo_(std::int32_t model, std::int32_t display, std::int32_t faces, std::int32_t& status);
/// Removes all four values from a model.
void crystal_resetbuildinfo_(std::int32_t model, std::int32_t& status);

/// The same for slabs, whose tolerance is that of crystals.
void surface_bondingpref_(std::int32_t& bonding, std::int32_t& status);
void surface_setbondingpref_(std::int32_t bonding, std::int32_t& status);
void surface_displaypref_(std::int32_t& display, std::int32_t& faces, std::int32_t& status);
void surface_setdisplaypref_(std::int32_t display, std::int32_t faces, std::int32_t& status);
void surface_setbuildinfo_(std::int32_t model, double tolerance, std::int32_t bonding, std::int32_t display,
                           std::int32_t faces, std::int32_t& status);
void surface_resetbuildinfo_(std::int32_t model, std::int32_t& status);

}  // namespace pathstat
