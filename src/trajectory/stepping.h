#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// Makes one step through the entries of the frame cache and shows it, marked in the saved plots.
///
/// At an end of the range the mode decides, by its first word: LOOP goes on at the other end, REVERSE turns, and STOP
/// has the Core stop the repeat of the command.
/// @param current  in and out: the entry now shown; it may stand one beside the range, from where a run begins anew
/// @param step     in and out: entries of a step, turned by REVERSE
/// @param status   0; that of showtrjframe_, with `current` as it was
void shownextframe_(std::int32_t& current, std::int32_t entries, std::int32_t& step, std::string_view mode,
                    bool recalculate_bonds, std::int32_t& status);

/// Marks a frame in all saved data sets, if marking is allowed. @param status  0
void highlightpoints_(std::int32_t frame, std::int32_t& status);

}  // namespace pathstat
