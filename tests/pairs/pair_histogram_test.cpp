#include "pairs/pair_histogram.h"

#include <memory>

#include "testing.h"

namespace pathstat {
namespace {

using Cell = std::array<Vector3, 3>;

struct CellCase {
  const char* name;
  std::int32_t periodic_type;
  Cell cell;
};
// An eighth of it is 1.4, so that on a lattice there are right triangles of 4.2, 5.6 and 7.0, right on the edge of a
// bin but for rounding.
constexpr Cell cubic{{{11.2, 0, 0}, {0, 11.2, 0}, {0, 0, 11.2}}};
const CellCase cells[]{
    {"without cell", 0, cubic},
    {"cubic", 100, cubic},
    {"triclinic", 100, {{{14, 0.5, 0.2}, {-3, 11, 1}, {2, -4, 13}}}},
    {"very skew", 100, {{{10, 0, 0}, {9.5, 4, 0}, {-7, 9, 5}}}},
    {"flat", 100, {{{40, 0, 0}, {0, 30, 0}, {0, 0, 2.5}}}},
    {"long", 100, {{{3, 0, 0}, {0, 4, 0}, {0, 0, 90}}}},
    {"left-handed", 100, {{{0, 9, 0}, {11, 0, 0}, {0, 0, 10}}}},
    {"slab", 101, {{{1, 0, 0}, {0, 12, 0}, {0, 5, 14}}}},
    {"skew slab", 101, {{{1, 0, 0}, {0, 6, 1}, {0.3, 5, 3}}}},
    {"chain", 102, {{{1, 0, 0}, {0, 1, 0}, {0.5, 1, 7}}}},
};

enum class Placing { random, faces, lattice, beyond_cell };

/// Atoms in the cell; on its faces and at whole fractions of it, where distances repeat and meet bin edges; or several
/// cells away.
std::vector<double> place(std::mt19937_64& random, std::size_t atoms, const Cell& cell, Placing placing) {
  std::uniform_real_distribution<double> fraction(placing == Placing::beyond_cell ? -2.5 : 0.0, 1.0);
  std::vector<double> xyz(3 * atoms);
  for (std::size_t i = 0; i < atoms; ++i) {
    for (const auto& vector : cell) {
      double f = fraction(random);
      if (placing == Placing::faces && random() % 2 == 0) f = std::round(f);
      if (placing == Placing::lattice) f = std::round(8.0 * f) / 8.0;
      for (std::size_t k = 0; k < 3; ++k) xyz[3 * i + k] += f * vector[k];
    }
  }
  return xyz;
}

PairCount question(const CellCase& shape, double cutoff, std::int32_t set_mode) {
  PairCount pairs;
  pairs.set_mode = set_mode;
  pairs.periodic_type = shape.periodic_type;
  pairs.vectors = shape.cell;
  pairs.cutoff = cutoff;
  pairs.interval = 0.05;
  auto& [ia, ib, ic] = pairs.repeats;
  cellrange_(shape.periodic_type, shape.cell[0], shape.cell[1], shape.cell[2], cutoff, ia, ib, ic);
  return pairs;
}

std::uint64_t seed() {
  const char* given = std::getenv("TEST_SEED");
  return given != nullptr ? std::strtoull(given, nullptr, 10) : std::random_device()();
}

/// @return the status of a count by the quicker way
std::int32_t counted(const PairCount& pairs, std::span<double> histogram, PairSearch& search) {
  std::int32_t status = -1;
  calculaterdf_(pairs, histogram, search, status);
  return status;
}

/// Counts by the search, whatever the size, and by the definition, and compares bin by bin.
void expect_same_counts(const PairCount& pairs, std::size_t bins, PairSearch& search) {
  std::vector<double> plain(bins), fast(bins), chosen(bins);
  std::int32_t status = -1;
  ASSERT_EQ(status_of(count_pairs_plainly, pairs, plain), 0);
  const auto counts = search.count(pairs, bins);
  const double weight = pairs.set_mode == pair_sets::within_one ? 2.0 : 1.0;
  for (std::size_t k = 0; k < bins; ++k) fast[k] = weight * static_cast<double>(counts[k]);
  if (pairs.set_mode == pair_sets::within_one) {
    PairCount single = pairs;
    single.list1 = pairs.list1.first(3);
    std::vector<double> selves(bins);
    count_pairs_plainly(single, selves, status);
    for (std::size_t k = 0; k < bins; ++k) fast[k] += selves[k] * static_cast<double>(pairs.list1.size() / 3);
  }
  ASSERT_EQ(counted(pairs, chosen, search), 0);
  for (std::size_t k = 0; k < bins; ++k) {
    ASSERT_EQ(static_cast<std::int64_t>(fast[k]), static_cast<std::int64_t>(plain[k])) << "bin " << k;
    ASSERT_EQ(static_cast<std::int64_t>(chosen[k]), static_cast<std::int64_t>(plain[k])) << "bin " << k;
  }
}

TEST(PairHistogram, search_counts_the_pairs_of_the_definition_in_the_same_bins) {
  const auto start = seed();
  SCOPED_TRACE("TEST_SEED=" + std::to_string(start));
  std::mt19937_64 random(start);
  for (std::size_t choice = 0; choice < pair_vector_choices(); ++choice) {
    const auto search = std::make_unique<PairSearch>(pair_vectors(choice));
    for (const auto& shape : cells) {
      for (const double cutoff : {1.0, 3.0, 12.5}) {
        for (const auto placing : {Placing::random, Placing::faces, Placing::lattice, Placing::beyond_cell}) {
          for (const std::int32_t set_mode : {pair_sets::within_one, pair_sets::between_two}) {
            SCOPED_TRACE(std::string(shape.name) + ", cutoff " + std::to_string(cutoff) + ", placing " +
                         std::to_string(static_cast<int>(placing)) + ", set mode " + std::to_string(set_mode));
            const auto atoms = place(random, 1 + random() % 150, shape.cell, placing);
            const auto others = place(random, 1 + random() % 150, shape.cell, placing);
            auto pairs = question(shape, cutoff, set_mode);
            pairs.list1 = atoms;
            pairs.list2 = others;
            // One bin too few, so that the last bin also takes what lies beyond it.
            ASSERT_NO_FATAL_FAILURE(
                expect_same_counts(pairs, static_cast<std::size_t>(cutoff / pairs.interval) - 1, *search));
          }
        }
      }
    }
  }
}

TEST(PairHistogram, search_of_a_large_box_counts_the_pairs_of_the_definition) {
  const auto start = seed();
  SCOPED_TRACE("TEST_SEED=" + std::to_string(start));
  std::mt19937_64 random(start);
  const auto search = std::make_unique<PairSearch>();
  const CellCase box{"box", 100, {{{30, 0, 0}, {4, 28, 0}, {-3, 5, 33}}}};
  for (const std::int32_t set_mode : {pair_sets::within_one, pair_sets::between_two}) {
    const auto atoms = place(random, 1500, box.cell, Placing::random);
    const auto others = place(random, 700, box.cell, Placing::random);
    auto pairs = question(box, 9.0, set_mode);
    pairs.list1 = atoms;
    pairs.list2 = others;
    expect_same_counts(pairs, 180, *search);
  }
}

TEST(PairHistogram, atoms_that_are_nowhere_are_in_no_pair) {
  std::mt19937_64 random(7);
  auto atoms = place(random, 400, cubic, Placing::random);
  atoms[30] = std::numeric_limits<double>::quiet_NaN();
  atoms[100] = std::numeric_limits<double>::infinity();
  atoms[302] = 1e300;
  auto pairs = question({"cubic", 100, cubic}, 3.0, pair_sets::within_one);
  pairs.list1 = atoms;
  const auto search = std::make_unique<PairSearch>();
  expect_same_counts(pairs, 60, *search);
}

TEST(PairHistogram, far_atoms_keep_their_pairs_and_leave_the_others_theirs) {
  std::mt19937_64 random(8);
  const auto search = std::make_unique<PairSearch>();
  for (const double far : {2e9, 1e160, 1e250, 1.7e308}) {
    for (const std::int32_t set_mode : {pair_sets::within_one, pair_sets::between_two}) {
      SCOPED_TRACE(far);
      auto atoms = place(random, 400, cubic, Placing::random), others = place(random, 300, cubic, Placing::random);
      for (const std::size_t at : {0, 300}) atoms[at] = far;
      atoms[301] = atoms[1] + 1.0;
      atoms[302] = atoms[2];
      std::copy_n(&atoms[300], 3, &others[90]);
      auto pairs = question({"without cell", 0, cubic}, 3.0, set_mode);
      pairs.list1 = atoms;
      pairs.list2 = others;
      std::vector<double> plain(60), chosen(60);
      std::int32_t status = -1;
      count_pairs_plainly(pairs, plain, status);
      EXPECT_EQ(counted(pairs, chosen, *search), 0);
      EXPECT_EQ(chosen, plain);
      EXPECT_GE(plain[20], 1.0);
    }
  }
}

/// Far wider ranges find no pair that the widened ones lack.
TEST(PairHistogram, widened_ranges_lose_no_pair) {
  std::mt19937_64 random(9);
  const CellCase oblong[]{
      {"slab", 101, {{{1, 0, 0}, {0, 14, 0}, {0, 0, 4.3}}}},
      {"slab on its side", 101, {{{1, 0, 0}, {0, 4.3, 0}, {0, 2, 14}}}},
      {"triclinic", 100, {{{14, 0.5, 0.2}, {-3, 4, 1}, {2, -4, 6}}}},
      {"chain", 102, {{{1, 0, 0}, {0, 1, 0}, {0.5, 1, 4}}}},
  };
  const std::pair<Placing, void (*)(PairCount&)> ways[]{{Placing::random, widen_repeats},
                                                        {Placing::random, widen_repeats_of_folded},
                                                        {Placing::beyond_cell, widen_repeats}};
  for (const auto& shape : oblong) {
    for (const auto& [placing, widen] : ways) {
      for (const std::int32_t set_mode : {pair_sets::within_one, pair_sets::between_two}) {
        SCOPED_TRACE(shape.name);
        const auto atoms = place(random, 20, shape.cell, placing), others = place(random, 15, shape.cell, placing);
        auto pairs = question(shape, 9.0, set_mode);
        pairs.list1 = atoms;
        pairs.list2 = others;
        auto all = pairs;
        all.repeats = shape.periodic_type == 100   ? std::array{12, 12, 12}
                      : shape.periodic_type == 101 ? std::array{0, 12, 12}
                                                   : std::array{0, 0, 12};
        widen(pairs);
        std::vector<double> counted(180), expected(180);
        std::int32_t status = -1;
        count_pairs_plainly(pairs, counted, status);
        count_pairs_plainly(all, expected, status);
        EXPECT_EQ(counted, expected);
      }
    }
  }
}

/// Shells of the face-centred cubic lattice: neighbours at sqrt(k/2) lattice constants, k = 1, 2, 3, ...
TEST(PairHistogram, face_centred_cubic_lattice_has_its_shells) {
  constexpr std::int32_t neighbours[]{12, 6, 24, 12, 24, 8, 48, 6, 36, 24};
  constexpr double constant = 4.0;
  std::vector<double> atoms;
  constexpr std::int32_t cells_along = 4;
  for (std::int32_t cell = 0; cell < cells_along * cells_along * cells_along; ++cell) {
    const double x = constant * (cell % 4), y = constant * (cell / 4 % 4), z = constant * (cell / 16);
    const double h = constant / 2;
    for (const auto& site : {Vector3{0, 0, 0}, Vector3{0, h, h}, Vector3{h, 0, h}, Vector3{h, h, 0}}) {
      atoms.insert(atoms.end(), {x + site[0], y + site[1], z + site[2]});
    }
  }
  const double edge = constant * cells_along;
  auto pairs = question({"box", 100, {{{edge, 0, 0}, {0, edge, 0}, {0, 0, edge}}}}, 9.0, pair_sets::within_one);
  pairs.list1 = atoms;
  std::vector<double> histogram(900), expected(900);
  pairs.interval = 0.01;
  for (std::size_t k = 0; k < std::size(neighbours); ++k) {
    const double distance = constant * std::sqrt(0.5 * static_cast<double>(k + 1));
    if (distance < 9.0) {
      expected[static_cast<std::size_t>(distance / 0.01)] += neighbours[k] * static_cast<double>(atoms.size() / 3);
    }
  }
  const auto search = std::make_unique<PairSearch>();
  ASSERT_EQ(counted(pairs, histogram, *search), 0);
  EXPECT_EQ(histogram, expected);
}

TEST(PairHistogram, a_pair_at_the_cutoff_is_out_and_one_beyond_the_last_bin_is_in_the_last) {
  struct Case {
    double distance;
    std::vector<double> histogram;
  };
  const double below = std::nextafter(1.0, 0.0);
  for (const auto& [distance, expected] : std::initializer_list<Case>{
           {1.0, {0, 0, 0}}, {below, {0, 0, 2}}, {0.9, {0, 0, 2}}, {0.25, {0, 2, 0}}, {0.1, {2, 0, 0}}}) {
    const std::vector<double> atoms{5, 5, 0, 5, 5, distance};
    PairCount pairs;
    pairs.list1 = atoms;
    pairs.cutoff = 1.0;
    pairs.interval = 0.25;
    std::vector<double> histogram(3);
    PairSearch search;
    EXPECT_EQ(counted(pairs, histogram, search), 0);
    EXPECT_EQ(histogram, expected) << distance;
  }
}

TEST(PairHistogram, a_single_periodic_atom_meets_only_its_images) {
  const std::vector<double> atom{1, 2, 3};
  auto pairs = question({"box", 100, {{{2, 0, 0}, {0, 3, 0}, {0, 0, 3}}}}, 3.5, pair_sets::within_one);
  pairs.list1 = atom;
  pairs.interval = 0.5;
  std::vector<double> histogram(7);
  PairSearch search;
  std::int32_t status = -1;
  calculaterdf_(pairs, histogram, search, status);
  // Two images at 2 and four at 3; the next, at sqrt(13), is beyond.
  EXPECT_EQ(histogram, (std::vector<double>{0, 0, 0, 0, 2, 0, 4}));
}

TEST(PairHistogram, questions_without_an_answer_are_refused) {
  PairSearch search;
  std::vector<double> histogram(4);
  const std::vector<double> atoms{0, 0, 0, 0, 0, 0.5};
  PairCount good;
  good.list1 = atoms;
  good.cutoff = 1.0;
  good.interval = 0.25;
  auto bad_mode = good, no_interval = good, no_cutoff = good;
  bad_mode.set_mode = 3;
  no_interval.interval = 0.0;
  no_cutoff.cutoff = std::numeric_limits<double>::infinity();
  for (const auto& pairs : {bad_mode, no_interval, no_cutoff}) {
    EXPECT_EQ(counted(pairs, histogram, search), 1);
  }
  EXPECT_EQ(counted(good, std::span<double>{}, search), 1);
  EXPECT_EQ(histogram, std::vector<double>(4));
}

TEST(CellRange, repeats_are_the_cutoff_over_the_spacing_and_one_more) {
  constexpr double cutoff = 9.0;
  struct Case {
    std::int32_t periodic_type;
    Cell cell;
    std::array<std::int32_t, 3> repeats;
  };
  const Case cases[]{
      {0, cubic, {0, 0, 0}},
      {100, cubic, {1, 1, 1}},
      {100, {{{9, 0, 0}, {0, 4.5, 0}, {0, 0, 10}}}, {2, 3, 1}},
      {100, {{{0, 9, 0}, {4.5, 0, 0}, {0, 0, 10}}}, {2, 3, 1}},  // left-handed
      {100, {{{10, 0, 0}, {8, 6, 0}, {0, 0, 20}}}, {2, 2, 1}},   // faces 6 apart across a and b
      {101, {{{1, 0, 0}, {0, 10, 0}, {0, 0, 4}}}, {0, 3, 1}},    // b over the length of c, c over that of b
      {101, {{{1, 0, 0}, {0, 3, 4}, {0, 20, 0}}}, {0, 1, 3}},    // sine 0.8
      {102, {{{1, 0, 0}, {0, 1, 0}, {0, 3, 4}}}, {0, 0, 2}},     // c is 5 long
      {100, {{{10, 0, 0}, {10, 0, 0}, {0, 0, 10}}}, {0, 0, 0}},  // no volume
      {100, {{{1e-9, 0, 0}, {0, 10, 0}, {0, 0, 10}}}, {1000000, 1, 1}},
  };
  for (const auto& [type, cell, repeats] : cases) {
    std::array<std::int32_t, 3> found{-1, -1, -1};
    cellrange_(type, cell[0], cell[1], cell[2], cutoff, found[0], found[1], found[2]);
    EXPECT_EQ(found, repeats) << type << ' ' << cell[0][0];
  }
}

}  // namespace
}  // namespace pathstat
