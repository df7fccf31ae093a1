#include "desk/graphs/plot_operations.h"

#include <algorithm>

namespace pathstat::desk {
namespace {

constexpr std::int32_t first_write = 801;
constexpr std::int32_t append = 802;
constexpr std::int32_t no_transaction = 40004;

std::string without_blanks(const std::string& text) {
  const auto first = text.find_first_not_of(' ');
  return first == std::string::npos ? std::string{} : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

void register_handles(OperationServer& server, GraphStore& store) {
  const auto give = [](OperationReply& reply, std::int32_t handle) {
    reply.put(handle);
    reply.error = handle == 0 ? no_such_kind : 0;
  };
  server.on("kvP_HAN_Write",
            [&store, give](const auto& call, auto& reply) { give(reply, store.write(call.text(0), call.integer(1))); });
  server.on("kvP_HAN_WriteSpecific", [&store, give](const auto& call, auto& reply) {
    give(reply, store.write_specific(call.text(0), call.integer(1), call.integer(2)));
  });
  server.on("kvP_HAN_Info", [&store](const auto& call, auto& reply) {
    const auto* handle = store.info(call.integer(0));
    if (!handle) {
      reply.error = no_such_handle;
      return;
    }
    reply.put(handle->name);
    reply.put(handle->version);
    reply.put(std::int32_t{0});
    reply.put(static_cast<std::int32_t>(handle->kind));
  });
}

void register_data_sets(OperationServer& server, GraphStore& store) {
  server.on("kvP_DAT_SetMethodXY", [&store](const auto& call, auto& reply) {
    reply.error =
        store.set_data_method(call.integer(0), call.integer(1), call.integer(2), without_blanks(call.text(4)));
  });
  server.on("kvP_DAT_WriteXY", [&store](const auto& call, auto& reply) {
    const auto mode = call.integer(1);
    reply.error = mode == first_write || mode == append
                      ? store.write_points(call.integer(0), mode == append, call.floats(3))
                      : bad_points;
  });
  server.on("kvP_DAT_PointCount", [&store](const auto& call, auto& reply) {
    const auto* set = store.data_set(call.integer(0));
    reply.put(set ? static_cast<std::int32_t>(set->points.size()) : 0);
    reply.error = set ? 0 : no_such_handle;
  });
  server.on("kvP_DAT_Mark", [&store](const auto& call, auto& reply) {
    reply.error = store.mark(call.text(0), call.integer(1), call.integer(2), call.integers(4));
  });
  server.on("kvP_DAT_DemarkGlobal", [&store](const auto& call, auto&) { store.clear_marks(call.text(0)); });
}

void register_graphs(OperationServer& server, GraphStore& store) {
  server.on("kvP_GRF_SetMethodXY", [&store](const auto& call, auto& reply) {
    Graph graph;
    graph.layout = call.integer(2);
    graph.x_low = static_cast<float>(call.number(3));
    graph.x_high = static_cast<float>(call.number(4));
    graph.title = without_blanks(call.text(8));
    graph.x_label = without_blanks(call.text(9));
    graph.labels = call.integer(10);
    graph.y_label = without_blanks(call.text(12));
    const auto sets = call.integers(11);
    graph.sets.assign(sets.begin(), sets.end());
    reply.error = store.set_graph_method(call.integer(0), std::move(graph));
  });
  server.on("kvP_GRF_SetAspectRatio", [&store](const auto& call, auto& reply) {
    const auto graphs = call.integers(1);
    const auto ratios = call.floats(2);
    for (std::size_t k = 0; k < graphs.size(); ++k) {
      reply.error = std::max(reply.error, store.set_aspect_ratio(graphs[k], ratios[k]));
    }
  });
  server.on("kvP_VWR_SetGraphList", [&store](const auto& call, auto& reply) {
    reply.error = store.set_graph_list(call.integer(0), call.integers(2));
  });
  server.on("kvP_VWR_ReDraw", [&store](const auto& call, auto& reply) {
    const auto* handle = store.info(call.integer(0));
    reply.error = handle && handle->kind == PlotKind::viewer ? 0 : no_such_handle;
  });
}

}  // namespace

void register_plot_operations(OperationServer& server, GraphStore& store) {
  register_handles(server, store);
  register_data_sets(server, store);
  register_graphs(server, store);
  server.on("kvP_SYS_Begin", [&store](const auto&, auto&) { store.begin(); });
  server.on("kvP_SYS_End", [&store](const auto&, auto& reply) { reply.error = store.end() ? 0 : no_transaction; });
  // A pick mode needs a mouse, which a run of a script does not have.
  server.on("kvP_SYS_RegisterToolMode", [](const auto&, auto&) {});
}

}  // namespace pathstat::desk
