#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "desk/graphs/figure.h"

namespace pathstat::desk {

/// What pictures are drawn.
struct PictureKinds {
  bool svg = false;
  bool png = false;
  bool pdf = false;
};

/// The gnuplot program that draws the figures as NAME.svg, NAME.png and NAME.pdf where it runs. It holds no other path.
std::string picture_script(std::span<const Figure> figures, PictureKinds kinds);

/// Draws the figures that have points, with one run of gnuplot. Whatever stands in the folder under the name of a
/// picture after it is whole.
///
/// @param folder  private; where the pictures, gnuplot's input and its messages go
/// @return empty, or what was not drawn, and why
std::string draw_pictures(std::span<const Figure> figures, PictureKinds kinds, const std::filesystem::path& folder);

}  // namespace pathstat::desk
