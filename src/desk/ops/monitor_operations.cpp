#include <algorithm>
#include <array>

#include "desk/ops/object_values.h"

namespace pathstat::desk {
namespace {

/// A monitor with the model that it belongs to.
struct MonitorRef {
  ModelObject* model = nullptr;
  std::size_t index = 0;

  explicit operator bool() const { return model != nullptr; }
  const Monitor& monitor() const { return model->data.monitors[index]; }
};

/// The monitor of a type with this identifier; false if it is none.
MonitorRef monitor_at(DataModel& data, std::int32_t id, std::int32_t type) {
  const auto place = data.find(id);
  if (place.kind != ObjectClass::monitor) return {};
  const MonitorRef found{data.model_of(place), place.index};
  return found.monitor().type == type ? found : MonitorRef{};
}

double current_value(const MonitorRef& found) {
  return monitor_value(found.monitor(), monitor_positions(found.model->data, found.monitor()));
}

/// The identifier of an atom of a monitor, or of its image in the cell in which it stands; 0 if none is left.
std::int32_t atom_of(DataModel& data, const MonitorRef& found, std::size_t k) {
  return data.atom_image(*found.model, found.monitor().atoms[k], found.monitor().image(k));
}

template <std::int32_t type>
void values(DataModel& data, const OperationCall& call, OperationReply& reply) {
  put_each<double>(call.integers(1), reply, [&](std::int32_t id, double& value) {
    const auto found = monitor_at(data, id, type);
    if (found) value = current_value(found);
    return static_cast<bool>(found);
  });
}

/// The atoms of each monitor, first atoms together, then second ones and so on.
template <std::int32_t type>
void atoms(DataModel& data, const OperationCall& call, OperationReply& reply) {
  for (std::size_t k = 0; k < monitor_atoms(type); ++k) {
    put_each<std::int32_t>(call.integers(1), reply, [&](std::int32_t id, std::int32_t& atom) {
      const auto found = monitor_at(data, id, type);
      if (found) atom = atom_of(data, found, k);
      return atom != 0;
    });
  }
}

/// One of the two planes of a plane monitor.
std::int32_t plane_of(const MonitorRef& found, std::size_t side) {
  const auto& list = found.model->plane_monitors;
  const auto before = std::lower_bound(list.begin(), list.end(), found.index) - list.begin();
  return found.model->plane_ids[2 * static_cast<std::size_t>(before) + side];
}

void planes(DataModel& data, const OperationCall& call, OperationReply& reply) {
  for (const std::size_t side : {0, 1}) {
    put_each<std::int32_t>(call.integers(1), reply, [&](std::int32_t id, std::int32_t& plane) {
      const auto found = monitor_at(data, id, plane_monitor);
      if (found) plane = plane_of(found, side);
      return static_cast<bool>(found);
    });
  }
}

void plane_atoms(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto place = data.find(call.integer(0));
  if (place.kind != ObjectClass::plane) return void(reply.error = unknown_object);
  auto* model = data.model_of(place);
  const MonitorRef found{model, model->plane_monitors[place.index / 2]};
  std::vector<std::int32_t> list;
  for (std::size_t k = 0; k < 3; ++k) list.push_back(atom_of(data, found, 3 * (place.index % 2) + k));
  put_list(std::move(list), call.integer(1), reply);
}

std::vector<std::int32_t> monitors_of_type(const ModelObject& model, std::int32_t type) {
  std::vector<std::int32_t> list;
  for (std::size_t k = 0; k < model.data.monitors.size(); ++k) {
    if (model.data.monitors[k].type == type) list.push_back(model.monitor_ids[k]);
  }
  return list;
}

void monitor_count(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = data.model(call.integer(0));
  if (!model) return void(reply.error = unknown_object);
  reply.put(static_cast<std::int32_t>(monitors_of_type(*model, call.integer(1)).size()));
}

void monitor_list(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto* model = data.model(call.integer(0));
  if (!model) return void(reply.error = unknown_object);
  put_list(monitors_of_type(*model, call.integer(1)), call.integer(3), reply);
}

void conventions(DataModel& data, const OperationCall& call, OperationReply& reply) {
  put_each<std::int32_t>(call.integers(1), reply, [&](std::int32_t id, std::int32_t& convention) {
    const auto found = monitor_at(data, id, inversion_monitor);
    if (found) convention = found.monitor().convention;
    return static_cast<bool>(found);
  });
}

constexpr std::array served{
    ServedOperation{"kvD_MON_AngleCurrent", values<angle_monitor>},
    ServedOperation{"kvD_MON_AngleObjects", atoms<angle_monitor>},
    ServedOperation{"kvD_MON_DistCurrent", values<distance_monitor>},
    ServedOperation{"kvD_MON_DistanceObjects", atoms<distance_monitor>},
    ServedOperation{"kvD_MON_InversionCurrent", values<inversion_monitor>},
    ServedOperation{"kvD_MON_InversionObjects", atoms<inversion_monitor>},
    ServedOperation{"kvD_MON_InversionType", conventions},
    ServedOperation{"kvD_MON_MonitorList", monitor_list},
    ServedOperation{"kvD_MON_NumMonitors", monitor_count},
    ServedOperation{"kvD_MON_PlaneObjects", plane_atoms},
    ServedOperation{"kvD_MON_PlanePlaneCurrent", values<plane_monitor>},
    ServedOperation{"kvD_MON_PlanePlaneObjects", planes},
    ServedOperation{"kvD_MON_TorsionCurrent", values<torsion_monitor>},
    ServedOperation{"kvD_MON_TorsionObjects", atoms<torsion_monitor>},
};

}  // namespace

void serve_monitor_operations(OperationServer& server, DataModel& model) { serve_all(server, model, served); }

}  // namespace pathstat::desk
