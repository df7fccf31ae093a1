#include "desk/model/object_registry.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace pathstat::desk {

bool ObjectRegistry::has_room(std::size_t count) const {
  return count <= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max() - next_ + 1);
}

std::int32_t ObjectRegistry::add(ObjectClass kind, std::size_t count, std::size_t model, std::size_t index) {
  if (!has_room(count)) return 0;
  const auto first = static_cast<std::int32_t>(next_);
  next_ += static_cast<std::int64_t>(count);
  if (count == 0) return first;
  if (!rows_.empty()) {
    auto& last = rows_.back();
    const bool follows = static_cast<std::size_t>(first - last.first) == last.count && last.place.kind == kind &&
                         last.place.model == model && last.place.index + last.count == index;
    if (follows) {
      last.count += count;
      return first;
    }
  }
  rows_.push_back({first, count, {kind, model, index}});
  return first;
}

void ObjectRegistry::remove(std::int32_t id) {
  const auto gone = find(id);
  if (gone.kind == ObjectClass::none) return;
  std::vector<Row> rows;
  for (auto row : rows_) {
    const bool is_class = row.place.kind == gone.kind && row.place.model == gone.model;
    if (!is_class || row.place.index + row.count <= gone.index) {
      rows.push_back(row);
    } else if (row.place.index > gone.index) {
      --row.place.index;
      rows.push_back(row);
    } else {
      const auto before = gone.index - row.place.index;
      if (before > 0) rows.push_back({row.first, before, row.place});
      if (before + 1 < row.count) rows.push_back({id + 1, row.count - before - 1, gone});
    }
  }
  rows_ = std::move(rows);
}

void ObjectRegistry::replace_atoms(std::size_t model, std::span<const std::int32_t> atoms,
                                   std::span<const std::int32_t> images) {
  std::erase_if(rows_, [&](const Row& row) {
    return row.place.model == model &&
           (row.place.kind == ObjectClass::atom || row.place.kind == ObjectClass::periodic_image);
  });
  const auto add_rows = [&](ObjectClass kind, std::span<const std::int32_t> ids) {
    for (std::size_t k = 0; k < ids.size(); ++k) {
      const bool follows = k > 0 && rows_.back().first + static_cast<std::int64_t>(rows_.back().count) == ids[k];
      if (follows) {
        ++rows_.back().count;
      } else {
        rows_.push_back({ids[k], 1, {kind, model, k}});
      }
    }
  };
  add_rows(ObjectClass::atom, atoms);
  add_rows(ObjectClass::periodic_image, images);
  std::ranges::sort(rows_, {}, &Row::first);
}

void ObjectRegistry::remove_model(std::size_t model) {
  std::erase_if(rows_, [&](const Row& row) { return row.place.model == model; });
}

ObjectPlace ObjectRegistry::find(std::int32_t id) const {
  const auto above = std::upper_bound(rows_.begin(), rows_.end(), id,
                                      [](std::int32_t key, const Row& row) { return key < row.first; });
  if (above == rows_.begin()) return {};
  const auto& row = *std::prev(above);
  const auto offset = static_cast<std::size_t>(id - row.first);
  if (offset >= row.count) return {};
  return {row.place.kind, row.place.model, row.place.index + offset};
}

}  // namespace pathstat::desk
