#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "support/text_field.h"

namespace pathstat {

/// Marker that shows the current frame in the saved data sets.
constexpr std::string_view frame_marker = "PathStatMarkers";

/// The saved data sets: names and versions side by side.
struct SavedHandles {
  std::span<const Text<80>> names;
  std::span<const std::int32_t> versions;
};
SavedHandles saved_data_sets();

/// Forgets all saved handles and takes the frame that is to be marked.
/// @param status  0, or that of the allocation
void initsavedgraphhandles_(std::int32_t frame, std::int32_t& status);

/// Removes the marks from all data sets, if some were saved, and forgets the handles. @param status  0
void killsavedgraphhandles_(std::int32_t& status);

/// Saves graphs and data sets by name and version, each once; with interaction allowed a new data set is marked at
/// the current frame. Handles that the Core does not know are passed over.
/// @param status  0, or that of the allocation
void savehandles_(std::span<const std::int32_t> handles, std::int32_t& status);

/// Tells whether a handle of this name, version and kind (101 graph, 102 data set) is saved. @param status  0
void findhandle_(std::string_view name, std::int32_t version, std::int32_t kind, bool& found, std::int32_t& status);

/// Allows or stops the marking of saved data sets. @param status  0
void allowgraphinteraction_(bool allowed, std::int32_t& status);

}  // namespace pathstat
