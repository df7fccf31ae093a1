#include "correlation/origin_blocks.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>

#include "support/record_file.h"

namespace pathstat {

OriginBlocks::OriginBlocks(const OriginSeries& series, std::size_t columns, std::size_t workers)
    : series_(series), columns_(columns) {
  constexpr std::int64_t most_blocks = 24, runs_in_longest = 8;
  const auto longest = std::min((series.frames - 1) / runs_in_longest, series.intervals - 1);
  if (longest < 1) return;
  for (std::int64_t lag = 1; lag < longest; lag *= 4) lags_.push_back(lag);
  lags_.push_back(longest);
  block_count_ = std::min(most_blocks, series.pairs(longest));
  origins_ = series.pairs(longest) / block_count_;
  total_.resize(lags_.size() * static_cast<std::size_t>(block_count_) * columns);
  workers_.assign(workers, total_);
}

std::optional<std::string> OriginBlocks::wanted_file() {
  const char* file = std::getenv("PATHSTAT_ORIGIN_BLOCKS");
  return file != nullptr ? std::optional<std::string>(file) : std::nullopt;
}

void OriginBlocks::sum(const AtomBatch& batch, PairKernel kernel, std::size_t worker) {
  for (std::size_t k = 0; k < lags_.size(); ++k) {
    const auto lag = static_cast<std::size_t>(lags_[k]);
    for (std::int64_t block = 0; block < block_count_; ++block) {
      const auto sums = at(workers_[worker], k, block);
      for (std::int64_t origin = 0; origin < origins_; origin += stride(k)) {
        const auto frame = static_cast<std::size_t>((block * origins_ + origin) * series_.step);
        kernel(batch.frame(frame), batch.frame(frame + lag), sums);
      }
    }
  }
}

void OriginBlocks::join(std::size_t worker) {
  for (std::size_t k = 0; k < total_.size(); ++k) total_[k] += workers_[worker][k];
  std::ranges::fill(workers_[worker], 0.0);
}

void OriginBlocks::save(const std::string& file, double spacing_ps, std::int64_t atoms) const {
  if (!create_new(file).is_open()) return;
  std::ofstream out(file);
  out.precision(std::numeric_limits<double>::max_digits10);
  out << spacing_ps << ' ' << series_.frames - 1 << ' ' << series_.intervals << ' ' << series_.step << ' ' << origins_
      << ' ' << block_count_ << ' ' << columns_ << ' ' << lags_.size() << '\n';
  const auto values_of_lag = static_cast<std::size_t>(block_count_) * columns_;
  for (std::size_t k = 0; k < lags_.size(); ++k) {
    const auto taken = (origins_ + stride(k) - 1) / stride(k);
    const double share = 1 / (static_cast<double>(atoms) * static_cast<double>(taken));
    out << lags_[k];
    for (std::size_t value = 0; value < values_of_lag; ++value) out << ' ' << total_[k * values_of_lag + value] * share;
    out << '\n';
  }
  out.close();
  if (out) return;
  const std::string cause = std::strerror(errno);
  std::printf("The error of the displacement is left out: cannot write %s: %s\n", file.c_str(), cause.c_str());
  std::remove(file.c_str());
}

}  // namespace pathstat
