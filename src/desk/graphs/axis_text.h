#pragma once

#include <string>
#include <string_view>

namespace pathstat::desk {

/// A text with its units set as a journal sets them: "A^2/ps^2" becomes "Å²/ps²".
std::string typeset(std::string_view text);

/// The text of an axis from the label that the process gives: "Energy/kcal" becomes "Energy (kcal/mol)". A label that
/// is only a unit, or none at all, takes the quantity from the graph's title.
std::string axis_text(std::string_view label, std::string_view title);

/// The text of an axis parted into what is measured and its unit, which stands in parentheses at the end.
struct AxisParts {
  std::string_view quantity;
  std::string_view unit;  ///< empty where the text tells none
};
AxisParts axis_parts(std::string_view axis);

/// Of the text of an axis, "Energy (kcal/mol)": "kcal/mol"; empty where it tells none.
std::string unit_of(std::string_view axis);

}  // namespace pathstat::desk
