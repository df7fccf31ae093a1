#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "building/asymmetric_unit.h"
#include "support/vectors.h"

namespace pathstat {

using CellVectors = std::array<Vector3, 3>;

/// The model that the user works on, or 0.
std::int32_t current_model();
/// The name of a model.
std::string name_of_model(std::int32_t model);
/// The periodic type of a model, or -1 if the Core does not tell it.
std::int32_t type_of_model(std::int32_t model);
/// The space group of a model, or 0.
std::int32_t group_of_model(std::int32_t model);

/// The cell of the asymmetric unit's lengths and angles, with a on x and b in the xy plane.
CellVectors stated_cell(std::int32_t& status);
/// The space group that an asymmetric unit states; 0 if the Core's library has none of that name, number and option.
std::int32_t stated_group(const AsymmetricUnit& unit);

/// Makes atoms of the waiting sites in a model. @return their objects
std::vector<std::int32_t> place_sites(std::int32_t model, const CellVectors& cell, std::int32_t& status);

/// A model that is being made: unless it is kept, it goes again, and the one before it is current again.
class ModelDraft {
 public:
  ModelDraft(std::string_view name, std::int32_t& status);
  ~ModelDraft();
  ModelDraft(const ModelDraft&) = delete;
  ModelDraft& operator=(const ModelDraft&) = delete;

  std::int32_t id() const { return id_; }
  void keep() { kept_ = true; }

 private:
  std::int32_t before_ = 0, id_ = 0;
  bool kept_ = false;
};

}  // namespace pathstat
