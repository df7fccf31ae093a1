#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat::settings {

constexpr std::string_view rdf_between_names = "ALL ATOMS,SELECTED,ELEMENTS,FF TYPES,GROUPS";

// Each routine takes a value whose limits have been tested, and answers with the command's result: 0, or 1 for a
// value that does not fit the state, with or without a message.

std::int32_t input_source_changed();
std::int32_t atoms_changed();
std::int32_t update_rdf_names();
std::int32_t statistics_filename_changed();
void anisotropic_changed();
void monitor_changed();

std::int32_t extract_frame_no(std::int32_t frame);
std::int32_t extract_frame_time(double time_ps);
std::int32_t extrema_number(std::int32_t count);
std::int32_t maxima(std::int32_t count);
std::int32_t minima(std::int32_t count);
std::int32_t number_of_bins(std::int32_t bins);
std::int32_t block_width_no(std::int32_t frames);
std::int32_t block_width(double time_ps);
std::int32_t block_interval_no(std::int32_t frames);
std::int32_t block_interval(double time_ps);
double one_frame_of_the_range();

std::int32_t max_interval_no(std::int32_t frames);
std::int32_t max_interval(double time_ps);
std::int32_t msd_max_interval_no(std::int32_t frames);
std::int32_t msd_max_interval(double time_ps);
std::int32_t vac_max_interval_no(std::int32_t frames);
std::int32_t vac_max_interval(double time_ps);
std::int32_t dac_max_interval_no(std::int32_t frames);
std::int32_t dac_max_interval(double time_ps);
std::int32_t origin_step_no(std::int32_t frames);
std::int32_t origin_step(double time_ps);
std::int32_t msd_origin_step_no(std::int32_t frames);
std::int32_t msd_origin_step(double time_ps);
std::int32_t vac_origin_step_no(std::int32_t frames);
std::int32_t vac_origin_step(double time_ps);
std::int32_t dac_origin_step_no(std::int32_t frames);
std::int32_t dac_origin_step(double time_ps);
std::int32_t min_fit_time(double time_ps);
std::int32_t max_fit_time(double time_ps);
std::int32_t max_time_transform(double time_ps);
std::int32_t vac_max_time_transform(double time_ps);
std::int32_t dac_max_time_transform(double time_ps);
std::int32_t frequency_interval(double per_cm);
std::int32_t vac_frequency_interval(double per_cm);
std::int32_t dac_frequency_interval(double per_cm);

std::int32_t rdf_cutoff(double length);
std::int32_t rdf_interval(double length);
std::int32_t rdf_between();
std::int32_t rdf_type();
std::int32_t k_space_interval(double per_length);
std::int32_t r_space_cutoff(double length);

std::int32_t frame_step_speed(double speed);

}  // namespace pathstat::settings
