#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "desk/graphs/figure.h"

namespace pathstat::desk {

/// Where the pictures of a run go; an empty folder leaves that kind out.
struct PictureFolders {
  std::filesystem::path svg;
  std::filesystem::path png;
};

/// The gnuplot program that draws the figures as NAME.svg and NAME.png.
std::string picture_script(std::span<const Figure> figures, const PictureFolders& folders);

/// Draws the figures that have points, with one run of gnuplot.
///
/// @param scratch  folder for gnuplot's input and messages
/// @return empty, or what went wrong
std::string draw_pictures(std::span<const Figure> figures, const PictureFolders& folders,
                          const std::filesystem::path& scratch);

}  // namespace pathstat::desk
