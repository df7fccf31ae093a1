#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <vector>

#include "desk/graphs/figure.h"
#include "desk/link/core_session.h"
#include "desk/model/data_model.h"
#include "desk/panel/page_state.h"

namespace pathstat::desk {

/// What a binary message holds. It begins with four 32-bit little-endian integers: this kind, the handle of what it
/// belongs to, the place of its first element, and the count of elements.
enum class Bulk : std::uint32_t {
  positions = 1,   ///< x, y, z of each atom, 32-bit floats, Å
  points = 2,      ///< x, y of each point of a data set, 32-bit floats
  elements = 3,    ///< one byte per atom, by atomic number
  bonds = 4,       ///< places of two atoms each, 32-bit
  selection = 5,   ///< one byte per atom, 1 if it is selected
  atom_words = 6,  ///< name, force-field type and residue of each atom, by their places in the lists of the model
  atom_ids = 7,    ///< number and residue number of each atom, 32-bit
};

PageMessage text_message(const nlohmann::json& body);

/// The model without what is per atom, which follows in the messages of model_bulk.
nlohmann::json model_body(const ModelObject& model);
std::vector<PageMessage> model_bulk(const ModelObject& model);
nlohmann::json cell_body(const MolecularModel& model);
PageMessage positions_message(const ModelObject& model);
PageMessage selection_message(const ModelObject& model);
nlohmann::json measures_body(const MolecularModel& model);

/// A figure without its points.
///
/// @param sets  handles of the data sets of its curves, in their order
nlohmann::json figure_body(const Figure& figure, const GraphStore::Handle& handle, std::span<const std::int32_t> sets);
/// Points of a data set from the first one given.
PageMessage points_message(std::int32_t set, const std::vector<PlotPoint>& points, std::size_t first);

nlohmann::json values_body(const std::string& word, const WordAnswer& answer);

}  // namespace pathstat::desk
