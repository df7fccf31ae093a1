#pragma once

#include <cstdint>

namespace pathstat {

/// The monitors of one type in a model. @param status  0, or the Core's error, with a count of 0
std::int32_t numberofmeasures_(std::int32_t model, std::int32_t monitor_type, std::int32_t& status);

}  // namespace pathstat
