#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "coreapi/operation_row.h"

namespace pathstat::desk {

/// What one slot of a frame holds.
using SlotValue = std::variant<std::int32_t, float, double, std::string, std::vector<std::int32_t>, std::vector<float>,
                               std::vector<double>>;

/// The inputs of one call as they came over the wire: one value for each slot of the row's `sends`, counts and
/// capacities included. The accessors are for slots that the row gives that type; the codec has seen to it.
struct OperationCall {
  const OperationRow& row;
  std::vector<SlotValue> inputs;

  std::int32_t integer(std::size_t slot) const { return std::get<std::int32_t>(inputs[slot]); }
  double number(std::size_t slot) const {
    const auto* narrow = std::get_if<float>(&inputs[slot]);
    return narrow ? static_cast<double>(*narrow) : std::get<double>(inputs[slot]);
  }
  const std::string& text(std::size_t slot) const { return std::get<std::string>(inputs[slot]); }
  std::span<const std::int32_t> integers(std::size_t slot) const {
    return std::get<std::vector<std::int32_t>>(inputs[slot]);
  }
  std::span<const float> floats(std::size_t slot) const { return std::get<std::vector<float>>(inputs[slot]); }
  std::span<const double> doubles(std::size_t slot) const { return std::get<std::vector<double>>(inputs[slot]); }
};

/// The outputs of a call, in the order of the row's `receives` without its error and result. The codec pads an array
/// with zeros, or cuts it, to the length that the row gives, and fills outputs that a failed call left out.
struct OperationReply {
  std::vector<SlotValue> outputs;
  std::int32_t error = 0;
  std::int32_t result = 0;

  template <class T>
  void put(T value) {
    outputs.emplace_back(std::move(value));
  }
};

}  // namespace pathstat::desk
