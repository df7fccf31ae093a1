#include "pairs/rdf_graphs.h"

#include <array>
#include <cstddef>
#include <string>

#include "coreapi/operations.h"
#include "plots/graph.h"
#include "state/rdf_settings.h"

namespace pathstat {
namespace {

constexpr GraphLayout layout{"g(r)", "r (Angstrom)", "RDF", 15};
constexpr std::int32_t total_colour = 3, intra_colour = 4, inter_colour = 5;

/// Sends a function to its data set, beside the distances that stand in the plot block.
void send(std::int32_t data_set, std::span<const double> function, std::span<float> xy) {
  for (std::size_t i = 0; i < function.size(); ++i) xy[2 * i + 1] = static_cast<float>(function[i]);
  write_points(data_set, xy);
}

}  // namespace

std::string_view rdf_atoms_name(std::int32_t set_type) {
  switch (set_type) {
    case rdf_between::selected:
      return "selected atoms";
    case rdf_between::elements:
      return "selected elements";
    case rdf_between::fftypes:
      return "selected FF types";
    default:
      return "all atoms";
  }
}

void setuprdfgraphs_(const RdfRequest& request) {
  const std::string atoms(rdf_atoms_name(request.set_type));
  gr_c_.total_title = "Total RDF for " + atoms;
  if (request.components) gr_c_.components_title = "Components of RDF for " + atoms;
  gr_i_.viewer = take_viewer();
  std::array<std::int32_t, 2> graphs{};
  std::size_t count = 0;
  if (const auto graph = take_graph(gr_c_.total_title)) {
    gr_i_.graph_total = graphs[count++] = *graph;
    gr_i_.set_total = take_data_set(gr_c_.total_set, total_colour, DrawStyle::curve, "Total RDF");
    lay_out(*graph, std::array{gr_i_.set_total}, layout);
  }
  const auto graph = request.components ? take_graph(gr_c_.components_title) : std::nullopt;
  if (graph) {
    gr_i_.graph_components = graphs[count++] = *graph;
    gr_i_.set_inter = take_data_set(gr_c_.inter_set, inter_colour, DrawStyle::curve, "Intermolecular RDF");
    gr_i_.set_intra = take_data_set(gr_c_.intra_set, intra_colour, DrawStyle::curve, "Intramolecular RDF");
    lay_out(*graph, std::array{gr_i_.set_inter, gr_i_.set_intra}, layout);
  }
  gr_i_.graph_count = static_cast<std::int32_t>(count);
  if (count == 0) return;
  const auto made = std::span<const std::int32_t>(graphs).first(count);
  widen(made);
  std::int32_t error = 0;
  kvp_vwr_setgraphlist_(gr_i_.viewer, made, error);
}

void plotrdfgraphs_(const RdfRequest& request, const RdfBlocks& blocks) {
  if (gr_i_.graph_count < 1) return;
  const auto xy = blocks.plot_data.span();
  send(gr_i_.set_total, blocks.total.span(), xy);
  if (request.components && gr_i_.graph_count == 2) {
    send(gr_i_.set_inter, blocks.inter.span(), xy);
    send(gr_i_.set_intra, blocks.intra.span(), xy);
  }
  std::int32_t error = 0;
  kvp_vwr_redraw_(gr_i_.viewer, error);
}

}  // namespace pathstat
