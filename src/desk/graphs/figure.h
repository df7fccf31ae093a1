#pragma once

#include <optional>
#include <string>
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

/// One graph made ready to be drawn or written: texts set, curves gathered. It points into the store.
struct Figure {
  std::int32_t graph = 0;  ///< its handle
  std::string name;        ///< of its files, without an extension; safe in any file system and unlike all others
  std::string heading;
  std::string x_text, y_text;
  GraphFacts facts;
  float aspect_ratio = 0;            ///< width over height; 0 where it is free
  std::optional<PlotPoint> x_range;  ///< low and high end, where the axis is fixed
  std::vector<Curve> curves;

  /// True if there is a point that can be drawn.
  bool has_points() const;
};

/// A file name made of a title: letters and digits, everything else one "-"; at most 80 characters, never empty.
std::string file_name_of(std::string_view title);

/// The figures of all graphs that were shown, in the order in which they were made, with names unlike each other.
std::vector<Figure> figures_of(const GraphStore& store);

/// The points as tab-separated columns with one line of headings: one column of x where all curves share it, otherwise
/// a pair of columns for each curve. Numbers are written so that they read back as they were.
std::string points_table(const Figure& figure);

}  // namespace pathstat::desk
