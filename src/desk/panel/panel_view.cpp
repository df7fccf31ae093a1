#include "desk/panel/panel_view.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "desk/panel/panel_messages.h"

namespace pathstat::desk {
namespace {

constexpr auto between_positions = std::chrono::milliseconds(15);
// A browser without a graphics card takes some 30 ms of a processor for a picture of the page, which the analysis would
// have to wait for.
constexpr auto between_points = std::chrono::milliseconds(1000);

/// Sends a message unless it is as the last one of its kind.
void tell_change(PageServer& server, const char* topic, PageMessage message, std::string& last) {
  if (message.bytes == last) return;
  last = message.bytes;
  server.publish(topic, Keep::only, std::move(message));
}

}  // namespace

bool PanelView::look_now_and_then() {
  const auto now = Clock::now();
  if (now - models_seen_ >= between_positions) {
    look_at_models();
    models_seen_ = Clock::now();
  }
  if (now - graphs_seen_ < between_points) return false;
  look_at_graphs();
  graphs_seen_ = Clock::now();
  return true;
}

void PanelView::look() {
  look_at_models();
  look_at_graphs();
  const auto& models = runner_.models();
  if (const auto* model = models.model(models.current_model())) {
    tell_change(server_, "selection", selection_message(*model), selection_);
    tell_change(server_, "measures", text_message(measures_body(model->data)), measures_);
  }
}

void PanelView::look_at_models() {
  const auto& models = runner_.models();
  const auto* model = models.model(models.current_model());
  if (!model) {
    if (model_ > 0) server_.publish("model", Keep::only, text_message({{"type", "model"}, {"id", 0}}));
    model_ = 0;
    return;
  }
  if (model->id != model_ || model->data.bonds.size() != bonds_) {
    model_ = model->id;
    bonds_ = model->data.bonds.size();
    geometry_ = 0;
    selection_.clear();
    server_.publish("model", Keep::only, text_message(model_body(*model)));
    for (auto& message : model_bulk(*model)) server_.publish("model", Keep::behind, std::move(message));
  }
  if (model->geometry_version == geometry_) return;
  geometry_ = model->geometry_version;
  tell_change(server_, "cell", text_message(cell_body(model->data)), cell_);
  server_.publish("positions", Keep::only, positions_message(*model));
}

void PanelView::look_at_graphs() {
  const auto& store = runner_.graphs();
  bool changed = false;
  for (const auto graph : store.shown_graphs()) {
    const auto known = graphs_.find(graph);
    changed = changed || known == graphs_.end() || known->second != store.revision(graph);
  }
  if (!changed) return;
  for (const auto& figure : figures_of(store)) {
    auto& known = graphs_[figure.graph];
    const auto revision = store.revision(figure.graph);
    if (known == revision) continue;
    known = revision;
    const auto& sets = store.graph(figure.graph)->sets;
    server_.publish(fmt::format("graph {}", figure.graph), Keep::only,
                    text_message(figure_body(figure, *store.info(figure.graph), sets)));
    for (const auto set : sets) send_points(set, *store.data_set(set));
  }
}

void PanelView::send_points(std::int32_t set, const DataSet& data) {
  auto& sent = sets_[set];
  const bool anew = sent.rewritten != data.rewritten || sent.points > data.points.size();
  if (!anew && sent.points == data.points.size()) return;
  const auto first = anew ? 0 : sent.points;
  server_.publish(fmt::format("points {}", set), anew ? Keep::only : Keep::behind,
                  points_message(set, data.points, first));
  sent = {data.rewritten, data.points.size()};
}

}  // namespace pathstat::desk
