#include "desk/summary/curve_features.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace pathstat::desk {
namespace {

struct Point {
  double x = 0, y = 0;
};

/// The slope of the line of least squares; absent for points at one x.
std::optional<double> slope_of(std::span<const Point> points) {
  Point mean;
  for (const auto& point : points) {
    mean.x += point.x / static_cast<double>(points.size());
    mean.y += point.y / static_cast<double>(points.size());
  }
  double products = 0, squares = 0;
  for (const auto& point : points) {
    products += (point.x - mean.x) * (point.y - mean.y);
    squares += (point.x - mean.x) * (point.x - mean.x);
  }
  return squares > 0 ? std::optional(products / squares) : std::nullopt;
}

/// The vertex at an extreme point, which has neighbours on both sides of it at equal distances.
Extreme vertex(std::span<const PlotPoint> points, std::size_t at) {
  const Extreme middle{points[at].x, points[at].y};
  if (at == 0 || at + 1 >= points.size()) return middle;
  const double left = points[at - 1].y, right = points[at + 1].y;
  const double bend = left - 2 * middle.y + right;
  if (bend == 0 || !std::isfinite(bend)) return middle;
  const double shift = std::clamp(0.5 * (left - right) / bend, -0.5, 0.5);
  const double spacing = 0.5 * (double{points[at + 1].x} - points[at - 1].x);
  return {middle.x + shift * spacing, middle.y - 0.25 * (left - right) * shift};
}

}  // namespace

std::span<const PlotPoint> within(std::span<const PlotPoint> points, double low, double high) {
  // In the precision of the points, so that one at an end of the range is within it.
  const auto from = static_cast<float>(low), to = static_cast<float>(high);
  const auto first = std::ranges::find_if(points, [&](const auto& point) { return point.x >= from; });
  const auto last = std::find_if(first, points.end(), [&](const auto& point) { return point.x > to; });
  return {first, last};
}

std::optional<double> determination(std::span<const PlotPoint> points, double slope, double intercept) {
  if (points.size() < 3) return std::nullopt;
  double mean = 0, left = 0, all = 0;
  for (const auto& point : points) mean += point.y / static_cast<double>(points.size());
  for (const auto& point : points) {
    const double off_line = point.y - (intercept + slope * point.x);
    left += off_line * off_line;
    all += (point.y - mean) * (point.y - mean);
  }
  return all > 0 ? std::optional(1 - left / all) : std::nullopt;
}

std::optional<double> exponent(std::span<const PlotPoint> points) {
  std::vector<Point> logarithms;
  for (const auto& point : points) {
    if (point.x > 0 && point.y > 0) logarithms.push_back({std::log(double{point.x}), std::log(double{point.y})});
  }
  return logarithms.size() < 3 ? std::nullopt : slope_of(logarithms);
}

FirstShell first_shell(std::span<const PlotPoint> g) {
  constexpr float least_peak = 1, fall = 0.9F, rise = 0.05F, most_depth = 2;
  FirstShell shell;
  std::size_t at = 0, top = 0;
  for (; at < g.size() && !shell.peak; ++at) {
    if (g[at].y > g[top].y) top = at;
    if (g[top].y > least_peak && g[at].y < fall * g[top].y) shell.peak = vertex(g, top);
  }
  if (!shell.peak) return shell;
  std::size_t bottom = at - 1;
  for (; at < g.size() && !shell.minimum; ++at) {
    if (g[at].y < g[bottom].y) bottom = at;
    if (g[at].y > g[bottom].y + rise * std::min(g[top].y - g[bottom].y, most_depth)) shell.minimum = vertex(g, bottom);
  }
  if (shell.minimum) shell.minimum->y = std::max(0.0, shell.minimum->y);
  return shell;
}

std::vector<Extreme> highest_peaks(std::span<const PlotPoint> points, std::size_t most) {
  constexpr float share = 0.05F;
  std::vector<Extreme> peaks;
  if (points.empty()) return peaks;
  const float step = share * std::ranges::max(points, {}, &PlotPoint::y).y;
  bool rising = false;
  std::size_t top = 0, bottom = 0;
  for (std::size_t at = 0; at < points.size(); ++at) {
    if (points[at].y > points[top].y) top = at;
    if (points[at].y < points[bottom].y) bottom = at;
    if (rising && points[at].y < points[top].y - step) {
      peaks.push_back(vertex(points, top));
      rising = false;
      bottom = at;
    } else if (!rising && points[at].y > points[bottom].y + step) {
      rising = true;
      top = at;
    }
  }
  std::ranges::stable_sort(peaks, [](const auto& a, const auto& b) { return a.y > b.y; });
  if (peaks.size() > most) peaks.resize(most);
  return peaks;
}

std::vector<PlotPoint> running_coordination(std::span<const PlotPoint> g, double density) {
  std::vector<PlotPoint> numbers;
  if (g.size() < 2) return numbers;
  const double width = (double{g.back().x} - g.front().x) / static_cast<double>(g.size() - 1);
  double sum = 0;
  for (const auto& point : g) {
    sum += density * 4 * std::numbers::pi * point.x * point.x * width * point.y;
    numbers.push_back({static_cast<float>(point.x + 0.5 * width), static_cast<float>(sum)});
  }
  return numbers;
}

}  // namespace pathstat::desk
