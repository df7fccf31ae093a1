#include "pairs/pair_search.h"

#include <algorithm>
#include <cmath>

#include "pairs/pair_histogram.h"

namespace pathstat {
namespace {

double greatest_coordinate(const CellColumns& cells) {
  double greatest = 0.0;
  for (std::size_t k = 0; k < 3; ++k) {
    greatest = std::max({greatest, std::abs(cells.box(k).low), std::abs(cells.box(k).high)});
  }
  return greatest;
}

}  // namespace

std::span<const std::int64_t> PairSearch::count(const PairCount& pairs, std::size_t bins) {
  one_set_ = pairs.set_mode == pair_sets::within_one;
  limit_ = pairs.cutoff * pairs.cutoff;
  interval_ = pairs.interval;
  counts_.assign(bins, 0);
  if (!one_set_) second_.sort(pairs.list2, pairs.cutoff);
  first_.sort(pairs.list1, pairs.cutoff, one_set_ ? CellColumns::longest_axis : second_.along());
  // Sums and products of coordinates are off by some 1e-16 of the greatest.
  reach_ = pairs.cutoff + 1e-12 * (pairs.cutoff + greatest_coordinate(first_) + greatest_coordinate(others()));
  // Within one set, an image and its opposite show the same pairs: those up to the zero image stand for all.
  bool is_wanted = true;
  for_each_image(pairs, [&](const Vector3& translation, bool is_zero) {
    if (is_wanted) add_image({translation, is_zero});
    if (is_zero && one_set_) is_wanted = false;
  });
  sort_into_bins();
  return counts_;
}

void PairSearch::add_image(const ImageOf& image) {
  for (std::size_t k = 0; k < 3; ++k) {
    const auto mine = first_.box(k), theirs = others().box(k);
    const double shift = image.translation[k];
    if (!(mine.low + shift < theirs.high + reach_ && mine.high + shift > theirs.low - reach_)) return;
  }
  const std::size_t columns = first_.columns(0) * first_.columns(1);
  for (std::size_t column = 0; column < columns; ++column) add_column(column, image);
}

void PairSearch::add_column(std::size_t column, const ImageOf& image) {
  const CellColumns& other = others();
  const auto box = other.box(other.along());
  const double along = image.translation[other.along()];
  const auto atoms = first_.atoms_between(column, box.low - reach_ - along, box.high + reach_ - along);
  if (atoms.first == atoms.last) return;
  std::array<CellColumns::Run, 2> near;
  for (std::size_t k = 0; k < 2; ++k) {
    const auto stretch = first_.stretch(k, first_.place(column, k));
    const double across = image.translation[other.across(k)];
    near[k] = other.columns_between(k, stretch.low + across - reach_, stretch.high + across + reach_);
  }
  for (std::size_t first = near[0].first; first < near[0].last; ++first) {
    for (std::size_t second = near[1].first; second < near[1].last; ++second) {
      add_columns(column, atoms, other.column(first, second), image);
    }
  }
}

void PairSearch::add_columns(std::size_t column, CellColumns::Run atoms, std::size_t other_column,
                             const ImageOf& image) {
  // Without an image a pair is met once by looking at later columns, and at later atoms in the column itself.
  const bool once = one_set_ && image.is_zero;
  if (once && other_column < column) return;
  const CellColumns& other = others();
  const std::span<const double> axes[]{first_.axis(0), first_.axis(1), first_.axis(2)};
  for (; atoms.first < atoms.last; atoms.first += at_once) {
    const std::size_t count = std::min(atoms.last - atoms.first, at_once);
    const auto search = other.search_of(other_column, image.translation, reach_, first_, atoms.first);
    vectors_.cells_near(search, count, first_cells_.data(), last_cells_.data());
    for (std::size_t k = 0; k < count; ++k) {
      if (first_cells_[k] >= last_cells_[k]) continue;
      const std::size_t i = atoms.first + k;
      auto run = other.atoms_of(other_column, first_cells_[k], last_cells_[k]);
      if (once && other_column == column) run.first = std::max(run.first, i + 1);
      const PairAtom atom{{axes[0][i], axes[1][i], axes[2][i]}, image.translation, first_.order()[i]};
      add_run(atom, run, one_set_ && !image.is_zero);
    }
  }
}

void PairSearch::add_run(const PairAtom& atom, CellColumns::Run run, bool either_moves) {
  const CellColumns& other = others();
  const auto squares_below = either_moves ? vectors_.within_one : vectors_.between_two;
  while (run.first < run.last) {
    const std::size_t length = std::min(run.last - run.first, longest_run);
    const PairOthers some{&other.axis(0)[run.first], &other.axis(1)[run.first], &other.axis(2)[run.first],
                          &other.order()[run.first], length};
    found_ += squares_below(atom, some, limit_, &squares_[found_]);
    if (found_ >= enough) sort_into_bins();
    run.first += length;
  }
}

void PairSearch::sort_into_bins() {
  const auto last_bin = static_cast<double>(counts_.size() - 1);
  vectors_.bins(squares_.data(), found_, interval_, last_bin, bins_.data());
  for (std::size_t k = 0; k < found_; ++k) ++counts_[static_cast<std::size_t>(bins_[k])];
  found_ = 0;
}

}  // namespace pathstat
