#include "catalogue/catalogue_mask.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <optional>
#include <vector>

#include "catalogue/catalogue.h"
#include "catalogue/frame_sources.h"
#include "catalogue/mask_rules.h"
#include "catalogue/measure_families.h"
#include "catalogue/measures.h"
#include "catalogue/model_selection.h"
#include "coreapi/messages.h"
#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "state/analysis_settings.h"
#include "state/trajectory_frames.h"
#include "trajectory/front_end.h"
#include "trajectory/open_trajectory.h"

namespace pathstat {
namespace {

/// A header value of the trajectory, and what stands for it where the reader does not know it.
struct HeaderValue {
  std::int32_t key;
  std::int32_t TrjGuiI::*member;
  std::int32_t absent;
};

constexpr auto header_values = std::to_array<HeaderValue>({
    {200004, &TrjGuiI::periodicity, 0},
    {200001, &TrjGuiI::format_version, 0},
    {200156, &TrjGuiI::movable_atoms, 0},
    {200177, &TrjGuiI::molecule_count, 2},
    {200140, &TrjGuiI::ensemble, ensemble_code::unknown},
    {200141, &TrjGuiI::thermostat, -1},
});

namespace property_id {
constexpr std::int32_t total_energy = 1, potential_energy = 2, temperature = 201;
}

/// Identifiers of the rows of which the loaded file has no numbers.
std::vector<std::int32_t> absent_rows;

bool is_absent(std::int32_t id) { return std::ranges::find(absent_rows, id) != absent_rows.end(); }

Facts trajectory_facts() {
  const bool is_history = trj_gui_i_.reader_code == reader::history;
  const bool is_binary = trj_gui_i_.reader_code == reader::binary;
  const bool recent = trj_gui_i_.format_version >= 2010;
  const std::int32_t directions = trj_gui_i_.periodicity;
  Facts facts;
  facts[Fact::always] = true;
  facts[Fact::energies] = is_history || is_binary;
  facts[Fact::binary] = is_binary;
  facts[Fact::history] = is_history;
  facts[Fact::conserved_energy] =
      trj_gui_l_.has_time_axis && is_binary && trj_gui_i_.format_version >= 2000 && trj_gui_i_.thermostat != 1;
  facts[Fact::total_cross_terms] = is_binary && recent;
  facts[Fact::cross_terms] = is_history || (is_binary && recent);
  facts[Fact::molecules] = is_history && trj_gui_i_.molecule_count > 1;
  facts[Fact::periodic] = directions > 0;
  facts[Fact::pressure] = directions > 0 && (is_history || is_binary);
  facts[Fact::crystal] = directions == 3;
  facts[Fact::layer] = directions == 2;
  facts[Fact::cell] = directions == 2 || directions == 3;
  facts[Fact::gyration] = directions == 0 && is_binary;
  return facts;
}

Facts model_facts(const ModelSelection& selection) {
  const auto types = selection.periodic_types();
  const bool last_two_same =
      types.size() == 1 || (types.size() > 1 && types[types.size() - 1] == types[types.size() - 2]);
  const bool some_crystal = selection.count_of(periodic_type::three_dimensional) > 0;
  const bool some_layer = selection.count_of(periodic_type::two_dimensional) > 0;
  Facts facts;
  facts[Fact::always] = true;
  facts[Fact::gyration] = selection.count_of(periodic_type::none) > 0;
  facts[Fact::crystal] = some_crystal;
  facts[Fact::layer] = some_layer;
  facts[Fact::periodic] = some_crystal || some_layer;
  facts[Fact::cell] = (some_crystal && last_two_same) || some_layer;
  return facts;
}

Facts fluctuation_facts() {
  const std::int32_t directions = trj_gui_i_.periodicity;
  const std::int32_t ensemble = trj_gui_i_.ensemble;
  const bool at_hand = trj_gui_l_.has_time_axis && (directions == 0 || directions == 3) &&
                       ensemble != ensemble_code::unknown && trj_gui_i_.format_version >= 2000 &&
                       trj_gui_i_.reader_code == reader::binary && !is_absent(property_id::temperature);
  const bool thermostat = at_hand && trj_gui_i_.thermostat != 1;
  Facts facts;
  facts[Fact::always] = at_hand;
  facts[Fact::thermostat] = thermostat;
  facts[Fact::crystal_thermostat] = thermostat && directions == 3;
  facts[Fact::pressure_thermostat] = thermostat && !ensemble_code::keeps_volume(ensemble);
  facts[Fact::dielectric] = at_hand && directions == 3;
  return facts;
}

void find_measures(std::span<const std::int32_t> models, Facts& facts) {
  for (std::size_t k = 0; k < measure_families.size(); ++k) {
    facts.measures[k] = std::ranges::any_of(models, [type = measure_families[k].monitor_type](std::int32_t model) {
      std::int32_t error = 0;
      return numberofmeasures_(model, type, error) > 0;
    });
  }
}

void mask_rows(const CatalogueTable& table, std::span<const MaskRule> rules, const Facts& facts) {
  for (std::size_t row = 0; row < table.size(); ++row) {
    const std::int32_t id = table.ids[row];
    const MaskRule rule = mask_rule(rules, id);
    table.selectable[row] = facts.of_row(rule.selectable, id);
    table.can_be_used[row] = facts.of_row(rule.can_be_used, id);
  }
}

/// Two curves of one row take their colours from the wheel, which a negative colour stands for.
void sign_colours(const CatalogueTable& table) {
  const bool fixed_volume = ensemble_code::keeps_volume(trj_gui_i_.ensemble);
  for (std::size_t row = 0; row < table.size(); ++row) {
    if (table.ids[row] != 803 && table.ids[row] != 806) continue;
    const std::int32_t magnitude = std::abs(table.colours[row]);
    table.colours[row] = fixed_volume ? -magnitude : magnitude;
  }
}

/// Without energies there is but the compressibility, which follows from volumes.
bool needs_energies(std::int32_t fluctuation) {
  constexpr std::int32_t first = 801, isothermal_compressibility = 802, last = 810;
  return fluctuation >= first && fluctuation <= last && fluctuation != isothermal_compressibility;
}

/// Takes what the file has no numbers of out of the choice.
void mask_absent(const CatalogueTable& table) {
  const bool no_energies = is_absent(property_id::total_energy) && is_absent(property_id::potential_energy);
  for (std::size_t row = 0; row < table.size(); ++row) {
    const std::int32_t id = table.ids[row];
    if (is_absent(id) || (no_energies && needs_energies(id))) table.selectable[row] = table.can_be_used[row] = false;
  }
}

bool is_heading(std::int32_t id) { return id > 600 && id < 700; }

/// A heading goes with the last of its rows.
void mask_empty_headings(const CatalogueTable& table) {
  bool any_below = false;
  for (std::size_t row = table.size(); row-- > 0;) {
    if (!is_heading(table.ids[row])) {
      any_below = any_below || table.can_be_used[row];
    } else {
      if (!any_below) table.can_be_used[row] = false;
      any_below = false;
    }
  }
}

void mask_fluctuations() {
  const CatalogueTable table = fluctuation_table();
  const Facts facts = fluctuation_facts();
  mask_rows(table, fluctuation_rules, facts);
  mask_absent(table);
  if (facts[Fact::always]) sign_colours(table);
  trj_gui_l_.any_fluctuation_selected = table.any_wanted();
}

void count_model_atoms(std::int32_t model) {
  constexpr std::int32_t with_images = 3;
  std::int32_t error = 0;
  count_atoms(model, with_images, trj_gui_i_.total_atoms, error);
  trj_gui_i_.fixed_atoms = trj_gui_i_.total_atoms - trj_gui_i_.movable_atoms;
  trj_gui_d_.degrees_of_freedom =
      degrees_of_freedom(trj_gui_i_.movable_atoms, trj_gui_i_.fixed_atoms, trj_gui_i_.periodicity);
}

/// True if the frame that is loaded has an answer to a key, and no number in it: one that is not a number, or none put
/// there at all.
bool has_no_number(const OpenTrajectory& trajectory, std::int32_t key) {
  std::array<double, 6> values{};
  values.fill(std::numeric_limits<double>::quiet_NaN());
  std::int32_t count = 0;
  std::int32_t status = 0;
  trj_dvalue_(trajectory.handle(), key, values, count, status);
  const auto answer = std::span(values).first(static_cast<std::size_t>(std::clamp(count, 0, 6)));
  return status == 0 && !answer.empty() && std::ranges::all_of(answer, [](double v) { return std::isnan(v); });
}

/// Looks for the rows of a binary trajectory whose values are no numbers in its first and in its last frame: whoever
/// wrote it had none.
void find_absent_rows(const OpenTrajectory& trajectory) {
  absent_rows.clear();
  if (trj_gui_i_.reader_code != reader::binary) return;
  for (const auto& source : frame_sources) {
    if (source.extent == FrameExtent::one || source.extent == FrameExtent::six) absent_rows.push_back(source.id);
  }
  bool any_frame = false;
  for (const std::int32_t frame : {1, trj_frames_.frames_in_file}) {
    if (absent_rows.empty()) return;  // the way to the last frame leads over all others
    std::int32_t status = 0;
    trj_readframe_(trajectory.handle(), frame, status);
    if (status != 0) continue;
    any_frame = true;
    std::erase_if(absent_rows, [&](std::int32_t id) {
      return !has_no_number(trajectory, std::ranges::find(frame_sources, id, &FrameSource::id)->key);
    });
  }
  if (!any_frame) absent_rows.clear();  // nothing is known
}

void mask_trajectory(std::string_view file, bool keep, std::int32_t& status) {
  status = 0;
  const std::int32_t model = trj_gui_i_.trajectory_model;
  std::int32_t model_exists = 0;
  std::int32_t error = 0;
  kvd_validateoid_(model, model_exists, error);
  std::optional<OpenTrajectory> trajectory;
  if (!keep) {
    trajectory.emplace(file, model, status);
    if (status != 0) return;
    for (const auto& [key, member, absent] : header_values) trj_gui_i_.*member = trajectory->integer(key, absent);
    find_absent_rows(*trajectory);
    trj_propinit_(status);
    if (status != 0) return;
  }
  if (trj_gui_l_.trajectory_loaded) {
    Facts facts = trajectory_facts();
    if (model_exists != 0) find_measures(std::span(&model, 1), facts);
    mask_rows(property_table(), trajectory_rules, facts);
    mask_absent(property_table());
    if (!absent_rows.empty()) mask_empty_headings(property_table());
  }
  trj_gui_l_.any_property_selected = property_table().any_wanted();
  trj_gui_d_.degrees_of_freedom = 1.0;
  if (model_exists != 0) count_model_atoms(model);
  mask_fluctuations();
  if (trajectory && trajectory->attach_status() != 0) status = trajectory_status::attach_refused;
}

void mask_models(std::int32_t& status) {
  status = 0;
  const ModelSelection selection("pathstat/MSK/ModelOIDs", "pathstat/MSK/ModelPeriod", status);
  if (status != 0) return;
  Facts facts = model_facts(selection);
  find_measures(selection.models(), facts);
  const CatalogueTable table = property_table();
  mask_rows(table, model_rules, facts);
  trj_gui_l_.any_property_selected = table.any_wanted();

  const CatalogueTable fluctuations = fluctuation_table();
  std::ranges::fill(fluctuations.selectable, Logical(false));
  std::ranges::fill(fluctuations.can_be_used, Logical(false));
  std::ranges::fill(fluctuations.calculated, Logical(true));
  trj_gui_l_.any_fluctuation_selected = false;
}

bool can_serve(std::int32_t id, const ModelSelection& selection) {
  switch (id) {
    case 202:
      return selection.count_of(periodic_type::none) > 0;
    case 206:
      return selection.count_of(periodic_type::none) < selection.size();
    case 204:
    case 207:
      return selection.count_of(periodic_type::three_dimensional) > 0;
    case 208:
      return selection.count_of(periodic_type::two_dimensional) > 0;
    default:
      return true;
  }
}

void refuse_property(std::string_view property, bool is_current_model) {
  show_message("PATHSTAT_WARN_13", property, is_current_model ? "current model" : "any of the selected models");
}

}  // namespace

double degrees_of_freedom(std::int32_t movable, std::int32_t fixed, std::int32_t periodicity) {
  const double all = 3.0 * movable;
  if (fixed > 0) return all;
  if (periodicity > 0) return all - 3.0;
  if (movable < 2) return 0.0;
  return movable == 2 ? 1.0 : all - 6.0;
}

void maskprops_(std::string_view file, bool keep, std::int32_t& status) {
  if (trj_gui_c_.input_source == from_trajectory) {
    mask_trajectory(file, keep, status);
  } else {
    mask_models(status);
  }
}

void checkprops_(std::int32_t& status) {
  status = 0;
  const ModelSelection selection("PathStat/ChkP/Models", "PathStat/ChkP/Period", status);
  if (status != 0) return;
  for (std::size_t row = 0; row < property_table().size(); ++row) {
    const CatalogueTable table = property_table();  // a nested command may have built it anew
    if (!table.selected[row] || can_serve(table.ids[row], selection)) continue;
    table.selected[row] = false;
    refuse_property(table.names[row], selection.is_current_model());
  }
}

}  // namespace pathstat
