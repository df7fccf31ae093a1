#include "correlation/spectral_run.h"

#include <algorithm>
#include <array>
#include <vector>

#include "coreapi/interrupt.h"
#include "coreapi/operations.h"
#include "support/parallel.h"

namespace pathstat {
namespace {

constexpr std::int64_t reports_in_a_run = 50;
constexpr std::int64_t drawings_in_a_run = 10;

/// Goes over the batches of a store piece by piece, each piece on so many threads.
/// @param work   called with the batch and the worker; `join` in the order of the batches
/// @param after  called behind each piece with the batches done; false ends the walk
/// @return false if the cache can't be read
template <class Work, class Join, class After>
bool for_batches(BatchStore& store, std::size_t workers, Work work, Join join, After after) {
  const std::int64_t all = store.batches();
  const std::int64_t piece = std::max(all / reports_in_a_run, 4 * static_cast<std::int64_t>(workers));
  for (std::int64_t loaded = 0; loaded < all; loaded += store.batches_together()) {
    const std::int64_t end = std::min(loaded + store.batches_together(), all);
    if (!store.load(loaded, end - loaded)) return false;
    for (std::int64_t first = loaded; first < end; first += piece) {
      const std::int64_t count = std::min(piece, end - first);
      for_blocks(
          count, [&](std::int64_t k, std::size_t worker) { work(store.batch(first + k), worker); },
          [&](std::int64_t, std::size_t worker) { join(worker); }, workers);
      if (!after(first + count)) return true;
    }
  }
  return true;
}

/// Sums of lags pair by pair, for those that the transforms can't give.
class DirectLags {
 public:
  DirectLags(const OriginSeries& series, PairKernel kernel, std::size_t columns, std::vector<std::int64_t> lags,
             std::size_t workers)
      : series_(series),
        kernel_(kernel),
        columns_(columns),
        lags_(std::move(lags)),
        total_(lags_.size() * columns),
        workers_(workers, total_) {}

  void sum(const AtomBatch& batch, std::size_t worker) {
    for (std::size_t k = 0; k < lags_.size(); ++k) {
      const auto sums = std::span(workers_[worker]).subspan(k * columns_, columns_);
      for (std::int64_t pair = 0; pair < series_.pairs(lags_[k]); ++pair) {
        const auto origin = static_cast<std::size_t>(pair * series_.step);
        kernel_(batch.frame(origin), batch.frame(origin + static_cast<std::size_t>(lags_[k])), sums);
      }
    }
  }

  void join(std::size_t worker) {
    for (std::size_t k = 0; k < total_.size(); ++k) total_[k] += workers_[worker][k];
    std::ranges::fill(workers_[worker], 0.0);
  }

  void put(CorrelationTable& table) const {
    for (std::size_t k = 0; k < lags_.size(); ++k) {
      table.put(static_cast<std::size_t>(lags_[k]), std::span(total_).subspan(k * columns_, columns_),
                series_.pairs(lags_[k]));
    }
  }

 private:
  const OriginSeries& series_;
  PairKernel kernel_;
  std::size_t columns_;
  std::vector<std::int64_t> lags_;
  std::vector<double> total_;
  std::vector<std::vector<double>> workers_;
};

/// Puts the sums into the table. @return the lags that are not sure
std::vector<std::int64_t> put_lags(const SpectralShape& shape, const SpectralSums::Lags& lags,
                                   CorrelationTable& table) {
  std::vector<std::int64_t> unsure;
  const std::size_t products = shape.products();
  std::array<double, correlation_columns> row{};
  for (std::size_t lag = 0; lag < lags.sure.size(); ++lag) {
    const auto pairs = shape.series.pairs(static_cast<std::int64_t>(lag));
    if (pairs == 0) continue;
    std::copy_n(lags.sums.begin() + static_cast<std::ptrdiff_t>(lag * products), products, row.begin());
    row[total_column] = row[0] + row[1] + row[2];
    table.put(lag, std::span(row).first(table.columns()), pairs);
    if (!lags.sure[lag]) unsure.push_back(static_cast<std::int64_t>(lag));
  }
  return unsure;
}

}  // namespace

bool transforms_pay(const SpectralShape& shape, std::int64_t atoms) {
  constexpr double worth_a_thought = 2e8;  // pairs of frames of an atom: a tenth of a second
  double pairs = 0.0;
  for (std::int64_t lag = 0; lag < shape.series.intervals; ++lag) pairs += static_cast<double>(shape.series.pairs(lag));
  if (shape.anisotropic) pairs *= 1.5;
  const auto count = static_cast<double>(atoms);
  return count * pairs > worth_a_thought && pairs > SpectralSums::cost_per_atom(shape);
}

bool sum_by_transforms(BatchStore& store, const SpectralShape& shape, std::size_t workers, PairKernel kernel,
                       std::int64_t atoms, CorrelationTable& table, OriginBlocks* blocks, TablePlots* plots) {
  SpectralSums sums(shape, workers);
  const std::int64_t batches = store.batches();
  std::vector<std::int64_t> unsure;
  std::int64_t drawings = 0;
  bool stopped = false;
  const auto fill = [&](std::int64_t done) {
    const std::int64_t atoms_done = std::min(done * static_cast<std::int64_t>(atoms_in_batch), atoms);
    table.set_atoms(atoms_done);
    unsure = put_lags(shape, sums.lags(atoms_done), table);
  };
  const bool read = for_batches(
      store, workers,
      [&](const AtomBatch& batch, std::size_t worker) {
        sums.transform(batch, worker);
        if (blocks != nullptr) blocks->sum(batch, kernel, worker);
      },
      [&](std::size_t worker) {
        sums.join(worker);
        if (blocks != nullptr) blocks->join(worker);
      },
      [&](std::int64_t done) {
        stopped = kvu_int_requestinterrupt_() == 1;
        tell_progress(static_cast<float>(done) / static_cast<float>(batches));
        const bool due = plots != nullptr && done * drawings_in_a_run / batches > drawings;
        if (due || stopped || done == batches) fill(done);
        if (due && done < batches) plots->draw();
        drawings = done * drawings_in_a_run / batches;
        return !stopped;
      });
  if (!read || stopped || unsure.empty()) return read;
  DirectLags direct(shape.series, kernel, table.columns(), std::move(unsure), workers);
  const bool again = for_batches(
      store, workers, [&](const AtomBatch& batch, std::size_t worker) { direct.sum(batch, worker); },
      [&](std::size_t worker) { direct.join(worker); },
      [&](std::int64_t) { return !(stopped = kvu_int_requestinterrupt_() == 1); });
  if (again && !stopped) direct.put(table);
  return again;
}

}  // namespace pathstat
