#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <vector>

#include "analysis/actions.h"
#include "catalogue/catalogue.h"
#include "catalogue/catalogue_mask.h"
#include "services/text_operations.h"
#include "shell/arguments.h"
#include "shell/messages.h"
#include "state/analysis_settings.h"
#include "state/trajectory_frames.h"

namespace pathstat::actions {
namespace {

struct NamedId {
  std::string_view name;
  std::int32_t id;
};

constexpr std::array group_ids{NamedId{"ENERGY TOTALS", 1}, NamedId{"ENERGY COMPONENTS", 101}, NamedId{"OTHER", 201}};

constexpr std::array property_ids{
    NamedId{"TOTAL ENERGY", 1},
    NamedId{"POTENTIAL ENERGY", 2},
    NamedId{"KINETIC ENERGY", 3},
    NamedId{"NON BOND ENERGY", 4},
    NamedId{"VALENCE ENERGY", 5},
    NamedId{"BOND ENERGY", 101},
    NamedId{"ANGLE ENERGY", 102},
    NamedId{"TORSION ENERGY", 103},
    NamedId{"INVERSION ENERGY", 104},
    NamedId{"UREY BRADLEY ENERGY", 105},
    NamedId{"VAN DER WAALS ENERGY", 107},
    NamedId{"COULOMB ENERGY", 106},
    NamedId{"HBOND ENERGY", 108},
    NamedId{"RESTRAINT ENERGY", 109},
    NamedId{"CONSTRAINT ENERGY", 109},
    NamedId{"USER ENERGY", 110},
    NamedId{"TEMPERATURE", 201},
    NamedId{"RADIUS OF GYRATION", 202},
    NamedId{"PRESSURE", 203},
    NamedId{"VOLUME", 204},
    NamedId{"STRESS", 205},
    NamedId{"CELL PARAMETERS", 206},
};

constexpr std::int32_t dipole_magnitude = 301;
constexpr std::int32_t dipole_vector = 302;

/// Leaves only the rows of one identifier selected.
void select_only(std::int32_t id) {
  const auto table = property_table();
  for (std::size_t row = 0; row < table.size(); ++row) table.selected[row] = table.ids[row] == id;
}

const NamedId* find_named(std::span<const NamedId> rows, std::string_view name) {
  const auto found = std::ranges::find_if(rows, [&](const NamedId& row) { return same_text(row.name, name); });
  return found == rows.end() ? nullptr : &*found;
}

/// A name as a list shows it: "< name >" stands for an entry that is not available.
std::string_view unmarked(std::string_view text) {
  const auto bare = [](std::string_view t) {
    t.remove_prefix(std::min(t.find_first_not_of(' '), t.size()));
    return trimmed(t);
  };
  text = bare(text);
  if (text.size() >= 2 && text.front() == '<') text = bare(text.substr(1, text.size() - 2));
  return text;
}

/// What the user is told of a property that cannot be selected.
void tell_unavailable(const CatalogueTable& table, std::size_t row) {
  const std::string name = table.names[row].str();
  if (!table.can_be_used[row]) {
    refuse("PATHSTAT_MSG_2", name);
  } else if (!table.calculated[row]) {
    const bool dipole = table.ids[row] == dipole_magnitude || table.ids[row] == dipole_vector;
    dipole ? refuse("PATHSTAT_MSG_44") : refuse("PATHSTAT_MSG_1", name);
  }
}

/// The same for a fluctuation quantity; the dielectric constant lacks the dipole moments.
void tell_unavailable_fluctuation(const CatalogueTable& table, std::size_t row) {
  constexpr std::string_view dielectric = "Dielectric Constant";
  const std::string name = table.names[row].str();
  if (!table.can_be_used[row]) {
    refuse("PATHSTAT_MSG_2", name);
  } else if (!table.calculated[row]) {
    refuse("PATHSTAT_MSG_1", name == dielectric ? std::string_view("Dipole Moment") : std::string_view(name));
  }
}

using SameName = bool (*)(std::string_view, std::string_view);

bool same_in_any_case(std::string_view a, std::string_view b) { return STR_CaseCmp(trimmed(a), trimmed(b)) == 0; }

/// Reads all arguments first: telling the user may bring a nested command, which has arguments of its own.
std::int32_t read_names(std::vector<Text<50>>& names) {
  std::int32_t status = 0;
  kvz_defineminargcount_(0, status);
  if (status > 0) return status;
  names.resize(static_cast<std::size_t>(std::max(0, kvZ_ArgumentTotal())));
  for (std::size_t k = 0; k < names.size(); ++k) {
    kvz_argfillstring_(names[k], static_cast<std::int32_t>(k + 1), 0, "", status);
    if (status > 0) return status;
  }
  return 0;
}

void select_by_names(const std::vector<Text<50>>& names, CatalogueTable (*table_of)(), SameName same,
                     void (*tell)(const CatalogueTable&, std::size_t)) {
  for (const auto& text : names) {
    const auto name = unmarked(text.full());
    for (std::size_t row = 0; row < table_of().size(); ++row) {
      const auto table = table_of();  // a nested command may have built it anew
      if (!same(table.names[row], name)) continue;
      if (table.selectable[row] && table.calculated[row] && table.can_be_used[row]) {
        table.selected[row] = true;
      } else {
        tell(table, row);
      }
    }
  }
}

std::int32_t select(CatalogueTable (*table_of)(), SameName same, void (*tell)(const CatalogueTable&, std::size_t),
                    void (*check)(), Logical& any_selected) {
  std::vector<Text<50>> names;
  const std::int32_t result = read_names(names);
  if (result > 0) return result;
  std::ranges::fill(table_of().selected, Logical(false));
  std::int32_t status = 0;
  maskprops_(trj_frames_c_.trj_file_name, true, status);
  select_by_names(names, table_of, same, tell);
  check();
  any_selected = table_of().any_wanted();
  return 0;
}

void check_against_models() {
  std::int32_t status = 0;
  if (trj_gui_c_.input_source == from_selected_models) checkprops_(status);
}

}  // namespace

std::int32_t property_type() {
  Text<32> name;
  std::int32_t status = 0;
  kvz_argfillstring_(name, 1, 0, property_groups, status);
  if (status > 0) return status;
  if (const auto* group = find_named(group_ids, name)) select_only(group->id);
  trj_gui_l_.any_property_selected = true;
  return 0;
}

std::int32_t property() {
  constexpr std::int32_t unknown_name = -1;
  constexpr std::int32_t no_row = 0;
  Text<32> name;
  std::int32_t status = 0;
  kvz_argfillstring_(name, 1, 0, "", status);
  if (status > 0) return status;
  const auto* named = find_named(property_ids, name);
  select_only(named == nullptr ? no_row : named->id);
  return named == nullptr ? unknown_name : 0;
}

std::int32_t select_properties() {
  return select(property_table, same_in_any_case, tell_unavailable, check_against_models,
                trj_gui_l_.any_property_selected);
}

std::int32_t select_fluctuations() {
  return select(
      fluctuation_table, same_text, tell_unavailable_fluctuation, [] {}, trj_gui_l_.any_fluctuation_selected);
}

}  // namespace pathstat::actions
