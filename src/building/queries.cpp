#include "building/queries.h"

#include <array>
#include <string>

#include "building/asymmetric_unit.h"
#include "building/element_symbols.h"
#include "shell/output_texts.h"
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
    std::string text(element_symbol(site.element));
    text.resize(2, ' ');
    for (const double coordinate : site.fractional) text += formatted(coordinate, "(F11.6)");
    kvz_definevalue_(text);
  }
}

const std::array queries{
    QueryRow{"CELL", OtherQuery{define_cell}},
    QueryRow{"SITE", OtherQuery{define_sites}},
    QueryRow{"SPACE_GROUP", OtherQuery{define_group}},
};

}  // namespace

std::span<const QueryRow> building_queries() { return queries; }

}  // namespace pathstat
