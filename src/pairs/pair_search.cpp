#include "pairs/pair_search.h"

#include <algorithm>
#include <cmath>

#include "pairs/pair_histogram.h"
#include "support/parallel.h"

namespace pathstat {
namespace {

/// Columns of a piece of work for one thread.
constexpr std::int64_t columns_together = 4;

double greatest_coordinate(const CellColumns& cells) {
  double greatest = 0.0;
  for (std::size_t k = 0; k < 3; ++k) {
    greatest = std::max({greatest, std::abs(cells.box(k).low), std::abs(cells.box(k).high)});
  }
  return greatest;
}

}  // namespace

void ColumnPairs::add_column(const SearchCells& cells, std::size_t column, const SearchImage& image) {
  const CellColumns& other = cells.others;
  const auto box = other.box(other.along());
  const double along = image.translation[other.along()];
  const auto atoms = cells.first.atoms_between(column, box.low - cells.reach - along, box.high + cells.reach - along);
  if (atoms.first == atoms.last) return;
  std::array<CellColumns::Run, 2> near;
  for (std::size_t k = 0; k < 2; ++k) {
    const auto stretch = cells.first.stretch(k, cells.first.place(column, k));
    const double across = image.translation[other.across(k)];
    near[k] = other.columns_between(k, stretch.low + across - cells.reach, stretch.high + across + cells.reach);
  }
  for (std::size_t first = near[0].first; first < near[0].last; ++first) {
    for (std::size_t second = near[1].first; second < near[1].last; ++second) {
      add_columns(cells, column, atoms, other.column(first, second), image);
    }
  }
}

void ColumnPairs::add_columns(const SearchCells& cells, std::size_t column, CellColumns::Run atoms,
                              std::size_t other_column, const SearchImage& image) {
  // Without an image a pair is met once by looking at later columns, and at later atoms in the column itself.
  const bool once = cells.one_set && image.is_zero;
  if (once && other_column < column) return;
  const CellColumns& other = cells.others;
  const auto walk_on = cells.one_set && !image.is_zero ? vectors_.within_one : vectors_.between_two;
  for (; atoms.first < atoms.last; atoms.first += at_once) {
    const std::size_t count = std::min(atoms.last - atoms.first, at_once);
    const auto search = other.search_of(other_column, image.translation, cells.reach, cells.first, atoms.first);
    vectors_.cells_near(search, count, first_cells_.data(), last_cells_.data());
    const PairBatch batch{.atoms = cells.first.atoms(),
                          .first = atoms.first,
                          .count = count,
                          .image = image.translation,
                          .others = other.atoms(),
                          .starts = other.starts(other_column),
                          .first_cells = first_cells_.data(),
                          .last_cells = last_cells_.data(),
                          .later_only = once && other_column == column,
                          .limit = cells.limit};
    for (PairPlace place; place.atom < count;) {
      found_ = walk_on(batch, place, squares_.data(), found_);
      if (found_ >= enough_squares) sort_into_bins();
    }
  }
}

std::span<const std::int64_t> ColumnPairs::counts() {
  sort_into_bins();
  return counts_;
}

void ColumnPairs::sort_into_bins() {
  const auto last_bin = static_cast<double>(counts_.size() - 1);
  vectors_.bins(squares_.data(), found_, interval_, last_bin, bins_.data());
  for (std::size_t k = 0; k < found_; ++k) ++counts_[static_cast<std::size_t>(bins_[k])];
  found_ = 0;
}

/// Those whose boxes are within reach. Within one set, an image and its opposite show the same pairs: those up to the
/// zero image stand for all.
void PairSearch::choose_images(const PairCount& pairs, const SearchCells& cells) {
  images_.clear();
  bool is_wanted = true;
  for_each_image(pairs, [&](const Vector3& translation, bool is_zero) {
    bool is_near = is_wanted;
    for (std::size_t k = 0; k < 3; ++k) {
      const auto mine = cells.first.box(k), theirs = cells.others.box(k);
      is_near = is_near && mine.low + translation[k] < theirs.high + cells.reach &&
                mine.high + translation[k] > theirs.low - cells.reach;
    }
    if (is_near) images_.push_back({translation, is_zero});
    if (is_zero && cells.one_set) is_wanted = false;
  });
}

void PairSearch::sort(const PairCount& pairs) {
  const bool one_set = pairs.set_mode == pair_sets::within_one;
  if (!one_set) second_.sort(pairs.list2, pairs.cutoff);
  first_.sort(pairs.list1, pairs.cutoff, one_set ? CellColumns::longest_axis : second_.along());
  sorted_ = pairs.list1.data();
}

std::span<const std::int64_t> PairSearch::count(const PairCount& pairs, std::size_t bins,
                                                const std::function<void()>& meanwhile) {
  if (sorted_ != pairs.list1.data()) sort(pairs);
  sorted_ = nullptr;
  const bool one_set = pairs.set_mode == pair_sets::within_one;
  const CellColumns& others = one_set ? first_ : second_;
  // Sums and products of coordinates are off by some 1e-16 of the greatest.
  const double rounding = 1e-12 * (pairs.cutoff + greatest_coordinate(first_) + greatest_coordinate(others));
  const SearchCells cells{first_, others, one_set, pairs.cutoff + rounding, pairs.cutoff * pairs.cutoff};
  choose_images(pairs, cells);

  workers_.resize(thread_count());
  for (auto& worker : workers_) {
    if (worker == nullptr) worker = std::make_unique<ColumnPairs>(vectors_);
    worker->start(pairs.interval, bins);
  }
  const auto columns = static_cast<std::int64_t>(first_.columns(0) * first_.columns(1));
  const std::int64_t pieces = (columns + columns_together - 1) / columns_together;
  const auto images = static_cast<std::int64_t>(images_.size());
  ParallelBlocks counting(pieces * images, [&](std::int64_t block, std::size_t worker) {
    const SearchImage& image = images_[static_cast<std::size_t>(images - 1 - block / pieces)];
    const std::int64_t first = block % pieces * columns_together;
    for (std::int64_t column = first; column < std::min(first + columns_together, columns); ++column) {
      workers_[worker]->add_column(cells, static_cast<std::size_t>(column), image);
    }
  });
  if (meanwhile) meanwhile();
  counting.finish();
  counts_.assign(bins, 0);
  for (const auto& worker : workers_) {
    std::ranges::transform(counts_, worker->counts(), counts_.begin(), std::plus<>{});
  }
  return counts_;
}

}  // namespace pathstat
