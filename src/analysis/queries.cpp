#include <array>
#include <string>

#include "analysis/analysis.h"
#include "analysis/analysis_state.h"
#include "analysis/command_words.h"
#include "catalogue/catalogue.h"
#include "catalogue/catalogue_mask.h"
#include "pairs/rdf_names.h"
#include "services/file_names.h"
#include "shell/output_texts.h"
#include "state/analysis_settings.h"
#include "state/correlation_settings.h"
#include "state/rdf_settings.h"
#include "state/statistics_settings.h"
#include "state/trajectory_frames.h"
#include "support/number_format.h"

namespace pathstat {
namespace {

constexpr std::string_view all_or_selected = "ALL,SELECTED";
constexpr std::string_view trajectory_or_model = "TRAJECTORY,MODEL";
constexpr double light_cm_per_ps = 0.03;
constexpr double pi = 3.141592653589793;

/// Time of so many frames of the range.
double span_ps(std::int32_t frames) { return trj_frames_.frame_step * trj_frames_.frame_time_step * frames; }

/// Time of a frame of the file.
double time_ps(std::int32_t frame) { return trj_frames_.frame_first_time + trj_frames_.frame_time_step * (frame - 1); }

bool frames_have_times() { return trj_gui_l_.has_time_axis; }

/// A point of time or a span of frames, in the form that suits its size; blanks where frames carry no times.
void define_frame_time(double time) {
  constexpr double long_run = 100000.0;
  constexpr std::size_t width = 16;
  if (!frames_have_times()) return kvz_definevalue_(std::string(width, ' '));
  kvz_definevalue_(formatted(time, time < long_run ? "(F16.5)" : "(G16.8)"));
}

/// The time that a spectrum transforms, as the step of its frequencies; nothing where it is 0.
void define_frequency(double transform_ps) {
  if (transform_ps != 0.0) kvz_definevalue_(formatted(0.5 / (transform_ps * light_cm_per_ps), "(G12.5)"));
}

std::string_view name_of_between() {
  switch (trj_rdf_i_.rdf_set_type) {
    case rdf_between::all_atoms:
      return "ALL ATOMS";
    case rdf_between::selected:
      return "SELECTED";
    case rdf_between::elements:
      return "ELEMENTS";
    case rdf_between::fftypes:
      return "FF TYPES";
    case rdf_between::groups:
      return "GROUPS";
    default:
      return "";
  }
}

void define_rdf_names() {
  auto names = trj_rdf_c_;
  std::int32_t length = 0;
  std::int32_t status = 0;
  update_rdf_range_(rdf_source(), trj_gui_i_.trajectory_model, trj_rdf_i_.rdf_set_type, names.rdf_name_list, length,
                    names.rdf_name_1, names.rdf_name_2, status);
  for (const auto& name : {names.rdf_name_1, names.rdf_name_2}) {
    kvz_definevalue_(name);
    kvz_definerange_(names.rdf_name_list.full().substr(0, static_cast<std::size_t>(length)));
  }
}

/// A path as a panel shows it.
void define_short_name(std::string_view path, std::string_view where_blank) {
  Text<1024> name(path);
  kvs_fil_extractname_(name);
  const std::string base = name.str();
  if (base.empty()) return kvz_definevalue_(where_blank);
  kvz_definevalue_((base.front() == '/' ? "..." : ".../") + base);
}

/// The entry of a row in its list of choices: a heading, one that can be had, or one between < and >.
std::string choice_label(const CatalogueTable& table, std::size_t row, std::size_t indent) {
  const std::string name = table.names[row].str();
  if (!table.selectable[row]) return name;
  const std::string blanks(indent, ' ');
  return table.calculated[row] ? blanks + name : blanks + "< " + name + " >";
}

/// Lists the rows that are shown and those of them that are selected. @return false if none is shown
bool add_choices(const CatalogueTable& table, std::size_t indent) {
  bool any = false;
  for (std::size_t row = 0; row < table.size(); ++row) {
    if (!table.can_be_used[row]) continue;
    any = true;
    const std::string label = choice_label(table, row, indent);
    kvz_addtorangelist_(label);
    if (table.selected[row]) kvz_addtovaluelist_(label);
  }
  return any;
}

void define_lists() {
  kvz_definevaluefromlist_();
  kvz_definerangefromlist_();
}

void bring_catalogue_up_to_date() {
  std::int32_t status = 0;
  maskprops_(trj_frames_c_.trj_file_name, true, status);
}

void define_properties() {
  bring_catalogue_up_to_date();
  add_choices(property_table(), 5);
  define_lists();
}

void define_fluctuations() {
  bring_catalogue_up_to_date();
  if (!add_choices(fluctuation_table(), 3)) {
    for (const auto* line : {"It is not possible to identify any", "properties which can be calculated using",
                             "the currently selected input data."}) {
      kvz_addtorangelist_(line);
    }
  }
  define_lists();
}

void define_step_speed() { kvz_definevalue_(trimmed(formatted(trj_gui_d_.frame_step_speed, "(f5.1)"))); }

// clang-format off
const std::array queries{
  QueryRow{"ANALYSIS_INPUT_SOURCE", TextQuery{[] { return trj_gui_c_.input_source.full(); }, "SELECTED MODELS,TRAJECTORY"}},
  QueryRow{"ANISOTROPIC", FlagQuery{&trj_aniso_.anisotropic}},
  QueryRow{"ATOMS", TextQuery{[] { return trj_vac_msd_c_.atoms.full(); }, all_or_selected}},
  QueryRow{"BLOCK_INTERVAL", NumberQuery{[] { return span_ps(trj_stats_.block_interval); }, "(f10.4)", frames_have_times}},
  QueryRow{"BLOCK_INTERVAL_NO", CountQuery{&trj_stats_.block_interval, "(i8)"}},
  QueryRow{"BLOCK_WIDTH", NumberQuery{[] { return span_ps(trj_stats_.block_width); }, "(f10.4)", frames_have_times}},
  QueryRow{"BLOCK_WIDTH_NO", CountQuery{&trj_stats_.block_width, "(i8)"}},
  QueryRow{"CALCULATE_HISTOGRAM", FlagQuery{&trj_gui_l_.calculate_histogram}},
  QueryRow{"CURRENT_FRAME_NUMBER", CountQuery{&trj_gui_i_.current_frame, "(I7)"}},
  QueryRow{"CURRENT_FRAME_TIME", OtherQuery{[] { define_frame_time(time_ps(trj_frames_.first_frame + trj_frames_.frame_step * (trj_gui_i_.current_frame - 1))); }}},
  QueryRow{"DAC_ANISOTROPIC", FlagQuery{&trj_aniso_.anisotropic_dac}},
  QueryRow{"DAC_FREQUENCY_INTERVAL", OtherQuery{[] { define_frequency(trj_vac_msd_d_.max_time_transform_dac); }}},
  QueryRow{"DAC_MAX_INTERVAL", NumberQuery{[] { return span_ps(trj_vac_msd_i_.max_interval_no_dac); }, "(G12.5)", frames_have_times}},
  QueryRow{"DAC_MAX_INTERVAL_NO", CountQuery{&trj_vac_msd_i_.max_interval_no_dac, "(i6)"}},
  QueryRow{"DAC_MAX_TIME_TRANSFORM", NumberQuery{[] { return trj_vac_msd_d_.max_time_transform_dac; }, "(G12.5)"}},
  QueryRow{"DAC_ORIGIN_STEP", NumberQuery{[] { return span_ps(trj_vac_msd_i_.origin_step_no_dac); }, "(G12.5)", frames_have_times}},
  QueryRow{"DAC_ORIGIN_STEP_NO", CountQuery{&trj_vac_msd_i_.origin_step_no_dac, "(i6)"}},
  QueryRow{"DIPOLE_ATOMS", TextQuery{[] { return trj_vac_msd_c_.atoms_dac.full(); }, all_or_selected}},
  QueryRow{"DIPOLE_FOR", TextQuery{[] { return trj_gui_c_.dipole_for.full(); }, trajectory_or_model}},
  QueryRow{"DIPOLE_USING", TextQuery{[] { return trj_gui_c_.dipole_using.full(); }, "MOLECULES,ATOMS"}},
  QueryRow{"EXTRACT_FRAMES_USING", TextQuery{[] { return trj_gui_c_.extract_frames_using.full(); }, "CURRENT FRAME,SELECTED POINTS ON GRAPHS"}},
  QueryRow{"EXTRACT_FRAME_NO", CountQuery{&trj_extract_, "(i6)"}},
  QueryRow{"EXTRACT_FRAME_TIME", NumberQuery{[] { return time_ps(trj_extract_); }, "(G12.5)", frames_have_times}},
  QueryRow{"EXTREMA", TextQuery{[] { return trj_gui_c_.extrema_kind.full(); }, "HIGHEST,LOWEST"}},
  QueryRow{"EXTREMA_NUMBER", CountQuery{&trj_gui_i_.extrema_number, "(I3)"}},
  QueryRow{"FIRST_FRAME_NO", CountQuery{&trj_frames_.first_frame, "(i6)"}},
  QueryRow{"FIRST_FRAME_TIME", OtherQuery{[] { define_frame_time(time_ps(trj_frames_.first_frame)); }}},
  QueryRow{"FRAME_STEPPING_MODE", TextQuery{[] { return trj_gui_c_.stepping_mode.full(); }, "STOP AT END,REVERSE AT END,LOOP AT END"}},
  QueryRow{"FRAME_STEP_BACKWARDS", TextQuery{[] { return std::string_view(trj_gui_c_.step_state == "B" ? "Y" : "N"); }, ""}},
  QueryRow{"FRAME_STEP_FORWARDS", TextQuery{[] { return std::string_view(trj_gui_c_.step_state == "F" ? "Y" : "N"); }, ""}},
  QueryRow{"FRAME_STEP_SPEED", OtherQuery{define_step_speed}},
  QueryRow{"FREE_VOLUME_FOR", TextQuery{[] { return trj_gui_c_.free_volume_for.full(); }, trajectory_or_model}},
  QueryRow{"FREQUENCY_INTERVAL", OtherQuery{[] { define_frequency(trj_vac_msd_d_.max_time_transform); }}},
  QueryRow{"INCREMENT_NO", CountQuery{&trj_frames_.frame_step, "(I6)"}},
  QueryRow{"INCREMENT_TIME", OtherQuery{[] { define_frame_time(span_ps(1)); }}},
  QueryRow{"K_SPACE_INTERVAL", NumberQuery{[] { return trj_rdf_d_.k_space_interval; }, "(f10.4)"}},
  QueryRow{"LAST_FRAME_NO", CountQuery{&trj_frames_.last_frame, "(i6)"}},
  QueryRow{"LAST_FRAME_TIME", OtherQuery{[] { define_frame_time(time_ps(trj_frames_.last_frame)); }}},
  QueryRow{"MAXIMA", CountQuery{&trj_stats_.maxima_count, "(i4)"}},
  QueryRow{"MAX_FIT_TIME", NumberQuery{[] { return trj_vac_msd_d_.max_fit_time; }, "(G12.5)"}},
  QueryRow{"MAX_INTERVAL", NumberQuery{[] { return span_ps(trj_vac_msd_i_.max_interval_no); }, "(G12.5)", frames_have_times}},
  QueryRow{"MAX_INTERVAL_NO", CountQuery{&trj_vac_msd_i_.max_interval_no, "(i6)"}},
  QueryRow{"MAX_TIME_TRANSFORM", NumberQuery{[] { return trj_vac_msd_d_.max_time_transform; }, "(G12.5)"}},
  QueryRow{"MINIMA", CountQuery{&trj_stats_.minima_count, "(i4)"}},
  QueryRow{"MIN_FIT_TIME", NumberQuery{[] { return trj_vac_msd_d_.min_fit_time; }, "(G12.5)"}},
  QueryRow{"MONITOR", FlagQuery{&trj_vac_msd_l_.monitor}},
  QueryRow{"MONITOR_DAC", FlagQuery{&trj_vac_msd_l_.monitor_dac}},
  QueryRow{"MONITOR_MSD", FlagQuery{&trj_vac_msd_l_.monitor_msd}},
  QueryRow{"MONITOR_RDF", FlagQuery{&trj_vac_msd_l_.monitor_rdf}},
  QueryRow{"MONITOR_VAC", FlagQuery{&trj_vac_msd_l_.monitor_vac}},
  QueryRow{"MSD_ANISOTROPIC", FlagQuery{&trj_aniso_.anisotropic_msd}},
  QueryRow{"MSD_ATOMS", TextQuery{[] { return trj_vac_msd_c_.atoms_msd.full(); }, all_or_selected}},
  QueryRow{"MSD_MAX_INTERVAL", NumberQuery{[] { return span_ps(trj_vac_msd_i_.max_interval_no_msd); }, "(G12.5)", frames_have_times}},
  QueryRow{"MSD_MAX_INTERVAL_NO", CountQuery{&trj_vac_msd_i_.max_interval_no_msd, "(i6)"}},
  QueryRow{"MSD_ORIGIN_STEP", NumberQuery{[] { return span_ps(trj_vac_msd_i_.origin_step_no_msd); }, "(G12.5)", frames_have_times}},
  QueryRow{"MSD_ORIGIN_STEP_NO", CountQuery{&trj_vac_msd_i_.origin_step_no_msd, "(i6)"}},
  QueryRow{"NUMBER_OF_BINS", CountQuery{&trj_stats_.number_of_bins, "(i6)"}},
  QueryRow{"ORIGIN_STEP", NumberQuery{[] { return span_ps(trj_vac_msd_i_.origin_step_no); }, "(G12.5)", frames_have_times}},
  QueryRow{"ORIGIN_STEP_NO", CountQuery{&trj_vac_msd_i_.origin_step_no, "(i6)"}},
  QueryRow{"RDF_BETWEEN", TextQuery{name_of_between, "ALL ATOMS,SELECTED,ELEMENTS,FF TYPES"}},
  QueryRow{"RDF_COMPONENTS", FlagQuery{&trj_gui_l_.rdf_components}},
  QueryRow{"RDF_CUTOFF", NumberQuery{[] { return trj_rdf_d_.rdf_cutoff; }, "(F8.5)"}},
  QueryRow{"RDF_FOR", TextQuery{[] { return trj_rdf_c_.rdf_for.full(); }, trajectory_or_model}},
  QueryRow{"RDF_INTERVAL", NumberQuery{[] { return trj_rdf_d_.rdf_interval; }, "(F8.5)"}},
  QueryRow{"RDF_NORMALIZATION", TextQuery{[] { return trj_rdf_c_.rdf_normalization.full(); }, ""}},
  QueryRow{"RDF_TYPE", OtherQuery{define_rdf_names}},
  QueryRow{"R_SPACE_CUTOFF", NumberQuery{[] { return pi / trj_rdf_d_.k_space_interval; }, "(f10.4)"}},
  QueryRow{"SELECTED_STATISTICS_FILENAME", OtherQuery{[] { define_short_name(trj_stats_c_.stats_filename, "  <Please Select Output File>"); }}},
  QueryRow{"SELECTED_TRAJECTORY", OtherQuery{[] { define_short_name(trj_frames_c_.trj_file_name, "  <Please Select Trajectory>"); }}},
  QueryRow{"SELECT_FLUCTUATIONS", OtherQuery{define_fluctuations}},
  QueryRow{"SELECT_PROPERTIES", OtherQuery{define_properties}},
  QueryRow{"STATISTICS_FILE", FlagQuery{&trj_stats_.stats_file}},
  QueryRow{"STATISTICS_FILENAME", TextQuery{[] { return trj_stats_c_.stats_filename.full(); }, ""}},
  QueryRow{"STATISTICS_PLOT", FlagQuery{&trj_stats_.stats_plot}},
  QueryRow{"STATISTICS_TEXT", FlagQuery{&trj_stats_.stats_text}},
  QueryRow{"VAC_ANISOTROPIC", FlagQuery{&trj_aniso_.anisotropic_vac}},
  QueryRow{"VAC_ATOMS", TextQuery{[] { return trj_vac_msd_c_.atoms_vac.full(); }, all_or_selected}},
  QueryRow{"VAC_FREQUENCY_INTERVAL", OtherQuery{[] { define_frequency(trj_vac_msd_d_.max_time_transform_vac); }}},
  QueryRow{"VAC_MAX_INTERVAL", NumberQuery{[] { return span_ps(trj_vac_msd_i_.max_interval_no_vac); }, "(G12.5)", frames_have_times}},
  QueryRow{"VAC_MAX_INTERVAL_NO", CountQuery{&trj_vac_msd_i_.max_interval_no_vac, "(i6)"}},
  QueryRow{"VAC_MAX_TIME_TRANSFORM", NumberQuery{[] { return trj_vac_msd_d_.max_time_transform_vac; }, "(G12.5)"}},
  QueryRow{"VAC_ORIGIN_STEP", NumberQuery{[] { return span_ps(trj_vac_msd_i_.origin_step_no_vac); }, "(G12.5)", frames_have_times}},
  QueryRow{"VAC_ORIGIN_STEP_NO", CountQuery{&trj_vac_msd_i_.origin_step_no_vac, "(i6)"}},
};
// clang-format on

}  // namespace

const WordTable& analysis_words() {
  static const WordTable table{application_key, "Analysis of trajectories", command_words(), queries};
  return table;
}

std::int32_t set_pathstat_(std::string_view command, std::string_view arguments) {
  return run_command(analysis_words(), command, arguments);
}

void get_pathstat_(std::string_view key) { answer_request(analysis_words(), key); }

}  // namespace pathstat
