#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "catalogue/catalogue.h"

namespace pathstat {

/// A row of the catalogue as it stands when its report begins.
struct CatalogueRow {
  std::int32_t id;
  std::int32_t colour;
  std::string name;
  std::string short_name;
  std::string units;
  std::string extension;

  explicit CatalogueRow(const CatalogueTable& table, std::size_t row)
      : id(table.ids[row]),
        colour(table.colours[row]),
        name(table.names[row].view()),
        short_name(table.short_names[row].view()),
        units(table.units[row].view()),
        extension(table.extensions[row].view()) {}
};

}  // namespace pathstat
