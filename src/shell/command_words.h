#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <span>
#include <string_view>
#include <variant>

#include "support/logical.h"
#include "support/text_field.h"

namespace pathstat {

/// What must hold before an action runs. A guard that fails shows its message and ends the command with 1.
struct Guard {
  bool (*holds)();
  std::string_view key;
  std::string_view meaning;        ///< in words
  bool names_source_word = false;  ///< the message names the source word of the action
};

/// The guards of an action, in the order of their tests.
struct Guards {
  static constexpr std::size_t most = 4;
  std::array<Guard, most> guard{};
  std::size_t size = 0;

  constexpr Guards() = default;
  constexpr Guards(std::initializer_list<Guard> list) {
    for (const auto& each : list) guard[size++] = each;
  }
  constexpr std::span<const Guard> view() const { return {guard.data(), size}; }
};

using Run = std::int32_t (*)();

/// What may run inside what, when the Core sends a command while another one waits for a reply. An analysis holds the
/// open trajectory and named blocks, so that neither a second one nor a change of the shown frame may come between.
/// Words of a held button are free: they decline a step themselves, which stops the repeats, and take the end of the
/// press.
enum class Nesting : std::uint8_t { analysis, frames, free };

/// Does something.
struct Action {
  Guards guards{};
  Run run;                            ///< no action is without
  std::string_view source_word = {};  ///< what the message of a guard may name
  std::string_view allowed = {};      ///< the texts that its one argument may be, where there is a list
  Nesting nesting = Nesting::analysis;
};

/// A text from a list, or any text where the list is empty.
struct TextSetting {
  std::span<char> field;
  std::string_view allowed;
  Run after = nullptr;
  bool rebuilds = false;  ///< builds anew what a running analysis reads
};

struct LogicalSetting {
  Logical* target;
  void (*after)() = nullptr;
};

/// A limit of a number: a constant, the present value of another setting, or computed; by default none.
template <class T>
struct Bound {
  static constexpr T none = std::is_same_v<T, double> ? T(-3e38) : T(-2147483647);

  T value = none;
  const T* of = nullptr;
  T (*computed)() = nullptr;
  std::string_view meaning;  ///< in words, where it is not a constant

  constexpr Bound() = default;
  constexpr Bound(T limit) : value(limit) {}
  constexpr Bound(const T* setting, std::string_view words) : of(setting), meaning(words) {}
  constexpr Bound(T (*compute)(), std::string_view words) : computed(compute), meaning(words) {}
  T now() const { return of ? *of : computed ? computed() : value; }
  constexpr bool is_constant() const { return of == nullptr && computed == nullptr; }
};

/// A number that `store` takes over; its answer is the command's result.
template <class T>
struct NumberSetting {
  Bound<T> low;
  Bound<T> high;
  std::int32_t (*store)(T) = nullptr;
};
using IntegerSetting = NumberSetting<std::int32_t>;
using DoubleSetting = NumberSetting<double>;

/// A word of the query side only: as a command it does nothing.
struct Label {};

struct CommandWord {
  std::string_view word;
  std::variant<Action, TextSetting, LogicalSetting, IntegerSetting, DoubleSetting, Label> effect;
  std::string_view meaning;    ///< one line for people
  std::string_view arguments;  ///< in words, where the effect does not tell them
};

/// The row of a word, compared exactly up to its first blank; null if there is none. The rows stand in the order of
/// their words.
const CommandWord* find_command_word(std::span<const CommandWord> words, std::string_view word);

/// True for rows in the order of their words, no word twice.
constexpr bool well_formed(std::span<const CommandWord> words) {
  return std::ranges::is_sorted(words, {}, &CommandWord::word) &&
         std::ranges::adjacent_find(words, {}, &CommandWord::word) == words.end();
}

/// The setting of a text field that stands in the state.
template <std::size_t N>
constexpr TextSetting text_setting(Text<N>& field, std::string_view allowed, Run after = nullptr,
                                   bool rebuilds = false) {
  return {std::span<char>(field.begin(), N), allowed, after, rebuilds};
}

}  // namespace pathstat
