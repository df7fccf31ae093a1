#include "desk/script/answer_text.h"

namespace pathstat::desk {
namespace {

/// More items of an answer than this stand on a line each.
constexpr std::size_t most_on_a_line = 6;

}  // namespace

std::vector<std::string> items_of(const std::vector<std::string>& values) {
  std::vector<std::string> items;
  for (const auto& value : values) {
    items.emplace_back();
    for (std::size_t k = 0; k < value.size(); ++k) {
      if (value[k] == ',') {
        items.emplace_back();
      } else {
        if (value[k] == '\\' && k + 1 < value.size() && value[k + 1] == ',') ++k;
        items.back() += value[k];
      }
    }
  }
  for (auto& item : items) item.erase(item.find_last_not_of(' ') + 1);
  std::erase(items, std::string{});
  return items;
}

std::string spelled(const std::vector<std::string>& values) {
  const auto items = items_of(values);
  if (items.empty()) return "(nothing)";
  std::string all;
  for (const auto& item : items) {
    if (items.size() > most_on_a_line)
      all += "\n    " + item;
    else
      all += (all.empty() ? "" : ", ") + item.substr(item.find_first_not_of(' '));
  }
  return all;
}

}  // namespace pathstat::desk
