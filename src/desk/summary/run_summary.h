#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "desk/graphs/figure.h"

namespace pathstat::desk {

/// One number of a summary.
struct SummaryValue {
  std::string_view quantity;  ///< "mean", "first peak"
  std::optional<double> value;
  std::optional<double> error;
  std::string unit;
};

/// What a run says of one thing: a series, a fit, a radial distribution or a spectrum. All of a kind have the same
/// quantities in the same order.
struct SummaryItem {
  std::string name;
  std::vector<SummaryValue> values;  ///< that which matters most first
  std::string hint;                  ///< why not to rely on it; empty where nothing speaks against it
};

/// The items of one kind.
struct SummaryTable {
  std::string_view kind;   ///< "series"
  std::string_view title;  ///< "Means"
  std::size_t beside = 0;  ///< place of the value that stands beside the first in a line; 0: none
  std::vector<SummaryItem> items;
};

/// What the graphs of a run say, by kind; kinds without an item are left out.
std::vector<SummaryTable> summarise(std::span<const Figure> figures);

/// "-515.860 ± 0.004": the error with two digits and the value to the same place; "(3.67 ± 0.11) × 10⁻⁵" for small and
/// large ones; six digits of a value without error; a dash for none.
std::string with_error(const SummaryValue& value);

/// "first peak 3.69 Å", "mean 92.68 ± 0.82 K"; five digits of a value without error.
std::string in_words(const SummaryValue& value);

/// One row a number: kind, name, quantity, value, error, unit, hint; numbers read back as they were.
std::string summary_tsv(std::span<const SummaryTable> tables);
/// An object of arrays by kind; each number an object of value, error and unit, null where there is none.
std::string summary_json(std::span<const SummaryTable> tables);
/// A line for each item with what matters most, for a terminal; of many, the first.
std::vector<std::string> summary_lines(std::span<const SummaryTable> tables);

}  // namespace pathstat::desk
