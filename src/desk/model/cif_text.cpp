#include "desk/model/cif_text.h"

#include <exception>
#include <gemmi/cif.hpp>

// The library's blocks hold blocks of their own in vectors, which compilers take in C++17 alone: so does this file.
namespace pathstat::desk {
namespace {

namespace cif = gemmi::cif;

CifBlock columns_of(const cif::Block& block) {
  CifBlock result{block.name, {}};
  for (const auto& item : block.items) {
    if (item.type == cif::ItemType::Pair) {
      result.columns[gemmi::to_lower(item.pair[0])].push_back(cif::as_string(item.pair[1]));
    }
    if (item.type != cif::ItemType::Loop) continue;
    const auto width = item.loop.tags.size();
    for (std::size_t column = 0; column < width; ++column) {
      auto& values = result.columns[gemmi::to_lower(item.loop.tags[column])];
      for (std::size_t k = column; k < item.loop.values.size(); k += width) {
        values.push_back(cif::as_string(item.loop.values[k]));
      }
    }
  }
  return result;
}

}  // namespace

CifText split_cif(const std::string& text, const std::string& name) {
  CifText result;
  try {
    const auto document = cif::read_memory(text.data(), text.size(), name.c_str());
    for (const auto& block : document.blocks) result.blocks.push_back(columns_of(block));
  } catch (const std::exception& fault) {
    const std::string why = fault.what();
    result = {{}, why.rfind(name + ":", 0) == 0 ? "line " + why.substr(name.size() + 1) : why};
  }
  return result;
}

}  // namespace pathstat::desk
