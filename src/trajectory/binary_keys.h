#pragma once

#include <cstdint>

#include "trajectory/binary_frame.h"

// The keys of a binary trajectory, as its getters and setters see them.

namespace pathstat {

/// Floating keys are all frame values; each record's layout has the place of its own.
constexpr bool is_floating_key(std::int32_t key) { return key >= 1000 && key <= 1102; }
constexpr bool is_atom_key(std::int32_t key) { return key >= 1071 && key <= 1073; }
/// The coordinate group of an atom key.
constexpr AtomGroup atom_group(std::int32_t key) { return static_cast<AtomGroup>(key - 1071); }

/// Integer keys of the current frame.
constexpr bool is_frame_integer_key(std::int32_t key) { return key >= 2011 && key <= 2016; }
/// F1 to F7: the key's place among the flag words of the head.
constexpr bool is_flag_key(std::int32_t key) { return key >= 3001 && key <= 3007; }
constexpr std::size_t flag_word(std::int32_t key) { return static_cast<std::size_t>(key - 3000); }
/// The velocity and the force flag of the current frame.
constexpr bool is_frame_flag_key(std::int32_t key) { return key == 3008 || key == 3009; }

}  // namespace pathstat
