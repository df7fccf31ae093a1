#include "desk/model/group_library.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <gemmi/symmetry.hpp>
#include <mutex>
#include <string>
#include <vector>

#include "desk/model/library_operators.h"

namespace pathstat::desk {
namespace {

constexpr std::size_t table_size = sizeof(gemmi::spacegroup_tables::main) / sizeof(gemmi::SpaceGroup);

/// The settings in the order of their numbers; the table has some rare ones behind the last group.
const std::vector<const gemmi::SpaceGroup*>& rows() {
  static const auto sorted = [] {
    std::vector<const gemmi::SpaceGroup*> list;
    for (std::size_t k = 0; k < table_size; ++k) list.push_back(&gemmi::spacegroup_tables::main[k]);
    std::ranges::stable_sort(list, {}, [](const gemmi::SpaceGroup* group) { return group->number; });
    return list;
  }();
  return sorted;
}

std::string plain(std::string_view name) {
  std::string text;
  for (const char c : name) {
    if (c != ' ') text += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return text;
}

}  // namespace

std::span<const SpaceGroup> library_groups() {
  static const auto groups = [] {
    std::vector<SpaceGroup> list;
    for (const auto* row : rows()) {
      SpaceGroup group;
      group.name = row->xhm();
      group.number = row->number;
      group.option = !list.empty() && list.back().number == row->number ? list.back().option + 1 : 1;
      list.push_back(std::move(group));
    }
    return list;
  }();
  return groups;
}

const SpaceGroup& library_group(std::size_t place) {
  static std::mutex guard;
  static std::array<SpaceGroup, table_size> known;
  const std::scoped_lock lock(guard);
  auto& group = known.at(place);
  if (group.operators.size() == 0) {
    const auto& stated = library_groups()[place];
    auto found = group_of_operators(stated.name, as_operators(rows()[place]->operations()));
    found.number = stated.number;
    found.option = stated.option;
    group = std::move(found);
  }
  return group;
}

bool is_name_of(std::size_t place, std::string_view text) {
  const auto& row = *rows().at(place);
  const auto name = plain(text);
  const std::string setting = row.ext ? std::string(1, row.ext) : row.qualifier;  // R, or the axes: b1
  return name == plain(row.xhm()) || name == plain(row.hm) || name == plain(row.short_name()) ||
         name == plain(fmt::format("{}:{}", row.number, setting)) ||
         name == plain(fmt::format("{}:{}", row.short_name(), setting));
}

}  // namespace pathstat::desk
