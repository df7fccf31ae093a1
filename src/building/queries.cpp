#include "building/queries.h"

#include <array>
#include <string>

#include "building/asymmetric_unit.h"
#include "building/build_settings.h"
#include "building/field_settings.h"
#include "shell/output_texts.h"
#include "structure/elements.h"
#include "support/number_format.h"

namespace pathstat {
namespace {

void define_cell() {
  if (!asymmetric_unit.has_cell()) return;
  for (const double length : asymmetric_unit.lengths) kvz_definevalue_(formatted(length, "(F12.5)"));
  for (const double angle : asymmetric_unit.angles) kvz_definevalue_(formatted(angle, "(F10.4)"));
}

/// The name or the number, and the option where one was given.
void define_group() {
  const auto& unit = asymmetric_unit;
  kvz_definevalue_(unit.group_number > 0 ? formatted(unit.group_number, "(I3)") : unit.group.str());
  if (unit.group_option > 0) kvz_definevalue_(formatted(unit.group_option, "(I2)"));
}

/// One value a site.
void define_sites() {
  for (const auto& site : asymmetric_unit.sites) {
    std::string text(symbol_of_element(site.element));
    text.resize(2, ' ');
    for (const double coordinate : site.fractional) text += formatted(coordinate, "(F11.6)");
    kvz_definevalue_(text);
  }
}

/// Path, points on each axis, type, kind, least and largest value.
void define_volume() {
  const auto& v = current_volume;
  if (!v.is_open()) return;
  kvz_definevalue_(v.path.view());
  for (const auto number : {v.nx, v.ny, v.nz, v.type, v.kind}) kvz_definevalue_(formatted(number, "(I3)"));
  for (const auto limit : {v.min, v.max}) kvz_definevalue_(formatted(double{limit}, "(G14.6)"));
}

void define_table() {
  if (!current_table.view().empty()) kvz_definevalue_(current_table.view());
}

const std::array queries{
    QueryRow{"ALIGN_POLYMER", FlagQuery{&build_settings.align_polymer}},
    QueryRow{"BONDING", TextQuery{[] { return build_settings.bonding.view(); }, bonding_names}},
    QueryRow{"CELL", OtherQuery{define_cell}},
    QueryRow{"CELL_DISPLAY", TextQuery{[] { return build_settings.cell_display.view(); }, display_names}},
    QueryRow{"DENSITY_ATOMS", TextQuery{[] { return field_settings.density_atoms.view(); }, "ALL,SELECTED"}},
    QueryRow{"DENSITY_AXIS", CountQuery{&field_settings.density_axis, "(I9)"}},
    QueryRow{"DENSITY_CENTRE", CountQuery{&field_settings.density_centre, "(I9)"}},
    QueryRow{"DENSITY_FILE", TextQuery{[] { return field_settings.density_file.view(); }, ""}},
    QueryRow{"DENSITY_PLANE", CountQuery{&field_settings.density_plane, "(I9)"}},
    QueryRow{"DENSITY_SPACING", NumberQuery{[] { return field_settings.density_spacing; }, "(F8.3)"}},
    QueryRow{"DENSITY_TYPE", CountQuery{&field_settings.density_type, "(I1)"}},
    QueryRow{"FACE_DISPLAY", FlagQuery{&build_settings.face_display}},
    QueryRow{"NORMALS", TextQuery{[] { return field_settings.normals.view(); }, "NONE,INWARDS,OUTWARDS"}},
    QueryRow{"SITE", OtherQuery{define_sites}},
    QueryRow{"SPACE_GROUP", OtherQuery{define_group}},
    QueryRow{"SPECIAL_POSITIONS", FlagQuery{&build_settings.special_positions}},
    QueryRow{"SYMMETRY_TOLERANCE", NumberQuery{[] { return build_settings.tolerance; }, "(F10.5)"}},
    QueryRow{"TABLE", OtherQuery{define_table}},
    QueryRow{"VOLUME", OtherQuery{define_volume}},
};

}  // namespace

std::span<const QueryRow> building_queries() { return queries; }

}  // namespace pathstat
