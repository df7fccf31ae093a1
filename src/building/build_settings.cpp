#include "building/build_settings.h"

#include <array>
#include <span>

#include "crystals/crystal_settings.h"

namespace pathstat {

using namespace build_option;

namespace {

/// A value of a setting and the field of the options word that it stands for.
struct NamedOption {
  std::string_view name;
  std::int32_t option;
};
constexpr std::array bondings{NamedOption{"NONE", no_new_bonds}, NamedOption{"FACES", bonds_across_faces},
                              NamedOption{"ALL", bonds_everywhere}};
constexpr std::int32_t display_folded_atoms = 0x40, no_face_flags = 0x200, no_alignment = 0x800, no_check = 2;
constexpr std::array displays{NamedOption{"STORED", display_as_stored}, NamedOption{"ATOMS", display_folded_atoms},
                              NamedOption{"MOLECULES", display_molecules},
                              NamedOption{"WHOLE_MOLECULES", display_whole_molecules}};

std::int32_t option_of(std::span<const NamedOption> options, std::string_view name) {
  for (const auto& each : options) {
    if (each.name == name) return each.option;
  }
  return options.back().option;
}

}  // namespace

void put_build_preferences(std::int32_t& status) {
  const auto& set = build_settings;
  const auto bonding = option_of(bondings, set.bonding.view());
  const auto display = option_of(displays, set.cell_display.view());
  const auto faces = set.face_display ? face_flags : no_face_flags;
  crystal_setsymmetrytolerance_(set.tolerance, status);
  if (status == 0) crystal_setspecialpositionpref_(set.special_positions ? check_special_positions : no_check, status);
  if (status == 0) crystal_setbondingpref_(bonding, status);
  if (status == 0) crystal_setdisplaypref_(display, faces, status);
  if (status == 0) crystal_setpolymeralignpref_(set.align_polymer ? build_option::align_polymer : no_alignment, status);
  if (status == 0) surface_setbondingpref_(bonding, status);
  if (status == 0) surface_setdisplaypref_(display, faces, status);
}

}  // namespace pathstat
