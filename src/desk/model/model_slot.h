#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "desk/model/data_model.h"

namespace pathstat::desk {

/// An atom in another cell.
struct ImageAtom {
  std::uint32_t place;
  Translation image;

  bool operator==(const ImageAtom&) const = default;
};

struct ImageHash {
  std::size_t operator()(const ImageAtom& atom) const {
    std::uint64_t hash = atom.place;
    for (const auto t : atom.image) hash = (hash ^ static_cast<std::uint32_t>(t)) * 0x9e3779b97f4a7c15u;
    return hash ^ hash >> 32;
  }
};

/// A model with what is found out about it on demand.
struct DataModel::ModelSlot {
  ModelObject object;
  std::vector<NamedImage> images;
  std::unordered_map<ImageAtom, std::int32_t, ImageHash> image_ids;
  Connectivity connectivity;
  std::uint64_t connectivity_version = 0;
};

}  // namespace pathstat::desk
