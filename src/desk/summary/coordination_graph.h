#pragma once

#include <cstdint>

#include "desk/graphs/graph_store.h"

namespace pathstat::desk {

/// Adds the graph of the running coordination number to that of a radial distribution, whose facts must tell the
/// density of neighbours. @return its handle; 0 where there is nothing to draw
std::int32_t add_coordination_graph(GraphStore& store, std::int32_t distribution);

}  // namespace pathstat::desk
