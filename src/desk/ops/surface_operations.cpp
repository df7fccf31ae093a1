#include <algorithm>
#include <array>
#include <cmath>

#include "desk/ops/object_values.h"

namespace pathstat::desk {
namespace {

template <class T>
std::vector<std::array<T, 3>> triples(std::span<const T> numbers) {
  std::vector<std::array<T, 3>> all(numbers.size() / 3);
  for (std::size_t k = 0; k < numbers.size(); ++k) all[k / 3][k % 3] = numbers[k];
  return all;
}

bool are_finite(std::span<const double> numbers) {
  return std::ranges::all_of(numbers, [](double number) { return std::isfinite(number); });
}

/// A triangle of less than three corners covers nothing.
bool is_collapsed(const std::array<std::int32_t, 3>& triangle) {
  return triangle[0] == triangle[1] || triangle[1] == triangle[2] || triangle[2] == triangle[0];
}

void create_surface(DataModel& data, const OperationCall& call, OperationReply& reply) {
  if (!data.exists(call.integer(0))) return void(reply.error = unknown_object);
  const auto id = data.add_surface();
  if (id == 0) return void(reply.error = bad_value);
  reply.put(std::vector{id});
}

void set_surface(DataModel& data, const OperationCall& call, OperationReply& reply) {
  auto* surface = data.surface(call.integer(0));
  if (!surface) return void(reply.error = unknown_object);
  const auto vertices = call.doubles(2), normals = call.doubles(4);
  const auto corners = call.integers(6);
  const auto points = static_cast<std::int64_t>(vertices.size() / 3);
  if (!are_finite(vertices) || !are_finite(normals) ||
      !std::ranges::all_of(corners, [&](std::int32_t corner) { return corner >= 0 && corner < points; })) {
    return void(reply.error = bad_value);
  }
  *surface = {triples(vertices), triples(normals), triples(corners)};
  std::erase_if(surface->triangles, is_collapsed);
}

constexpr std::array served{
    ServedOperation{"kvD_SUR_CreateSurface", create_surface},
    ServedOperation{"kvD_SUR_SetSurface", set_surface},
};

}  // namespace

void serve_surface_operations(OperationServer& server, DataModel& model) { serve_all(server, model, served); }

}  // namespace pathstat::desk
