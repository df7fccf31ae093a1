#include "process/desk_with_process.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

/// The frame of the file whose positions the model has; 0 if it has those of none of these.
std::int32_t shown_frame(DeskWithProcess& desk, std::initializer_list<std::int32_t> candidates) {
  const auto shown = desk.shown_positions();
  for (const auto frame : candidates) {
    if (ExampleFrame("butane", frame).xyz == shown) return frame;
  }
  return 0;
}

/// Frames 100, 110, 120 of butane are the range.
class ThreeFrames : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(desk.load_example("butane"), 0);
    ASSERT_EQ(desk.run_lines({"LAST_FRAME_NO 120", "FIRST_FRAME_NO 100", "INCREMENT_NO 10"}), 0);
    desk.server.on("kvU_GUI_SupressRepeats", [this](const OperationCall&, OperationReply&) { ++stops; });
  }
  std::string current() { return desk.value("CURRENT_FRAME_NUMBER"); }
  std::int32_t pick(const char* x, const char* event) {
    const auto& handle = *desk.graphs.info(desk.graphs.shown_graphs().back());
    return desk.run("ANALYSIS_STRUCTURE_FROM_PLOT",
                    "\"" + handle.name + "\" " + std::to_string(handle.version) + " " + x + " 0 " + event);
  }

  DeskWithProcess desk;
  int stops = 0;
};

TEST_F(ThreeFrames, the_model_follows_the_range) {
  EXPECT_EQ(shown_frame(desk, {1, 100, 110, 120}), 100);
  EXPECT_EQ(desk.value("MAX_INTERVAL_NO"), "     1");
  EXPECT_EQ(desk.run("LAST_FRAME_NO", "+111"), 0);
  EXPECT_EQ(desk.value("LAST_FRAME_NO"), "   111");
  for (const auto* text : {"+", "+-111", "++111", "111.", "11I"}) EXPECT_EQ(desk.run("LAST_FRAME_NO", text), 1) << text;
  EXPECT_EQ(desk.run("USE_ALL_FRAMES"), 0);
  EXPECT_EQ(shown_frame(desk, {1, 100}), 1);
  EXPECT_EQ(desk.value("LAST_FRAME_NO"), "  1000");
}

struct Walk {
  const char* mode;
  const char* word;
  std::array<const char*, 5> places;  ///< after each tick of a held button
  int stops;
};

class Stepping : public ThreeFrames, public testing::WithParamInterface<Walk> {};

TEST_P(Stepping, goes_through_the_range_and_minds_its_ends) {
  ASSERT_EQ(desk.run("FRAME_STEPPING_MODE", std::string("\"") + GetParam().mode + "\""), 0);
  EXPECT_EQ(desk.run(GetParam().word, "START"), 0);
  EXPECT_EQ(current(), GetParam().places[0]);
  for (std::size_t tick = 1; tick < GetParam().places.size(); ++tick) {
    EXPECT_EQ(desk.run(GetParam().word, "HOLD"), 0);
    EXPECT_EQ(current(), GetParam().places[tick]) << "tick " << tick;
  }
  EXPECT_EQ(stops, GetParam().stops);
  const auto place = std::stoi(current());
  EXPECT_EQ(shown_frame(desk, {100, 110, 120}), 90 + 10 * place);
  EXPECT_EQ(desk.run(GetParam().word, "END"), 0);
  EXPECT_EQ(desk.value("FRAME_STEP_FORWARDS"), "N");
}

INSTANTIATE_TEST_SUITE_P(
    modes, Stepping,
    testing::Values(
        Walk{"STOP AT END", "FRAME_STEP_FORWARDS", {"      2", "      3", "      3", "      3", "      3"}, 3},
        Walk{"STOP AT END", "FRAME_STEP_BACKWARDS", {"      3", "      2", "      1", "      1", "      1"}, 2},
        Walk{"LOOP AT END", "FRAME_STEP_FORWARDS", {"      2", "      3", "      1", "      2", "      3"}, 0},
        Walk{"LOOP AT END", "FRAME_STEP_BACKWARDS", {"      3", "      2", "      1", "      3", "      2"}, 0},
        Walk{"REVERSE AT END", "FRAME_STEP_FORWARDS", {"      2", "      3", "      2", "      1", "      2"}, 0},
        Walk{"REVERSE AT END", "FRAME_STEP_BACKWARDS", {"      2", "      3", "      2", "      1", "      2"}, 0}));

TEST_F(ThreeFrames, a_second_start_at_the_end_begins_anew) {
  ASSERT_EQ(desk.run_lines({"CURRENT_FRAME_NUMBER 3", "FRAME_STEP_FORWARDS START"}), 0);
  EXPECT_EQ(current(), "      1");
  EXPECT_EQ(desk.value("FRAME_STEP_FORWARDS"), "Y");
  EXPECT_EQ(desk.run("SHOW_PREVIOUS_FRAME", "START"), 0);
  EXPECT_EQ(current(), "      3");
  EXPECT_EQ(desk.run("CURRENT_FRAME_NUMBER", "4"), 1);
  EXPECT_EQ(desk.run("CURRENT_FRAME_TIME", "0.1"), 0) << "steps of the range, counted from the first time of the file";
  EXPECT_EQ(current(), "      2");
}

TEST_F(ThreeFrames, a_range_of_one_frame_has_no_step_and_one_interval) {
  ASSERT_EQ(desk.run("LAST_FRAME_NO", "100"), 0);
  for (const auto& [word, value] :
       {std::pair{"MAX_INTERVAL_NO", "9"}, {"MSD_MAX_INTERVAL", "1"}, {"VAC_MAX_INTERVAL_NO", "9"}}) {
    ASSERT_EQ(desk.run("INCREMENT_NO", "1"), 0);
    EXPECT_EQ(desk.run(word, value), 0);
    EXPECT_EQ(desk.value("MSD_MAX_INTERVAL_NO"), "     1") << word;
  }
  EXPECT_EQ(desk.run("MSD"), 0);
  EXPECT_EQ(read_scratch(desk.work() / "PathStat.msd").points, 1);
  EXPECT_EQ(desk.run("FRAME_STEP_FORWARDS", "START"), 1);
  EXPECT_EQ(stops, 1);
}

TEST_F(ThreeFrames, picks_show_the_frame_and_mark_it) {
  ASSERT_EQ(desk.run("PROFILE"), 0);
  EXPECT_EQ(pick("1.2", "START"), 0);
  EXPECT_EQ(current(), "      3");
  EXPECT_EQ(shown_frame(desk, {100, 110, 120}), 120);
  const auto& marks = desk.data_set(desk.graphs.shown_graphs().size() - 1).marks;
  ASSERT_FALSE(marks.empty());
  EXPECT_EQ(marks.back().points, std::vector<std::int32_t>{3});
  EXPECT_EQ(pick("-5", "MOVE"), 0);
  EXPECT_EQ(current(), "      1") << "left of the range";
  EXPECT_EQ(pick("99", "MOVE"), 0);
  EXPECT_EQ(current(), "      3") << "right of the range";
  EXPECT_EQ(pick("1.0", "END"), 0);
  EXPECT_EQ(current(), "      3") << "the end of a pick shows nothing";
  desk.messages.clear();
  desk.run("ANALYSIS_STRUCTURE_FROM_PLOT", "Elsewhere 1 1.0 0 MOVE");
  EXPECT_THAT(desk.take_keys(), Contains("PATHSTAT_ERROR_120"));
}

TEST_F(ThreeFrames, a_lost_model_comes_back_from_its_copy) {
  ASSERT_EQ(desk.run("FRAME_STEP_FORWARDS", "START"), 0);
  const auto old_model = desk.model.current_model();
  desk.model.remove_model(old_model);
  desk.ui.settle_answer("PATHSTAT_MSG_46", 2);
  EXPECT_EQ(desk.run("FRAME_STEP_FORWARDS", "START"), 1);
  desk.ui.settle_answer("PATHSTAT_MSG_46", 1);
  EXPECT_EQ(desk.run("FRAME_STEP_FORWARDS", "START"), 0);
  EXPECT_NE(desk.model.current_model(), old_model);
  EXPECT_EQ(shown_frame(desk, {100, 110, 120}), 120);
}

TEST_F(ThreeFrames, what_the_core_nests_in_a_step_leaves_the_cache_whole) {
  std::vector<std::int32_t> in_making;
  std::vector<std::int32_t> in_showing;
  bool busy = false;
  const auto nest = [&](std::vector<std::int32_t>& statuses, const char* word, const char* phase) {
    if (!std::exchange(busy, true)) {
      statuses = {desk.run("SHOW_NEXT_FRAME", "START"), desk.run(word, phase)};
    }
  };
  desk.server.on("kvD_MOD_PeriodicType", [&](const OperationCall&, OperationReply& reply) {
    reply.put(std::int32_t{0});
    nest(in_making, "PROFILE", "");
  });
  EXPECT_EQ(desk.run("FRAME_STEP_FORWARDS", "START"), 0);
  EXPECT_EQ(current(), "      2");
  EXPECT_THAT(in_making, ElementsAre(1, 1));
  busy = false;
  desk.server.on("kvD_SetXYZ",
                 [&](const OperationCall&, OperationReply&) { nest(in_showing, "FRAME_STEP_FORWARDS", "END"); });
  EXPECT_EQ(desk.run("FRAME_STEP_FORWARDS", "HOLD"), 0);
  EXPECT_EQ(current(), "      3");
  EXPECT_THAT(in_showing, ElementsAre(1, 0));
  EXPECT_EQ(desk.value("FRAME_STEP_FORWARDS"), "N") << "the press has ended within its step";
}

/// A press that goes on behind a change of the range or of the trajectory, by its word.
class GoingOn : public ThreeFrames, public testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override {
    ThreeFrames::SetUp();
    ASSERT_EQ(desk.run("PROFILE"), 0);
    ASSERT_EQ(go_on("1.1", "START"), 0);
    ASSERT_EQ(shown_frame(desk, {100, 110, 120}), 110);
  }
  std::int32_t go_on(const char* x, const char* phase) {
    return GetParam() == std::string_view("a drag") ? pick(x, phase) : desk.run(GetParam(), phase);
  }
};

TEST_P(GoingOn, shows_frames_of_the_new_range) {
  for (const auto& [word, value] : {std::pair{"INCREMENT_NO", "1"}, {"FIRST_FRAME_NO", "1"}, {"LAST_FRAME_NO", "9"}}) {
    ASSERT_EQ(desk.run(word, value), 0);
  }
  ASSERT_EQ(desk.run("PROFILE"), 0);
  EXPECT_EQ(go_on("0.02", "HOLD"), 0);
  EXPECT_EQ(current(), "      3");
  EXPECT_EQ(shown_frame(desk, {3, 110, 120}), 3);
}

TEST_P(GoingOn, moves_the_model_of_the_new_trajectory_alone) {
  const auto old_model = desk.model.current_model();
  ASSERT_EQ(desk.load_example("argon"), 0);
  ASSERT_EQ(desk.run("PROFILE"), 0);
  const auto first = desk.shown_positions();
  EXPECT_EQ(go_on("99", "HOLD"), 0);
  EXPECT_NE(desk.shown_positions(), first);
  ASSERT_NE(desk.model.current_model(), old_model);
  desk.model.set_current_model(old_model);
  EXPECT_EQ(shown_frame(desk, {1, 100, 110, 120}), 110);
}

TEST_P(GoingOn, is_stopped_without_a_step_while_an_analysis_runs) {
  std::vector<std::int32_t> nested;
  desk.server.on("kvP_GRF_SetAspectRatio", [&](const OperationCall&, OperationReply&) {
    nested = {go_on("1.2", "START"), go_on("1.2", "HOLD"), go_on("1.2", "END")};
  });
  stops = 0;
  ASSERT_EQ(desk.run("PROFILE"), 0);
  EXPECT_THAT(nested, ElementsAre(1, 1, 0));
  EXPECT_EQ(stops, 2);
  EXPECT_EQ(current(), "      2");
  EXPECT_EQ(desk.value("FRAME_STEP_FORWARDS"), "N") << "the end of the press is taken";
}

INSTANTIATE_TEST_SUITE_P(presses, GoingOn, testing::Values("FRAME_STEP_FORWARDS", "SHOW_NEXT_FRAME", "a drag"));

TEST_F(ThreeFrames, a_frame_can_be_reported_and_extracted) {
  ASSERT_EQ(desk.run("CURRENT_FRAME_NUMBER", "2"), 0);
  desk.output.clear();
  ASSERT_EQ(desk.run_lines({"FRAME_INFO", "EXTRACT_FRAME_NO 7", "EXTRACT_FRAME"}), 0);
  EXPECT_EQ(shown_frame(desk, {7, 110}), 7);
  const double total = log_column("butane", "TotEng")[109];
  std::array<char, 40> line{};
  std::snprintf(line.data(), line.size(), "       Total Energy :%12.4f", total);
  EXPECT_THAT(desk.output, AllOf(Contains(HasSubstr("       Frame No     :         110")),
                                 Contains(HasSubstr(line.data())), Not(Contains(HasSubstr("Volume")))));
}

}  // namespace
}  // namespace pathstat::desk
