#pragma once

#include <filesystem>
#include <string>

#include "desk/graphs/graph_store.h"

namespace pathstat::desk {

/// Writes all that a process may still draw on into a folder. @return empty, or what went wrong
std::string keep_graphs(const GraphStore& store, const std::filesystem::path& folder);

/// Brings it back, under the same handles, into a store that has handed out none.
std::string read_kept_graphs(const std::filesystem::path& folder, GraphStore& store);

}  // namespace pathstat::desk
