#include "pairs/structure_factor.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "coreapi/messages.h"
#include "pairs/radial_distribution.h"
#include "pairs/rdf_atoms.h"
#include "pairs/rdf_graphs.h"
#include "pairs/rdf_result.h"
#include "plots/graph.h"
#include "services/file_names.h"
#include "support/named_memory.h"
#include "transforms/transforms.h"

namespace pathstat {
namespace {

constexpr double pi = 3.141592653589793;
constexpr double most_points = 1e8;
constexpr GraphLayout layout{"S(k)", "k (1/A)", " ", 15, std::pair{0.0F, 12.0F}};
constexpr std::int32_t total_colour = 3, intra_colour = 4, inter_colour = 5;

/// The radial distribution of the file.
class Distribution {
 public:
  explicit Distribution(std::int32_t& status) {
    if (!kvs_fil_exists_(rdf_file)) {
      status = refuse("PATHSTAT_ERROR_70", rdf_file);
      return;
    }
    RecordReader file;
    auto read = file.open(std::string(rdf_file));
    if (read == RecordStatus::ok) read = read_rdf_head(file, head_);
    if (read == RecordStatus::ok) make_room(status);
    if (status != 0) return;
    if (read == RecordStatus::ok) {
      read = read_rdf_body(file, head_, {distances_.span(), total.span(), intra.span(), inter.span()}, tail_);
    }
    if (read != RecordStatus::ok || !(spacing() > 0.0)) status = refuse("PATHSTAT_ERROR_69", rdf_file);
  }

  bool has_components() const { return head_.columns == 3; }
  double spacing() const { return distances_.span()[1] - distances_.span()[0]; }
  const RdfTail& tail() const { return tail_; }

  NamedBlock<double> total, intra, inter;

 private:
  void make_room(std::int32_t& status) {
    distances_ = NamedBlock<double>("PathStat/SofK/XAxisGr", head_.bins, status);
    if (status == 0) total = NamedBlock<double>("PathStat/SofK/TotalGr", head_.bins, status);
    if (status != 0 || !has_components()) return;
    intra = NamedBlock<double>("PathStat/SofK/IntraGr", head_.bins, status);
    if (status == 0) inter = NamedBlock<double>("PathStat/SofK/InterGr", head_.bins, status);
  }

  RdfHead head_;
  RdfTail tail_;
  NamedBlock<double> distances_;
};

/// Structure factors on the wave numbers (j - 1) pi / (N dr).
class Transform {
 public:
  Transform(const Distribution& distribution, std::int64_t points, std::int32_t& status)
      : distribution_(distribution), values_("PathStat/SofK/fftData", points, status) {
    if (status == 0) xy_ = NamedBlock<float>("PathStat/SofK/PlotData", 2 * points, status);
    if (status != 0) return;
    const auto step = static_cast<float>(pi / (static_cast<double>(points) * distribution.spacing()));
    for (std::size_t j = 0; j < values_.size(); ++j) xy_.span()[2 * j] = static_cast<float>(j) * step;
  }

  /// Transforms a function of the distribution and sends it to a data set.
  void send(std::span<const double> function, std::int32_t data_set) const {
    const auto values = values_.span();
    const auto& tail = distribution_.tail();
    const std::size_t known = std::min(function.size(), values.size());
    const double far = tail.periodic ? 1.0 : 0.0;
    for (std::size_t i = 0; i < known; ++i) values[i] = function[i] - far;
    std::ranges::fill(values.subspan(known), 0.0);
    fft3d_(values, distribution_.spacing());
    const auto xy = xy_.span();
    for (std::size_t j = 0; j < values.size(); ++j) {
      xy[2 * j + 1] = static_cast<float>(values[j] * tail.scale + tail.offset);
    }
    write_points(data_set, xy);
  }

 private:
  const Distribution& distribution_;
  NamedBlock<double> values_;
  NamedBlock<float> xy_;
};

std::int32_t take_set(std::string_view name, std::int32_t colour) {
  return take_data_set(name, colour, DrawStyle::curve, " ");
}

}  // namespace

void sofk_(double k_interval, std::int32_t& status) {
  status = 0;
  const Distribution distribution(status);
  if (status != 0) return;
  const double wanted = pi / (k_interval * distribution.spacing());
  if (!(wanted > 0.0 && wanted < most_points)) {
    status = refuse("PATHSTAT_ERROR_54");
    return;
  }
  const Transform transform(distribution, std::max<std::int64_t>(2, static_cast<std::int64_t>(wanted)), status);
  if (status != 0) return;
  const std::string atoms(rdf_atoms_name(distribution.tail().set_type));
  std::array<std::int32_t, 2> graphs{};
  std::size_t count = 0;
  if (const auto graph = take_graph("Total S(k) for " + atoms)) {
    graphs[count++] = *graph;
    const std::array sets{take_set("Total S(k)", total_colour)};
    lay_out(*graph, sets, layout);
    transform.send(distribution.total.span(), sets[0]);
  }
  const auto graph = distribution.has_components() ? take_graph("Components of S(k) for " + atoms) : std::nullopt;
  if (graph) {
    graphs[count++] = *graph;
    const std::array sets{take_set("Intramolecular S(k)", intra_colour), take_set("Intermolecular S(k)", inter_colour)};
    lay_out(*graph, sets, layout);
    transform.send(distribution.intra.span(), sets[0]);
    transform.send(distribution.inter.span(), sets[1]);
  }
  if (count == 0) return;
  const auto made = std::span<const std::int32_t>(graphs).first(count);
  widen(made);
  show_graphs(take_viewer(), made);
}

}  // namespace pathstat
