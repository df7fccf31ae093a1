#include "catalogue/catalogue.h"

#include <algorithm>
#include <array>

#include "catalogue/catalogue_rows.h"
#include "catalogue/measure_families.h"
#include "catalogue/measures.h"
#include "coreapi/operations.h"
#include "state/analysis_settings.h"
#include "state/measure_state.h"
#include "state/property_tables.h"
#include "support/named_memory.h"

namespace pathstat {
namespace {

/// The named blocks of a table, in the order of their allocation.
enum Column {
  selected,
  selectable,
  calculated,
  can_be_used,
  on_disk,
  names,
  short_names,
  ids,
  units,
  extensions,
  colours
};

struct ColumnType {
  std::string_view type;
  std::int64_t width;  ///< elements per row
};

struct ColumnBlock {
  std::string_view label;
  std::intptr_t TrjGuiP::*address;
};

constexpr std::size_t column_count = 11;
using TableBlocks = std::array<ColumnBlock, column_count>;

constexpr std::array<ColumnType, column_count> column_types{{
    {"logical", 1},
    {"logical", 1},
    {"logical", 1},
    {"logical", 1},
    {"logical", 1},
    {"character", 40},
    {"character", 40},
    {"integer", 1},
    {"character", 20},
    {"character", 10},
    {"integer", 1},
}};

constexpr TableBlocks property_blocks{{
    {"pathstat/pAnalPropsSelected", &TrjGuiP::pAnalPropsSelected},
    {"pathstat/pAnalPropsSelectable", &TrjGuiP::pAnalPropsSelectable},
    {"pathstat/pAnalPropsCalculated", &TrjGuiP::pAnalPropsCalculated},
    {"pathstat/pAnalPropsCanBeUsed", &TrjGuiP::pAnalPropsCanBeUsed},
    {"pathstat/pAnalPropsOnDisk", &TrjGuiP::pAnalPropsOnDisk},
    {"pathstat/pPropNameList", &TrjGuiP::pPropNameList},
    {"pathstat/pShortPropNames", &TrjGuiP::pShortPropNames},
    {"pathstat/pPropNameIds", &TrjGuiP::pPropNameIds},
    {"pathstat/pPropUnits", &TrjGuiP::pPropUnits},
    {"pathstat/pPropFileExt", &TrjGuiP::pPropFileExt},
    {"pathstat/pPropPlotColor", &TrjGuiP::pPropPlotColor},
}};

constexpr TableBlocks fluctuation_blocks{{
    {"pathstat/pAnalFluctsSelected", &TrjGuiP::pAnalFluctsSelected},
    {"pathstat/pAnalFluctsSelectable", &TrjGuiP::pAnalFluctsSelectable},
    {"pathstat/pAnalFluctsCalculated", &TrjGuiP::pAnalFluctsCalculated},
    {"pathstat/pAnalFluctsCanBeUsed", &TrjGuiP::pAnalFluctsCanBeUsed},
    {"pathstat/pAnalFluctsOnDisk", &TrjGuiP::pAnalFluctsOnDisk},
    {"pathstat/pFluctNameList", &TrjGuiP::pFluctNameList},
    {"pathstat/pFluctAbbrevNameList", &TrjGuiP::pFluctAbbrevNameList},
    {"pathstat/pFluctNameIds", &TrjGuiP::pFluctNameIds},
    {"pathstat/pFluctUnits", &TrjGuiP::pFluctUnits},
    {"pathstat/pFluctFileExt", &TrjGuiP::pFluctFileExt},
    {"pathstat/pFluctPlotColor", &TrjGuiP::pFluctPlotColor},
}};

void free_blocks(const TableBlocks& blocks) {
  for (const auto& block : blocks) {
    std::int32_t unknown = 0;
    kvs_msd_free_(block.label, unknown);
    trj_gui_p_.*block.address = 0;
  }
}

/// Blocks that are there stay, so that a table is not lost where memory has run out: all have the same rows.
void allocate_blocks(const TableBlocks& blocks, std::int64_t rows, std::int32_t& status) {
  status = 0;
  if (trj_gui_p_.*blocks.back().address != 0) return;
  free_blocks(blocks);
  for (std::size_t column = 0; column < column_count; ++column) {
    const auto& [type, width] = column_types[column];
    kvs_msd_alloc_(blocks[column].label, type, rows * width, trj_gui_p_.*blocks[column].address, status);
    if (status != 0) return free_blocks(blocks);
  }
}

CatalogueTable view_of(const TableBlocks& blocks, std::int32_t rows) {
  const auto at = [&]<class T>(std::span<T>& span, Column column) {
    span = {pointer_at<T>(trj_gui_p_.*blocks[column].address), static_cast<std::size_t>(rows)};
  };
  CatalogueTable table;
  if (trj_gui_p_.*blocks.back().address == 0) return table;
  at(table.selected, selected);
  at(table.selectable, selectable);
  at(table.calculated, calculated);
  at(table.can_be_used, can_be_used);
  at(table.on_disk, on_disk);
  at(table.names, names);
  at(table.short_names, short_names);
  at(table.ids, ids);
  at(table.units, units);
  at(table.extensions, extensions);
  at(table.colours, colours);
  return table;
}

void fill_texts(const CatalogueTable& table, std::size_t k, const auto& row, std::string_view short_name) {
  table.names[k] = row.name;
  table.short_names[k] = short_name;
  table.ids[k] = row.id;
  table.units[k] = row.units;
  table.extensions[k] = row.extension;
  table.colours[k] = row.colour;
  table.on_disk[k] = false;
}

void fill_properties(const CatalogueTable& table) {
  const bool source_calculates = trj_gui_c_.input_source == from_trajectory;
  for (std::size_t k = 0; k < table.size(); ++k) {
    const PropertyRow& row = property_rows[k];
    fill_texts(table, k, row, row.short_name.empty() ? row.name : row.short_name);
    table.selected[k] = row.selected != 0;
    table.selectable[k] = row.selectable != 0;
    table.can_be_used[k] = row.can_be_used != 0;
    table.calculated[k] = row.calculated == by_source ? source_calculates : row.calculated != 0;
  }
}

void fill_fluctuations(const CatalogueTable& table) {
  constexpr std::int32_t dielectric_constant = 901;
  for (std::size_t k = 0; k < table.size(); ++k) {
    const FluctuationRow& row = fluctuation_rows[k];
    fill_texts(table, k, row, row.symbol);
    table.selected[k] = false;
    table.selectable[k] = !row.is_header();
    table.can_be_used[k] = true;
    table.calculated[k] = row.id != dielectric_constant;
  }
}

bool any_of(std::span<const Logical> flags) {
  return std::ranges::any_of(flags, [](Logical flag) { return bool{flag}; });
}

}  // namespace

void forget_measures() {
  trjmeasures_i_ = {};
  std::int32_t error = 0;
  const std::int32_t application = monitor_memory(error);
  if (error != 0) return;
  for (const auto& family : measure_families) {
    const bool shares_key = family.id == 506;
    if (!shares_key) kvd_ud_remove_(application, family.data_key, error);
  }
}

bool CatalogueTable::any_wanted() const {
  for (std::size_t row = 0; row < size(); ++row) {
    if (is_wanted(row)) return true;
  }
  return false;
}

CatalogueTable property_table() { return view_of(property_blocks, trj_gui_i_.property_count); }

CatalogueTable fluctuation_table() { return view_of(fluctuation_blocks, trj_gui_i_.fluctuation_count); }

void trj_propinit_(std::int32_t& status) {
  trj_gui_i_.property_count = static_cast<std::int32_t>(property_rows.size());
  allocate_blocks(property_blocks, trj_gui_i_.property_count, status);
  if (status != 0) return;
  fill_properties(property_table());
  trj_gui_l_.any_property_selected = any_of(property_table().selected);
  forget_measures();

  trj_gui_i_.fluctuation_count = static_cast<std::int32_t>(fluctuation_rows.size());
  allocate_blocks(fluctuation_blocks, trj_gui_i_.fluctuation_count, status);
  if (status != 0) return;
  fill_fluctuations(fluctuation_table());
  trj_gui_l_.any_fluctuation_selected = any_of(fluctuation_table().selected);
  trj_gui_l_.trj_gui_l_3 = false;
  trj_gui_l_.rdf_done = false;
  trj_gui_l_.vac_done = false;
  trj_gui_l_.msd_done = false;
}

}  // namespace pathstat
