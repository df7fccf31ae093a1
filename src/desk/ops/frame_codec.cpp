#include "desk/ops/frame_codec.h"

#include <fmt/format.h>

#include <type_traits>
#include <utility>

#include "coreapi/object_counts.h"

namespace pathstat::desk {
namespace {

/// The lengths that a frame has told so far.
struct Lengths {
  std::size_t count = 0;
  std::size_t capacity = 0;
  bool has_capacity = false;

  std::size_t of(const Slot& slot) const {
    switch (slot.extent) {
      case Extent::per_count:
        return slot.factor * count;
      case Extent::per_capacity:
        return slot.factor * capacity;
      case Extent::fixed:
        return slot.factor;
      case Extent::one:
        break;
    }
    return 1;
  }

  void note(const Slot& slot, const SlotValue& value) {
    if (slot.kind == SlotKind::count) count = static_cast<std::size_t>(std::get<std::int32_t>(value));
    if (slot.kind == SlotKind::capacity) {
      capacity = static_cast<std::size_t>(std::get<std::int32_t>(value));
      has_capacity = true;
    }
  }
};

template <class T>
bool read_into(ByteStream& stream, SlotValue& value) {
  return read_value(stream, value.emplace<T>());
}

template <class T>
bool read_into(ByteStream& stream, std::size_t count, SlotValue& value) {
  return read_array(stream, count, value.emplace<std::vector<T>>());
}

bool read_slot(ByteStream& stream, const Slot& slot, const Lengths& lengths, SlotValue& value) {
  switch (slot.kind) {
    case SlotKind::real32:
      return read_into<float>(stream, value);
    case SlotKind::real64:
      return read_into<double>(stream, value);
    case SlotKind::text:
      return read_text(stream, value.emplace<std::string>());
    case SlotKind::integers:
      return read_into<std::int32_t>(stream, lengths.of(slot), value);
    case SlotKind::reals32:
      return read_into<float>(stream, lengths.of(slot), value);
    case SlotKind::reals64:
      return read_into<double>(stream, lengths.of(slot), value);
    default:
      return read_into<std::int32_t>(stream, value);
  }
}

/// An array that the slot in front of it said is not there.
void leave_out(const Slot& slot, SlotValue& value) {
  if (slot.kind == SlotKind::integers) value.emplace<std::vector<std::int32_t>>();
  if (slot.kind == SlotKind::reals32) value.emplace<std::vector<float>>();
  if (slot.kind == SlotKind::reals64) value.emplace<std::vector<double>>();
}

bool is_length(const Slot& slot) { return slot.kind == SlotKind::count || slot.kind == SlotKind::capacity; }

std::string cut_short(const OperationRow& row) {
  return fmt::format("the stream broke off inside a call of {}", row.name);
}

template <class T>
bool write_scalar(ByteStream& stream, const SlotValue* value) {
  return write_value(stream, value ? std::get<T>(*value) : T{});
}

template <class T>
bool write_values(ByteStream& stream, const SlotValue* value, std::size_t count) {
  const std::span<const T> given = value ? std::span<const T>(std::get<std::vector<T>>(*value)) : std::span<const T>{};
  return write_array(stream, given, count);
}

bool write_slot(ByteStream& stream, const Slot& slot, const Lengths& lengths, const SlotValue* value) {
  switch (slot.kind) {
    case SlotKind::real32:
      return write_scalar<float>(stream, value);
    case SlotKind::real64:
      return write_scalar<double>(stream, value);
    case SlotKind::integers:
      return write_values<std::int32_t>(stream, value, lengths.of(slot));
    case SlotKind::reals32:
      return write_values<float>(stream, value, lengths.of(slot));
    case SlotKind::reals64:
      return write_values<double>(stream, value, lengths.of(slot));
    case SlotKind::text: {
      const std::string_view text = value ? std::string_view(std::get<std::string>(*value)) : std::string_view{};
      return write_text(stream, lengths.has_capacity ? text.substr(0, lengths.capacity) : text);
    }
    default:
      return write_scalar<std::int32_t>(stream, value);
  }
}

}  // namespace

std::string read_call(ByteStream& stream, const OperationRow& row, std::vector<SlotValue>& inputs) {
  std::int32_t first = 0, second = 0;
  if (!read_value(stream, first) || !read_value(stream, second)) return cut_short(row);
  if (first != 2 || second != second_frame_word(row.family)) {
    return fmt::format("a call of {} begins with {} and {} instead of 2 and {}", row.name, first, second,
                       second_frame_word(row.family));
  }
  const Slots slots = slots_of(row.sends);
  Lengths lengths;
  bool left_out = false;
  inputs.clear();
  for (const auto& slot : slots.view()) {
    auto& value = inputs.emplace_back();
    if (std::exchange(left_out, false)) {
      leave_out(slot, value);
      continue;
    }
    if (!read_slot(stream, slot, lengths, value)) return cut_short(row);
    if (slot.kind == SlotKind::presence) left_out = std::get<std::int32_t>(value) == 0;
    if (!is_length(slot)) continue;
    const auto length = std::get<std::int32_t>(value);
    if (!is_object_count(length)) return fmt::format("a call of {} has a length of {}", row.name, length);
    lengths.note(slot, value);
  }
  return {};
}

std::string write_reply(ByteStream& stream, const OperationCall& call, const OperationReply& reply) {
  const Slots sends = slots_of(call.row.sends);
  Lengths lengths;
  for (std::size_t k = 0; k < sends.size; ++k) lengths.note(sends[k], call.inputs[k]);

  const Slots receives = slots_of(call.row.receives);
  std::size_t next = 0;
  bool written = write_value(stream, std::int32_t{1});
  try {
    for (const auto& slot : receives.view()) {
      if (slot.kind == SlotKind::error) {
        written = written && write_value(stream, reply.error);
      } else if (slot.kind == SlotKind::result) {
        written = written && write_value(stream, reply.result);
      } else {
        const auto* value = next < reply.outputs.size() ? &reply.outputs[next++] : nullptr;
        written = written && write_slot(stream, slot, lengths, value);
      }
    }
  } catch (const std::bad_variant_access&) {
    return fmt::format("the answer to {} does not have the types of its row", call.row.name);
  }
  return written && stream.flush() ? std::string{} : cut_short(call.row);
}

}  // namespace pathstat::desk
