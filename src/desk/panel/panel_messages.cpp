#include "desk/panel/panel_messages.h"

#include <array>
#include <bit>
#include <cstring>
#include <map>
#include <nlohmann/json.hpp>
#include <string_view>

#include "desk/model/marked_measure.h"
#include "desk/script/answer_text.h"
#include "structure/elements.h"

namespace pathstat::desk {
namespace {

using nlohmann::json;

static_assert(std::endian::native == std::endian::little, "bulk messages are little-endian");

/// A binary message that is filled element by element.
class BulkWriter {
 public:
  BulkWriter(Bulk kind, std::int32_t handle, std::size_t first, std::size_t count, std::size_t element_bytes) {
    message_.binary = true;
    message_.bytes.reserve(16 + count * element_bytes);
    put(static_cast<std::uint32_t>(kind));
    put(handle);
    put(static_cast<std::uint32_t>(first));
    put(static_cast<std::uint32_t>(count));
  }

  template <class T>
  void put(T value) {
    std::array<char, sizeof(T)> bytes{};
    std::memcpy(bytes.data(), &value, sizeof(T));
    message_.bytes.append(bytes.data(), bytes.size());
  }

  PageMessage take() { return std::move(message_); }

 private:
  PageMessage message_;
};

json words_of_column(const WordColumn& column) {
  auto list = json::array();
  for (const auto& word : column.words()) list.push_back(word);
  return list;
}

}  // namespace

PageMessage text_message(const json& body) {
  return {.bytes = body.dump(-1, ' ', false, json::error_handler_t::replace)};
}

json model_body(const ModelObject& model) {
  const auto& data = model.data;
  auto symbols = json::array();
  for (const auto& element : elements()) symbols.push_back(element.symbol);
  auto radii = json::array();
  for (const auto& element : elements()) radii.push_back(element.bond_radius);
  return {{"type", "model"},
          {"id", model.id},
          {"name", data.name},
          {"atoms", data.positions.size()},
          {"bonds", data.bonds.size()},
          {"names", words_of_column(data.names)},
          {"ffTypes", words_of_column(data.ff_types)},
          {"residues", words_of_column(data.residues)},
          {"symbols", std::move(symbols)},
          {"radii", std::move(radii)}};
}

std::vector<PageMessage> model_bulk(const ModelObject& model) {
  const auto& data = model.data;
  const auto atoms = data.positions.size();
  BulkWriter kinds(Bulk::elements, model.id, 0, atoms, 1);
  for (const auto element : data.elements) kinds.put(element);
  BulkWriter bonds(Bulk::bonds, model.id, 0, data.bonds.size(), 8);
  for (const auto& [a, b] : data.bonds) {
    bonds.put(a);
    bonds.put(b);
  }
  BulkWriter words(Bulk::atom_words, model.id, 0, atoms, 12);
  BulkWriter ids(Bulk::atom_ids, model.id, 0, atoms, 8);
  for (std::size_t k = 0; k < atoms; ++k) {
    for (const auto* column : {&data.names, &data.ff_types, &data.residues}) {
      words.put(k < column->size() ? column->key(k) : 0U);
    }
    ids.put(data.ids[k]);
    ids.put(k < data.residue_ids.size() ? data.residue_ids[k] : 0);
  }
  std::vector<PageMessage> all;
  for (auto* writer : {&kinds, &bonds, &words, &ids}) all.push_back(writer->take());
  return all;
}

json cell_body(const MolecularModel& model) {
  return {{"type", "cell"}, {"directions", periodic_directions(model.periodic_type)}, {"vectors", model.cell}};
}

PageMessage positions_message(const ModelObject& model) {
  const auto& positions = model.data.positions;
  BulkWriter writer(Bulk::positions, model.id, 0, positions.size(), 12);
  for (const auto& position : positions) {
    for (const auto x : position) writer.put(static_cast<float>(x));
  }
  return writer.take();
}

PageMessage selection_message(const ModelObject& model) {
  const auto atoms = model.data.positions.size();
  BulkWriter writer(Bulk::selection, model.id, 0, atoms, 1);
  for (std::size_t k = 0; k < atoms; ++k) {
    writer.put(k < model.atom_selected.size() ? model.atom_selected[k] : std::uint8_t{0});
  }
  return writer.take();
}

json measures_body(const MolecularModel& model) {
  auto list = json::array();
  for (const auto& monitor : model.monitors) {
    list.push_back({{"text", measure_text(model, monitor)}, {"atoms", monitor.atoms}});
  }
  return {{"type", "measures"}, {"list", std::move(list)}};
}

json figure_body(const Figure& figure, const GraphStore::Handle& handle, std::span<const std::int32_t> sets) {
  auto curves = json::array();
  for (std::size_t k = 0; k < figure.curves.size(); ++k) {
    const auto& curve = figure.curves[k];
    json body{{"set", sets[k]}, {"label", curve.label}, {"colour", curve.colour}, {"histogram", curve.histogram}};
    if (curve.highlighted) body["highlighted"] = {curve.highlighted->x, curve.highlighted->y};
    curves.push_back(std::move(body));
  }
  json body{{"type", "graph"},           {"graph", figure.graph}, {"name", handle.name}, {"version", handle.version},
            {"heading", figure.heading}, {"x", figure.x_text},    {"y", figure.y_text},  {"curves", std::move(curves)}};
  if (figure.x_range) body["range"] = {figure.x_range->x, figure.x_range->y};
  return body;
}

PageMessage points_message(std::int32_t set, const std::vector<PlotPoint>& points, std::size_t first) {
  BulkWriter writer(Bulk::points, set, first, points.size() - first, 8);
  for (auto k = first; k < points.size(); ++k) {
    writer.put(points[k].x);
    writer.put(points[k].y);
  }
  return writer.take();
}

json values_body(const std::string& word, const WordAnswer& answer) {
  return {{"type", "values"}, {"word", word}, {"values", items_of(answer.values)}, {"ranges", items_of(answer.ranges)}};
}

}  // namespace pathstat::desk
