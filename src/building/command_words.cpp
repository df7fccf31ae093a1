#include "building/command_words.h"

#include <array>

#include "building/build_settings.h"
#include "building/builder_actions.h"
#include "building/field_actions.h"
#include "building/field_settings.h"
#include "building/file_actions.h"
#include "building/unit_actions.h"
#include "shell/detaching.h"
#include "state/analysis_settings.h"

namespace pathstat {
namespace {

constexpr Guard loaded{[] { return bool(trj_gui_l_.trajectory_loaded); }, "PATHSTAT_ERROR_57",
                       "a trajectory is loaded"};
constexpr Guard volume_open{[] { return current_volume.is_open(); }, "STRUCTURE_NO_VOLUME", "a volume is open"};
constexpr Guard table_open{[] { return !current_table.view().empty(); }, "STRUCTURE_NO_TABLE", "a table is open"};

namespace field = field_actions;
constexpr double least_tolerance = 1e-5, largest_tolerance = 1.0;  // Å

std::int32_t store_tolerance(double value) {
  build_settings.tolerance = value;
  return 0;
}

/// What pathdesk's line @detach sends.
std::int32_t detach_when_quiet(std::int32_t seconds) {
  detach_soon(seconds);
  return 0;
}

// clang-format off
constexpr auto words = std::to_array<CommandWord>({
  {"ADD_TO_CRYSTAL", Action{.run = builder_actions::add_to_crystal}, "Adds the sites that wait, with their images, to the current crystal, as it was built", ""},
  {"ALIGN_POLYMER", LogicalSetting{&build_settings.align_polymer}, "Lays the polymer of a crystal that is built along its c axis", ""},
  {"BONDING", text_setting(build_settings.bonding, bonding_names), "New bonds of what is built: none, only across faces of the cell, or all", ""},
  {"BUILD_CRYSTAL", Action{.run = builder_actions::build_crystal}, "Builds a crystal of the sites that wait, or else of the current model", ""},
  {"BUILD_SLAB", Action{.run = builder_actions::build_slab}, "Builds a slab along a and b of the sites that wait, or else of the current crystal or model", "integer from 1 to 1000: the layers of a crystal, one cell each"},
  {"CELL", Action{.run = unit_actions::cell, .nesting = Nesting::free}, "Cell of the asymmetric unit", "six numbers: a, b, c in Å, alpha, beta, gamma in degrees"},
  {"CELL_DISPLAY", text_setting(build_settings.cell_display, display_names), "Cells in which the atoms of what is built are shown", ""},
  {"CLEAR_SITES", Action{.run = unit_actions::clear_sites, .nesting = Nesting::free}, "Drops all sites of the asymmetric unit", ""},
  {"CONVENTIONAL_CELL", Action{.run = builder_actions::conventional_cell}, "Describes the current crystal or unit in the conventional cell that PRIMITIVE_CELL has replaced", ""},
  {"DENSITY", Action{{loaded}, field::density}, "Mean number density of atoms over the frames of the range, as a volume file that is then open", ""},
  {"DENSITY_ATOMS", text_setting(field_settings.density_atoms, "ALL,SELECTED"), "Atoms of the density", ""},
  {"DENSITY_AXIS", IntegerSetting{0, 100000000, field::density_axis}, "Number of the atom on the axis x of the molecules that the density is around; 0 for none", ""},
  {"DENSITY_CENTRE", IntegerSetting{0, 100000000, field::density_centre}, "Number of the atom that stays in the middle of the cell of the density; 0 for none", ""},
  {"DENSITY_FILE", text_setting(field_settings.density_file, ""), "Volume file that DENSITY writes", "name of a volume file"},
  {"DENSITY_PLANE", IntegerSetting{0, 100000000, field::density_plane}, "Number of the atom in the plane of x and y of the molecules that the density is around; 0 for none", ""},
  {"DENSITY_SPACING", DoubleSetting{0.01, 100.0, field::density_spacing}, "Farthest that grid points of the density may stand apart along an edge of the cell, Å", ""},
  {"DENSITY_TYPE", IntegerSetting{1, 4, field::density_type}, "Bytes of a value in the file of the density: 1 or 2 for steps between its limits, 4 for floats", ""},
  {"DETACH", IntegerSetting{1, 31536000, detach_when_quiet}, "Has the process work on without the Core, for which it waits so many seconds once it needs it", ""},
  {"EXPORT_STRUCTURE", Action{.run = file_actions::export_structure}, "Writes the current model into a file", "path of a .cif, .xyz, .qfx or .car file"},
  {"FACE_DISPLAY", LogicalSetting{&build_settings.face_display}, "Marks atoms on faces of the cell, to be shown on both", ""},
  {"IMPORT_STRUCTURE", Action{.run = file_actions::import_structure}, "Reads a structure file, whose first model becomes the current one", "path of a .cif, .xyz, .qfx or .car file"},
  {"ISOSURFACE", Action{{volume_open}, field::isosurface}, "Surface on which the values of the open volume are the one given", "number"},
  {"NORMALS", text_setting(field_settings.normals, "NONE,INWARDS,OUTWARDS"), "Normals of surfaces: inwards is towards higher values", ""},
  {"PRIMITIVE_CELL", Action{.run = builder_actions::primitive_cell}, "Describes the current crystal or unit in the primitive cell of its lattice", ""},
  {"SITE", Action{.run = unit_actions::site, .nesting = Nesting::free}, "Adds an atom to the asymmetric unit", "element symbol and three fractional coordinates"},
  {"SPACE_GROUP", Action{.run = unit_actions::space_group, .nesting = Nesting::free}, "Space group of the asymmetric unit", "name or number of the group, then the number or letters of its setting where it is not the first"},
  {"SPECIAL_POSITIONS", LogicalSetting{&build_settings.special_positions}, "Takes images of an atom that fall together for one atom", ""},
  {"SYMMETRY_TOLERANCE", DoubleSetting{least_tolerance, largest_tolerance, store_tolerance}, "Distance up to which atoms fall together, Å", ""},
  {"TABLE", Action{.run = field::table, .nesting = Nesting::free}, "Opens a table file and tells its functions", "path of a table file"},
  {"TABLE_COLUMN", Action{{table_open}, field::table_column}, "Draws a function of the open table", "name of a function"},
  {"UNBUILD_CRYSTAL", Action{.run = builder_actions::unbuild_crystal}, "Takes the current crystal back to its asymmetric unit", ""},
  {"UNBUILD_SLAB", Action{.run = builder_actions::unbuild_slab}, "Takes the current slab back to a model that does not repeat", ""},
  {"VOLUME", Action{.run = field::volume}, "Opens a volume file and tells what it holds", "path of a volume file"},
  {"VOLUME_REGION", Action{{volume_open}, field::volume_region}, "Tells the values of the open volume between two corners", "six numbers: x, y, z of the one corner and of the other in Å"},
  {"VOLUME_VALUES", Action{{volume_open}, field::volume_values}, "Tells how many points of the open volume have values between two limits", "two numbers: the lower and the upper limit"},
});
// clang-format on

static_assert(well_formed(words));

}  // namespace

std::span<const CommandWord> building_command_words() { return words; }

}  // namespace pathstat
