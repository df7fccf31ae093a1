// The edges that docs/limits.md lists: the last value that goes, and what becomes of the one beyond it.

#include "process/desk_with_process.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

struct Edge {
  const char* word;
  std::string last, beyond;
  std::int32_t refusal;  ///< status of the value beyond
};

TEST(Limits, of_settings_take_the_last_value_and_refuse_the_one_beyond) {
  const Edge edges[]{
      {"NUMBER_OF_BINS", "10000", "10001", 1002},
      {"NUMBER_OF_BINS", "1", "0", 1001},
      {"EXTREMA_NUMBER", "100", "101", 1002},
      {"STATISTICS_FILENAME", std::string(longest_text - 4, 'n'), std::string(longest_text + 1, 'n'), 1},
  };
  DeskWithProcess desk;
  for (const auto& edge : edges) {
    EXPECT_EQ(desk.run(edge.word, edge.last), 0) << edge.word;
    EXPECT_EQ(desk.run(edge.word, edge.beyond), edge.refusal) << edge.word;
  }
  EXPECT_EQ(desk.value("STATISTICS_FILENAME").size(), 1024U) << "a name is cut before its .dat";
}

TEST(Limits, of_a_path_refuse_a_longer_one_and_leave_the_process_alive) {
  DeskWithProcess desk;
  for (const std::size_t length : {1001U, 5000U, 32000U}) {
    EXPECT_NE(desk.run("TRAJECTORY", "/" + std::string(length, 'p') + ".trj"), 0);
    ASSERT_FALSE(desk.session.lost()) << desk.session.loss();
  }
}

TEST(Limits, of_lags_are_one_frame_less_than_the_range_has) {
  DeskWithProcess desk("argon");
  const int frames = std::stoi(desk.value("LAST_FRAME_NO"));
  EXPECT_EQ(desk.run("MSD_MAX_INTERVAL_NO", "2000000000"), 0);
  EXPECT_EQ(std::stoi(desk.value("MSD_MAX_INTERVAL_NO")), frames - 1);
}

TEST(Limits, of_a_slab_are_its_layers_and_its_atoms) {
  DeskWithProcess desk;
  const auto file = desk.work() / "large.xyz";
  std::ofstream text(file);
  text << "10001\nLattice=\"200 0 0 0 200 0 0 0 2000\" Properties=species:S:1:pos:R:3\n";
  for (int k = 0; k < 10001; ++k)
    text << "Ar " << k % 20 * 10 << ' ' << k / 20 % 20 * 10 << ' ' << k / 400 * 10 << '\n';
  text.close();
  ASSERT_EQ(desk.run("IMPORT_STRUCTURE", file.string()), 0);
  desk.messages.clear();
  EXPECT_EQ(desk.run("BUILD_SLAB", "1001"), 1002);
  EXPECT_EQ(desk.run("BUILD_SLAB", "1000"), 1);
  ASSERT_EQ(desk.messages.size(), 2U);
  EXPECT_EQ(desk.messages.back().key, "STRUCTURE_TOO_MANY_ATOMS");
  EXPECT_EQ(desk.run("BUILD_SLAB", "2"), 0);
}

TEST(Limits, of_a_file_are_what_it_holds_not_how_long_it_is) {
  const std::filesystem::path example = EXAMPLES_DIR "/argon";
  DeskWithProcess desk;
  const auto trajectory = desk.work() / "sparse.trj";
  std::filesystem::copy_file(example / "argon.trj", trajectory);
  std::filesystem::copy_file(example / "argon.qfx", desk.work() / "sparse.qfx");
  ASSERT_EQ(desk.load_example("argon"), 0);
  const auto frames = desk.value("LAST_FRAME_NO");
  std::filesystem::resize_file(trajectory, std::uintmax_t{1} << 40);
  ASSERT_EQ(desk.run("TRAJECTORY", trajectory.string()), 0);
  EXPECT_EQ(desk.value("LAST_FRAME_NO"), frames) << "behind the last frame nothing is read";
}

}  // namespace
}  // namespace pathstat::desk
