#pragma once

#include <array>
#include <cstdint>

#include "support/logical.h"
#include "support/text_field.h"

namespace pathstat {

/// Most graphs that one command hands to the viewer.
constexpr std::size_t most_plot_graphs = 16;

/// Periodic types of models and trajectories.
namespace periodic_type {
constexpr std::int32_t none = 0;
constexpr std::int32_t three_dimensional = 100;
constexpr std::int32_t two_dimensional = 101;
constexpr std::int32_t one_dimensional = 102;
}  // namespace periodic_type

/// Values of TrjGuiI::reader_code.
namespace reader {
constexpr std::int32_t archive = 2;
constexpr std::int32_t history = 3;
constexpr std::int32_t binary = 4;
}  // namespace reader

/// Values of TrjGuiI::ensemble.
namespace ensemble_code {
constexpr std::int32_t unknown = -1;
constexpr std::int32_t constant_energy = 1;
constexpr std::int32_t constant_temperature = 2;
constexpr std::int32_t constant_temperature_and_pressure = 3;
constexpr std::int32_t constant_pressure = 4;

constexpr bool keeps_volume(std::int32_t ensemble) {
  return ensemble == constant_energy || ensemble == constant_temperature;
}
}  // namespace ensemble_code

/// Texts of TrjGuiC::input_source.
constexpr std::string_view from_selected_models = "SELECTED MODELS";
constexpr std::string_view from_trajectory = "TRAJECTORY";

struct TrjGuiL {
  Logical any_property_selected;     ///< a selected property can be had
  Logical any_fluctuation_selected;  ///< a selected fluctuation can be had
  Logical trj_gui_l_3;               ///< the dipole autocorrelation is there
  Logical has_time_axis;             ///< frames carry times, so that a time can stand for a frame number
  Logical trj_gui_l_5;
  Logical dipole_data_ready;  ///< the frames of the last dipoles are evenly spaced in time
  Logical rdf_components;
  Logical rdf_done;
  Logical vac_done;
  Logical msd_done;
  Logical trajectory_loaded;
  Logical frame_cache_ready;
  Logical calculate_histogram = true;
};
static_assert(sizeof(TrjGuiL) == 13 * sizeof(Logical));
inline TrjGuiL trj_gui_l_;

struct TrjGuiI {
  std::int32_t extrema_number = 10;
  std::int32_t property_count = 0;
  std::int32_t plot_graph_count = 0;
  std::int32_t periodicity = 0;  ///< periodic directions of the trajectory
  std::array<std::int32_t, most_plot_graphs> plot_graph_list{};
  std::int32_t fluctuation_count = 0;
  std::int32_t ensemble = ensemble_code::unknown;
  std::int32_t fixed_atoms = 0;
  std::int32_t total_atoms = 0;
  std::int32_t movable_atoms = 0;
  std::int32_t thermostat = -1;
  std::int32_t current_frame = 1;   ///< place of the shown frame in the range, from 1
  std::int32_t step_direction = 0;  ///< 1 forwards, -1 backwards
  std::int32_t trajectory_model = 0;
  std::int32_t step_delay_ms = 0;  ///< pause ahead of each automatic step
  std::int32_t file_kind = 0;
  std::int32_t reader_code = 0;
  std::int32_t format_version = 0;
  std::int32_t bond_recalculation_permitted = 0;
  std::int32_t molecule_count = 0;
};
static_assert(sizeof(TrjGuiI) == 35 * sizeof(std::int32_t));
inline TrjGuiI trj_gui_i_;

struct TrjGuiD {
  double model_mass = 0.0;  ///< atomic mass units
  double degrees_of_freedom = 0.0;
  double frame_step_speed = 100.0;
};
inline TrjGuiD trj_gui_d_;

struct TrjGuiC {
  Text<7> extrema_kind{"HIGHEST"};
  Text<10> dipole_for{from_trajectory};
  Text<10> free_volume_for{from_trajectory};
  Text<9> dipole_using{"ATOMS"};
  Text<25> extract_frames_using{"CURRENT FRAME"};
  Text<40> input_source{from_selected_models};
  Text<14> stepping_mode{"STOP AT END"};
  Text<1> step_state;  ///< "F" forwards, "B" backwards, " " stopped
  Text<1024> last_trajectory;
};
inline TrjGuiC trj_gui_c_;

}  // namespace pathstat
