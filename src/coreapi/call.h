#pragma once

#include <array>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "coreapi/operation_row.h"
#include "corelink/remote_call.h"
#include "support/text_field.h"

namespace pathstat {
namespace call_detail {

/// The operation's number in the Core, or -1 until its first call; one for each row.
template <const OperationRow& Row>
inline std::int32_t binding = -1;

/// Slots that the caller passes as arguments: not those that follow from an array's length, nor the result.
constexpr bool is_argument(SlotKind kind) {
  return kind != SlotKind::count && kind != SlotKind::capacity && kind != SlotKind::presence &&
         kind != SlotKind::result;
}

constexpr std::size_t argument_count(const Slots& slots) {
  std::size_t count = 0;
  for (const auto& slot : slots.view()) count += is_argument(slot.kind) ? 1 : 0;
  return count;
}

/// The place among the half's arguments of the slot at `k`.
constexpr std::size_t argument_place(const Slots& slots, std::size_t k) {
  std::size_t place = 0;
  for (std::size_t j = 0; j < k; ++j) place += is_argument(slots[j].kind) ? 1 : 0;
  return place;
}

/// The first array of these slots, from `from` on, that is counted in `extent`; slots.size if there is none.
constexpr std::size_t first_counted(const Slots& slots, std::size_t from, Extent extent) {
  std::size_t k = from;
  while (k < slots.size && !(slots[k].is_array() && slots[k].extent == extent)) ++k;
  return k;
}

/// True if the slot in front of `k` says whether the one at `k` is there.
constexpr bool is_optional(const Slots& slots, std::size_t k) {
  return k > 0 && slots[k - 1].kind == SlotKind::presence;
}

constexpr std::size_t first_text(const Slots& slots) {
  std::size_t k = 0;
  while (k < slots.size && slots[k].kind != SlotKind::text) ++k;
  return k;
}

template <SlotKind Kind>
struct ElementOf;
template <>
struct ElementOf<SlotKind::integers> {
  using type = std::int32_t;
};
template <>
struct ElementOf<SlotKind::reals32> {
  using type = float;
};
template <>
struct ElementOf<SlotKind::reals64> {
  using type = double;
};

constexpr std::int32_t as_count(std::size_t n) { return static_cast<std::int32_t>(n); }

/// The elements of an array argument; a lone number stands for an array of one.
template <class Element, class Argument>
std::span<Element> elements_of(Argument& argument) {
  if constexpr (std::is_arithmetic_v<Argument>) {
    return {&argument, 1};
  } else {
    return std::span<Element>(argument);
  }
}

template <class Argument>
std::size_t size_of(const Argument& argument) {
  if constexpr (std::is_arithmetic_v<Argument>) {
    return 1;
  } else {
    return std::size(argument);
  }
}

/// An input text; a null pointer stands for the empty text.
template <class Argument>
std::string_view text_of(const Argument& argument) {
  if constexpr (std::is_pointer_v<Argument>) {
    if (argument == nullptr) return {};
  }
  return argument;
}

/// One call of the operation of `Row`. The arguments are those of the slots, inputs first.
template <const OperationRow& Row, class... Arguments>
class Call {
  static constexpr Slots sends = slots_of(Row.sends);
  static constexpr Slots receives = slots_of(Row.receives);
  static constexpr std::size_t inputs = argument_count(sends);
  static_assert(sizeof...(Arguments) == inputs + argument_count(receives),
                "wrong number of arguments for this operation");

 public:
  explicit Call(Arguments&... arguments) : arguments_(arguments...) {}

  std::int32_t run() {
    RemoteCall frame(Row.name, static_cast<std::int32_t>(Row.family), second_frame_word(Row.family), binding<Row>);
    send_all(frame, std::make_index_sequence<sends.size>{});
    frame.wait();
    std::int32_t result = 0;
    receive_all(frame, result, std::make_index_sequence<receives.size>{});
    return result;
  }

 private:
  template <std::size_t K>
  auto& input() {
    return std::get<argument_place(sends, K)>(arguments_);
  }
  template <std::size_t K>
  auto& output() {
    return std::get<inputs + argument_place(receives, K)>(arguments_);
  }

  /// Objects that the count at slot K counts: told by the next array behind it.
  template <std::size_t K>
  std::size_t objects() {
    constexpr std::size_t array = first_counted(sends, K, Extent::per_count);
    static_assert(array < sends.size, "a count without an array");
    return size_of(input<array>()) / sends[array].factor;
  }

  std::size_t capacity() {
    constexpr std::size_t array = first_counted(receives, 0, Extent::per_capacity);
    if constexpr (array < receives.size) {
      return size_of(output<array>()) / receives[array].factor;
    } else {
      constexpr std::size_t text = first_text(receives);
      static_assert(text < receives.size, "a capacity without an output");
      return size_of(output<text>());
    }
  }

  /// The count that an array at `Before` is counted by: the nearest one in front of it.
  template <std::size_t Before>
  std::size_t counted() {
    constexpr std::size_t slot = [] {
      std::size_t k = Before;
      while (k > 0 && sends[k - 1].kind != SlotKind::count) --k;
      return k;
    }();
    static_assert(slot > 0, "an array without a count");
    return objects<slot - 1>();
  }

  template <std::size_t... K>
  void send_all(RemoteCall& frame, std::index_sequence<K...>) {
    (send<K>(frame), ...);
  }

  template <std::size_t K>
  void send(RemoteCall& frame) {
    constexpr Slot slot = sends[K];
    if constexpr (slot.kind == SlotKind::count) {
      frame.send(as_count(objects<K>()));
    } else if constexpr (slot.kind == SlotKind::capacity) {
      frame.send(as_count(capacity()));
    } else if constexpr (slot.kind == SlotKind::presence) {
      frame.send(std::int32_t{size_of(input<K + 1>()) > 0});
    } else if constexpr (slot.kind == SlotKind::integer) {
      frame.send(static_cast<std::int32_t>(input<K>()));
    } else if constexpr (slot.kind == SlotKind::real32) {
      frame.send(static_cast<float>(input<K>()));
    } else if constexpr (slot.kind == SlotKind::real64) {
      frame.send(static_cast<double>(input<K>()));
    } else if constexpr (slot.kind == SlotKind::text) {
      frame.send_text(text_of(input<K>()));
    } else {
      using Element = typename ElementOf<slot.kind>::type;
      const auto array = elements_of<const Element>(input<K>());
      if (is_optional(sends, K) && array.empty()) return;
      if constexpr (slot.extent == Extent::per_count) {
        assert(array.size() == counted<K>() * slot.factor);
      } else {
        assert(array.size() == slot.factor);
      }
      frame.send(array);
    }
  }

  template <std::size_t... K>
  void receive_all(RemoteCall& frame, std::int32_t& result, std::index_sequence<K...>) {
    (receive<K>(frame, result), ...);
  }

  template <std::size_t K>
  void receive(RemoteCall& frame, std::int32_t& result) {
    constexpr Slot slot = receives[K];
    if constexpr (slot.kind == SlotKind::result) {
      result = frame.receive<std::int32_t>();
    } else if constexpr (slot.kind == SlotKind::integer || slot.kind == SlotKind::error) {
      output<K>() = frame.receive<std::int32_t>();
    } else if constexpr (slot.kind == SlotKind::real32) {
      output<K>() = frame.receive<float>();
    } else if constexpr (slot.kind == SlotKind::real64) {
      output<K>() = frame.receive<double>();
    } else if constexpr (slot.kind == SlotKind::text) {
      const std::string text = frame.receive_text();
      std::strncpy(output<K>().data(), text.c_str(), std::size(output<K>()));
    } else {
      using Element = typename ElementOf<slot.kind>::type;
      const auto array = elements_of<Element>(output<K>());
      std::size_t elements = slot.factor;
      if constexpr (slot.extent == Extent::per_count) elements *= counted<sends.size>();
      if constexpr (slot.extent == Extent::per_capacity) elements *= capacity();
      assert(array.size() >= elements);
      frame.receive(array.first(elements));
    }
  }

  std::tuple<Arguments&...> arguments_;
};

}  // namespace call_detail

/// The direct form of an operation: values, spans (which carry the counts and capacities), texts as they are, an
/// output text as a buffer that a text of its size leaves without a terminator. Returns the operation's result, or
/// nothing where it has none. A failure of the connection ends the process.
template <const OperationRow& Row>
struct DirectForm {
  template <class... Arguments>
  auto operator()(Arguments&&... arguments) const {
    const std::int32_t result = call_detail::Call<Row, std::remove_reference_t<Arguments>...>(arguments...).run();
    if constexpr (Row.receives.ends_with('r')) return result;
  }
};

/// The by-address twin of an operation. It takes its arguments in the twin's order, numbers by reference and texts
/// as fields: an input loses its trailing blanks, an output is cut at its NUL and blank-padded to its field. Arrays
/// are spans, which carry the counts.
template <const OperationRow& Row>
class Twin {
  static constexpr std::size_t most = 2 * Slots::most;

  /// For each place in wire order, the place of that argument in the twin's order.
  static constexpr std::array<std::size_t, most> wire_places() {
    std::array<std::size_t, most> places{};
    for (std::size_t k = 0; k < most; ++k) places[k] = k;
    std::size_t place = 0;
    std::size_t number = 0;
    for (std::size_t at = 0; at <= Row.twin_order.size(); ++at) {
      if (at < Row.twin_order.size() && Row.twin_order[at] != ' ') {
        number = 10 * number + static_cast<std::size_t>(Row.twin_order[at] - '0');
      } else if (number > 0) {
        places[number - 1] = place++;
        number = 0;
      }
    }
    return places;
  }

  /// A field's text on its way out of the Core: a buffer of one more than the field is wide.
  class FieldBuffer {
   public:
    explicit FieldBuffer(TextField field) : field_(field), buffer_(field.width() + 1, '\0') {}
    ~FieldBuffer() { field_.set(std::string_view(buffer_.data(), ::strnlen(buffer_.data(), field_.width()))); }
    FieldBuffer(const FieldBuffer&) = delete;
    FieldBuffer& operator=(const FieldBuffer&) = delete;
    char* data() { return buffer_.data(); }
    std::size_t size() const { return buffer_.size(); }

   private:
    TextField field_;
    std::vector<char> buffer_;
  };

  static constexpr Slots sends = slots_of(Row.sends);
  static constexpr Slots receives = slots_of(Row.receives);
  static constexpr std::size_t inputs = call_detail::argument_count(sends);

  /// True if the argument at this place in wire order is an output text.
  static constexpr bool is_output_text(std::size_t place) {
    for (std::size_t k = 0; k < receives.size; ++k) {
      if (receives[k].kind == SlotKind::text && inputs + call_detail::argument_place(receives, k) == place) return true;
    }
    return false;
  }

  template <std::size_t Place, class Argument>
  static decltype(auto) converted(Argument& argument) {
    if constexpr (is_output_text(Place)) {
      return FieldBuffer(argument);
    } else if constexpr (std::is_convertible_v<Argument&, std::string_view> && Place < inputs) {
      return trimmed(call_detail::text_of(argument));
    } else {
      return static_cast<Argument&>(argument);
    }
  }

  template <class Arguments, std::size_t... Place>
  static auto call([[maybe_unused]] Arguments arguments, std::index_sequence<Place...>) {
    [[maybe_unused]] constexpr auto from = wire_places();
    return DirectForm<Row>{}(converted<Place>(std::get<from[Place]>(arguments))...);
  }

 public:
  template <class... Arguments>
  auto operator()(Arguments&&... arguments) const {
    return call(std::tuple<Arguments&...>(arguments...), std::index_sequence_for<Arguments...>{});
  }
};

}  // namespace pathstat
