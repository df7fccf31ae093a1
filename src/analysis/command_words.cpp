#include "analysis/command_words.h"

#include "analysis/actions.h"
#include "analysis/correlation_actions.h"
#include "analysis/frame_actions.h"
#include "analysis/ranking_actions.h"
#include "analysis/rdf_actions.h"
#include "analysis/settings.h"
#include "state/analysis_settings.h"
#include "state/correlation_settings.h"
#include "state/rdf_settings.h"
#include "state/statistics_settings.h"
#include "state/trajectory_frames.h"

namespace pathstat {
namespace {

namespace set = settings;
namespace run = actions;

constexpr std::string_view all_or_selected = "ALL,SELECTED";
constexpr std::string_view trajectory_or_model = "TRAJECTORY,MODEL";

// clang-format off
constexpr Guard property_selected{[] { return bool(trj_gui_l_.any_property_selected); }, "PATHSTAT_MSG_30", "a property is selected"};
constexpr Guard source_is_trajectory{[] { return !(trj_gui_c_.input_source == from_selected_models); }, "PATHSTAT_ERROR_77", "the input is a trajectory", true};
constexpr Guard loaded{[] { return bool(trj_gui_l_.trajectory_loaded); }, "PATHSTAT_ERROR_57", "a trajectory is loaded"};
constexpr Guard loaded_if_trajectory{[] { return !(trj_gui_c_.input_source == from_trajectory) || trj_gui_l_.trajectory_loaded; }, "PATHSTAT_ERROR_57", "a trajectory is loaded, if it is the input"};
constexpr Guard fluctuation_selected{[] { return bool(trj_gui_l_.any_fluctuation_selected); }, "PATHSTAT_MSG_34", "a fluctuation quantity is selected"};
constexpr Guard time_axis{[] { return bool(trj_gui_l_.has_time_axis); }, "PATHSTAT_ERROR_113", "the frames carry times"};
constexpr Guard displacement_done{[] { return bool(trj_gui_l_.msd_done); }, "PATHSTAT_ERROR_28", "MSD has run"};
constexpr Guard velocities_done{[] { return bool(trj_gui_l_.vac_done); }, "PATHSTAT_ERROR_73", "VAC has run"};
constexpr Guard distribution_done{[] { return bool(trj_gui_l_.rdf_done); }, "PATHSTAT_ERROR_71", "RDF has run"};
constexpr Guard dipole_interval_set{[] { return trj_vac_msd_i_.max_interval_no_dac != 0; }, "PATHSTAT_ERROR_114", "DAC_MAX_INTERVAL_NO is not 0"};
// clang-format on

using Int = std::int32_t;
constexpr Bound<Int> any_integer{};
constexpr Bound<double> any_number{};

constexpr Bound<Int> frames_in_file{&trj_frames_.frames_in_file, "the frames of the file"};
constexpr Bound<double> one_frame{set::one_frame_of_the_range, "one frame of the range"};
constexpr Bound<double> fit_start{&trj_vac_msd_d_.min_fit_time, "MIN_FIT_TIME"};
constexpr Bound<double> fit_end{&trj_vac_msd_d_.max_fit_time, "MAX_FIT_TIME"};

// clang-format off
constexpr std::array<CommandWord, command_word_count> words{{
  {"ANALYSIS_INPUT_SOURCE", text_setting(trj_gui_c_.input_source, "SELECTED MODELS,TRAJECTORY", set::input_source_changed, true), "What the analyses work on", ""},
  {"ANALYSIS_STRUCTURE_FROM_PLOT", Action{.run = run::structure_from_plot, .nesting = Nesting::free}, "Shows the frame of a picked point of a graph", "graph name, graph handle, x, y, event word"},
  {"ANISOTROPIC", LogicalSetting{&trj_aniso_.anisotropic, set::anisotropic_changed}, "Components beside the totals, for all correlations", ""},
  {"ATOMS", text_setting(trj_vac_msd_c_.atoms, all_or_selected, set::atoms_changed), "Atoms of all correlations", ""},
  {"BLOCK_AVERAGE", Action{{property_selected, source_is_trajectory, loaded}, run::block_average, "BLOCK_AVERAGE"}, "Block averages of the selected properties", ""},
  {"BLOCK_AVERAGE_FLUCTUATIONS", Action{{source_is_trajectory, loaded, fluctuation_selected}, run::block_average_fluctuations, "Fluctuation"}, "Block averages of the selected fluctuation quantities", ""},
  {"BLOCK_INTERVAL", DoubleSetting{any_number, any_number, set::block_interval}, "Time between the starts of two blocks, ps", ""},
  {"BLOCK_INTERVAL_NO", IntegerSetting{any_integer, any_integer, set::block_interval_no}, "Frames between the starts of two blocks", ""},
  {"BLOCK_WIDTH", DoubleSetting{one_frame, any_number, set::block_width}, "Time in a block, ps", ""},
  {"BLOCK_WIDTH_NO", IntegerSetting{1, any_integer, set::block_width_no}, "Frames in a block", ""},
  {"CALCULATE_FLUCTUATIONS", Action{{source_is_trajectory, loaded, fluctuation_selected}, run::calculate_fluctuations, "Fluctuation"}, "The selected fluctuation quantities over the whole run", ""},
  {"CALCULATE_HISTOGRAM", LogicalSetting{&trj_gui_l_.calculate_histogram}, "Histograms beside the statistics of DISTRIBUTION", ""},
  {"CURRENT_FRAME_NUMBER", Action{.run = run::current_frame_number, .nesting = Nesting::frames}, "Shows a frame of the range by its place", "integer from 1 to the frames in the range"},
  {"CURRENT_FRAME_TIME", Action{.run = run::current_frame_time, .nesting = Nesting::frames}, "Shows a frame of the range by the time since the first frame of the file, in steps of the range", "time in ps"},
  {"DAC", Action{{source_is_trajectory, loaded, time_axis}, run::dac, "DAC"}, "Dipole autocorrelation", ""},
  {"DAC_ANISOTROPIC", LogicalSetting{&trj_aniso_.anisotropic_dac}, "Components of the dipole autocorrelation", ""},
  {"DAC_FREQUENCY_INTERVAL", DoubleSetting{0.0, any_number, set::dac_frequency_interval}, "Frequency step of the dipole spectrum, 1/cm", ""},
  {"DAC_MAX_INTERVAL", DoubleSetting{0.0, any_number, set::dac_max_interval}, "Longest lag of the dipole autocorrelation, ps", ""},
  {"DAC_MAX_INTERVAL_NO", IntegerSetting{1, any_integer, set::dac_max_interval_no}, "Longest lag of the dipole autocorrelation in frames", ""},
  {"DAC_MAX_TIME_TRANSFORM", DoubleSetting{0.0, any_number, set::dac_max_time_transform}, "Time that the dipole spectrum transforms, ps", ""},
  {"DAC_ORIGIN_STEP", DoubleSetting{0.0, any_number, set::dac_origin_step}, "Time between origins of the dipole autocorrelation, ps", ""},
  {"DAC_ORIGIN_STEP_NO", IntegerSetting{1, any_integer, set::dac_origin_step_no}, "Frames between origins of the dipole autocorrelation", ""},
  {"DAC_POWER_SPECTRUM", Action{{source_is_trajectory, loaded, time_axis, dipole_interval_set}, run::dac_power_spectrum, "DAC"}, "Power spectrum of the dipole autocorrelation", ""},
  {"DIPOLE", Action{{loaded_if_trajectory}, run::dipole}, "Dipole moments of the frames or models", ""},
  {"DIPOLE_ATOMS", text_setting(trj_vac_msd_c_.atoms_dac, all_or_selected), "Atoms of the dipole analyses", ""},
  {"DIPOLE_FOR", text_setting(trj_gui_c_.dipole_for, trajectory_or_model), "What the dipole panel works on", ""},
  {"DIPOLE_USING", text_setting(trj_gui_c_.dipole_using, "MOLECULES,ATOMS"), "Whether dipoles are made of molecules or of atoms", ""},
  {"DISTRIBUTION", Action{{property_selected, loaded_if_trajectory}, run::distribution}, "Statistics and histograms of the selected properties", ""},
  {"EXTRACT_FRAME", Action{{}, run::extract_frame}, "Puts the frame to extract on the model", ""},
  {"EXTRACT_FRAMES_USING", text_setting(trj_gui_c_.extract_frames_using, "CURRENT FRAME,SELECTED POINTS ON GRAPHS"), "How the frame to extract is chosen", ""},
  {"EXTRACT_FRAME_NO", IntegerSetting{1, frames_in_file, set::extract_frame_no}, "Frame to extract, by its number in the file", ""},
  {"EXTRACT_FRAME_TIME", DoubleSetting{0.0, any_number, set::extract_frame_time}, "Frame to extract, by its time in ps", ""},
  {"EXTREMA", text_setting(trj_gui_c_.extrema_kind, "HIGHEST,LOWEST"), "Which end of the values FIND_EXTREMA lists", ""},
  {"EXTREMA_NUMBER", IntegerSetting{1, 100, set::extrema_number}, "Rows of all rankings", ""},
  {"FIND_EXTREMA", Action{{property_selected, loaded_if_trajectory}, run::find_extrema}, "Ranks the frames of the selected properties by EXTREMA", ""},
  {"FIND_MAXIMA", Action{{property_selected, loaded_if_trajectory}, run::find_maxima}, "Ranks the frames by the highest values", ""},
  {"FIND_MINIMA", Action{{property_selected, loaded_if_trajectory}, run::find_minima}, "Ranks the frames by the lowest values", ""},
  {"FIRST_FRAME_NO", Action{{}, run::first_frame_no}, "First frame of the range", "integer from 1 to the last frame"},
  {"FIRST_FRAME_TIME", Action{{}, run::first_frame_time}, "First frame of the range, by its time", "time in ps"},
  {"FRAME_INFO", Action{{loaded}, run::frame_info}, "Reports the shown frame", ""},
  {"FRAME_STEPPING_MODE", text_setting(trj_gui_c_.stepping_mode, "STOP AT END,REVERSE AT END,LOOP AT END"), "What stepping does at an end of the range", ""},
  {"FRAME_STEP_BACKWARDS", Action{.run = run::frame_step_backwards, .nesting = Nesting::free}, "Steps backwards while its button is held", "phase of the press: START, END or anything else"},
  {"FRAME_STEP_FORWARDS", Action{.run = run::frame_step_forwards, .nesting = Nesting::free}, "Steps forwards while its button is held", "phase of the press: START, END or anything else"},
  {"FRAME_STEP_SPEED", DoubleSetting{0.0, 100.0, set::frame_step_speed}, "Speed of stepping; 100 steps without a pause", ""},
  {"FRAME_STEP_STOP", Action{.run = run::frame_step_stop, .nesting = Nesting::free}, "Stops stepping", ""},
  {"FREE_VOLUME", Action{.run = run::free_volume, .nesting = Nesting::free}, "Free volume of the frames or models", ""},
  {"FREE_VOLUME_FOR", text_setting(trj_gui_c_.free_volume_for, trajectory_or_model), "What the free volume panel works on", ""},
  {"FREQUENCY_INTERVAL", DoubleSetting{0.0, any_number, set::frequency_interval}, "Frequency step of all spectra, 1/cm", ""},
  {"GET", Action{.run = run::get, .allowed = run::returned_keys, .nesting = Nesting::free}, "Returns a value to the Core's scripts", ""},
  {"INCREMENT_NO", Action{{}, run::increment_no}, "Step of the range in frames", "integer from 1 to the length of the range"},
  {"INCREMENT_TIME", Action{{}, run::increment_time}, "Step of the range, by its time", "time in ps, from the time step up"},
  {"K_SPACE_INTERVAL", DoubleSetting{0.0, any_number, set::k_space_interval}, "Step of the structure factor, 1/Å", ""},
  {"LAST_FRAME_NO", Action{{}, run::last_frame_no}, "Last frame of the range", "integer from the first frame to the frames of the file, or LAST"},
  {"LAST_FRAME_TIME", Action{{}, run::last_frame_time}, "Last frame of the range, by its time", "time in ps"},
  {"LINEAR_FIT", Action{{source_is_trajectory, loaded, displacement_done, time_axis}, run::linear_fit, "MSD"}, "Fits the displacement and prints diffusion coefficients", ""},
  {"MAXIMA", IntegerSetting{1, 100, set::maxima}, "Rows of a list of maxima", ""},
  {"MAX_FIT_TIME", DoubleSetting{fit_start, any_number, set::max_fit_time}, "End of the fitted lags, ps", ""},
  {"MAX_INTERVAL", DoubleSetting{0.0, any_number, set::max_interval}, "Longest lag of all correlations, ps", ""},
  {"MAX_INTERVAL_NO", IntegerSetting{1, any_integer, set::max_interval_no}, "Longest lag of all correlations in frames", ""},
  {"MAX_TIME_TRANSFORM", DoubleSetting{0.0, any_number, set::max_time_transform}, "Time that all spectra transform, ps", ""},
  {"MINIMA", IntegerSetting{1, 100, set::minima}, "Rows of a list of minima", ""},
  {"MIN_FIT_TIME", DoubleSetting{0.0, fit_end, set::min_fit_time}, "Start of the fitted lags, ps", ""},
  {"MONITOR", LogicalSetting{&trj_vac_msd_l_.monitor, set::monitor_changed}, "Draws all correlations while they run", ""},
  {"MONITOR_DAC", LogicalSetting{&trj_vac_msd_l_.monitor_dac}, "Draws the dipole autocorrelation while it runs", ""},
  {"MONITOR_MSD", LogicalSetting{&trj_vac_msd_l_.monitor_msd}, "Draws the displacement while it runs", ""},
  {"MONITOR_RDF", LogicalSetting{&trj_vac_msd_l_.monitor_rdf}, "Draws the radial distribution while it runs", ""},
  {"MONITOR_VAC", LogicalSetting{&trj_vac_msd_l_.monitor_vac}, "Draws the velocity autocorrelation while it runs", ""},
  {"MSD", Action{{source_is_trajectory, loaded, time_axis}, run::msd, "MSD"}, "Mean square displacement", ""},
  {"MSD_ANISOTROPIC", LogicalSetting{&trj_aniso_.anisotropic_msd}, "Components of the displacement", ""},
  {"MSD_ATOMS", text_setting(trj_vac_msd_c_.atoms_msd, all_or_selected), "Atoms of the displacement", ""},
  {"MSD_MAX_INTERVAL", DoubleSetting{0.0, any_number, set::msd_max_interval}, "Longest lag of the displacement, ps", ""},
  {"MSD_MAX_INTERVAL_NO", IntegerSetting{1, any_integer, set::msd_max_interval_no}, "Longest lag of the displacement in frames", ""},
  {"MSD_ORIGIN_STEP", DoubleSetting{0.0, any_number, set::msd_origin_step}, "Time between origins of the displacement, ps", ""},
  {"MSD_ORIGIN_STEP_NO", IntegerSetting{1, any_integer, set::msd_origin_step_no}, "Frames between origins of the displacement", ""},
  {"NUMBER_OF_BINS", IntegerSetting{1, 10000, set::number_of_bins}, "Bins of a histogram", ""},
  {"ORIGIN_STEP", DoubleSetting{0.0, any_number, set::origin_step}, "Time between origins of all correlations, ps", ""},
  {"ORIGIN_STEP_NO", IntegerSetting{1, any_integer, set::origin_step_no}, "Frames between origins of all correlations", ""},
  {"POWER_SPECTRUM", Action{{source_is_trajectory, loaded, velocities_done, time_axis}, run::power_spectrum, "VACF"}, "Power spectrum of the velocity autocorrelation", ""},
  {"PROFILE", Action{{property_selected, loaded_if_trajectory}, run::profile}, "The selected properties over the frames or models", ""},
  {"PROPERTY", Action{.run = run::property, .nesting = Nesting::free}, "Selects one property by its upper-case name", "a name in upper case, such as TOTAL ENERGY or RADIUS OF GYRATION"},
  {"PROPERTY_TYPE", Action{.run = run::property_type, .allowed = run::property_groups, .nesting = Nesting::free}, "Selects the first property of a group", ""},
  {"RDF", Action{{loaded_if_trajectory}, run::rdf}, "Radial distribution function", ""},
  {"RDF_BETWEEN", Action{.run = set::rdf_between, .allowed = set::rdf_between_names, .nesting = Nesting::free}, "Sets of atoms of a radial distribution", ""},
  {"RDF_COMPONENTS", LogicalSetting{&trj_gui_l_.rdf_components}, "Intra- and intermolecular parts of a radial distribution", ""},
  {"RDF_CUTOFF", DoubleSetting{1.0, any_number, set::rdf_cutoff}, "Longest distance of a radial distribution, Å", ""},
  {"RDF_FOR", text_setting(trj_rdf_c_.rdf_for, trajectory_or_model, set::update_rdf_names), "What a radial distribution works on", ""},
  {"RDF_INTERVAL", DoubleSetting{1e-05, any_number, set::rdf_interval}, "Bin width of a radial distribution, Å", ""},
  {"RDF_NORMALIZATION", text_setting(trj_rdf_c_.rdf_normalization, "PARTIAL,TOTAL"), "Norm of a radial distribution", ""},
  {"RDF_TYPE", Action{.run = set::rdf_type, .nesting = Nesting::free}, "The two names of a radial distribution", "two names that the atoms offer"},
  {"RESET", Action{{}, run::reset}, "Puts all settings back and drops the trajectory, if the user agrees", ""},
  {"RUNNING_AVERAGE", Action{{property_selected, source_is_trajectory, loaded}, run::running_average, "RUNNING_AVERAGE"}, "Running averages of the selected properties", ""},
  {"RUNNING_AVERAGE_FLUCTUATIONS", Action{{source_is_trajectory, loaded, fluctuation_selected}, run::running_average_fluctuations, "Fluctuation"}, "Running averages of the selected fluctuation quantities", ""},
  {"R_SPACE_CUTOFF", DoubleSetting{0.0, any_number, set::r_space_cutoff}, "Length that gives the step of the structure factor, Å", ""},
  {"SELECTED_STATISTICS_FILENAME", Label{}, "Short name of the table file, for a panel", ""},
  {"SELECTED_TRAJECTORY", Label{}, "Short name of the trajectory, for a panel", ""},
  {"SELECT_FLUCTUATIONS", Action{.run = run::select_fluctuations, .nesting = Nesting::free}, "Selects fluctuation quantities by name", "any number of names"},
  {"SELECT_PROPERTIES", Action{.run = run::select_properties, .nesting = Nesting::free}, "Selects properties by name, in letters of either case", "any number of names"},
  {"SHOW_NEXT_FRAME", Action{.run = run::show_next_frame, .nesting = Nesting::free}, "Shows the next frame, round the ends of the range", "phase of the press: START, END or anything else"},
  {"SHOW_PREVIOUS_FRAME", Action{.run = run::show_previous_frame, .nesting = Nesting::free}, "Shows the frame before, round the ends of the range", "phase of the press: START, END or anything else"},
  {"STATISTICS_FILE", LogicalSetting{&trj_stats_.stats_file}, "Results go to the table file", ""},
  {"STATISTICS_FILENAME", text_setting(trj_stats_c_.stats_filename, "", set::statistics_filename_changed), "Name of the table file; .dat is added where it lacks", ""},
  {"STATISTICS_PLOT", LogicalSetting{&trj_stats_.stats_plot}, "Results go to graphs", ""},
  {"STATISTICS_TEXT", LogicalSetting{&trj_stats_.stats_text}, "Results are printed", ""},
  {"STOP", Action{.run = run::stop, .nesting = Nesting::free}, "Ends the process at once", ""},
  {"STRUCTURE_FACTOR", Action{{loaded_if_trajectory, distribution_done}, run::structure_factor}, "Structure factor of the last radial distribution", ""},
  {"TRAJECTORY", Action{{}, run::trajectory}, "Loads a trajectory and its model", "path of the file, or its stem"},
  {"USE_ALL_FRAMES", Action{{}, run::use_all_frames}, "Puts the range back to the whole file", ""},
  {"VAC", Action{{source_is_trajectory, loaded, time_axis}, run::vac, "VACF"}, "Velocity autocorrelation", ""},
  {"VAC_ANISOTROPIC", LogicalSetting{&trj_aniso_.anisotropic_vac}, "Components of the velocity autocorrelation", ""},
  {"VAC_ATOMS", text_setting(trj_vac_msd_c_.atoms_vac, all_or_selected), "Atoms of the velocity autocorrelation", ""},
  {"VAC_FREQUENCY_INTERVAL", DoubleSetting{0.0, any_number, set::vac_frequency_interval}, "Frequency step of the velocity spectrum, 1/cm", ""},
  {"VAC_MAX_INTERVAL", DoubleSetting{0.0, any_number, set::vac_max_interval}, "Longest lag of the velocity autocorrelation, ps", ""},
  {"VAC_MAX_INTERVAL_NO", IntegerSetting{1, any_integer, set::vac_max_interval_no}, "Longest lag of the velocity autocorrelation in frames", ""},
  {"VAC_MAX_TIME_TRANSFORM", DoubleSetting{0.0, any_number, set::vac_max_time_transform}, "Time that the velocity spectrum transforms, ps", ""},
  {"VAC_ORIGIN_STEP", DoubleSetting{0.0, any_number, set::vac_origin_step}, "Time between origins of the velocity autocorrelation, ps", ""},
  {"VAC_ORIGIN_STEP_NO", IntegerSetting{1, any_integer, set::vac_origin_step_no}, "Frames between origins of the velocity autocorrelation", ""},
}};
// clang-format on

static_assert(well_formed(words));

}  // namespace

std::span<const CommandWord, command_word_count> command_words() { return words; }

const std::array<Text<28>, command_word_count>& pathstat_cmd_common__() {
  static const auto names = [] {
    std::array<Text<28>, command_word_count> list;
    for (std::size_t k = 0; k < list.size(); ++k) list[k] = words[k].word;
    return list;
  }();
  return names;
}

}  // namespace pathstat
