#include "testing.h"
#include "trajectory/binary_adapter.h"
#include "trajectory/binary_open.h"
#include "trajectory/front_end_fixture.h"
#include "trajectory/written_trajectory.h"

namespace pathstat {
namespace {

TEST_F(FrontEnd, the_end_of_a_name_tells_the_format) {
  for (const char* name : {"run.TRJ", "run.dat", "run", "", "run.trj.gz"}) {
    trj_i_.trj_format = 0;
    EXPECT_EQ(open(name), 50000) << name;
    EXPECT_EQ(trj_i_.trj_format, 0) << name;
  }
  EXPECT_THAT(core.messages, Each("PATHSTAT_ERROR_108"));
  EXPECT_EQ(core.messages.size(), 5u);
  struct Case {
    const char* name;
    std::int32_t format;
  };
  for (const auto& [name, format] : {Case{"/none/run.fhis", 3}, Case{"/none/run.his", 3}, Case{"/none/run.arc", 2},
                                     Case{"/none/run.atrj", 4}, Case{"/none/run.qtrj", 4}, Case{"/none/run.trj", 4}}) {
    trj_i_.trj_format = 0;
    EXPECT_NE(open(name), 0);
    EXPECT_EQ(trj_i_.trj_format, format) << name;
  }
}

TEST_F(FrontEnd, what_cannot_be_opened_is_refused_by_its_code) {
  EXPECT_EQ(open("/none/run.trj", 2), 50002);
  EXPECT_EQ(open("/none/run.trj"), 50012);
  EXPECT_EQ(handle_, 0);
  EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_ERROR_106", "PATHSTAT_ERROR_107 \"/none/run.trj\""));
  WrittenTrajectory trajectory(1, {1});
  std::ofstream(trajectory.path()) << "MDTR";
  EXPECT_EQ(open(trajectory.path()), 50503) << "a head that is cut";
  for (const std::int32_t key : {200153, 200142, 200156}) EXPECT_EQ(integers(key).status, 50501) << key;
  for (const std::int32_t key : {200160, 400105, 400144, 400017}) EXPECT_EQ(doubles(key).status, 50501) << key;
  EXPECT_EQ(read(1), 50003);
}

TEST_F(FrontEnd, a_file_of_several_groups_is_refused) {
  const testing_bytes::FileOnDisk two_groups(testing_bytes::file({}, 1).all());
  EXPECT_EQ(open(two_groups.path()), 50020);
  EXPECT_FALSE(xgraftrj_l_.xgraf_open);
}

struct RunKindCase {
  Integers flags;
  std::int32_t ensemble, thermostat;
};

TEST_F(FrontEnd, the_flags_tell_ensemble_and_thermostat) {
  const RunKindCase cases[] = {
      {{}, 1, -1},
      {{3007}, 2, 1},
      {{3002}, 2, 2},
      {{3002, 3005}, 2, 3},
      {{3003}, 4, -1},
      {{3003, 3007}, 3, 1},
      {{3003, 3006}, 3, 2},
      {{3003, 3006, 3005}, 3, 3},
      {{3002, 3005, 3003}, -1, -1},
      {{3006}, -1, -1},
  };
  for (const RunKindCase& c : cases) {
    WrittenTrajectory trajectory(1, {1});
    for (const std::int32_t flag : c.flags) trajectory.flag(flag);
    trajectory.set(1071, Doubles(3)).frame();
    ASSERT_EQ(open(trajectory.path()), 0);
    EXPECT_EQ(integer(200140), c.ensemble);
    EXPECT_EQ(integer(200141), c.thermostat);
  }
}

struct FreedomCase {
  std::int32_t total, movable, directions, dof, type;
};

TEST_F(FrontEnd, degrees_of_freedom_follow_from_atoms_and_periodicity) {
  const FreedomCase cases[] = {{1, 1, 0, 0, 0},   {2, 2, 0, 1, 0},   {3, 3, 0, 3, 0},   {5, 3, 0, 9, 0},
                               {5, 3, 3, 9, 100}, {3, 3, 3, 6, 100}, {3, 3, 2, 6, 101}, {3, 3, 1, 6, 102}};
  for (const FreedomCase& c : cases) {
    WrittenTrajectory trajectory(c.total, Integers(static_cast<std::size_t>(c.movable), 4), c.directions);
    trajectory.set(1071, Doubles(3 * static_cast<std::size_t>(c.movable))).frame();
    ASSERT_EQ(open(trajectory.path()), 0);
    EXPECT_EQ(integer(200145), c.dof);
    EXPECT_EQ(integer(200142), c.type);
    EXPECT_EQ(integer(200004), c.directions);
    EXPECT_EQ(integer(200156), c.movable);
    EXPECT_EQ(logicals(100005).values[0], c.type != 0);
  }
}

/// A single periodic atom with a value of its own under each key of the file.
class Values : public FrontEnd {
 protected:
  void write_and_open(const Integers& flags, std::int32_t directions = 3) {
    trajectory_ = std::make_unique<WrittenTrajectory>(1, Integers{41}, directions);
    for (const std::int32_t flag : flags) trajectory_->flag(flag);
    for (std::int32_t key = 1000; key <= 1102; ++key) {
      if ((key >= 1071 && key <= 1073) || key == 1058 || key == 1059 || key == 1062 || key == 1063 || key == 1065)
        continue;
      trajectory_->set(key, {value(key)});
    }
    for (const std::int32_t key : {1059, 1062, 1063, 1065}) trajectory_->set(key, Doubles(6, value(key)));
    trajectory_->set(1058, {10, 11, 12, 1, 2, 3}).set(1071, {1, 2, 3}).integers(2011, {77});
    trajectory_->frame().set(1072, {4, 5, 6}).set(1073, {7, 8, 9}).frame();
    ASSERT_EQ(open(trajectory_->path()), 0);
    ASSERT_EQ(read(2), 0);
  }
  static double value(std::int32_t key) { return key / 16.0; }

 private:
  std::unique_ptr<WrittenTrajectory> trajectory_;
};

TEST_F(Values, each_key_has_its_place_in_the_file) {
  write_and_open({3002, 3003, 3004});
  struct Pair {
    std::int32_t first, last, binary;
  };
  const Pair pairs[] = {
      {400017, 400017, 1000}, {400020, 400020, 1001}, {400023, 400023, 1004}, {400025, 400034, 1006},
      {400035, 400036, 1017}, {400037, 400046, 1019}, {400047, 400048, 1030}, {400049, 400049, 1032},
      {400050, 400050, 1034}, {400051, 400051, 1033}, {400052, 400052, 1035}, {400057, 400058, 1036},
      {400059, 400062, 1038}, {400063, 400064, 1042}, {400065, 400068, 1044}, {400076, 400076, 1056},
      {400077, 400077, 1057}, {400081, 400081, 1061}, {400086, 400086, 1064}, {400087, 400087, 1066},
      {400106, 400108, 1083}, {400109, 400113, 1087}, {400147, 400148, 1074}, {400174, 400174, 1016},
      {400175, 400175, 1029}, {400178, 400178, 1086}, {400179, 400179, 1101},
  };
  for (const Pair& pair : pairs) {
    for (std::int32_t key = pair.first; key <= pair.last; ++key) {
      EXPECT_EQ(number(key), value(pair.binary + key - pair.first)) << key;
    }
  }
  EXPECT_THAT(doubles(400078, 6).values, ElementsAre(10, 11, 12, 1, 2, 3));
  EXPECT_THAT(doubles(400082, 6).values, Each(value(1062)));
  EXPECT_THAT(doubles(400084, 6).values, Each(value(1063)));
  EXPECT_THAT(doubles(400085, 6).values, Each(value(1065)));
  EXPECT_EQ(doubles(400176, 3).status, 0);
  EXPECT_THAT(doubles(400176, 3).values, ElementsAre(7, 8, 9));
  EXPECT_THAT(doubles(200161, 3).values, ElementsAre(1, 2, 3));
  EXPECT_THAT(doubles(200170, 3).values, ElementsAre(1, 2, 3));
  EXPECT_THAT(doubles(200163, 3).values, ElementsAre(4, 5, 6));
  EXPECT_EQ(number(400150), value(1032) + value(1064));
  EXPECT_EQ(integer(200000), 1);
  EXPECT_EQ(integer(200001), 2010);
  EXPECT_EQ(integer(200018), 77);
  EXPECT_EQ(integer(200019), 2);
  EXPECT_EQ(integer(200153), 4);
  EXPECT_THAT(integers(200159).values, ElementsAre(41));
  EXPECT_TRUE(logicals(100007).values[0]);
  EXPECT_TRUE(logicals(100008).values[0]);
  EXPECT_FALSE(logicals(100010).values[0]);
  EXPECT_TRUE(logicals(100054).values[0]);
  std::array<char, 20> title;
  std::int32_t count = 0;
  EXPECT_EQ(status_of(trj_cvalue_, handle_, 2, title, 20, count), 0);
  EXPECT_EQ(std::string_view(title.data(), title.size()), "a title line        ");
}

TEST_F(Values, what_the_file_lacks_is_told_by_its_code) {
  write_and_open({});
  EXPECT_EQ(integers(200152).status, 50014);
  EXPECT_EQ(integers(200155).status, 50014);
  EXPECT_EQ(integers(200157).status, 50014);
  for (const std::int32_t key : {400100, 400114, 400154, 400173, 200172, 400018, 1, 400151 + 1000}) {
    EXPECT_EQ(doubles(key, 9).status, 50005) << key;
  }
  for (const std::int32_t key : {200083, 200135, 200164, 200165, 200166, 200167, 200168, 200177, 200002}) {
    EXPECT_EQ(integers(key, 9).status, 50005) << key;
  }
  EXPECT_EQ(logicals(100009).status, 50005);
  EXPECT_EQ(doubles(400151).status, 50011);
  ASSERT_EQ(read(1), 0);
  EXPECT_EQ(doubles(200163, 3).status, 50005) << "no velocities in this frame";
  EXPECT_EQ(doubles(400180, 3).status, 50005);
  const auto cell = doubles(400078, 5);
  EXPECT_EQ(cell.status, 50008);
  EXPECT_EQ(cell.count, 6);
  float real = 0;
  std::int32_t count = 0;
  EXPECT_EQ(status_of(trj_rvalue_, handle_, 400017, std::span(&real, 1), count), 1);
  EXPECT_EQ(doubles(400017).status, 0);
}

TEST_F(Values, the_cell_comes_in_all_its_forms) {
  const double a = std::sqrt(10 * 10 + 3 * 3 + 2 * 2.0), b = std::sqrt(11 * 11 + 1.0);
  write_and_open({});
  EXPECT_THAT(doubles(400105, 9).values, ElementsAre(10, 3, 2, 0, 11, 1, 0, 0, 12));
  EXPECT_THAT(doubles(400149, 6).values,
              ElementsAre(DoubleNear(a, 1e-12), DoubleNear(b, 1e-12), 12, DoubleNear(std::acos(1 / b), 1e-12),
                          DoubleNear(std::acos(2 / a), 1e-12), DoubleNear(std::acos((33 + 2) / (a * b)), 1e-12)));
  write_and_open({}, 2);
  EXPECT_THAT(doubles(400149, 6).values, ElementsAre(1, DoubleNear(b, 1e-12), 12, DoubleNear(std::acos(1 / b), 1e-12),
                                                     DoubleNear(M_PI / 2, 1e-12), DoubleNear(M_PI / 2, 1e-12)));
  EXPECT_NEAR(number(400151), 11 * 12, 1e-10);
  write_and_open({}, 1);
  EXPECT_THAT(doubles(400149, 6).values, ElementsAre(1, 1, 12, DoubleNear(M_PI / 2, 1e-12), DoubleNear(M_PI / 2, 1e-12),
                                                     DoubleNear(M_PI / 2, 1e-12)));
  EXPECT_EQ(doubles(400151).status, 50011);
  write_and_open({}, 0);
  EXPECT_THAT(doubles(400105, 9).values, Each(0));
  EXPECT_EQ(doubles(400149, 6).status, 50010);
  EXPECT_EQ(doubles(400078, 6).status, 50010);
}

TEST_F(Values, the_conserved_energy_has_the_terms_of_its_ensemble) {
  constexpr double R = 0.00198717;
  const auto v = [](std::int32_t key) { return value(key); };
  const double half_kT = 0.5 * v(1004) * R;
  const double cell = v(1064) + 3 * v(1056) * R;
  struct Case {
    Integers flags;
    double dof_free, per_dof, logarithm;
  };
  const Case cases[] = {
      {{}, 0, 0, 0},
      {{3003}, v(1064) + 0.00596151 * v(1056), 0, 0},
      {{3007}, 0, 0, 0},
      {{3002}, 0, v(1055) * v(1053) * v(1053) + 2 * v(1052), 0},
      {{3002, 3005}, 0, v(1051) * v(1050) * v(1050), std::log(v(1048))},
      {{3003, 3007}, cell, 0, 0},
      {{3003, 3006}, cell, v(1069) * v(1068) * v(1068) + 2 * v(1067), 0},
      {{3003, 3006, 3005}, cell, v(1069) * v(1068) * v(1068), std::log(v(1067))},
  };
  for (const Case& c : cases) {
    write_and_open(c.flags, 3);
    const double dof = integer(200145);
    const double expected = v(1032) + c.dof_free + (dof * c.per_dof + (dof + 1) * 2 * c.logarithm) * half_kT;
    EXPECT_NEAR(number(400144), expected, 1e-9 * std::abs(expected));
  }
  write_and_open({3002, 3005, 3003});
  const auto unknown = doubles(400144);
  EXPECT_EQ(unknown.status, 0);
  EXPECT_THAT(unknown.values, ElementsAre(-7)) << "left alone";
}

TEST_F(FrontEnd, frames_are_read_from_one_on_and_the_end_rewinds) {
  WrittenTrajectory trajectory(1, {1});
  for (const double time : {0.5, 1.5, 2.5}) trajectory.set(1000, {time}).set(1071, {time, 0, 0}).frame();
  ASSERT_EQ(open(trajectory.path()), 0);
  EXPECT_EQ(doubles(400017).status, 50517) << "no frame has been read";
  EXPECT_EQ(doubles(200160, 3).status, 50517);
  for (const std::int32_t frame : {1, 2, 3, 2}) {
    EXPECT_EQ(read(frame), 0);
    EXPECT_EQ(trj_i_.trj_current_frame, frame);
    EXPECT_EQ(number(400017), frame - 0.5);
  }
  EXPECT_EQ(read(3), 0);
  EXPECT_EQ(read(4), 50004);
  EXPECT_EQ(trj_i_.trj_current_frame, 0);
  EXPECT_EQ(read(1), 0);
  EXPECT_EQ(read(9), 50003);
  EXPECT_EQ(read(-1), 50003);
}

TEST_F(FrontEnd, a_frame_that_is_cut_is_a_read_error) {
  WrittenTrajectory trajectory(1, {1});
  trajectory.set(1071, {1, 2, 3}).frame().frame();
  const auto size = std::filesystem::file_size(trajectory.path());
  // The last frame is record 1 (500 bytes), record 2 (104) and three of 16.
  for (const std::uintmax_t cut : {1, 7, 16, 48, 100, 104 + 48, 600, 651}) {
    std::filesystem::resize_file(trajectory.path(), size - cut);
    ASSERT_EQ(open(trajectory.path()), 0);
    EXPECT_EQ(read(1), 0);
    EXPECT_EQ(read(2), 50003) << cut;
    EXPECT_EQ(read(1), 0) << cut;
  }
  std::filesystem::resize_file(trajectory.path(), size - 652);
  ASSERT_EQ(open(trajectory.path()), 0);
  EXPECT_EQ(read(1), 0);
  EXPECT_EQ(read(2), 50004);
}

TEST_F(FrontEnd, fixed_atoms_come_from_the_model_behind_the_movable_ones) {
  WrittenTrajectory trajectory(5, {9, 3});
  trajectory.set(1071, {1, 2, 3, 4, 5, 6}).set(1072, {7, 7, 7, 8, 8, 8}).frame();
  ASSERT_EQ(open(trajectory.path()), 0);
  ASSERT_EQ(read(1), 0);
  EXPECT_EQ(doubles(200160, 15).status, 50014);
  ASSERT_EQ(attach({model({3, 5, 9, 2, 7}, {5, 2, 7})}), 0);
  EXPECT_THAT(integers(200152, 5).values, ElementsAre(9, 3, 5, 2, 7));
  EXPECT_EQ(integer(200155), 5);
  EXPECT_EQ(integer(200157), 3);
  for (const std::int32_t key : {200160, 200169}) {
    EXPECT_THAT(doubles(key, 15).values, ElementsAre(1, 2, 3, 4, 5, 6, 1.5, 0, 0, 3.5, 0, 0, 4.5, 0, 0));
  }
  EXPECT_THAT(doubles(200162, 15).values, ElementsAre(7, 7, 7, 8, 8, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0));
  const auto some = doubles(200162, 10);
  EXPECT_EQ(some.status, 50008);
  EXPECT_EQ(some.count, 15);
  EXPECT_THAT(some.values, ElementsAre(7, 7, 7, 8, 8, 8, 0, 0, 0, -7));
  const auto few = doubles(200171, 4);
  EXPECT_EQ(few.status, 50008);
  EXPECT_THAT(few.values, ElementsAre(7, 7, 7, 8));
  const auto positions = doubles(200160, 7);
  EXPECT_EQ(positions.status, 50008);
  EXPECT_THAT(positions.values, ElementsAre(1, 2, 3, 4, 5, 6, 1.5));
}

TEST_F(FrontEnd, a_model_that_does_not_fit_is_refused) {
  struct Case {
    const char* what;
    Integers trajectory, model, fixed;
    std::int32_t type;
  };
  const Case cases[] = {
      {"too few atoms", {1, 2}, {1, 2, 3}, {3}, 0},
      {"another periodicity", {1, 2}, {1, 2, 3, 4}, {3, 4}, 100},
      {"a movable atom that the trajectory lacks", {1, 2}, {1, 2, 3, 4}, {3}, 0},
      {"an atom that the model lacks", {1, 9}, {1, 2, 3, 4}, {2, 3, 4}, 0},
      {"an atom named twice", {1, 1}, {1, 2, 3, 4}, {2, 3, 4}, 0},
      {"an atom named twice, and a movable one missing", {1, 1}, {1, 2, 3, 4}, {3, 4}, 0},
  };
  for (const Case& c : cases) {
    core.messages.clear();
    WrittenTrajectory trajectory(4, c.trajectory);
    trajectory.set(1071, Doubles(6)).frame();
    ASSERT_EQ(open(trajectory.path()), 0);
    EXPECT_EQ(attach({model(c.model, c.fixed, c.type)}), 50015) << c.what;
    EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_ERROR_112")) << c.what;
    EXPECT_EQ(integers(200152, 4).status, 50014) << c.what;
  }
  core.messages.clear();
  EXPECT_EQ(attach({1, 2}), 50015);
  EXPECT_THAT(core.messages, ElementsAre("PATHSTAT_ERROR_111"));
  EXPECT_EQ(attach({}), 50015);
  EXPECT_EQ(core.messages.size(), 1u);
}

}  // namespace
}  // namespace pathstat
