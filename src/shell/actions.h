#pragma once

#include <cstdint>

namespace pathstat::actions {

// Each routine carries out a command whose guards hold, reads its own arguments, and answers with its result.

std::int32_t profile();
std::int32_t running_average();
std::int32_t block_average();
std::int32_t distribution();

std::int32_t reset();
std::int32_t stop();
std::int32_t free_volume();
std::int32_t get();
std::int32_t trajectory();

std::int32_t property();
std::int32_t property_type();
std::int32_t select_properties();
std::int32_t select_fluctuations();

}  // namespace pathstat::actions
