#include "trajectory/scan.h"

#include <sys/time.h>

#include "in_process_core.h"
#include "testing.h"
#include "trajectory/written_trajectory.h"

namespace pathstat {
namespace {

class Scan : public testing::Test {
 protected:
  /// The interrupt check asks the Core at its first call and then only once in a while.
  Scan() { setitimer(ITIMER_REAL, &no_timer, nullptr); }
  ~Scan() override { setitimer(ITIMER_REAL, &no_timer, nullptr); }

  std::int32_t scan(const std::string& path) {
    testing::internal::CaptureStdout();
    scanfile_(path + "  ", reader, kind, version, time_axis, first_time, step, frames, status);
    printed = testing::internal::GetCapturedStdout();
    return status;
  }
  /// Frames at these times, in ps.
  static void add_frames(WrittenTrajectory& trajectory, std::initializer_list<double> times) {
    for (const double time : times) trajectory.set(1000, {time}).set(1071, {1, 2, 3}).frame();
  }

  static constexpr itimerval no_timer{};
  InProcessCore core;
  std::int32_t reader = 0, kind = 0, version = 0, frames = -1, status = -1;
  bool time_axis = false;
  double first_time = -1, step = -1;
  std::string printed;
  int asked = 0, reported = 0;
};

TEST_F(Scan, counts_the_frames_and_finds_their_times) {
  WrittenTrajectory trajectory(1, {1});
  add_frames(trajectory, {2, 2.5, 3, 4.5});
  EXPECT_EQ(scan(trajectory.path()), 0);
  EXPECT_EQ(reader, 4);
  EXPECT_EQ(kind, 1);
  EXPECT_EQ(version, 2010);
  EXPECT_EQ(frames, 4);
  EXPECT_TRUE(time_axis);
  EXPECT_EQ(first_time, 2);
  EXPECT_DOUBLE_EQ(step, 2.5 / 3);
  EXPECT_EQ(printed, "Trajectory contains comments:\na title line\n");
  EXPECT_THAT(core.messages, IsEmpty());
}

TEST_F(Scan, a_single_frame_has_a_step_of_its_own) {
  WrittenTrajectory trajectory(1, {1});
  add_frames(trajectory, {7});
  EXPECT_EQ(scan(trajectory.path()), 0);
  EXPECT_EQ(frames, 1);
  EXPECT_TRUE(time_axis);
  EXPECT_EQ(first_time, 7);
  EXPECT_EQ(step, 0.001);
}

TEST_F(Scan, times_that_stand_still_are_no_axis) {
  WrittenTrajectory trajectory(1, {1});
  add_frames(trajectory, {7, 7, 7});
  EXPECT_EQ(scan(trajectory.path()), 0);
  EXPECT_FALSE(time_axis);
  EXPECT_EQ(step, 0);
}

TEST_F(Scan, a_cut_file_keeps_its_whole_frames) {
  WrittenTrajectory trajectory(1, {1});
  add_frames(trajectory, {0, 1, 2});
  const auto size = std::filesystem::file_size(trajectory.path());
  std::filesystem::resize_file(trajectory.path(), size - 1);
  EXPECT_EQ(scan(trajectory.path()), 0);
  EXPECT_EQ(frames, 2);
  EXPECT_EQ(step, 1);
  EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_WARN_7"));
  core.messages.clear();
  std::filesystem::resize_file(trajectory.path(), size - 2 * 652 - 1);
  EXPECT_EQ(scan(trajectory.path()), 1);
  EXPECT_EQ(frames, 0);
  EXPECT_FALSE(time_axis);
  EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_ERROR_47"));
}

TEST_F(Scan, a_file_that_cannot_be_opened_is_named) {
  EXPECT_NE(scan("/none/run.trj"), 0);
  EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_ERROR_107 \"/none/run.trj\"", "Traj_OpenProblem \"/none/run.trj\""));
}

TEST_F(Scan, the_user_may_stop_it_and_keeps_what_was_found) {
  WrittenTrajectory trajectory(1, {1});
  for (int k = 0; k < 120; ++k) add_frames(trajectory, {k * 0.5});
  core.interrupt = true;
  EXPECT_EQ(scan(trajectory.path()), 1) << "stopped before the first frame";
  EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_WARN_19 0"));
  core.messages.clear();

  // The Core is asked at each report here, by a timer that is always over, and stops at the third.
  core.server.on("kvU_INT_RequestCoreInterrupt", [this](const desk::OperationCall&, desk::OperationReply& reply) {
    reply.result = ++asked > 2 ? 1 : 0;
  });
  core.server.on("kvU_INT_ReportStatus", [this](const desk::OperationCall& call, desk::OperationReply&) {
    setitimer(ITIMER_REAL, &no_timer, nullptr);
    core.ui.report_status(call.text(0));
    ++reported;
  });
  EXPECT_EQ(scan(trajectory.path()), 0);
  EXPECT_EQ(frames, 100);
  EXPECT_TRUE(time_axis);
  EXPECT_DOUBLE_EQ(step, 0.5);
  EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_WARN_19 100"));
  EXPECT_EQ(reported, 4) << "at 0, 50 and 100 frames, and cleared at the end";
}

}  // namespace
}  // namespace pathstat
