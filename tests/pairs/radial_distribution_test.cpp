#include "pairs/radial_distribution.h"

#include <unistd.h>

#include "pairs/rdf_frame.h"
#include "pairs/rdf_result.h"
#include "pairs/structure_factor.h"
#include "recording_core.h"
#include "scratch_folder.h"
#include "state/rdf_settings.h"
#include "testing.h"

namespace pathstat {
namespace {

TEST(Folding, leaves_both_faces_and_shifts_what_is_outside) {
  struct Case {
    double fraction, folded;
  };
  for (const auto& [fraction, expected] : std::initializer_list<Case>{{0.0, 0.0},
                                                                      {0.25, 0.25},
                                                                      {1.0, 1.0},
                                                                      {1.25, 0.25},
                                                                      {2.0, 0.0},
                                                                      {3.75, 0.75},
                                                                      {-0.25, 0.75},
                                                                      {-1.0, 1.0},
                                                                      {-2.0, 1.0},
                                                                      {-2.75, 0.25}}) {
    EXPECT_EQ(folded(fraction), expected) << fraction;
  }
}

TEST(Normalisation, is_one_over_pairs_and_for_partial_also_over_the_shell) {
  std::array<double, 3> norm{};
  ASSERT_TRUE(normalise_rdf("PARTIAL", 100.0, 0.5, norm));
  for (std::size_t k = 0; k < 3; ++k) {
    const double r = (static_cast<double>(k) + 0.5) * 0.5;
    EXPECT_NEAR(norm[k] * 100.0 * 4.0 * std::numbers::pi * r * r * 0.5, 1.0, 1e-14);
  }
  ASSERT_TRUE(normalise_rdf("TOTAL", 100.0, 0.5, norm));
  EXPECT_THAT(norm, ElementsAre(0.01, 0.01, 0.01));
  EXPECT_FALSE(normalise_rdf("NONE", 100.0, 0.5, norm));
}

/// One run in a directory of its own, with a file of four distances.
class RdfFile : public testing::Test {
 protected:
  RdfFile() { std::filesystem::current_path(folder_.path()); }
  ~RdfFile() override { std::filesystem::current_path(before_); }

  void write(std::int32_t columns, bool periodic, std::int32_t set_type = rdf_between::elements) {
    const RdfTail tail{0.25, 0.5, periodic, set_type};
    ASSERT_EQ(write_rdf(std::string(rdf_file), {4, columns}, {r, total, intra, inter}, tail), RecordStatus::ok);
  }
  void cut_to(std::uintmax_t bytes) { std::filesystem::resize_file(std::string(rdf_file), bytes); }

  /// The points of each call that sent some.
  std::vector<std::vector<double>> points_sent() const {
    std::vector<std::vector<double>> sent;
    for (const auto& call : core.calls("kvP_DAT_WriteXY")) {
      std::istringstream words(call);
      std::vector<double> numbers;
      std::string word;
      while (std::getline(words, word, '|')) {
        if (word.find("kvP") == std::string::npos) numbers.push_back(std::stod(word));
      }
      EXPECT_EQ(numbers[1], 801);
      sent.emplace_back(numbers.begin() + 3, numbers.end());
    }
    return sent;
  }

  static constexpr double dr = 0.5;
  const std::vector<double> r{0.25, 0.75, 1.25, 1.75};
  const std::vector<double> total{0.0, 2.5, 1.5, 0.75}, intra{0.0, 2.0, 0.0, 0.0}, inter{0.0, 0.5, 1.5, 0.75};
  RecordingCore core;

 private:
  const ScratchFolder folder_;
  const std::filesystem::path before_ = std::filesystem::current_path();
};

TEST_F(RdfFile, stands_in_length_framed_records) {
  write(3, true);
  const auto bytes = content_of(rdf_file);
  ASSERT_EQ(bytes.size(), 24U + 4U * 44U + 32U);
  const unsigned char head[]{0, 0, 0, 16, 0, 0, 0, 4, 0, 0, 0, 3, 0, 0, 1, 77, 0, 0, 39, 20, 0, 0, 0, 16};
  const unsigned char second[]{0,    0,    0, 36,   0,                            // length, 0
                               0,    0,    0, 0x3f, 0xe8, 0, 0, 0, 0, 0, 0,       // 0.75
                               0x40, 0x04, 0, 0,    0,    0, 0, 0,                // 2.5: total
                               0x40, 0,    0, 0,    0,    0, 0, 0,                // 2.0: within molecules
                               0x3f, 0xe0, 0, 0,    0,    0, 0, 0, 0, 0, 0, 36};  // 0.5: between them
  const unsigned char tail[]{0,    0,    0, 24, 0x3f, 0xd0, 0, 0, 0, 0, 0, 0,     // A
                             0x3f, 0xe0, 0, 0,  0,    0,    0, 0, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 24};  // B, ...
  const auto text = [](const auto& array) { return std::string(reinterpret_cast<const char*>(array), sizeof array); };
  EXPECT_EQ(bytes.substr(0, 24), text(head));
  EXPECT_EQ(bytes.substr(24 + 44, 44), text(second));
  EXPECT_EQ(bytes.substr(24 + 4 * 44), text(tail));
}

TEST_F(RdfFile, a_head_that_announces_more_than_is_there_is_refused) {
  write(1, true);
  const auto whole = std::filesystem::file_size(std::string(rdf_file));
  for (std::uintmax_t bytes = 0; bytes < whole; ++bytes) {
    write(1, true);
    cut_to(bytes);
    core.forget();
    EXPECT_EQ(status_of(sofk_, 1.0), 1);
    EXPECT_THAT(core.messages(), ElementsAre("./PathStat.rdf PATHSTAT_ERROR_69")) << bytes;
  }
}

/// S(k) by its definition at k = (j - 1) pi / (N dr), with bin i at r = i dr.
double structure_factor(const std::vector<double>& g, bool periodic, std::size_t points, std::size_t j) {
  constexpr double dr = 0.5;
  const double k = static_cast<double>(j) * std::numbers::pi / (static_cast<double>(points) * dr);
  double sum = 0.0;
  // The last of N points meets a sine of zero, and counts for k = 0 alone.
  for (std::size_t i = 1; i <= std::min(g.size(), points); ++i) {
    const double x = static_cast<double>(i) * dr, h = g[i - 1] - (periodic ? 1.0 : 0.0);
    sum += j == 0 ? 2.0 * x * x * h * dr : 4.0 * std::numbers::pi / k * x * h * std::sin(k * x) * dr;
  }
  return 0.25 * sum + 0.5;
}

TEST_F(RdfFile, structure_factor_is_the_transform_of_each_column) {
  struct Case {
    bool periodic;
    std::size_t points;  // fewer than bins, as many, more
  };
  for (const auto& [periodic, points] : std::initializer_list<Case>{{true, 4}, {false, 4}, {true, 5}, {true, 16}}) {
    write(3, periodic);
    core.forget();
    ASSERT_EQ(status_of(sofk_, std::numbers::pi / ((static_cast<double>(points) + 0.5) * dr)), 0);
    const auto sent = points_sent();
    ASSERT_EQ(sent.size(), 3U);
    const std::vector<double>* columns[]{&total, &intra, &inter};
    for (std::size_t c = 0; c < 3; ++c) {
      ASSERT_EQ(sent[c].size(), 2 * points);
      for (std::size_t j = 0; j < points; ++j) {
        const double k = static_cast<double>(j) * std::numbers::pi / (static_cast<double>(points) * dr);
        EXPECT_NEAR(sent[c][2 * j], k, 1e-5);
        EXPECT_NEAR(sent[c][2 * j + 1], structure_factor(*columns[c], periodic, points, j), 1e-5) << c << ' ' << j;
      }
    }
  }
}

TEST_F(RdfFile, structure_factors_are_drawn_from_0_to_12) {
  write(1, true, rdf_between::selected);
  EXPECT_EQ(status_of(sofk_, 0.5), 0);
  EXPECT_THAT(core.calls("kvP_HAN_Write"),
              ElementsAre("kvP_HAN_Write|Total S(k) for selected atoms|101", "kvP_HAN_Write|Total S(k)|102",
                          "kvP_HAN_Write|Varlane Graphs|100"));
  EXPECT_THAT(core.calls("kvP_DAT_SetMethodXY"), ElementsAre("kvP_DAT_SetMethodXY|2|3|901|0|"));
  EXPECT_THAT(core.calls("kvP_GRF_SetMethodXY"),
              ElementsAre("kvP_GRF_SetMethodXY|1|1|2056|0|12|0|0|1|S(k)|k (1/A)|15|2|"));
  EXPECT_THAT(core.calls("kvP_VWR_"), ElementsAre("kvP_VWR_SetGraphList|3|1|1", "kvP_VWR_ReDraw|3"));
}

TEST_F(RdfFile, structure_factor_tells_what_it_lacks) {
  EXPECT_EQ(status_of(sofk_, 0.5), 1);
  EXPECT_THAT(core.messages(), ElementsAre("./PathStat.rdf PATHSTAT_ERROR_70"));
  // Two points are too few for the transform.
  write(1, true);
  core.forget();
  EXPECT_EQ(status_of(sofk_, 100.0), 0);
  EXPECT_THAT(core.messages(), ElementsAre("PATHSTAT_ERROR_36"));
  ASSERT_EQ(points_sent().size(), 1U);
  EXPECT_EQ(points_sent()[0].size(), 4U);
}

}  // namespace
}  // namespace pathstat
