#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "desk/model/symmetry.h"

/// The space groups of three dimensions in all their tabulated settings.
namespace pathstat::desk {

/// All of them, ordered by their number in the International Tables; the settings of one number are options from 1,
/// the standard one first. The operators are left out.
std::span<const SpaceGroup> library_groups();

/// One of them, by its place, with its operators, the identity first, which are found when somebody asks. It stays as
/// long as the process, and any thread may ask.
const SpaceGroup& library_group(std::size_t place);

/// True if a text names a group: its full symbol ("P 1 21/c 1", "R 3:H") with or without the mark of its setting, or
/// its short one ("P21/c"); blanks and case do not matter.
bool is_name_of(std::size_t place, std::string_view text);

}  // namespace pathstat::desk
