#pragma once

#include <cstdint>
#include <span>

/// A hash table from integers to integers in arrays that the caller owns.
///
/// A table is `size` keys, `size` values beside them, the count of entries and the key that marks a free slot. Key k
/// belongs in slot k mod size and steps forward from there; k is taken without sign, so that negative keys work too.
/// The empty key itself cannot be stored. One slot always stays free. The spans of a table may be longer than `size`;
/// where they are shorter, or the values of new entries fewer than their keys, the status is 1 and nothing is done.
namespace pathstat {

/// size = the next prime at or above 3 x count + 1. @param status  0; 1 that is beyond 32 bits, with size 0
void hashsuggestedsize_(std::int32_t expected_count, std::int32_t& size, std::int32_t& status);

/// Makes all slots of the span free. The span's length is the table's size.
void hashinitialize_(std::span<std::int32_t> table_keys, std::int32_t& count, std::int32_t empty_key,
                     std::int32_t& status);

/// answer = n more entries fit
void hashqueryroomtoaddnvalues_(std::int32_t count, std::int32_t n, std::int32_t size, bool& answer,
                                std::int32_t& status);

/// Adds the entries without looking for equal keys; a search finds the one that was added first.
/// @param status  0; 1 they do not all fit, and none is added
void hashinsert_(std::span<const std::int32_t> keys, std::span<const std::int32_t> values,
                 std::span<std::int32_t> table_keys, std::span<std::int32_t> table_values, std::int32_t& count,
                 std::int32_t size, std::int32_t empty_key, std::int32_t& status);

/// Adds the entries; an equal key takes the new value.
/// @param status  0; 1 the table became full, and the entries before that are stored
void hashinsertduplicates_(std::span<const std::int32_t> keys, std::span<const std::int32_t> values,
                           std::span<std::int32_t> table_keys, std::span<std::int32_t> table_values,
                           std::int32_t& count, std::int32_t size, std::int32_t empty_key, std::int32_t& status);

/// Finds one key. @param status  0; -1 not there, 1 no table, both with the default as value
void hashsearch1_(std::int32_t key, std::span<const std::int32_t> table_keys,
                  std::span<const std::int32_t> table_values, std::int32_t& value, std::int32_t size,
                  std::int32_t empty_key, std::int32_t default_value, std::int32_t& status);

/// Finds many keys. @param status  0 all found; 1 no table; else -1
void hashsearch_(std::span<const std::int32_t> keys, std::span<std::int32_t> values,
                 std::span<const std::int32_t> table_keys, std::span<const std::int32_t> table_values,
                 std::int32_t size, std::int32_t empty_key, std::int32_t default_value, std::int32_t& status);

/// Rehashes in place; the spans must hold the new size. A new size below 1 does nothing.
/// @param status  0; 1 no memory, or the entries do not fit; nothing is changed
void hashresize_(std::int32_t new_size, std::span<std::int32_t> table_keys, std::span<std::int32_t> table_values,
                 std::int32_t& count, std::int32_t& size, std::int32_t empty_key, std::int32_t& status);

/// prime = the smallest number from n on for which integerisprime_ holds
void getnextprime_(std::int32_t n, std::int32_t& prime, std::int32_t& status);

/// Every number below 4 counts as prime.
bool integerisprime_(std::int32_t n);

}  // namespace pathstat
