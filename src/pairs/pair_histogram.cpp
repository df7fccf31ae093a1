#include "pairs/pair_histogram.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>

#include "pairs/pair_distance.h"

namespace pathstat {
namespace {

constexpr double most_repeats = 1e6;
constexpr std::int32_t bad_question = 1;
constexpr std::int32_t no_memory = 2;

/// What a pair adds to its bin.
double weight_of(std::int32_t set_mode) { return set_mode == pair_sets::within_one ? 2.0 : 1.0; }

std::int32_t repeats_within(double cutoff, double spacing) {
  if (!(spacing > 0.0)) return 0;
  const double repeats = cutoff / spacing + 1.0;
  return static_cast<std::int32_t>(repeats < most_repeats ? repeats : most_repeats);
}

double sine_between(const Vector3& a, const Vector3& b) {
  const double cosine = dvecdot_(a, b) / (dveclen_(a) * dveclen_(b));
  return std::sqrt(std::max(0.0, 1.0 - cosine * cosine));
}

std::int32_t status_of(const PairCount& pairs, std::span<double> histogram) {
  const bool known = pairs.set_mode == pair_sets::within_one || pairs.set_mode == pair_sets::between_two;
  const bool measures = pairs.cutoff >= 0.0 && std::isfinite(pairs.cutoff) && pairs.interval > 0.0;
  return known && measures && !histogram.empty() ? 0 : bad_question;
}

/// The square of the distance between two atoms, or the limit itself once it is certain not to be below it.
double square_below(const Vector3& at, const double* other, const Vector3& shift, double limit) {
  const double dx = (at[0] - other[0]) + shift[0];
  if (!(dx * dx < limit)) return limit;
  const double dy = (at[1] - other[1]) + shift[1];
  if (!(dx * dx + dy * dy < limit)) return limit;
  return square(dx, dy, (at[2] - other[2]) + shift[2]);
}

/// An atom with the image applied as its set mode has it.
struct ShiftedAtom {
  Vector3 at;
  Vector3 shift{};

  ShiftedAtom(const double* atom, const Vector3& image, std::int32_t set_mode) : at{atom[0], atom[1], atom[2]} {
    if (set_mode == pair_sets::between_two) {
      shift = image;
    } else {
      for (std::size_t k = 0; k < 3; ++k) at[k] += image[k];
    }
  }
};

/// Every atom and its own images.
void add_self_images(const PairCount& pairs, std::span<double> histogram) {
  const double limit = pairs.cutoff * pairs.cutoff;
  const auto atoms = static_cast<double>(pairs.list1.size() / 3);
  const auto last_bin = static_cast<double>(histogram.size() - 1);
  for_each_image(pairs, [&](const Vector3& image, bool is_zero) {
    const double length2 = square(image[0], image[1], image[2]);
    if (is_zero || !(length2 < limit)) return;
    histogram[static_cast<std::size_t>(bin_of(std::sqrt(length2), pairs.interval, last_bin))] += atoms;
  });
}

void add_pairs_plainly(const PairCount& pairs, std::span<double> histogram) {
  const bool one_set = pairs.set_mode == pair_sets::within_one;
  const auto others = one_set ? pairs.list1 : pairs.list2;
  const double limit = pairs.cutoff * pairs.cutoff;
  const double weight = weight_of(pairs.set_mode);
  const auto last_bin = static_cast<double>(histogram.size() - 1);
  for_each_image(pairs, [&](const Vector3& image, bool) {
    for (std::size_t i = 0; i + 2 < pairs.list1.size(); i += 3) {
      const ShiftedAtom atom(&pairs.list1[i], image, pairs.set_mode);
      for (std::size_t j = one_set ? i + 3 : 0; j + 2 < others.size(); j += 3) {
        const double square = square_below(atom.at, &others[j], atom.shift, limit);
        if (!(square < limit)) continue;
        histogram[static_cast<std::size_t>(bin_of(std::sqrt(square), pairs.interval, last_bin))] += weight;
      }
    }
  });
}

/// True if testing all pairs costs less than setting up the search.
bool is_small(const PairCount& pairs, std::size_t bins) {
  const auto first = static_cast<double>(pairs.list1.size() / 3);
  const auto second = static_cast<double>(pairs.list2.size() / 3);
  const double tests = pairs.set_mode == pair_sets::within_one ? first * first / 2 : first * second;
  return 4.0 * tests * image_count(pairs) < 500.0 + 40.0 * (first + second) + static_cast<double>(bins);
}

}  // namespace

void cellrange_(std::int32_t periodic_type, const Vector3& a, const Vector3& b, const Vector3& c, double cutoff,
                std::int32_t& ia, std::int32_t& ib, std::int32_t& ic) {
  ia = ib = ic = 0;
  const double la = dveclen_(a), lb = dveclen_(b), lc = dveclen_(c);
  if (periodic_type == 100) {
    const double volume = std::abs(dvectrip_(a, b, c));
    ia = repeats_within(cutoff, volume / (lb * lc * sine_between(b, c)));
    ib = repeats_within(cutoff, volume / (la * lc * sine_between(a, c)));
    ic = repeats_within(cutoff, volume / (la * lb * sine_between(a, b)));
  } else if (periodic_type == 101) {
    const double sine = sine_between(b, c);
    ib = repeats_within(cutoff, lc * sine);
    ic = repeats_within(cutoff, lb * sine);
  } else if (periodic_type == 102) {
    ic = repeats_within(cutoff, lc);
  }
}

void count_pairs_plainly(const PairCount& pairs, std::span<double> histogram, std::int32_t& status) {
  status = status_of(pairs, histogram);
  if (status != 0) return;
  if (pairs.set_mode == pair_sets::within_one) add_self_images(pairs, histogram);
  add_pairs_plainly(pairs, histogram);
}

void calculaterdf_(const PairCount& pairs, std::span<double> histogram, PairSearch& search, std::int32_t& status) {
  if (is_small(pairs, histogram.size())) return count_pairs_plainly(pairs, histogram, status);
  status = status_of(pairs, histogram);
  if (status != 0) return;
  std::span<const std::int64_t> counts;
  try {
    counts = search.count(pairs, histogram.size());
  } catch (const std::bad_alloc&) {
    status = no_memory;
    return;
  }
  if (pairs.set_mode == pair_sets::within_one) add_self_images(pairs, histogram);
  const double weight = weight_of(pairs.set_mode);
  for (std::size_t bin = 0; bin < counts.size(); ++bin) histogram[bin] += weight * static_cast<double>(counts[bin]);
}

}  // namespace pathstat
