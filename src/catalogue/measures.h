#pragma once

#include <cstdint>

namespace pathstat {

/// The selector of a model's monitors, when they are counted and when they are listed.
constexpr std::int32_t monitor_selector = 4;

/// The monitors of one type in a model. @param status  0, or the Core's error, impossible_count among them, with a
/// count of 0
std::int32_t numberofmeasures_(std::int32_t model, std::int32_t monitor_type, std::int32_t& status);

/// The Core's object of this application, whose user data remember the monitors by MeasureFamily::data_key.
/// @param status  0, or the Core's error
std::int32_t monitor_memory(std::int32_t& status);

}  // namespace pathstat
