#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace pathstat::desk {

/// Classes of the objects of the data model, by the codes that operations use.
enum class ObjectClass : std::int32_t {
  none = 0,
  root = 1,
  element = 2,
  atom = 3,
  plane = 4,
  monitor = 5,
  periodic_image = 6,  ///< of an atom; an atom to all operations
  application = 11,
  space_group_library = 12,
  model = 13,
  space_group = 14,
  surface = 15,
};

/// Where an object stands.
struct ObjectPlace {
  ObjectClass kind = ObjectClass::none;
  std::size_t model = 0;  ///< place of the model that it belongs to or is
  std::size_t index = 0;  ///< among the objects of its class of that model, or of the data model
};

/// Hands out the identifiers of all objects, from 1 up and none twice. Objects that come together have identifiers in a
/// row and take the memory of one; finding a place costs as much as a search among the rows.
class ObjectRegistry {
 public:
  static constexpr std::size_t no_model = static_cast<std::size_t>(-1);

  /// @param index  of the first of the objects
  /// @return the first identifier, or 0 if there are not enough left
  std::int32_t add(ObjectClass kind, std::size_t count, std::size_t model = no_model, std::size_t index = 0);
  /// The identifier that the next object gets.
  std::int64_t next() const { return next_; }
  /// Leaves out the identifiers ahead of one that is still to be handed out.
  void go_on_at(std::int64_t id) { next_ = std::max(next_, id); }
  /// Ends one object; those of its class and model behind it move up by one place.
  void remove(std::int32_t id);
  /// Gives the atoms and periodic images of a model anew: whatever was there of them and is not among these ends.
  void replace_atoms(std::size_t model, std::span<const std::int32_t> atoms, std::span<const std::int32_t> images);
  /// Ends the objects of a model and the model itself.
  void remove_model(std::size_t model);
  ObjectPlace find(std::int32_t id) const;
  /// True if so many identifiers are left.
  bool has_room(std::size_t count) const;

 private:
  struct Row {
    std::int32_t first;
    std::size_t count;
    ObjectPlace place;  ///< of the first
  };
  std::vector<Row> rows_;
  std::int64_t next_ = 1;
};

}  // namespace pathstat::desk
