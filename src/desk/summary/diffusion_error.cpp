#include "desk/summary/diffusion_error.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <sstream>
#include <utility>

namespace pathstat::desk {
namespace {

constexpr std::size_t fewest_blocks = 5;

/// A slope taken from squared displacements: Σ weight(lag) (mean over the origins at 0, step, 2 step, ...).
struct Slope {
  struct Term {
    std::int64_t lag;
    double weight;
    std::int64_t origins;
  };
  std::vector<Term> terms;
  std::int64_t step;
};

/// The line of least squares through the lags from `first` to `last`.
Slope fitted_slope(std::int64_t first, std::int64_t last, std::int64_t step,
                   const std::function<std::int64_t(std::int64_t lag)>& origins) {
  Slope slope{{}, step};
  const auto count = static_cast<double>(last - first + 1);
  const double centre = 0.5 * static_cast<double>(first + last);
  const double squares = count * (count * count - 1) / 12;
  for (auto lag = first; lag <= last; ++lag) {
    slope.terms.push_back({lag, (static_cast<double>(lag) - centre) / squares, origins(lag)});
  }
  return slope;
}

/// The slope of the chord between two lags.
Slope chord(std::int64_t first, std::int64_t last, std::int64_t step, std::int64_t origins) {
  const double weight = 1 / static_cast<double>(last - first);
  return {{{first, -weight, origins}, {last, weight, origins}}, step};
}

/// The variance of a slope for a walk of independent steps of variance 1. The slope is the quadratic form Σ c(i, j)
/// ξ(i) ξ(j) of the steps ξ, where c(i, j) are the weights of the displacements that hold both steps; its variance is
/// 2 Σ c(i, j)².
class WalkVariance {
 public:
  explicit WalkVariance(const Slope& slope) : slope_(slope) {
    for (const auto& term : slope.terms) longest_ = std::max(longest_, term.lag);
    for (const auto& term : slope.terms) {
      const auto last = (term.origins - 1) * slope.step;
      steps_ = std::max(steps_, last + term.lag);
      inner_end_ = std::min(inner_end_, last + 1);
    }
  }

  double operator()() const {
    // Far from both ends a row depends only on the place of its step between two origins.
    std::vector<double> inner(static_cast<std::size_t>(slope_.step), -1);
    double sum = 0;
    for (std::int64_t step = 1; step <= steps_; ++step) {
      if (step < longest_ || step > inner_end_) {
        sum += row(step);
        continue;
      }
      double& kept = inner[static_cast<std::size_t>(step % slope_.step)];
      if (kept < 0) kept = row(step);
      sum += kept;
    }
    return 2 * sum;
  }

 private:
  double row(std::int64_t step) const {
    double sum = 0;
    for (std::int64_t apart = 0; apart < longest_; ++apart) {
      double weight = 0;
      for (const auto& term : slope_.terms) {
        if (term.lag <= apart) continue;
        const auto first = std::max<std::int64_t>(0, step + apart - term.lag + slope_.step - 1) / slope_.step;
        const auto last = std::min(term.origins - 1, (step - 1) / slope_.step);
        if (last >= first)
          weight += term.weight * static_cast<double>(last - first + 1) / static_cast<double>(term.origins);
      }
      sum += (apart == 0 ? 1 : 2) * weight * weight;
    }
    return sum;
  }

  const Slope& slope_;
  std::int64_t longest_ = 0, steps_ = 0, inner_end_ = INT64_MAX;
};

double variance_of(const Slope& slope) { return WalkVariance(slope)(); }

/// Lags, frames.
struct LagWindow {
  std::int64_t first = 0, last = 0;
};

/// Of a fit: the last lag that is not behind its window's start and the first that is not in front of its end.
LagWindow lags_of(const OriginBlocks& blocks, double from_ps, double to_ps) {
  constexpr double rounding = 1e-9;
  const auto longest = static_cast<double>(std::min(blocks.intervals, blocks.frames) - 1);
  const double first = std::floor(from_ps / blocks.spacing_ps + rounding);
  const double last = std::ceil(to_ps / blocks.spacing_ps - rounding);
  return {std::lround(std::clamp(first, 0.0, longest)), std::lround(std::clamp(last, 0.0, longest))};
}

/// The lags between which the slope of a block is taken: the longest at the end of the window, and the first at the
/// same part of it as in the fit.
LagWindow chord_lags(const OriginBlocks& blocks, const LagWindow& fit) {
  LagWindow found;
  for (const auto lag : blocks.lags) {
    if (lag <= fit.last) found.last = lag;
  }
  for (const auto lag : blocks.lags) {
    if (lag * fit.last <= fit.first * found.last && lag < found.last) found.first = lag;
  }
  return found;
}

/// (variance of the slope of the fit) / (expected scatter of the slopes of the blocks) for random walks, in time steps
/// that leave the window some sixty of them.
double walk_ratio(const OriginBlocks& blocks, const LagWindow& fit, const LagWindow& block) {
  constexpr double most_cells = 64;
  const double cell = std::max(1.0, static_cast<double>(fit.last) / most_cells);
  const auto cells = [&](std::int64_t frames) {
    return static_cast<std::int64_t>(std::lround(static_cast<double>(frames) / cell));
  };
  const auto step = std::max<std::int64_t>(1, cells(blocks.step));
  const auto longest = cells(blocks.frames - 1), end = std::max<std::int64_t>(1, cells(fit.last));
  const auto whole = fitted_slope(std::min(cells(fit.first), end - 1), end, step, [&](std::int64_t lag) {
    return std::max<std::int64_t>(0, longest - lag) / step + 1;
  });
  const auto block_end = std::max<std::int64_t>(1, cells(block.last));
  const auto block_start = std::min(cells(block.first), block_end - 1);
  const auto origins = std::max<std::int64_t>(1, cells(blocks.origins * blocks.step) / step);
  const auto count = static_cast<std::int64_t>(blocks.blocks);
  const double of_one = variance_of(chord(block_start, block_end, step, origins));
  const double of_all = variance_of(chord(block_start, block_end, step, origins * count));
  const auto n = static_cast<double>(count);
  return variance_of(whole) * (n - 1) / (n * (of_one - of_all));
}

/// True if all origins of all blocks, of which there are few, are among the frames.
bool origins_are_frames(const OriginBlocks& blocks) {
  return blocks.frames > 0 && blocks.frames <= INT32_MAX && blocks.step > 0 && blocks.origins > 0 &&
         blocks.origins <= blocks.frames &&
         blocks.origins * static_cast<std::int64_t>(blocks.blocks) - 1 <= (blocks.frames - 1) / blocks.step;
}

}  // namespace

std::optional<OriginBlocks> read_origin_blocks(const std::string& text) {
  constexpr std::size_t most_lags = 64, most_blocks = 64, most_columns = 7;
  std::istringstream in(text);
  OriginBlocks blocks;
  std::size_t lags = 0;
  in >> blocks.spacing_ps >> blocks.frames >> blocks.intervals >> blocks.step >> blocks.origins >> blocks.blocks >>
      blocks.columns >> lags;
  const bool sound = in && blocks.spacing_ps > 0 && blocks.intervals > 0 && lags <= most_lags &&
                     blocks.blocks <= most_blocks && blocks.columns <= most_columns && origins_are_frames(blocks);
  if (!sound) return std::nullopt;
  for (std::size_t k = 0; k < lags; ++k) {
    const auto before = k == 0 ? 0 : blocks.lags.back();
    in >> blocks.lags.emplace_back();
    if (blocks.lags.back() <= before || blocks.lags.back() > blocks.frames) return std::nullopt;
    for (std::size_t value = 0; value < blocks.blocks * blocks.columns; ++value) in >> blocks.means.emplace_back();
  }
  return in ? std::optional(std::move(blocks)) : std::nullopt;
}

std::optional<double> error_of_slope(const OriginBlocks& blocks, std::size_t column, double from_ps, double to_ps) {
  const auto fit = lags_of(blocks, from_ps, to_ps);
  if (blocks.blocks < fewest_blocks || column >= blocks.columns || fit.last <= fit.first) return std::nullopt;
  const auto block = chord_lags(blocks, fit);
  if (block.last == 0) return std::nullopt;
  const auto mean = [&](std::int64_t lag, std::size_t number) {
    if (lag == 0) return 0.0;
    const auto row = static_cast<std::size_t>(std::ranges::find(blocks.lags, lag) - blocks.lags.begin());
    return blocks.means[(row * blocks.blocks + number) * blocks.columns + column];
  };
  double sum = 0, squares = 0;
  for (std::size_t k = 0; k < blocks.blocks; ++k) {
    const double slope = (mean(block.last, k) - mean(block.first, k)) / static_cast<double>(block.last - block.first);
    sum += slope;
    squares += slope * slope;
  }
  const auto n = static_cast<double>(blocks.blocks);
  const double scatter = std::max(0.0, (squares - sum * sum / n) / (n - 1));
  return std::sqrt(scatter * walk_ratio(blocks, fit, block)) / blocks.spacing_ps;
}

FittedWindow fitted_window(const std::string& origin_blocks, double from_ps, double to_ps) {
  FittedWindow window{from_ps, to_ps, {}, 0};
  const auto blocks = read_origin_blocks(origin_blocks);
  if (!blocks) return window;
  window.run = static_cast<double>(blocks->frames) * blocks->spacing_ps;
  for (std::size_t column = 0; column < blocks->columns; ++column) {
    window.slope_errors.push_back(error_of_slope(*blocks, column, from_ps, to_ps));
  }
  return window;
}

}  // namespace pathstat::desk
