#include "desk/messages/label_units.h"

namespace pathstat::desk {
namespace {

struct LabelUnit {
  std::string_view symbol;
  std::string_view unit;
};

constexpr LabelUnit label_units[] = {
    {"Ks", "1/GPa"}, {"Kt", "1/GPa"}, {"Gamma_v", "GPa/K"}, {"Cp", "cal/(mol K)"}, {"Cv", "cal/(mol K)"},
    {"beta", "1/K"}, {"mu", "K/GPa"}, {"phi", "Å³"},        {"omega", "m/s"},
};

}  // namespace

std::string_view unit_of_label(std::string_view label) {
  const auto symbol = label.substr(0, label.find(' '));
  for (const auto& row : label_units) {
    const auto rest = label.substr(symbol.size());
    if (symbol == row.symbol && (rest.find_first_not_of(' ') == rest.npos || rest.starts_with(" - "))) return row.unit;
  }
  return {};
}

}  // namespace pathstat::desk
