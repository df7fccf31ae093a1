#include "building/command_words.h"

#include <array>

#include "building/field_actions.h"
#include "building/field_settings.h"
#include "building/unit_actions.h"
#include "state/analysis_settings.h"

namespace pathstat {
namespace {

constexpr Guard loaded{[] { return bool(trj_gui_l_.trajectory_loaded); }, "PATHSTAT_ERROR_57",
                       "a trajectory is loaded"};
constexpr Guard volume_open{[] { return current_volume.is_open(); }, "STRUCTURE_NO_VOLUME", "a volume is open"};
constexpr Guard table_open{[] { return !current_table.view().empty(); }, "STRUCTURE_NO_TABLE", "a table is open"};

namespace field = field_actions;

// clang-format off
constexpr auto words = std::to_array<CommandWord>({
  {"CELL", Action{.run = unit_actions::cell, .nesting = Nesting::free}, "Cell of the asymmetric unit", "six numbers: a, b, c in Å, alpha, beta, gamma in degrees"},
  {"CLEAR_SITES", Action{.run = unit_actions::clear_sites, .nesting = Nesting::free}, "Drops all sites of the asymmetric unit", ""},
  {"DENSITY", Action{{loaded}, field::density}, "Mean number density of atoms over the frames of the range, as a volume file that is then open", ""},
  {"DENSITY_ATOMS", text_setting(field_settings.density_atoms, "ALL,SELECTED"), "Atoms of the density", ""},
  {"DENSITY_CENTRE", IntegerSetting{0, 100000000, field::density_centre}, "Number of the atom that stays in the middle of the cell of the density; 0 for none", ""},
  {"DENSITY_FILE", text_setting(field_settings.density_file, ""), "Volume file that DENSITY writes", "name of a volume file"},
  {"DENSITY_SPACING", DoubleSetting{0.01, 100.0, field::density_spacing}, "Farthest that grid points of the density may stand apart along an edge of the cell, Å", ""},
  {"DENSITY_TYPE", IntegerSetting{1, 4, field::density_type}, "Bytes of a value in the file of the density: 1 or 2 for steps between its limits, 4 for floats", ""},
  {"ISOSURFACE", Action{{volume_open}, field::isosurface}, "Surface on which the values of the open volume are the one given", "number"},
  {"NORMALS", text_setting(field_settings.normals, "NONE,INWARDS,OUTWARDS"), "Normals of surfaces: inwards is towards higher values", ""},
  {"SITE", Action{.run = unit_actions::site, .nesting = Nesting::free}, "Adds an atom to the asymmetric unit", "element symbol and three fractional coordinates"},
  {"SPACE_GROUP", Action{.run = unit_actions::space_group, .nesting = Nesting::free}, "Space group of the asymmetric unit", "name or number of the group, then its setting where it is not the first"},
  {"TABLE", Action{.run = field::table, .nesting = Nesting::free}, "Opens a table file and tells its functions", "path of a table file"},
  {"TABLE_COLUMN", Action{{table_open}, field::table_column}, "Draws a function of the open table", "name of a function"},
  {"VOLUME", Action{.run = field::volume}, "Opens a volume file and tells what it holds", "path of a volume file"},
  {"VOLUME_REGION", Action{{volume_open}, field::volume_region}, "Tells the values of the open volume between two corners", "six numbers: x, y, z of the one corner and of the other in Å"},
  {"VOLUME_VALUES", Action{{volume_open}, field::volume_values}, "Tells how many points of the open volume have values between two limits", "two numbers: the lower and the upper limit"},
});
// clang-format on

static_assert(well_formed(words));

}  // namespace

std::span<const CommandWord> building_command_words() { return words; }

}  // namespace pathstat
