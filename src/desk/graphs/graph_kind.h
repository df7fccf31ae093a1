#pragma once

#include <string>
#include <string_view>

namespace pathstat::desk {

/// What people call a graph of an analysis of chosen atoms. Empty texts leave what there is.
struct GraphText {
  std::string file;     ///< of its files, without a number: "rdf-O-H"
  std::string heading;  ///< "Radial distribution of O and H"
  std::string y_text;   ///< quantity and unit
};

/// @param title  as the process names it: "Total RDF for selected elements", "MSD component XX"
/// @param atoms  in words: "all atoms", "O and H", "the 216 selected atoms (element O)"; empty where that is not known
GraphText graph_text(std::string_view title, std::string_view atoms);

/// What people call a curve: "line of least squares" for "FIT". Most labels stay as they are.
std::string curve_label(std::string_view label);

/// A file name made of a title: letters and digits, everything else one "-"; at most 80 characters, never empty.
std::string file_name_of(std::string_view title);

}  // namespace pathstat::desk
