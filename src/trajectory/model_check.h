#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// Finds out whether the trajectory's model is still there. If another model is current, the user is told
/// (PATHSTAT_MSG_48). If the model is gone, the user is asked whether to bring back its copy, which then becomes the
/// trajectory's model.
///
/// @param copy         file of the copy
/// @param model        in and out
/// @param cache_ready  the frame cache follows to the model that was brought back
/// @param status  0; 1 if the model is gone and stays so
void checktrjmodel_(std::string_view copy, std::int32_t& model, bool cache_ready, std::int32_t& status);

}  // namespace pathstat
