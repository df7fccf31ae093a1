#include "coreapi/operation_row.h"

#include <unordered_map>

namespace pathstat {
namespace {

constexpr std::array rows{
#define OPERATION(direct, twin, family, sends, receives, order) \
  OperationRow{#direct, Family::family, sends, receives, order},
#include "coreapi/operations.def"
#undef OPERATION
};

}  // namespace

std::span<const OperationRow> all_operations() { return rows; }

const OperationRow* find_operation(std::string_view name) {
  static const auto by_name = [] {
    std::unordered_map<std::string_view, const OperationRow*> map;
    for (const auto& row : rows) map.emplace(row.name, &row);
    return map;
  }();
  const auto found = by_name.find(name);
  return found == by_name.end() ? nullptr : found->second;
}

}  // namespace pathstat
