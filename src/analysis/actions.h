#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat::actions {

/// The keys that GET accepts; FRAME_STEP among them has no value.
constexpr std::string_view returned_keys =
    "NUMBER_OF_FRAMES,NUMBER_OF_FRAMES_SELECTED,FIRST_FRAME_SELECTED,LAST_FRAME_SELECTED,FIRST_FRAME_SELECTED_TIME,"
    "LAST_FRAME_SELECTED_TIME,FRAME_STEP_TIME,FRAME_STEP,TRAJECTORY_FILE_NAME,TABLES_FILE_NAME";

constexpr std::string_view property_groups = "ENERGY TOTALS,ENERGY COMPONENTS,OTHER";

// Each routine carries out a command whose guards hold, reads its own arguments, and answers with its result.

std::int32_t profile();
std::int32_t running_average();
std::int32_t block_average();
std::int32_t distribution();

std::int32_t calculate_fluctuations();
std::int32_t running_average_fluctuations();
std::int32_t block_average_fluctuations();

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
