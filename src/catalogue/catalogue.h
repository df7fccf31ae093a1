#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "support/logical.h"
#include "support/text_field.h"

namespace pathstat {

/// One table of the catalogue as the data source and the user's choices have left it: an element per row in each span.
/// The spans look into named blocks and hold until the table is built anew.
struct CatalogueTable {
  std::span<Logical> selected;     ///< the user picked the row
  std::span<Logical> selectable;   ///< the row may be picked now
  std::span<Logical> calculated;   ///< false: the data come from a command of their own
  std::span<Logical> can_be_used;  ///< the row is shown to the user
  std::span<Logical> on_disk;      ///< the scratch file of the row is current
  std::span<Text<40>> names;
  std::span<Text<40>> short_names;  ///< of a fluctuation, its symbol
  std::span<std::int32_t> ids;
  std::span<Text<20>> units;
  std::span<Text<10>> extensions;
  std::span<std::int32_t> colours;

  std::size_t size() const { return ids.size(); }
  /// True if the row is picked and can be had.
  bool is_wanted(std::size_t row) const { return selected[row] && selectable[row]; }
  bool any_wanted() const;
};

/// The tables; empty before the first build.
CatalogueTable property_table();
CatalogueTable fluctuation_table();

/// Clears the counts of the measures and removes what the Core remembers of their monitors.
void forget_measures();

/// Builds both tables from nothing, clears the measures and the flags of finished correlations.
/// @param status  0, or that of the allocation
void trj_propinit_(std::int32_t& status);

}  // namespace pathstat
