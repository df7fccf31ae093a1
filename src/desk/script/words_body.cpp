#include "desk/script/words_body.h"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>

#include "desk/advice/word_groups.h"
#include "desk/advice/word_table.h"
#include "desk/script/script.h"

namespace pathstat::desk {
namespace {

using nlohmann::json;

constexpr std::array form_names{"none", "flag", "choice", "integer", "number", "path", "text", "names"};

json word_body(const CommandHelp& row) {
  const auto shape = argument_shape(row);
  return {{"word", row.word},
          {"arguments", row.arguments},
          {"meaning", row.meaning},
          {"needs", row.needs},
          {"form", form_names.at(static_cast<std::size_t>(shape.form))},
          {"most", shape.most},
          {"setting", is_setting(row)},
          {"values", listed_values(row.arguments)}};
}

}  // namespace

json words_body() {
  auto groups = json::array(), lines = json::array();
  for (const auto& group : word_groups()) {
    auto words = json::array();
    for (const auto* row : group.words) words.push_back(word_body(*row));
    groups.push_back({{"name", group.name}, {"about", group.about}, {"words", std::move(words)}});
  }
  for (const auto& line : desk_line_helps()) {
    lines.push_back({{"name", line.name}, {"usage", line.usage}, {"meaning", line.meaning}});
  }
  return {{"type", "words"}, {"groups", std::move(groups)}, {"lines", std::move(lines)}};
}

}  // namespace pathstat::desk
