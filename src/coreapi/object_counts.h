#pragma once

#include <cstdint>

namespace pathstat {

/// More objects than any Core holds. A count beyond it is a fault of the peer, and no room is made for it.
constexpr std::int32_t most_objects = 100'000'000;

constexpr bool is_object_count(std::int32_t count) { return count >= 0 && count <= most_objects; }

/// Status of a call whose answer is no count of objects.
constexpr std::int32_t impossible_count = 1;

/// kvd_mod_numatoms_ and kvd_sel_numselected_, held against most_objects.
/// @param count  0 unless `error` is 0
/// @param error  that of the call, or impossible_count
void count_atoms(std::int32_t model, std::int32_t selector, std::int32_t& count, std::int32_t& error);
void count_selected(std::int32_t object, std::int32_t object_class, std::int32_t& count, std::int32_t& error);

}  // namespace pathstat
