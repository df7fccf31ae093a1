#include <chrono>
#include <thread>

#include "process/desk_with_process.h"
#include "support/record_file.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

/// The file of a radial distribution, column by column.
struct Distribution {
  std::int32_t columns = 0;
  std::vector<double> r, total, intra, inter;
  double scale = 0.0, offset = 0.0;
  std::int32_t periodic = 0, set_type = 0;
};

Distribution read_distribution(const std::filesystem::path& work) {
  Distribution found;
  RecordReader file;
  EXPECT_EQ(file.open((work / "PathStat.rdf").string()), RecordStatus::ok);
  const auto next = [&] {
    EXPECT_EQ(file.expect_any(1000), RecordStatus::ok);
    EXPECT_EQ(file.load(), RecordStatus::ok);
    return BigEndian(file.payload());
  };
  BigEndian head = next();
  const auto bins = head.i32();
  found.columns = head.i32();
  EXPECT_EQ(head.i32(), 333);
  EXPECT_EQ(head.i32(), 10004);
  for (std::int32_t k = 0; k < bins; ++k) {
    BigEndian point = next();
    EXPECT_EQ(point.i32(), 0);
    found.r.push_back(point.f64());
    found.total.push_back(point.f64());
    if (found.columns != 3) continue;
    found.intra.push_back(point.f64());
    found.inter.push_back(point.f64());
  }
  BigEndian tail = next();
  found.scale = tail.f64();
  found.offset = tail.f64();
  found.periodic = tail.i32();
  found.set_type = tail.i32();
  return found;
}

/// g(r) of like atoms in cubic cells by nearest images, for a cutoff below half the edge. The pairs of each frame are
/// taken to share the mean volume up to it.
std::vector<double> distribution(const std::vector<ExampleFrame>& frames, double dr, double cutoff) {
  std::vector<double> g(static_cast<std::size_t>(std::round(cutoff / dr)));
  const std::size_t atoms = frames[0].xyz.size() / 3;
  const double pairs = std::pow(static_cast<double>(atoms), 2);
  double volumes = 0.0;
  for (std::size_t number = 0; number < frames.size(); ++number) {
    const ExampleFrame& frame = frames[number];
    volumes += std::pow(frame.edge, 3);
    const double volume = volumes / static_cast<double>(number + 1);
    for (std::size_t i = 0; i < atoms; ++i) {
      for (std::size_t j = 0; j < atoms; ++j) {
        double square = 0.0;
        for (std::size_t k = 0; k < 3; ++k) {
          const double d = frame.xyz[3 * i + k] - frame.xyz[3 * j + k];
          square += std::pow(d - frame.edge * std::round(d / frame.edge), 2);
        }
        if (i == j || square >= cutoff * cutoff) continue;
        const auto bin = static_cast<std::size_t>(std::sqrt(square) / dr);
        const double middle = (static_cast<double>(bin) + 0.5) * dr;
        g[bin] += volume / (pairs * 4.0 * std::numbers::pi * middle * middle * dr) / static_cast<double>(frames.size());
      }
    }
  }
  return g;
}

/// Pairs that a function stands for: its integral times scale over 4 pi r^2 dr, for each of n atoms of the model.
double pairs_of(const std::vector<double>& function, const Distribution& in, double atoms) {
  const double dr = in.r[1] - in.r[0];
  double sum = 0.0;
  for (std::size_t k = 0; k < function.size(); ++k) sum += function[k] * in.r[k] * in.r[k];
  return sum * 4.0 * std::numbers::pi * dr * in.scale * atoms;
}

/// The names of all graphs shown so far.
std::vector<std::string> graphs(const DeskWithProcess& desk) {
  std::vector<std::string> names;
  for (const auto handle : desk.graphs.shown_graphs()) names.push_back(desk.graphs.info(handle)->name);
  return names;
}

TEST(RadialDistribution, of_a_trajectory_is_that_of_its_frames) {
  DeskWithProcess desk("argon");
  EXPECT_THAT(desk.told("STRUCTURE_FACTOR"), Pair(1, Contains("PATHSTAT_ERROR_71")));
  ASSERT_EQ(desk.run_lines({"LAST_FRAME_NO 199", "INCREMENT_NO 99", "RDF"}), 0);
  const auto expected = distribution({{"argon", 1}, {"argon", 100}, {"argon", 199}}, 0.02, 9.0);
  const auto found = read_distribution(desk.work());
  ASSERT_EQ(found.total.size(), expected.size());
  EXPECT_EQ(found.columns, 1);
  for (std::size_t k = 0; k < expected.size(); ++k) {
    EXPECT_NEAR(found.r[k], (static_cast<double>(k) + 0.5) * 0.02, 1e-12);
    EXPECT_NEAR(found.total[k], expected[k], 1e-10 * (1.0 + expected[k])) << k;
  }
  EXPECT_NEAR(found.scale, 500.0 * 500.0 / (24389.0 * 500.0), 1e-12);
  EXPECT_EQ(found.offset, 1.0);
  EXPECT_EQ(found.periodic, 1);
  EXPECT_EQ(found.set_type, 1);
  EXPECT_THAT(graphs(desk), ElementsAre("Total RDF for all atoms"));
  const auto& curve = desk.data_set(0);
  ASSERT_EQ(curve.points.size(), expected.size());
  EXPECT_EQ(curve.points[200].y, static_cast<float>(found.total[200]));
  ASSERT_EQ(desk.run("STRUCTURE_FACTOR"), 0);
  EXPECT_THAT(graphs(desk), ElementsAre("Total RDF for all atoms", "Total S(k) for all atoms"));
}

TEST(RadialDistribution, of_cells_that_vary_takes_each_frame_in_its_own) {
  DeskWithProcess desk("water-npt");
  ASSERT_EQ(desk.run_lines({"FIRST_FRAME_NO 2", "LAST_FRAME_NO 5", "RDF_CUTOFF 7", "RDF"}), 0);
  std::vector<ExampleFrame> frames;
  for (std::int32_t number = 2; number <= 5; ++number) frames.emplace_back("water-npt", number);
  EXPECT_GT(std::abs(frames[3].edge - frames[0].edge), 1e-3);
  const auto expected = distribution(frames, 0.02, 7.0);
  const auto found = read_distribution(desk.work());
  ASSERT_EQ(found.total.size(), expected.size());
  for (std::size_t k = 0; k < expected.size(); ++k) {
    EXPECT_NEAR(found.total[k], expected[k], 1e-10 * (1.0 + expected[k])) << k;
  }
}

TEST(RadialDistribution, splits_into_what_a_molecule_has_and_what_is_between_them) {
  DeskWithProcess desk("water");
  ASSERT_EQ(desk.run_lines({"LAST_FRAME_NO 20", "RDF_COMPONENTS yes", "RDF_BETWEEN ELEMENTS"}), 0);
  struct Case {
    const char* names;
    double pairs_within;  // of all 216 molecules, those of like atoms both ways
    double offset;
  };
  for (const auto& [names, within, offset] : {Case{"O O", 0, 1}, Case{"O H", 432, 0}, Case{"H H", 432, 1}}) {
    ASSERT_EQ(desk.run("RDF_TYPE", names), 0);
    ASSERT_EQ(desk.run("RDF"), 0) << names;
    const auto found = read_distribution(desk.work());
    ASSERT_EQ(found.columns, 3);
    EXPECT_NEAR(pairs_of(found.intra, found, 648.0), within, 1e-6) << names;
    EXPECT_EQ(found.offset, offset);
    double far = 0.0;
    for (std::size_t k = 0; k < found.total.size(); ++k) {
      EXPECT_NEAR(found.total[k], found.intra[k] + found.inter[k], 1e-9);
      EXPECT_TRUE(found.r[k] < 1.7 || found.intra[k] == 0.0) << names << " at " << found.r[k];
      if (found.r[k] > 8.0) far += found.inter[k] / 50.0;
    }
    EXPECT_NEAR(far, 1.0, 0.03) << names;
  }
  EXPECT_THAT(graphs(desk), Contains("Components of RDF for selected elements").Times(3));
  EXPECT_THAT(desk.told("RDF_TYPE", "O C"), Pair(1, Contains("PATHSTAT_ERROR_105")));
}

TEST(RadialDistribution, of_one_free_molecule_is_all_within_it) {
  DeskWithProcess desk("butane");
  ASSERT_EQ(desk.run_lines({"RDF_COMPONENTS yes", "RDF"}), 0);
  const auto found = read_distribution(desk.work());
  EXPECT_EQ(found.periodic, 0);
  EXPECT_NEAR(pairs_of(found.total, found, 14.0), 14.0 * 13.0, 1e-6);
  EXPECT_EQ(found.intra, found.total);
  EXPECT_EQ(found.inter, std::vector<double>(450));
}

TEST(RadialDistribution, of_models_works_on_their_selected_atoms) {
  DeskWithProcess desk("water");
  ASSERT_EQ(desk.run_lines({"RDF_FOR MODEL", "RDF_BETWEEN SELECTED"}), 0);
  EXPECT_THAT(desk.told("RDF"), Pair(1, Contains("PATHSTAT_ERROR_72")));
  desk.select("element O");
  ASSERT_EQ(desk.run_lines({"RDF_COMPONENTS yes", "RDF"}), 0);
  const auto found = read_distribution(desk.work());
  EXPECT_EQ(found.set_type, 5);
  EXPECT_NEAR(found.offset, 1.0 / 3.0, 1e-15);
  EXPECT_EQ(found.intra, std::vector<double>(450));
  EXPECT_THAT(graphs(desk), Contains("Total RDF for selected atoms"));
}

TEST(RadialDistribution, keeps_what_is_done_when_it_is_interrupted) {
  DeskWithProcess desk("argon");
  // The Core is asked no more than once in 0.4 seconds.
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  desk.interrupt = true;
  EXPECT_THAT(desk.told("RDF"), Pair(0, Contains("PATHSTAT_WARN_12")));
  const auto found = read_distribution(desk.work());
  EXPECT_EQ(found.total, std::vector<double>(450));
  EXPECT_EQ(found.offset, 1.0);
}

}  // namespace
}  // namespace pathstat::desk
