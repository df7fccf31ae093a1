#include "process/refusal.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

/// What a newcomer may get wrong, before any trajectory is there.
constexpr Refusal refusals[]{
    {"frobnicate", "", 1, "KVZ_CMD_UNDEF"},
    {"profile", "", 1, "KVZ_CMD_UNDEF"},
    {"RUNNING_AVERAGE", "", 1, "PATHSTAT_MSG_30"},
    {"MSD", "", 1, "PATHSTAT_ERROR_77"},
    {"FRAME_INFO", "", 1, "PATHSTAT_ERROR_57"},
    {"STRUCTURE_FACTOR", "", 1, "PATHSTAT_ERROR_71"},
    {"TRAJECTORY", "/nowhere/run.trj", 1, "PATHSTAT_ERROR_67"},
    {"TRAJECTORY", "/nowhere/run", 1, "PATHSTAT_ERROR_66"},
    {"TRAJECTORY", "/nowhere/run.fhis", 1, "PATHSTAT_ERROR_115"},
    {"EXTREMA_NUMBER", "101", 1002, nullptr},
    {"BLOCK_WIDTH_NO", "0", 1001, nullptr},
    {"BLOCK_WIDTH_NO", "1001", 1, "PATHSTAT_WARN_2"},
    {"BLOCK_INTERVAL_NO", "0", 1, "PATHSTAT_WARN_3"},
    {"ATOMS", "SOME", 1003, nullptr},
    {"NUMBER_OF_BINS", "", 1005, nullptr},
    {"FREQUENCY_INTERVAL", "0", 1, ""},
    {"MAX_INTERVAL", "5", 1, ""},
    {"RDF_CUTOFF", "1e9", 1, "PATHSTAT_ERROR_9"},
    {"RDF_INTERVAL", "4", 1, "PATHSTAT_ERROR_10"},
    {"MIN_FIT_TIME", "0.5", 1002, nullptr},
    {"GET", "NOTHING", 1003, nullptr},
    {"GET", "FRAME_STEP", 1, ""},
    {"PROPERTY", "NOTHING", -1, ""},
    {"LAST_FRAME_NO", "12x", 1, ""},
};

TEST(Commands, refuse_what_does_not_fit_with_a_status_and_a_message) {
  DeskWithProcess desk;
  desk.run("MONITOR", "yes");
  for (const auto& refusal : refusals) expect_refused(desk, refusal);
}

struct Setting {
  const char* word;
  const char* arguments;
  const char* asked;
  const char* value;
};

/// A setting, and what the process then answers, in its fixed-column form.
constexpr Setting settings_and_values[]{
    {"BLOCK_WIDTH_NO", "20", "BLOCK_WIDTH_NO", "      20"},
    {"MAX_INTERVAL_NO", "99999", "MSD_MAX_INTERVAL_NO", "   999"},
    {"ORIGIN_STEP_NO", "7", "VAC_ORIGIN_STEP_NO", "     7"},
    {"FREQUENCY_INTERVAL", "2", "VAC_MAX_TIME_TRANSFORM", "  8.3333"},
    {"FREQUENCY_INTERVAL", "2", "DAC_FREQUENCY_INTERVAL", "  2.0000"},
    {"ATOMS", "SELECTED", "DIPOLE_ATOMS", "SELECTED"},
    {"MONITOR", "no", "MONITOR_RDF", "F"},
    {"ANISOTROPIC", "1", "MSD_ANISOTROPIC", "T"},
    {"EXTREMA_NUMBER", "25", "MINIMA", "  25"},
    {"STATISTICS_FILENAME", "sub/out", "STATISTICS_FILENAME", "sub/out.dat"},
    {"STATISTICS_FILENAME", "out.dat", "SELECTED_STATISTICS_FILENAME", ".../out.dat"},
    {"RDF_INTERVAL", "0.02", "RDF_CUTOFF", " 9.00000"},
    {"RDF_INTERVAL", "0.05", "RDF_CUTOFF", " 9.00000"},
    {"R_SPACE_CUTOFF", "20", "K_SPACE_INTERVAL", "    0.1571"},
    {"FRAME_STEP_SPEED", "40", "FRAME_STEP_SPEED", " 40.0"},
    {"FRAME_STEPPING_MODE", "\"LOOP AT END\"", "FRAME_STEPPING_MODE", "LOOP AT END"},
    {"RDF_BETWEEN", "\"FF TYPES\"", "RDF_BETWEEN", "FF TYPES"},
    {"NUMBER_OF_BINS", "10000", "NUMBER_OF_BINS", " 10000"},
};

TEST(Commands, store_settings_that_requests_then_answer) {
  DeskWithProcess desk;
  for (const auto& setting : settings_and_values) {
    ASSERT_EQ(desk.run(setting.word, setting.arguments), 0) << setting.word;
    EXPECT_EQ(desk.value(setting.asked), setting.value) << setting.word << ' ' << setting.arguments;
  }
  EXPECT_EQ(desk.range("ATOMS"), "ALL,SELECTED");
  EXPECT_EQ(desk.value("SELECTED_TRAJECTORY"), "  <Please Select Trajectory>");
  EXPECT_EQ(desk.value("BLOCK_WIDTH"), "") << "no time axis, no time";
}

TEST(Load, shows_what_the_file_holds) {
  DeskWithProcess desk("argon");
  EXPECT_EQ(desk.value("LAST_FRAME_NO"), "   200");
  EXPECT_EQ(desk.value("LAST_FRAME_TIME"), "         3.98000");
  EXPECT_EQ(desk.value("MAX_INTERVAL_NO"), "   100");
  EXPECT_EQ(desk.value("BLOCK_WIDTH"), "    1.0000");
  EXPECT_EQ(desk.value("ANALYSIS_INPUT_SOURCE"), "TRAJECTORY");
  EXPECT_THAT(desk.range("SELECT_PROPERTIES"),
              AllOf(HasSubstr("ENERGY TOTALS,     Total Energy"), HasSubstr("     < Dipole Magnitude >")));
  EXPECT_EQ(desk.run("GET", "NUMBER_OF_FRAMES"), 0);
  EXPECT_THAT(desk.returned, ElementsAre("200"));
  EXPECT_TRUE(std::filesystem::exists(desk.work() / "TmpTrjModel.qfx"));
  desk.messages.clear();
  EXPECT_EQ(desk.load_example("argon"), 0);
  EXPECT_THAT(desk.take_keys(), Contains("PATHSTAT_MSG_66")) << "the same file again keeps its model";
}

TEST(Load, by_stem_needs_one_file) {
  DeskWithProcess desk;
  const auto stem = desk.work() / "run";
  std::filesystem::copy_file(EXAMPLES_DIR "/butane/butane.trj", stem.string() + ".trj");
  std::filesystem::copy_file(EXAMPLES_DIR "/butane/butane.qfx", stem.string() + ".qfx");
  ASSERT_EQ(desk.run("TRAJECTORY", stem.string()), 0);
  std::ofstream(stem.string() + ".arc") << "archive\n";
  desk.messages.clear();
  EXPECT_THAT(desk.told("TRAJECTORY", stem.string()), Pair(1, Contains("PATHSTAT_ERROR_68")));
  EXPECT_EQ(desk.value("LAST_FRAME_NO"), "  1000") << "without a trajectory the range is the starting one";
}

TEST(Load, keeps_the_frames_ahead_of_a_cut) {
  DeskWithProcess desk;
  const auto path = desk.work() / "cut.trj";
  std::filesystem::copy_file(EXAMPLES_DIR "/butane/butane.trj", path);
  std::filesystem::copy_file(EXAMPLES_DIR "/butane/butane.qfx", desk.work() / "cut.qfx");
  std::filesystem::resize_file(path, std::filesystem::file_size(path) - 100);
  EXPECT_THAT(desk.told("TRAJECTORY", path.string()), Pair(0, Contains("PATHSTAT_WARN_7")));
  EXPECT_EQ(desk.value("LAST_FRAME_NO"), "   999");
  ASSERT_EQ(desk.run("PROFILE"), 0);
  EXPECT_EQ(read_scratch(desk.work() / "PathStat_prf.te").points, 999);
}

TEST(Load, refuses_a_model_that_does_not_fit) {
  DeskWithProcess desk;
  const auto path = desk.work() / "run.trj";
  std::filesystem::copy_file(EXAMPLES_DIR "/butane/butane.trj", path);
  std::filesystem::copy_file(EXAMPLES_DIR "/argon/argon.qfx", desk.work() / "run.qfx");
  EXPECT_THAT(desk.told("TRAJECTORY", path.string()), Pair(50015, Contains("PATHSTAT_ERROR_112")));

  EXPECT_THAT(desk.told("FIRST_FRAME_NO", "3"), Pair(1, Contains("PATHSTAT_ERROR_103"))) << "the frame cannot be shown";
  EXPECT_EQ(desk.value("FIRST_FRAME_NO"), "     3") << "the range holds all the same";
  EXPECT_EQ(desk.run("FRAME_INFO"), 0);
  EXPECT_THAT(desk.output, AllOf(Contains(HasSubstr("Frame No     :           3")),
                                 Contains(HasSubstr("No of atoms  :          14"))));
}

TEST(Reset, asks_first) {
  DeskWithProcess desk("butane");
  desk.ui.settle_answer("KVZ_CONFIRM_PROMPT", 2);
  EXPECT_EQ(desk.run("RESET"), -1);
  EXPECT_EQ(desk.value("ANALYSIS_INPUT_SOURCE"), "TRAJECTORY");
  desk.ui.settle_answer("KVZ_CONFIRM_PROMPT", 1);
  EXPECT_EQ(desk.run("RESET"), 0);
  EXPECT_EQ(desk.value("ANALYSIS_INPUT_SOURCE"), "SELECTED MODELS");
  EXPECT_EQ(desk.value("LAST_FRAME_NO"), "  1000");
}

TEST(Nesting, serves_commands_and_requests_in_the_middle_of_a_command) {
  DeskWithProcess desk("butane");
  std::string asked;
  std::int32_t nested = -1;
  desk.server.on("kvP_GRF_SetAspectRatio", [&](const OperationCall&, OperationReply&) {
    nested = desk.run("NUMBER_OF_BINS", "33");
    asked = desk.value("NUMBER_OF_BINS");
  });
  ASSERT_EQ(desk.run("PROFILE"), 0);
  EXPECT_EQ(nested, 0);
  EXPECT_EQ(asked, "    33");
  EXPECT_EQ(desk.data_set(0).points.size(), 1000U);
}

TEST(Nesting, an_analysis_lets_no_other_one_in) {
  DeskWithProcess desk("butane");
  std::vector<std::int32_t> nested;
  desk.server.on("kvP_GRF_SetAspectRatio", [&](const OperationCall&, OperationReply&) {
    for (const auto* word : {"PROFILE", "SHOW_NEXT_FRAME", "RESET"}) nested.push_back(desk.run(word, "START"));
    nested.push_back(desk.run("ANALYSIS_INPUT_SOURCE", "TRAJECTORY"));
  });
  ASSERT_EQ(desk.run("PROFILE"), 0);
  EXPECT_THAT(nested, ElementsAre(1, 1, 1, 1));
  EXPECT_THAT(desk.output, Contains("PROFILE: another analysis is running"));
  EXPECT_EQ(desk.data_set(0).points.size(), 1000U);
}

TEST(Nesting, a_command_reads_on_in_its_own_arguments) {
  DeskWithProcess desk;
  ASSERT_EQ(desk.run("RDF_BETWEEN", "ELEMENTS"), 0);
  bool nested = false;
  desk.server.on("kvU_MSG_DisplayError", [&](const OperationCall&, OperationReply&) {
    if (!std::exchange(nested, true)) desk.run("SELECT_PROPERTIES", "one two three");
  });
  EXPECT_EQ(desk.run("RDF_TYPE", "Unobtainium Xx"), 1);
  EXPECT_TRUE(nested) << "the first name is cut, which is shown";
  ASSERT_FALSE(desk.messages.empty());
  EXPECT_THAT(desk.messages.back().arguments,
              ElementsAre(MessageArgument("ELEMENT"), MessageArgument("Unobtain"), MessageArgument("Xx")));
}

TEST(Nesting, a_request_in_a_request_does_not_spoil_the_outer_one) {
  DeskWithProcess desk("water");
  ASSERT_EQ(desk.run("RDF_BETWEEN", "ELEMENTS"), 0);
  std::vector<std::string> inner;
  bool busy = false;
  desk.server.on("kvD_ACL_Symbol", [&](const OperationCall&, OperationReply& reply) {
    reply.put(std::string("O"));
    if (busy) return;
    busy = true;
    inner = desk.values("MAX_INTERVAL_NO");
    busy = false;
  });
  const std::vector<std::string> words{"ATOMS", "RDF_TYPE", "MONITOR"};
  const auto answers = desk.session.request(words);
  ASSERT_TRUE(answers);
  EXPECT_THAT(inner, ElementsAre("   150"));
  EXPECT_THAT((*answers)[0].values, ElementsAre(HasSubstr("ALL")));
  ASSERT_EQ((*answers)[1].values.size(), 2U);
  EXPECT_THAT((*answers)[2].values, ElementsAre("T"));
}

}  // namespace
}  // namespace pathstat::desk
