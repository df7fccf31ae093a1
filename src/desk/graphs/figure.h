#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "desk/graphs/graph_store.h"

namespace pathstat::desk {

/// One curve as it is drawn.
struct Curve {
  std::string label;  ///< empty for the only curve of a figure
  std::int32_t colour = 0;
  bool histogram = false;
  const std::vector<PlotPoint>* points = nullptr;
  std::optional<PlotPoint> highlighted;
};

/// A part of the x axis that is pointed out: shaded, or a line where its ends are the same.
struct Guide {
  double from = 0, to = 0;
  std::string label;
};

/// One graph made ready to be drawn or written: texts set, curves gathered. It points into the store.
struct Figure {
  std::int32_t graph = 0;  ///< its handle
  std::string name;        ///< of its files, without an extension; safe in any file system and unlike all others
  std::string title;       ///< as the process names it
  std::string heading;
  std::string note;  ///< in small letters under the heading
  std::string x_text, y_text;
  std::vector<Guide> guides;
  GraphFacts facts;
  float aspect_ratio = 0;            ///< width over height; 0 where it is free
  std::optional<PlotPoint> x_range;  ///< low and high end, where the axis is fixed
  std::vector<Curve> curves;

  /// True if there is a point that can be drawn.
  bool has_points() const;
};

/// The figures of all graphs that were shown, in the order in which they were made, with names unlike each other.
std::vector<Figure> figures_of(const GraphStore& store);

/// The figure that a name means, in upper or lower case: its heading, the title that the process gave it or the name of
/// its files; the latest of equals, null if none.
const Figure* find_figure(const GraphStore& store, std::span<const Figure> figures, std::string_view name);

/// The points as tab-separated columns: one column of x where all curves share it, otherwise a pair of columns for each
/// curve. Lines that begin with "# " tell where they come from and the unit of each column; then stands one line of
/// headings. Numbers are written so that they read back as they were.
std::string points_table(const Figure& figure);

}  // namespace pathstat::desk
