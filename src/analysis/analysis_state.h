#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// The key under which the Core knows this application.
constexpr std::string_view application_key = "MD_ANALYSIS";

/// The safety copy of the trajectory's model.
constexpr std::string_view model_copy_path = "./TmpTrjModel.qfx";

/// The modal class of graph tools, and its states.
namespace graph_mode {
constexpr std::int32_t modal_class = 9;
constexpr std::string_view pick = "ANALYSIS_PICK";
constexpr std::string_view standard = "DEFAULT";
}  // namespace graph_mode

/// The count nearest to x, halves away from zero. Values beyond 32 bits become the nearest end of their range.
std::int32_t nearest_count(double x);

/// A span of time in frames of the range: time over (time step × frame step), to the nearest; 0 without a time step.
std::int32_t frames_of_time(double time_ps);

/// The frame of the file nearest to a time, from 1 where all is well; 0 without a time step.
std::int32_t frame_of_time(double time_ps);

/// Where a radial distribution takes its atoms from: "TRAJECTORY", unless the input or RDF_FOR says models.
std::string_view rdf_source();

/// Sets the frame selection and the lengths of the correlations for a trajectory of so many frames.
/// @param first_time, time_step  ps
void trj_guiinit_(double first_time, double time_step, std::int32_t frame_count, std::int32_t& error);

/// Sets the four maximal intervals to `interval` frames, and all times but the start of the fit to its time.
void set_maximal_intervals(std::int32_t interval, double fit_start);

/// The state without a trajectory: no shown frame, no cache, no saved graphs, graph picks off.
void forget_trajectory();

/// Puts the graph tool back to its standard if it is the pick mode.
void leave_pick_mode();

}  // namespace pathstat
