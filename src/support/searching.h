#pragma once

#include <cstdint>
#include <span>

/// Searches in lists of integers. Positions count from 1; 0 is "not there".
namespace pathstat {

/// The first position of the key in a list, or 0. Walks the list: for many keys use IdentifierIndex.
std::int32_t index_list_(std::span<const std::int32_t> list, std::int32_t key);

/// Looks each key up in a table sorted up or down; the last of equal elements is found. A table whose first element is
/// not below its last counts as descending.
/// @param failures  keys that are not there
/// @param status    0; 1 `positions` is shorter than `keys`, and nothing is done
void search_(std::span<const std::int32_t> table, std::span<std::int32_t> positions, std::span<const std::int32_t> keys,
             std::int32_t& failures, std::int32_t& status);

/// As search_ for a table in any order; the first of equal elements is found. An empty table leaves `positions` alone.
/// @param status  0; 1 no memory or `positions` is shorter than `keys`, and nothing is done
void searchnosort_(std::span<const std::int32_t> table, std::span<const std::int32_t> keys,
                   std::span<std::int32_t> positions, std::int32_t& failures, std::int32_t& status);

/// Finds a key in a table sorted up or down, from a guess near it.
/// @param position  in: the guess; out: where the key is, or where it would have to be put in
/// @param status    0; -1 not there
void hunt_(std::span<const std::int32_t> table, std::int32_t key, std::int32_t& position, std::int32_t& status);

/// Narrows a bracket, 0 <= low < high <= n + 1, to adjacent positions: low ends on the last element not after the key.
/// @param status  0; 1 not such a bracket
void ibinchop_(std::span<const std::int32_t> table, std::int32_t& low, std::int32_t& high, std::int32_t key,
               bool ascending, std::int32_t& status);

/// Drops repeats in a sorted list; `unique` may be the list itself.
/// @param status  0; 1 `unique` is too short, and holds the first that fit
void iunique_(std::span<const std::int32_t> sorted, std::span<std::int32_t> unique, std::int32_t& count,
              std::int32_t& status);

/// Drops repeats in any list, keeping first appearances in order; `unique` is as long as the list and may be the list
/// itself. Without memory the count is 0.
void iuniquenosort_(std::span<const std::int32_t> values, std::span<std::int32_t> unique, std::int32_t& count);

}  // namespace pathstat
