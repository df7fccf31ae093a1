#include "plots/saved_handles.h"

#include <array>
#include <cstddef>

#include "coreapi/operations.h"
#include "plots/graph.h"
#include "state/saved_handles.h"
#include "support/named_memory.h"

namespace pathstat {
namespace {

constexpr std::int32_t save_mark = 200;
constexpr std::int32_t name_width = 80;

/// The named blocks of one kind of handle.
struct HandleList {
  std::string_view versions_label;
  std::string_view names_label;
  std::intptr_t GraphintP::*versions;
  std::intptr_t GraphintP::*names;
  std::int32_t GraphintI::*count;

  std::size_t size() const { return static_cast<std::size_t>(graphint_i_.*count); }
  std::int32_t* version_block() const { return reinterpret_cast<std::int32_t*>(graphint_p_.*versions); }
  Text<name_width>* name_block() const { return reinterpret_cast<Text<name_width>*>(graphint_p_.*names); }
};

constexpr HandleList graph_list{"PathStat/GrInt/GrVersions", "PathStat/GrInt/GrHandles", &GraphintP::graph_versions,
                                &GraphintP::graph_names, &GraphintI::saved_graph_count};
constexpr HandleList data_list{"PathStat/GrInt/DataVersions", "PathStat/GrInt/DataHandles", &GraphintP::data_versions,
                               &GraphintP::data_names, &GraphintI::saved_data_count};
constexpr std::array both_lists{graph_list, data_list};

const HandleList* list_of(std::int32_t kind) {
  if (kind == graph_kind) return &graph_list;
  return kind == data_set_kind ? &data_list : nullptr;
}

bool holds(const HandleList& list, std::string_view name, std::int32_t version) {
  for (std::size_t k = 0; k < list.size(); ++k) {
    if (list.version_block()[k] == version && same_text(list.name_block()[k], name)) return true;
  }
  return false;
}

void append(const HandleList& list, const Text<name_width>& name, std::int32_t version, std::int32_t& status) {
  const std::int32_t count = graphint_i_.*list.count + 1;
  kvs_msd_realloc_(list.versions_label, count, graphint_p_.*list.versions, status);
  if (status != 0) return;
  kvs_msd_realloc_(list.names_label, std::int64_t{count} * std::int64_t{name_width}, graphint_p_.*list.names, status);
  if (status != 0) return;
  list.version_block()[count - 1] = version;
  list.name_block()[count - 1] = name;
  graphint_i_.*list.count = count;
}

}  // namespace

SavedHandles saved_data_sets() {
  return {{data_list.name_block(), data_list.size()}, {data_list.version_block(), data_list.size()}};
}

void initsavedgraphhandles_(std::int32_t frame, std::int32_t& status) {
  killsavedgraphhandles_(status);
  graphint_i_.highlight_frame = frame;
  for (const auto& list : both_lists) {
    kvs_msd_alloc_(list.versions_label, "int", 1, graphint_p_.*list.versions, status);
    if (status != 0) return;
    kvs_msd_alloc_(list.names_label, "char", name_width, graphint_p_.*list.names, status);
    if (status != 0) return;
  }
}

void killsavedgraphhandles_(std::int32_t& status) {
  status = 0;
  if (graphint_i_.saved_data_count != 0) {
    const PlotTransaction transaction;
    std::int32_t error = 0;
    kvp_dat_demarkglobal_(frame_marker, error);
  }
  for (const auto& list : both_lists) {
    graphint_i_.*list.count = 0;
    std::int32_t unknown = 0;
    kvs_msd_free_(list.versions_label, unknown);
    kvs_msd_free_(list.names_label, unknown);
    graphint_p_.*list.versions = 0;
    graphint_p_.*list.names = 0;
  }
}

void savehandles_(std::span<const std::int32_t> handles, std::int32_t& status) {
  status = 0;
  for (const std::int32_t handle : handles) {
    Text<name_width> name;
    std::int32_t version = 0;
    std::int32_t unused = 0;
    std::int32_t kind = 0;
    std::int32_t error = 0;
    kvp_han_info_(handle, name, version, unused, kind, error);
    const HandleList* list = list_of(kind);
    if (error != 0 || list == nullptr || holds(*list, name, version)) continue;
    append(*list, name, version, status);
    if (status != 0) return;
    if (kind == data_set_kind && graphint_l_.graph_interaction) {
      kvp_dat_mark_(frame_marker, handle, save_mark, graphint_i_.highlight_frame, error);
    }
  }
}

void findhandle_(std::string_view name, std::int32_t version, std::int32_t kind, bool& found, std::int32_t& status) {
  status = 0;
  const HandleList* list = list_of(kind);
  found = list != nullptr && holds(*list, name, version);
}

void allowgraphinteraction_(bool allowed, std::int32_t& status) {
  status = 0;
  graphint_l_.graph_interaction = allowed;
}

}  // namespace pathstat
