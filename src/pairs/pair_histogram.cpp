#include "pairs/pair_histogram.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <new>
#include <vector>

#include "pairs/pair_distance.h"

namespace pathstat {
namespace {

constexpr double most_repeats = 1e6;
constexpr double most_images_of_wide_ranges = 1e6;
constexpr std::int32_t bad_question = 1;
constexpr std::int32_t no_memory = 2;

std::span<const double> others_of(const PairCount& pairs) {
  return pairs.set_mode == pair_sets::within_one ? pairs.list1 : pairs.list2;
}

/// What a pair adds to its bin.
double weight_of(std::int32_t set_mode) { return set_mode == pair_sets::within_one ? 2.0 : 1.0; }

std::int32_t repeats_within(double cutoff, double spacing) {
  if (!(spacing > 0.0)) return 0;
  const double repeats = cutoff / spacing + 1.0;
  return static_cast<std::int32_t>(repeats < most_repeats ? repeats : most_repeats);
}

Vector3 scaled(const Vector3& vector, double factor) {
  return {vector[0] * factor, vector[1] * factor, vector[2] * factor};
}

Vector3 cross(const Vector3& a, const Vector3& b) {
  Vector3 product{};
  dvecprod_(a, b, product);
  return product;
}

/// For each vector of the repeats the one across the others whose product with it is 1; zero for a direction without
/// repeats.
std::array<Vector3, 3> vectors_across(std::int32_t periodic_type, const std::array<Vector3, 3>& vectors) {
  const auto& [a, b, c] = vectors;
  const Vector3 normal = cross(b, c);
  if (periodic_type == 100) {
    const double per_volume = 1.0 / dvecdot_(a, normal);
    return {scaled(normal, per_volume), scaled(cross(c, a), per_volume), scaled(cross(a, b), per_volume)};
  }
  if (periodic_type == 101) {
    const double per_square = 1.0 / dvecdot_(normal, normal);
    return {Vector3{}, scaled(cross(c, normal), per_square), scaled(cross(normal, b), per_square)};
  }
  if (periodic_type == 102) return {Vector3{}, Vector3{}, scaled(c, 1.0 / dvecdot_(c, c))};
  return {};
}

struct Extent {
  double low = 0.0;
  double high = 0.0;
};

/// How far atoms reach along a vector, in its own measure; atoms that are not finite or absurdly far do not count.
Extent extent_along(const Vector3& vector, std::span<const double> atoms) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  Extent extent{infinity, -infinity};
  for (std::size_t at = 0; at + 2 < atoms.size(); at += 3) {
    const double place = dvecdot_(vector, atoms.subspan(at).first<3>());
    if (!(std::abs(place) < most_repeats)) continue;
    extent = {std::min(extent.low, place), std::max(extent.high, place)};
  }
  return extent.low <= extent.high ? extent : Extent{};
}

/// Widens the ranges of a question.
/// @param apart_along  how far the atoms of a pair are apart at most along a vector, in its own measure
template <class ApartAlong>
void widen(PairCount& pairs, ApartAlong apart_along) {
  const auto across = vectors_across(pairs.periodic_type, pairs.vectors);
  PairCount wide = pairs;
  for (std::size_t k = 0; k < 3; ++k) {
    const double per_length = dveclen_(across[k]);
    if (!(per_length > 0.0)) continue;
    const double needed = std::min(pairs.cutoff * per_length + apart_along(across[k]), most_repeats);
    if (needed > wide.repeats[k]) wide.repeats[k] = static_cast<std::int32_t>(needed);
  }
  if (image_count(wide) <= most_images_of_wide_ranges) pairs.repeats = wide.repeats;
}

double sine_between(const Vector3& a, const Vector3& b) {
  const double cosine = dvecdot_(a, b) / (dveclen_(a) * dveclen_(b));
  return std::sqrt(std::max(0.0, 1.0 - cosine * cosine));
}

std::int32_t status_of(const PairCount& pairs, std::size_t bins) {
  const bool known = pairs.set_mode == pair_sets::within_one || pairs.set_mode == pair_sets::between_two;
  const bool measures = pairs.cutoff >= 0.0 && std::isfinite(pairs.cutoff) && pairs.interval > 0.0;
  return known && measures && bins > 0 ? 0 : bad_question;
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

/// Tests pairs of atoms by the definition.
/// @param visits  calls its second argument with each place of the other list that pairs with place i
template <class Visits>
void add_pairs_plainly(const PairCount& pairs, std::span<double> histogram, Visits visits) {
  const bool one_set = pairs.set_mode == pair_sets::within_one;
  const auto others = others_of(pairs);
  const double limit = pairs.cutoff * pairs.cutoff;
  const double weight = weight_of(pairs.set_mode);
  const auto last_bin = static_cast<double>(histogram.size() - 1);
  for_each_image(pairs, [&](const Vector3& image, bool) {
    for (std::size_t i = 0; i + 2 < pairs.list1.size(); i += 3) {
      const ShiftedAtom atom(&pairs.list1[i], image, pairs.set_mode);
      visits(i, one_set ? i + 3 : 0, [&](std::size_t j) {
        const double square = square_below(atom.at, &others[j], atom.shift, limit);
        if (!(square < limit)) return;
        histogram[static_cast<std::size_t>(bin_of(std::sqrt(square), pairs.interval, last_bin))] += weight;
      });
    }
  });
}

void add_all_pairs(const PairCount& pairs, std::span<double> histogram) {
  const std::size_t end = others_of(pairs).size();
  add_pairs_plainly(pairs, histogram, [=](std::size_t, std::size_t from, auto test) {
    for (std::size_t j = from; j + 2 < end; j += 3) test(j);
  });
}

/// Beyond it, in Å, no cells are laid out: boxes and rounding would grow with the coordinates, and overflow.
constexpr double far_away = 1e9;

/// The atoms of a list in their order, parted for the search. Those that are not finite are in no pair.
struct PartedAtoms {
  std::vector<double> near;
  std::vector<std::size_t> far;  ///< places in the list
  std::vector<bool> is_far;      ///< by atom

  explicit PartedAtoms(std::span<const double> atoms) : is_far(atoms.size() / 3) {
    near.reserve(atoms.size());
    for (std::size_t at = 0; at + 2 < atoms.size(); at += 3) {
      const auto atom = atoms.subspan(at, 3);
      const bool is_near = std::ranges::all_of(atom, [](double x) { return std::abs(x) <= far_away; });
      if (is_near) near.insert(near.end(), atom.begin(), atom.end());
      if (is_near || !std::ranges::all_of(atom, [](double x) { return std::isfinite(x); })) continue;
      far.push_back(at);
      is_far[at / 3] = true;
    }
  }
};

bool any_far(const PairCount& pairs) {
  const auto is_far = [](double x) { return std::abs(x) > far_away; };
  return std::ranges::any_of(pairs.list1, is_far) || std::ranges::any_of(others_of(pairs), is_far);
}

/// The pairs of which at least one atom is far.
void add_pairs_of_far(const PairCount& pairs, const PartedAtoms& first, const PartedAtoms& second,
                      std::span<double> histogram) {
  const std::size_t end = others_of(pairs).size();
  add_pairs_plainly(pairs, histogram, [&](std::size_t i, std::size_t from, auto test) {
    if (first.is_far[i / 3]) {
      for (std::size_t j = from; j + 2 < end; j += 3) test(j);
    } else {
      for (const std::size_t j : second.far) {
        if (j >= from) test(j);
      }
    }
  });
}

void add_pairs_by_search(const PairCount& pairs, std::span<double> histogram, PairSearch& search,
                         const std::function<void()>& meanwhile) {
  const auto counts = search.count(pairs, histogram.size(), meanwhile);
  const double weight = weight_of(pairs.set_mode);
  for (std::size_t bin = 0; bin < counts.size(); ++bin) histogram[bin] += weight * static_cast<double>(counts[bin]);
}

/// The search for what is near, and the definition for the rest.
void add_parted_pairs(const PairCount& pairs, std::span<double> histogram, PairSearch& search,
                      const std::function<void()>& meanwhile) {
  const PartedAtoms first(pairs.list1), second(others_of(pairs));
  PairCount near = pairs;
  near.list1 = first.near;
  near.list2 = second.near;
  add_pairs_by_search(near, histogram, search, meanwhile);
  add_pairs_of_far(pairs, first, second, histogram);
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

void widen_repeats(PairCount& pairs) {
  widen(pairs, [&](const Vector3& across) {
    const Extent first = extent_along(across, pairs.list1);
    const bool one_set = pairs.set_mode == pair_sets::within_one;
    const Extent second = one_set ? first : extent_along(across, pairs.list2);
    return std::max(first.high - second.low, second.high - first.low);
  });
}

void widen_repeats_of_folded(PairCount& pairs) {
  constexpr double one_cell = 1.0 + 1e-9;  // as far as rounding takes them apart
  widen(pairs, [](const Vector3&) { return one_cell; });
}

void count_pairs_plainly(const PairCount& pairs, std::span<double> histogram, std::int32_t& status) {
  status = status_of(pairs, histogram.size());
  if (status != 0) return;
  if (pairs.set_mode == pair_sets::within_one) add_self_images(pairs, histogram);
  add_all_pairs(pairs, histogram);
}

void prepare_pairs(const PairCount& pairs, std::size_t bins, PairSearch& search) {
  if (status_of(pairs, bins) == 0 && !is_small(pairs, bins) && !any_far(pairs)) search.sort(pairs);
}

void calculaterdf_(const PairCount& pairs, std::span<double> histogram, PairSearch& search, std::int32_t& status,
                   const std::function<void()>& meanwhile) {
  if (is_small(pairs, histogram.size())) {
    count_pairs_plainly(pairs, histogram, status);
    if (status == 0 && meanwhile) meanwhile();
    return;
  }
  status = status_of(pairs, histogram.size());
  if (status != 0) return;
  try {
    if (any_far(pairs)) {
      add_parted_pairs(pairs, histogram, search, meanwhile);
    } else {
      add_pairs_by_search(pairs, histogram, search, meanwhile);
    }
  } catch (const std::bad_alloc&) {
    status = no_memory;
    return;
  }
  if (pairs.set_mode == pair_sets::within_one) add_self_images(pairs, histogram);
}

}  // namespace pathstat
