#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "support/named_memory.h"

namespace pathstat {

/// Classes of objects in the selection of the Core.
constexpr std::int32_t atom_class = 3;
constexpr std::int32_t model_class = 13;

/// The models that a command works on: those selected in the Core, or the current one if none is. Named blocks hold
/// the models and their periodic types side by side.
class ModelSelection {
 public:
  /// @param status  0; 1 if a selection of this label lives, whose owner waits for the Core; that of a count
  ///                that is none, or of the allocation
  ModelSelection(std::string_view models_label, std::string_view types_label, std::int32_t& status);

  std::span<const std::int32_t> models() const { return models_.span(); }
  std::span<const std::int32_t> periodic_types() const { return types_.span(); }
  std::int32_t size() const { return static_cast<std::int32_t>(models_.size()); }
  /// Nothing is selected, so that the current model stands in.
  bool is_current_model() const { return is_current_model_; }
  /// Models of a periodic type.
  std::int32_t count_of(std::int32_t periodic_type) const;

 private:
  NamedBlock<std::int32_t> models_;
  NamedBlock<std::int32_t> types_;
  bool is_current_model_ = false;
};

}  // namespace pathstat
