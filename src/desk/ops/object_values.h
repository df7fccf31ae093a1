#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

#include "desk/model/data_model.h"
#include "desk/ops/model_operations.h"

namespace pathstat::desk {

using ModelHandler = void (*)(DataModel& model, const OperationCall& call, OperationReply& reply);

/// One operation and who serves it.
struct ServedOperation {
  std::string_view name;
  ModelHandler handler;
};

inline void serve_all(OperationServer& server, DataModel& model, std::span<const ServedOperation> operations) {
  for (const auto& operation : operations) {
    server.on(operation.name, [&model, handler = operation.handler](const OperationCall& call, OperationReply& reply) {
      handler(model, call, reply);
    });
  }
}

void serve_model_operations(OperationServer& server, DataModel& model);
void serve_atom_operations(OperationServer& server, DataModel& model);
void serve_building_operations(OperationServer& server, DataModel& model);
void serve_monitor_operations(OperationServer& server, DataModel& model);
void serve_surface_operations(OperationServer& server, DataModel& model);
void serve_symmetry_operations(OperationServer& server, DataModel& model);
void serve_user_data_operations(OperationServer& server, DataModel& model);
void serve_vector_operations(OperationServer& server, DataModel& model);

/// The model that an input names; without one the reply has its error.
inline ModelObject* model_at(DataModel& data, std::int32_t id, OperationReply& reply) {
  auto* model = data.model(id);
  if (!model) reply.error = unknown_object;
  return model;
}

/// Puts one value per object into the reply; an object for which `value` gives false leaves a 0 and makes an error.
///
/// @param value  bool(std::int32_t object, T& value)
template <class T, class Value>
void put_each(std::span<const std::int32_t> objects, OperationReply& reply, Value value) {
  std::vector<T> values(objects.size());
  for (std::size_t k = 0; k < objects.size(); ++k) {
    if (!value(objects[k], values[k])) reply.error = unknown_object;
  }
  reply.put(std::move(values));
}

/// The same with three values per object, out of a std::array.
template <class T, class Value>
void put_each_triple(std::span<const std::int32_t> objects, OperationReply& reply, Value value) {
  std::vector<T> values(3 * objects.size());
  for (std::size_t k = 0; k < objects.size(); ++k) {
    std::array<T, 3> triple{};
    if (!value(objects[k], triple)) reply.error = unknown_object;
    std::copy(triple.begin(), triple.end(), values.begin() + static_cast<std::ptrdiff_t>(3 * k));
  }
  reply.put(std::move(values));
}

/// Puts what fits of a list, and its true length.
inline void put_list(std::vector<std::int32_t> list, std::int32_t capacity, OperationReply& reply) {
  const auto length = static_cast<std::int32_t>(list.size());
  list.resize(std::min(list.size(), static_cast<std::size_t>(std::max(capacity, 0))));
  reply.put(std::move(list));
  reply.put(length);
}

}  // namespace pathstat::desk
