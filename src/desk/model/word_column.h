#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pathstat::desk {

/// One word per atom. Each distinct word is held once and known by a number, so that words of many atoms are compared
/// without looking at their letters.
class WordColumn {
 public:
  static std::size_t hash(std::string_view word) { return std::hash<std::string_view>()(word); }

  void push_back(std::string_view word) { push_back(word, hash(word)); }
  void push_back(std::string_view word, std::size_t hash) { keys_.push_back(key_of(word, hash)); }
  void assign(std::size_t count, std::string_view word) { keys_.assign(count, key_of(word, hash(word))); }
  /// Gives a new last atom the word of atom k.
  void repeat(std::size_t k) { keys_.push_back(keys_[k]); }
  void reserve(std::size_t count) { keys_.reserve(count); }
  /// Keeps the words of these atoms, in this order.
  void pick(std::span<const std::uint32_t> atoms) {
    std::vector<std::uint32_t> kept;
    kept.reserve(atoms.size());
    for (const auto atom : atoms) kept.push_back(keys_[atom]);
    keys_ = std::move(kept);
  }

  std::size_t size() const { return keys_.size(); }
  std::string_view operator[](std::size_t k) const { return words_[keys_[k]]; }
  std::uint32_t key(std::size_t k) const { return keys_[k]; }
  /// The number of a word, if any atom has it.
  std::optional<std::uint32_t> find(std::string_view word) const { return find(word, hash(word)); }
  /// The distinct words, by their number.
  const std::deque<std::string>& words() const { return words_; }

 private:
  /// Where a word is looked for; a slot of no word has the key `none`.
  struct Slot {
    std::uint32_t mark = 0;  ///< a part of the hash, to tell most other words without looking at them
    std::uint32_t key = none;
  };
  static constexpr std::uint32_t none = 0xFFFFFFFF;

  static std::uint32_t mark_of(std::size_t hash) { return static_cast<std::uint32_t>(hash >> 32U); }

  std::optional<std::uint32_t> find(std::string_view word, std::size_t hash) const {
    if (slots_.empty()) return std::nullopt;
    for (std::size_t at = hash;; ++at) {
      const Slot& slot = slots_[at % slots_.size()];
      if (slot.key == none) return std::nullopt;
      if (slot.mark == mark_of(hash) && words_[slot.key] == word) return slot.key;
    }
  }

  std::uint32_t key_of(std::string_view word, std::size_t hash) {
    if (const auto known = find(word, hash)) return *known;
    if (slots_.size() < 2 * (words_.size() + 1)) grow();
    words_.emplace_back(word);
    const auto key = static_cast<std::uint32_t>(words_.size() - 1);
    put(slots_, hash, key);
    return key;
  }

  void grow() {
    std::vector<Slot> slots(std::bit_ceil(4 * (words_.size() + 1)));
    for (std::size_t key = 0; key < words_.size(); ++key)
      put(slots, hash(words_[key]), static_cast<std::uint32_t>(key));
    slots_ = std::move(slots);
  }

  static void put(std::vector<Slot>& slots, std::size_t hash, std::uint32_t key) {
    std::size_t at = hash;
    while (slots[at % slots.size()].key != none) ++at;
    slots[at % slots.size()] = {mark_of(hash), key};
  }

  std::deque<std::string> words_;
  std::vector<Slot> slots_;  // twice as many as there are words, at least
  std::vector<std::uint32_t> keys_;
};

}  // namespace pathstat::desk
