#pragma once

#include <cstdint>
#include <span>
#include <string_view>

// What the readers of all formats hold against a call before they do their own work.

namespace pathstat {

/// @param name  without blanks behind it
/// @return 0; bad_mode after PATHSTAT_ERROR_106; no_file after PATHSTAT_ERROR_107
std::int32_t check_open(std::string_view name, std::int32_t mode);

/// @param fits  tells whether a model is that of the open file
/// @return 0; attach_refused: after PATHSTAT_ERROR_111 for several models, after PATHSTAT_ERROR_112 for one that does
///         not fit, else if there is no model or no file
std::int32_t check_attach(std::span<const std::int32_t> models, bool is_open, bool (*fits)(std::int32_t model));

}  // namespace pathstat
