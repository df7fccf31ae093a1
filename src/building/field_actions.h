#pragma once

#include <cstdint>

/// What the words of densities, volumes, surfaces and tables do. Each returns the command's status; what is refused
/// changes nothing.
namespace pathstat::field_actions {

std::int32_t density();
std::int32_t density_axis(std::int32_t atom);
std::int32_t density_centre(std::int32_t atom);
std::int32_t density_plane(std::int32_t atom);
std::int32_t density_spacing(double spacing);
std::int32_t density_type(std::int32_t type);
std::int32_t volume();
std::int32_t volume_region();
std::int32_t volume_values();
std::int32_t isosurface();
std::int32_t table();
std::int32_t table_column();

/// Closes what is open and puts the settings back to their start.
void forget_fields();

}  // namespace pathstat::field_actions
