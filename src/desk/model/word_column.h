#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace pathstat::desk {

/// One word per atom. Each distinct word is held once and known by a number, so that words of many atoms are compared
/// without looking at their letters.
class WordColumn {
 public:
  WordColumn() = default;
  WordColumn(WordColumn&&) = default;
  WordColumn& operator=(WordColumn&&) = default;

  void push_back(std::string_view word) { keys_.push_back(key_of(word)); }
  void assign(std::size_t count, std::string_view word) { keys_.assign(count, key_of(word)); }
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
  std::optional<std::uint32_t> find(std::string_view word) const {
    const auto found = places_.find(word);
    return found == places_.end() ? std::nullopt : std::optional(found->second);
  }
  /// The distinct words, by their number.
  const std::deque<std::string>& words() const { return words_; }

 private:
  std::uint32_t key_of(std::string_view word) {
    if (const auto known = find(word)) return *known;
    words_.emplace_back(word);
    const auto key = static_cast<std::uint32_t>(words_.size() - 1);
    places_.emplace(words_.back(), key);
    return key;
  }

  std::deque<std::string> words_;  // a deque, because places_ points into it
  std::unordered_map<std::string_view, std::uint32_t> places_;
  std::vector<std::uint32_t> keys_;
};

}  // namespace pathstat::desk
