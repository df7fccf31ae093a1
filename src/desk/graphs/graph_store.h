#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace pathstat::desk {

/// What a handle stands for, by the number that the process uses.
enum class PlotKind : std::int32_t { viewer = 100, graph = 101, data_set = 102 };

/// How a data set is drawn.
constexpr std::int32_t curve_style = 901;
constexpr std::int32_t histogram_style = 903;

/// The layout whose x axis runs over the limits that it gives; in any other the axes fit the points.
constexpr std::int32_t fixed_x_layout = 2056;

/// The labels code of a graph whose title is the text of its y axis.
constexpr std::int32_t title_on_y_axis = 15;

/// The mark of one point that the user looks at.
constexpr std::int32_t highlight_mark = 201;

struct PlotPoint {
  float x = 0;
  float y = 0;
  bool operator==(const PlotPoint&) const = default;
};

struct PointMark {
  std::string name;
  std::int32_t mode = 0;
  std::vector<std::int32_t> points;  ///< counted from 1
};

struct DataSet {
  std::int32_t colour = 0;
  std::int32_t style = curve_style;
  std::string label;
  std::vector<PlotPoint> points;
  std::vector<PointMark> marks;
  std::uint64_t revision = 0;   ///< of the last change
  std::uint64_t rewritten = 0;  ///< the revision in which the points began anew; since then they were only added to
};

/// The window of a fit to a displacement.
struct FittedWindow {
  double from = 0, to = 0;  ///< ps
  /// Of the slopes of the components and the total, or of the total alone, Å²/ps; empty where they are not known.
  std::vector<std::optional<double>> slope_errors;
  double run = 0;  ///< length of the run, ps; 0 if it is not known
};

/// What pathdesk knows of a graph beside what the process draws.
struct GraphFacts {
  std::string of;  ///< the atoms and frames, in words; empty if it is not known
  std::string command = {}, settings = {}, trajectory = {};
  std::optional<FittedWindow> fitted;
  double density = 0;  ///< of a radial distribution: neighbours of an atom in 1 Å³; 0 if it is not known
};

struct Graph {
  std::int32_t layout = 0;
  float x_low = 0, x_high = 0;
  std::int32_t labels = 0;  ///< which text goes where
  std::string title, x_label, y_label;
  std::vector<std::int32_t> sets;  ///< handles
  float aspect_ratio = 0;          ///< width over height; 0 where it is not set
  bool shown = false;              ///< was in the list of a viewer
  GraphFacts facts;
  std::string remark;          ///< what pathdesk says of it beside its title
  std::uint64_t revision = 0;  ///< of the last change, that of its data sets aside
};

/// Errors of the store's operations.
constexpr std::int32_t no_such_handle = 40001;
constexpr std::int32_t no_such_kind = 40002;
constexpr std::int32_t bad_points = 40003;

/// Viewers, graphs and data sets by handle. A name can be used over and over: each graph or data set made under it is a
/// version of its own, counted from 1. A viewer is one and the same under its name.
///
/// Functions that give an int32_t without a name of its own return 0 or an error above.
class GraphStore {
 public:
  struct Handle {
    PlotKind kind = PlotKind::graph;
    std::string name;
    std::int32_t version = 1;
    std::size_t place = 0;  ///< among those of its kind
  };

  /// Makes a new version under the name, or finds the viewer of that name. @return its handle, 0 for an unknown kind
  std::int32_t write(std::string_view name, std::int32_t kind);
  /// The handle of that version of the name, which is made if it is the next one. @return 0 if there is none
  std::int32_t write_specific(std::string_view name, std::int32_t version, std::int32_t kind);
  /// Null for a handle that was never given out.
  const Handle* info(std::int32_t handle) const;

  std::int32_t set_data_method(std::int32_t set, std::int32_t colour, std::int32_t style, std::string label);
  /// Replaces the points of a set, or adds to them. @param xy  interleaved pairs
  std::int32_t write_points(std::int32_t set, bool append, std::span<const float> xy);
  std::int32_t mark(std::string_view name, std::int32_t set, std::int32_t mode, std::span<const std::int32_t> points);
  /// Removes the marks of a name from all data sets.
  void clear_marks(std::string_view name);

  /// Lays a graph out: everything but the aspect ratio and the facts, which keep their values.
  std::int32_t set_graph_method(std::int32_t graph, Graph layout);
  std::int32_t set_aspect_ratio(std::int32_t graph, float ratio);
  /// Puts a remark behind the heading of a graph.
  std::int32_t set_remark(std::int32_t graph, std::string remark);
  std::int32_t set_facts(std::int32_t graph, GraphFacts facts);
  /// Takes graphs off the shown ones, as what they show is not complete; it needs no memory.
  ///
  /// @param wanted  bool(std::int32_t graph)
  template <class Wanted>
  void withdraw_if(const Wanted& wanted) {
    for (std::size_t k = 0; k < handles_.size(); ++k) {
      const auto& handle = handles_[k];
      if (handle.kind == PlotKind::graph && wanted(static_cast<std::int32_t>(k) + 1))
        graphs_[handle.place].shown = false;
    }
  }
  std::int32_t set_graph_list(std::int32_t viewer, std::span<const std::int32_t> graphs);
  /// The graphs that a viewer shows, in order; empty for another kind of handle.
  std::span<const std::int32_t> graph_list(std::int32_t viewer) const;

  /// Null for a handle of another kind.
  const Graph* graph(std::int32_t handle) const;
  const DataSet* data_set(std::int32_t handle) const;
  /// Handles of all graphs that a viewer has shown, in the order in which they were made.
  std::vector<std::int32_t> shown_graphs() const;
  /// Rises with each change of a graph or its data sets; 0 for a handle of another kind.
  std::uint64_t revision(std::int32_t graph) const;

  int open_transactions() const { return open_; }
  void begin() { ++open_; }
  /// Ends a transaction. @return false if none is open
  bool end() { return open_ > 0 && --open_ >= 0; }

 private:
  std::int32_t make(std::string_view name, PlotKind kind, std::vector<std::int32_t>& versions);
  const Handle* of_kind(std::int32_t handle, PlotKind kind) const;

  std::vector<Handle> handles_;
  std::unordered_map<std::string, std::vector<std::int32_t>> by_name_;  ///< kind and name: handles by version
  std::vector<Graph> graphs_;
  std::vector<DataSet> sets_;
  std::vector<std::vector<std::int32_t>> viewers_;
  std::uint64_t changes_ = 0;
  int open_ = 0;
};

}  // namespace pathstat::desk
