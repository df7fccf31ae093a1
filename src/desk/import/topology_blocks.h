#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "desk/model/molecular_model.h"

namespace pathstat::desk {

/// What the import script sends ahead of the frames, block by block. Nothing of it is believed: lengths are held
/// against the number of atoms, places of bonds against it too, and words are words.
class TopologyBlocks {
 public:
  /// Longest payload that a block of this tag may have now; -1 for a tag that does not stand here.
  std::int64_t longest(std::string_view tag) const;
  /// @return empty, or what is wrong with the block
  std::string take(std::string_view tag, std::span<const std::byte> payload);

  std::size_t atoms() const { return static_cast<std::size_t>(atoms_); }
  std::int64_t frames() const { return frames_; }
  bool cell_varies() const { return cell_varies_; }
  bool has_bonds() const { return !model_.bonds.empty(); }
  /// False where atoms of no element came without masses; known from `give_model` on.
  bool masses_known() const { return masses_known_; }
  /// The names of the values that each frame brings.
  const std::vector<std::string>& series() const { return series_; }

  /// Gives the model away, without positions and cell, and what the script did not send filled in: the ids 1, 2, ...,
  /// the masses of elements, no charges. `problem` is empty, or says what is missing.
  MolecularModel give_model(const std::string& name, std::string& problem);

 private:
  std::string take_counts(std::span<const std::byte> payload);
  std::string take_words(std::string_view tag, std::span<const std::byte> payload);
  std::string take_elements(const std::vector<std::string_view>& words);
  std::string take_ids(std::span<const std::byte> payload);
  std::string take_bonds(std::span<const std::byte> payload);

  std::int64_t atoms_ = 0;
  std::int64_t bonds_ = 0;
  std::int64_t frames_ = 0;
  bool cell_varies_ = false;
  bool masses_known_ = true;
  std::vector<std::string> series_;
  MolecularModel model_;
};

}  // namespace pathstat::desk
