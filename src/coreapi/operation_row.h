#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace pathstat {

/// The families of the Core's operations, by the code that binds them.
enum class Family : std::int32_t {
  control = 0,
  data_model = 10000,
  system = 20000,
  graphics = 30000,
  plots = 40000,
  analysis = 50000,
  tables = 60000,
  user_interface = 70000,
  restraints = 80000,
};

/// The word that every frame of a family carries behind the constant 2.
constexpr std::int32_t second_frame_word(Family family) {
  switch (family) {
    case Family::control:
      return 4;
    case Family::data_model:
      return 5;
    case Family::system:
    case Family::graphics:
    case Family::analysis:
      return 2;
    case Family::plots:
    case Family::user_interface:
      return 1;
    case Family::tables:
    case Family::restraints:
      return 0;
  }
  return 0;
}

/// What stands in one place of a frame.
enum class SlotKind {
  integer,
  real32,
  real64,
  text,
  integers,
  reals32,
  reals64,
  count,
  capacity,
  presence,
  error,
  result
};

/// What the length of an array slot is counted in.
enum class Extent { one, fixed, per_count, per_capacity };

struct Slot {
  SlotKind kind = SlotKind::integer;
  Extent extent = Extent::one;
  std::size_t factor =
      1;  ///< elements, for a fixed array; else elements for each object that the count or capacity counts

  constexpr bool is_array() const {
    return kind == SlotKind::integers || kind == SlotKind::reals32 || kind == SlotKind::reals64;
  }
};

/// The slots of one half of a frame, in wire order.
struct Slots {
  static constexpr std::size_t most = 16;
  std::array<Slot, most> slot{};
  std::size_t size = 0;

  constexpr const Slot& operator[](std::size_t k) const { return slot[k]; }
  constexpr std::span<const Slot> view() const { return {slot.data(), size}; }
};

/// Reads a row's slot text: words with a blank between them.
///   i f d s    one integer, 32-bit float, 64-bit float, text
///   n          the count of the arrays behind it        c  the capacity of an output array or text
///   i[n] d[3n] arrays, so many elements for each object counted   i[c] d[9c]  the same by the capacity
///   i[9] d[3]  arrays of a fixed length
///   o          1 if the input array behind it is there; 0 if it is left out
///   e r        the error and the result
/// A word that is none of these does not compile where the row is a constant.
constexpr Slots slots_of(std::string_view words) {
  Slots slots;
  std::size_t at = 0;
  while (at < words.size()) {
    if (words[at] == ' ') {
      ++at;
      continue;
    }
    Slot slot;
    const char letter = words[at++];
    const bool array = at < words.size() && words[at] == '[';
    switch (letter) {
      case 'i':
        slot.kind = array ? SlotKind::integers : SlotKind::integer;
        break;
      case 'f':
        slot.kind = array ? SlotKind::reals32 : SlotKind::real32;
        break;
      case 'd':
        slot.kind = array ? SlotKind::reals64 : SlotKind::real64;
        break;
      case 's':
        slot.kind = SlotKind::text;
        break;
      case 'n':
        slot.kind = SlotKind::count;
        break;
      case 'c':
        slot.kind = SlotKind::capacity;
        break;
      case 'o':
        slot.kind = SlotKind::presence;
        break;
      case 'e':
        slot.kind = SlotKind::error;
        break;
      case 'r':
        slot.kind = SlotKind::result;
        break;
      default:
        throw "unknown slot letter";
    }
    if (array) {
      std::size_t factor = 0;
      for (++at; words[at] >= '0' && words[at] <= '9'; ++at) {
        factor = 10 * factor + static_cast<std::size_t>(words[at] - '0');
      }
      slot.extent = words[at] == 'n' ? Extent::per_count : words[at] == 'c' ? Extent::per_capacity : Extent::fixed;
      slot.factor = factor == 0 ? 1 : factor;
      if (slot.extent != Extent::fixed) ++at;
      if (words[at++] != ']') throw "unclosed array slot";
    }
    slots.slot[slots.size++] = slot;
  }
  return slots;
}

/// One operation of the Core, stated once: from it come the direct form, the by-address twin and a Core's decoder.
struct OperationRow {
  std::string_view name;
  Family family;
  std::string_view sends;     ///< slots of the call
  std::string_view receives;  ///< slots of the reply
  std::string_view
      twin_order;  ///< places of the twin's arguments among inputs, then outputs, from 1; empty: as they stand
};

/// All operations, in the order of operations.def.
std::span<const OperationRow> all_operations();

/// The row of an operation, by its exact name; null if there is none.
const OperationRow* find_operation(std::string_view name);

}  // namespace pathstat
