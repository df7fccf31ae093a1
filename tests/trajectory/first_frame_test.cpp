#include "trajectory/first_frame.h"

#include "in_process_core.h"
#include "scratch_folder.h"
#include "testing.h"
#include "trajectory/binary_bytes.h"
#include "trajectory/frame_cache.h"
#include "trajectory/frame_extraction.h"
#include "trajectory/front_end.h"
#include "trajectory/model_check.h"
#include "trajectory/open_trajectory.h"
#include "trajectory/trajectory_keys.h"
#include "trajectory/written_trajectory.h"

namespace pathstat {
namespace {

constexpr std::int32_t structured_file = 1, coordinate_file = 14;

class FirstFrame : public testing::Test {
 protected:
  /// Four atoms, of which the first and the third move.
  std::int32_t import(std::int32_t type = 100, const char* ids = "4 3 2 1") {
    return core.import(
        folder.write("model.qfx", "(1 Model four\n (A I PeriodicType " + std::to_string(type) +
                                      ")\n (A V Cell ((9 0 0) (0 9 0) (0 0 9)))\n (A I AtomId (" + ids +
                                      "))\n"
                                      " (A C Element (Ar Ar Ar Ar))\n (A V XYZ ((0 0 0) (3 3 3) (0 0 0) (1 1 1)))\n"
                                      " (A I Movable (1 0 1 0))\n)\n"));
  }
  std::int32_t fix(const std::string& path, std::int32_t file_type, std::int32_t model) {
    return status_of(trjfixatoms_, path, file_type, model);
  }
  const desk::MolecularModel& data(std::int32_t model) { return core.model.model(model)->data; }

  InProcessCore core;
  const ScratchFolder folder;
  WrittenTrajectory trajectory{4, {2, 4}, 3};
};

TEST_F(FirstFrame, gives_the_model_its_cell_positions_and_vectors) {
  const std::int32_t model = import();
  trajectory.set(1058, {10, 11, 12, 1, 2, 3}).set(1071, {2, 2, 2, 4, 4, 4}).set(1072, {6, 6, 6, 7, 7, 7}).frame();
  EXPECT_EQ(fix(trajectory.path(), structured_file, model), 0);
  EXPECT_THAT(core.messages, IsEmpty());
  EXPECT_THAT(data(model).cell, ElementsAre(Vector3{10, 3, 2}, Vector3{0, 11, 1}, Vector3{0, 0, 12}));
  EXPECT_THAT(data(model).positions,
              ElementsAre(Vector3{4, 4, 4}, Vector3{3, 3, 3}, Vector3{2, 2, 2}, Vector3{1, 1, 1}));
  EXPECT_THAT(data(model).vectors.at("Velocity"),
              ElementsAre(Vector3{7, 7, 7}, Vector3{0, 0, 0}, Vector3{6, 6, 6}, Vector3{0, 0, 0}));
  EXPECT_EQ(data(model).vectors.count("Force"), 0u);
}

TEST_F(FirstFrame, a_model_of_coordinates_learns_what_moves) {
  const std::int32_t model = import();
  trajectory.set(1058, {9, 9, 9, 0, 0, 0}).set(1071, {2, 2, 2, 4, 4, 4}).frame();
  EXPECT_EQ(fix(trajectory.path(), coordinate_file, model), 0);
  EXPECT_THAT(data(model).movable, ElementsAre(1, 0, 1, 0));
}

TEST_F(FirstFrame, a_model_that_does_not_fit_is_left_alone) {
  WrittenTrajectory other_count{5, {2, 4}, 3};
  for (auto* written : {&trajectory, &other_count}) {
    written->set(1058, {9, 9, 9, 0, 0, 0}).set(1071, {2, 2, 2, 4, 4, 4}).frame();
  }
  const std::int32_t fitting = import(), flat = import(0), other_ids = import(100, "7 3 2 1");
  for (const auto& [file, model, key] : {std::tuple{&trajectory, flat, "PATHSTAT_ERROR_103"},
                                         {&trajectory, other_ids, "PATHSTAT_ERROR_104"},
                                         {&other_count, fitting, "PATHSTAT_ERROR_104"}}) {
    core.messages.clear();
    EXPECT_EQ(fix(file->path(), structured_file, model), 1);
    EXPECT_EQ(status_of(extractfromframe_, file->path(), model, 1, 1, ExtractionMode::apply), 1);
    EXPECT_EQ(data(model).positions[0], (Vector3{0, 0, 0}));
    EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_ERROR_112", key, "PATHSTAT_ERROR_112", key));
    EXPECT_EQ(status_of(extractfromframe_, file->path(), model, 1, 1, ExtractionMode::report), 0);
  }
  core.messages.clear();
  EXPECT_NE(fix(trajectory.path(), structured_file, 0), 0);
  EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_ERROR_102"));
  EXPECT_NE(fix("/none/run.trj", structured_file, import()), 0);
}

TEST_F(FirstFrame, a_frame_without_a_cell_leaves_the_model_its_own) {
  const testing_bytes::Plan plan{.version = 190, .flags = {1}};  // constant volume: no cell in the frames
  const auto bytes = testing_bytes::file(plan, 2).all();
  const auto path = folder.write("run.trj", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  const std::int32_t model = core.import_text(
      "(1 Model three\n (A I PeriodicType 100)\n (A V Cell ((9 1 0) (0 8 2) (3 0 7)))\n"
      " (A I AtomId (0 1 2))\n (A C Element (Ar Ar Ar))\n"
      " (A V XYZ ((0 0 0) (3 3 3) (1 1 1)))\n (A I Movable (1 1 0))\n)\n");
  const auto shows = [&](std::int32_t frame) {
    EXPECT_THAT(data(model).cell, ElementsAre(Vector3{9, 1, 0}, Vector3{0, 8, 2}, Vector3{3, 0, 7}));
    for (std::size_t axis = 0; axis < 3; ++axis) {
      EXPECT_EQ(data(model).positions[1][axis], testing_bytes::coordinate(frame, 1071, 1, static_cast<int>(axis)));
    }
  };
  EXPECT_EQ(fix(path, structured_file, model), 0);
  EXPECT_THAT(core.messages, IsEmpty());
  shows(1);
  std::int32_t status = -1;
  EXPECT_EQ(status_of(extractfromframe_, path, model, 2, 2, ExtractionMode::apply), 0);
  shows(2);
  EXPECT_EQ(status_of(setuptrjcache_, model, path, 1, 2, 1), 0);
  EXPECT_EQ(status_of(showtrjframe_, 1, false), 0);
  shows(1);
  killtrjcache_(status);
  EXPECT_THAT(stdout_of([&] { extractfromframe_(path, model, 2, 2, ExtractionMode::report, status); }),
              HasSubstr("Volume       :    510.0000"));

  const OpenTrajectory open(path, model, status);
  trj_readframe_(open.handle(), 1, status);
  std::array<double, 9> vectors{};
  std::int32_t count = 0;
  trj_dvalue_(open.handle(), trajectory_key::cell_vectors, vectors, count, status);
  EXPECT_EQ(status, 0);
  EXPECT_THAT(vectors, ElementsAre(9, 1, 0, 0, 8, 2, 3, 0, 7));
  trj_dvalue_(open.handle(), 400149, std::span(vectors).first(6), count, status);
  EXPECT_EQ(status, 0);
  EXPECT_NEAR(vectors[0], std::sqrt(82.0), 1e-12);
}

/// The check whether the trajectory's model is still there.
class ModelCheck : public FirstFrame {
 protected:
  std::int32_t check(std::int32_t& model) { return status_of(checktrjmodel_, folder.file("model.qfx"), model, false); }
};

TEST_F(ModelCheck, the_current_model_passes_and_another_one_is_told) {
  std::int32_t model = import();
  core.model.set_current_model(model);
  EXPECT_EQ(check(model), 0);
  EXPECT_THAT(core.messages, IsEmpty());
  const std::int32_t kept = model;
  core.model.set_current_model(import());
  EXPECT_EQ(check(model), 0);
  EXPECT_EQ(model, kept);
  EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_MSG_48 \"four\""));
}

TEST_F(ModelCheck, a_model_that_is_gone_comes_back_if_the_user_wants_it) {
  std::int32_t model = import();
  const std::int32_t gone = model;
  core.model.remove_model(gone);
  core.ui.settle_answer("PATHSTAT_MSG_46", 2);
  EXPECT_EQ(check(model), 1);
  EXPECT_EQ(model, gone);
  core.ui.settle_answer("PATHSTAT_MSG_46", 1);
  EXPECT_EQ(check(model), 0);
  EXPECT_NE(model, gone);
  ASSERT_NE(core.model.model(model), nullptr);
  EXPECT_THAT(data(model).ids, ElementsAre(4, 3, 2, 1));
}

}  // namespace
}  // namespace pathstat
