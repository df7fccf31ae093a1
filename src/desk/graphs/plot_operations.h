#pragma once

#include "desk/graphs/graph_store.h"
#include "desk/ops/operation_server.h"

namespace pathstat::desk {

/// Has the family of plots served from a store.
void register_plot_operations(OperationServer& server, GraphStore& store);

}  // namespace pathstat::desk
