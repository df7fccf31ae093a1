#pragma once

#include <span>
#include <string>

#include "desk/graphs/graph_store.h"

namespace pathstat::desk {

/// Makes a graph of the curves that others have now. Each is named by its heading, its title or the name of its files,
/// in upper or lower case; of equal titles the latest is meant. A name that an overlay has already gets a new version.
///
/// @return what went wrong, or nothing: a name that is taken by another graph, one that no graph has, axes whose units
///         differ; no graph is made then
std::string make_overlay(GraphStore& store, const std::string& name, std::span<const std::string> graphs);

}  // namespace pathstat::desk
