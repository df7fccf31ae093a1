#include "desk/script/answer_text.h"

#include <algorithm>
#include <functional>

#include "desk/messages/visible_text.h"

namespace pathstat::desk {
namespace {

/// More items of an answer than this stand on a line each.
constexpr std::size_t most_on_a_line = 6;

bool is_set_in(const std::string& item) { return item.front() == ' '; }
bool is_not_there(const std::string& item) { return item[item.find_first_not_of(' ')] == '<'; }

/// The items without those that cannot be had, and without headings that nothing stands under.
std::vector<std::string> items_there(const std::vector<std::string>& ranges) {
  auto items = items_of(ranges);
  std::erase_if(items, is_not_there);
  if (std::none_of(items.begin(), items.end(), is_set_in)) return items;
  std::vector<std::string> kept;
  for (const auto& item : items) {
    if (!is_set_in(item) && !kept.empty() && !is_set_in(kept.back())) kept.pop_back();
    kept.push_back(item);
  }
  if (!is_set_in(kept.back())) kept.pop_back();
  return kept;
}

std::string on_lines(const std::vector<std::string>& items) {
  if (items.empty()) return "(nothing)";
  std::string all;
  for (const auto& item : items) {
    if (items.size() > most_on_a_line)
      all += "\n    " + visible(item);
    else
      all += (all.empty() ? "" : ", ") + visible(item.substr(item.find_first_not_of(' ')));
  }
  return all;
}

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

std::string spelled(const std::vector<std::string>& values) { return on_lines(items_of(values)); }

std::vector<std::string> choices_of(const std::vector<std::string>& ranges) {
  auto items = items_there(ranges);
  if (std::any_of(items.begin(), items.end(), is_set_in)) std::erase_if(items, std::not_fn(is_set_in));
  for (auto& item : items) item.erase(0, item.find_first_not_of(' '));
  return items;
}

std::string spelled_choices(const std::vector<std::string>& ranges) { return on_lines(items_there(ranges)); }

}  // namespace pathstat::desk
