#include "volumes/volume_file.h"

#include <unistd.h>

#include "scratch_folder.h"
#include "testing.h"
#include "volumes/plain_volume.h"
#include "volumes/volume_bricks.h"
#include "volumes/volume_frame.h"

namespace pathstat {
namespace {

using Floats = std::vector<float>;

struct Opened {
  std::int32_t unit = -7, type = -7, kind = -7, nx = -7, ny = -7, nz = -7, status = -7;
  float min = -7, max = -7;
  FloatVector origin{}, spacing{};
};

class VolumeFile : public testing::Test {
 protected:
  ~VolumeFile() override {
    std::int32_t status = 0;
    if (open_.unit > 0) kvA_VOL_CloseVolume(open_.unit, status);
  }

  std::string read_file() const { return content_of(path); }
  void write_file(const std::string& bytes) const { std::ofstream(path, std::ios::binary) << bytes; }

  Opened& open() {
    auto& o = open_;
    kvA_VOL_OpenVolume(path, o.unit, o.type, o.kind, o.nx, o.ny, o.nz, o.min, o.max, o.origin, o.spacing, o.status);
    return o;
  }

  std::int32_t create(const PlainVolume& v, std::int32_t& unit) {
    std::int32_t status = -7;
    const bool given = v.titles != PlainVolume{}.titles;
    kvA_VOL_CreateVolume(path, unit, v.type, v.min, v.max, v.origin, v.n[0], v.n[1], v.n[2], v.frame < 1, v.spacing,
                         given ? v.titles : std::vector<std::string>{}, v.kind, status);
    return status;
  }
  void write(const PlainVolume& v) {
    std::int32_t unit = 0;
    ASSERT_EQ(create(v, unit), 0);
    kvA_VOL_WriteAll(unit, v.values, v.offsets);
    ASSERT_EQ(status_of(kvA_VOL_CloseVolume, unit), 0);
    ASSERT_EQ(unit, 0);
  }

  const ScratchFolder folder;
  std::string path = folder.file("volume.mbk");

 private:
  Opened open_;
};

PlainVolume random_volume(int type, int kind, std::array<int, 3> n, std::mt19937& random) {
  PlainVolume v;
  v.type = type, v.kind = kind, v.n = n;
  v.min = -2, v.max = 3, v.origin = {10, -20, 30}, v.spacing = {0.5, 0.25, 1};
  std::uniform_real_distribution<float> value(-2.5, 3.5), offset(-1, 1);
  for (std::size_t k = 0; k < v.points(); ++k) v.values.push_back(value(random));
  for (std::size_t k = 0; k < 3 * v.points(); ++k) v.offsets.push_back(offset(random));
  return v;
}

TEST_F(VolumeFile, has_these_bytes_for_two_points_an_axis) {
  PlainVolume v;
  v.n = {2, 2, 2}, v.max = 127, v.origin = {1, 0, 0}, v.spacing = {2, 2, 2};
  v.values = {0, 1, 2, 3, 4, 5, 126.5, 500};
  write(v);
  const auto bytes = read_file();
  ASSERT_EQ(bytes.size(), 5u * 216);
  EXPECT_EQ(bytes.substr(0, 12), std::string("mbk_1.0\0\0\0\2B", 12));
  EXPECT_EQ(bytes.substr(216, 50), "BRICK map produced using the VL VOL routines      ");
  EXPECT_EQ(bytes.substr(432, 60), "HEADERENERGY              S1 0.100000E+01-0.000000E+00      ");
  std::string header;
  for (const std::uint32_t word :
       {2U, 2U,          2U,          2U,          1U,          1U, 1U,          1U,          1U,
        2U, 1U,          2U,          0x3f800000U, 0U,          0U, 0x40800000U, 0x40800000U, 0x40800000U,
        0U, 0x80000000U, 0x3f800000U, 6U,          0xffffffffU, 0U, 0x42fe0000U}) {
    for (const int shift : {24, 16, 8, 0}) header += static_cast<char>(word >> shift & 255);
  }
  EXPECT_EQ(bytes.substr(648, 100), header);
  std::string brick(216, '\0');
  brick[1] = 1, brick[6] = 2, brick[7] = 3, brick[36] = 4, brick[37] = 5, brick[42] = 127, brick[43] = 127;
  EXPECT_EQ(bytes.substr(864), brick);
}

TEST_F(VolumeFile, has_the_bytes_of_an_independent_writer_for_all_types_and_kinds) {
  std::mt19937 random(20);
  for (const int type : {1, 2, 4}) {
    for (const int kind : {1, 2}) {
      for (const std::array<int, 3> n : {std::array{1, 6, 7}, {11, 2, 12}, {5, 13, 3}}) {
        auto v = random_volume(type, kind, n, random);
        if (n[0] == 5) v.titles = {"one", "two"};
        write_file(std::string(50000, 'x'));
        write(v);
        EXPECT_EQ(read_file(), v.bytes()) << "type " << type << ", kind " << kind << ", " << n[0];
      }
    }
  }
}

TEST_F(VolumeFile, gives_back_what_an_independent_writer_wrote) {
  std::mt19937 random(21);
  for (const int type : {1, 2, 4}) {
    for (const int kind : {1, 2}) {
      const auto v = random_volume(type, kind, {13, 7, 12}, random);
      write_file(v.bytes());
      const auto& o = open();
      ASSERT_EQ(o.status, 0);
      EXPECT_THAT((std::array{o.type, o.kind, o.nx, o.ny, o.nz}), ElementsAre(type, kind, 13, 7, 12));
      EXPECT_EQ(o.min, v.min);
      EXPECT_EQ(o.max, v.max);
      EXPECT_EQ(o.origin, v.origin);
      EXPECT_EQ(o.spacing, v.spacing);
      const double step = type == 4 ? 1e-6 : 0.51 * 5 / v.steps(), offset_step = type == 4 ? 1e-6 : 2.01 / v.steps();
      const auto clamped = [&](std::size_t at) { return std::clamp(v.values[at], v.min, v.max); };

      FloatVector low{11, -19.5, 33}, high{15, -19, 37};
      std::int32_t count = 0, status = 0;
      kvA_VOL_SizeRegion(o.unit, low, high, count, 0, status);
      EXPECT_EQ(count, 9 * 3 * 5);
      Floats values(v.points()), places(3 * v.points()), offsets(3 * v.points());
      EXPECT_EQ(status_of(kvA_VOL_GetRegion, o.unit, low, high, count, values, places, offsets, 0), 0);
      ASSERT_EQ(count, 9 * 3 * 5);
      for (int at = 0; at < count; ++at) {
        const int i = 2 + at % 9, j = 2 + at / 9 % 3, k = 3 + at / 27;
        const auto p = v.point(i, j, k), q = static_cast<std::size_t>(at);
        ASSERT_NEAR(values[q], clamped(p), step);
        const std::array grid{10 + 0.5 * i, -20 + 0.25 * j, 30.0 + k};
        for (std::size_t axis = 0; axis < 3; ++axis) {
          const double moved = kind == 2 ? offsets[3 * q + axis] : 0;
          if (kind == 2) {
            ASSERT_NEAR(moved, v.offsets[3 * p + axis], offset_step);
          }
          ASSERT_NEAR(places[3 * q + axis], grid[axis] + moved, 1e-5);
        }
      }
      EXPECT_EQ(values[static_cast<std::size_t>(count)], 99999.0f);

      float from = 0, to = 1;
      std::int32_t expected = 0;
      for (std::size_t at = 0; at < v.points(); ++at) {
        const double stored = type == 4
                                  ? double(clamped(at))
                                  : std::round((double(clamped(at)) + v.offset()) * v.scale()) / v.scale() - v.offset();
        expected += float(stored) >= from && float(stored) <= to;
      }
      kvA_VOL_SizeValues(o.unit, from, to, count, 0, status);
      EXPECT_EQ(count, expected);
      kvA_VOL_GetValues(o.unit, from, to, count, values, places, offsets, 0, status);
      EXPECT_EQ(count, expected);
      for (std::size_t at = 0; at < static_cast<std::size_t>(count); ++at)
        ASSERT_TRUE(values[at] >= 0 && values[at] <= 1);

      const Floats points{10.2f, -20, 30, 16, -18.5f, 41, 12.5f, -18.8f, 34.6f};
      EXPECT_EQ(status_of(kvA_VOL_GetPoints, o.unit, points, values, places, offsets), 0);
      EXPECT_NEAR(values[0], clamped(v.point(0, 0, 0)), step);
      EXPECT_NEAR(values[1], clamped(v.point(12, 6, 11)), step);
      EXPECT_NEAR(values[2], clamped(v.point(5, 5, 5)), step);
      std::int32_t unit = o.unit;
      kvA_VOL_CloseVolume(unit, status);
    }
  }
}

TEST_F(VolumeFile, clips_boxes_and_ranges) {
  PlainVolume v;
  v.n = {4, 4, 4}, v.values = Floats(64, 0.5);
  write_file(v.bytes());
  const auto& o = open();
  FloatVector low{-5, 1, 2}, high{1, 9, 2};
  std::int32_t count = 0, status = 0;
  kvA_VOL_SizeRegion(o.unit, low, high, count, 1, status);
  EXPECT_EQ(count, 2 * 3 * 1);
  EXPECT_THAT(low, ElementsAre(0, 1, 2));
  EXPECT_THAT(high, ElementsAre(1, 3, 2));
  Floats values(64);
  for (const FloatVector& outside : {FloatVector{3.5, 0, 0}, FloatVector{0, -3, 0}, FloatVector{NAN, 0, 0}}) {
    FloatVector from = outside, to = outside;
    kvA_VOL_GetRegion(o.unit, from, to, count, values, {}, {}, 0, status);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(status, 2);
  }
  float from = -1, to = 0.75;
  kvA_VOL_SizeValues(o.unit, from, to, count, 1, status);
  EXPECT_EQ(count, 64);
  EXPECT_EQ(from, 0.0f);
  from = 2, to = 3;
  kvA_VOL_SizeValues(o.unit, from, to, count, 1, status);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(status, 2);
  EXPECT_EQ(status_of(kvA_VOL_SizeRegion, o.unit + 1, low, high, count, 1), 1);
  kvA_VOL_GetPoints(o.unit, Floats{0, 0, 0, 9, 0, 0}, values, {}, {}, status);
  EXPECT_EQ(status, 2);
  EXPECT_NEAR(values[0], 0.5, 0.01);
  FloatVector all_low{0, 0, 0}, all_high{3, 3, 3};
  kvA_VOL_GetRegion(o.unit, all_low, all_high, count, std::span(values).first(63), {}, {}, 0, status);
  EXPECT_EQ(status, 6);
}

TEST_F(VolumeFile, of_one_value_has_the_scale_1_and_gives_it_back) {
  PlainVolume v;
  v.n = {7, 6, 1}, v.min = v.max = 4.25, v.values = Floats(42, 4.25);
  write(v);
  const auto& o = open();
  Floats values(42);
  FloatVector low{0, 0, 0}, high{6, 5, 0};
  std::int32_t count = 0, status = 0;
  kvA_VOL_GetRegion(o.unit, low, high, count, values, {}, {}, 0, status);
  EXPECT_EQ(count, 42);
  EXPECT_THAT(values, Each(4.25f));
}

TEST_F(VolumeFile, of_too_many_points_or_an_unknown_type_is_refused_with_a_line) {
  struct Case {
    int type, kind;
    std::array<int, 3> n;
    std::int32_t status;
    const char* text;
  };
  for (const auto& [type, kind, n, status, text] : {
           Case{1, 1, {202, 2, 2}, 1, " A volume has 1 to 201 points on an axis, not 202 x 2 x 2\n"},
           Case{1, 1, {2, 0, 2}, 1, " A volume has 1 to 201 points on an axis, not 2 x 0 x 2\n"},
           Case{3, 1, {2, 2, 2}, 2, " Unrecognised grid type 3\n"},
           Case{1, 3, {2, 2, 2}, 1, " Unrecognised volume kind 3\n"},
       }) {
    PlainVolume v;
    v.type = type, v.kind = kind, v.n = n;
    std::int32_t unit = -7;
    EXPECT_EQ(stdout_of([&] { EXPECT_EQ(create(v, unit), status); }), text);
    EXPECT_EQ(unit, 0);
  }
  path = "/nowhere/at.all";
  PlainVolume v;
  v.n = {2, 2, 2};
  std::int32_t unit = -7;
  EXPECT_EQ(stdout_of([&] { EXPECT_EQ(create(v, unit), 5); }), " Problems opening file for bricked map output\n");
}

TEST_F(VolumeFile, that_is_damaged_is_refused_with_its_status) {
  PlainVolume v;
  v.type = 2, v.n = {7, 7, 7}, v.values = Floats(343, 0);
  const auto good = v.bytes();
  const auto changed = [&](std::size_t at, const std::string& bytes) {
    return std::string(good).replace(at, bytes.size(), bytes);
  };
  constexpr std::size_t header = 3 * 432;
  const std::pair<std::string, std::int32_t> cases[]{
      {changed(0, "mbk_9.9"), 0},
      {changed(0, "mbx"), 1},
      {changed(11, "Q"), 2},
      {changed(7, std::string("\xff\0\0\0", 4)), 3},
      {changed(7, std::string("\x7f\xff\xff\xff", 4)), 3},
      {changed(header + 4, std::string("\0\0\0\xca", 4)), 3},
      {changed(header + 16, std::string("\0\0\0\3", 4)), 3},
      {changed(header + 36, std::string("\0\0\0\6", 4)), 3},
      {changed(header + 88, std::string("\0\0\0\7", 4)), 3},
      {changed(header + 84, std::string("\0\0\0\0", 4)), 3},
      {changed(header + 60, std::string("\0\0\0\0", 4)), 3},
      {good.substr(0, 900), 3},
      {good.substr(0, 100), 4},
      {"", 4},
  };
  for (const auto& [bytes, status] : cases) {
    write_file(bytes);
    testing::internal::CaptureStdout();
    auto& opened = open();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(opened.status, status) << bytes.size();
    EXPECT_EQ(opened.unit > 0, status == 0);
    std::int32_t ignored = 0;
    kvA_VOL_CloseVolume(opened.unit, ignored);
  }
  path = "/nowhere/at.all";
  EXPECT_EQ(open().status, 5);
}

TEST_F(VolumeFile, with_bricks_cut_off_gives_the_others) {
  PlainVolume v;
  v.n = {11, 2, 2}, v.values = Floats(44, 1);
  write_file(v.bytes().substr(0, 5 * 216));
  const auto& o = open();
  Floats values(44);
  FloatVector low{0, 0, 0}, high{10, 1, 1};
  std::int32_t count = 0, status = 0;
  EXPECT_EQ(stdout_of([&] { kvA_VOL_GetRegion(o.unit, low, high, count, values, {}, {}, 0, status); }),
            "Error reading brick no          6 in ghbmd\n");
  EXPECT_EQ(count, 24);
  EXPECT_EQ(values[5], 1.0f);
  EXPECT_EQ(values[6], 99999.0f);
}

TEST_F(VolumeFile, has_only_bricks_of_a_box_marked) {
  PlainVolume v;
  v.n = {16, 7, 7}, v.values = Floats(v.points(), 0);
  write_file(v.bytes());
  open();
  const auto marked = [&](std::int32_t mode, const FloatVector& low, const FloatVector& high) {
    std::int32_t status = 0;
    kva_vol_sbfcim_(mode, low, high, status);
    std::vector<std::size_t> flags;
    for (std::size_t k = 0; k < volumedata_.size(); ++k) {
      if (volumedata_[k] != 0) flags.push_back(k);
    }
    return flags;
  };
  EXPECT_EQ(marked(1, {}, {}).size(), 3u * 2 * 2);
  EXPECT_THAT(marked(4, {6.5, 0, 0}, {9.5, 1, 1}), ElementsAre(1));
  EXPECT_THAT(marked(2, {6.5, 0, 0}, {12, 6, 1}), ElementsAre(1, 2, 41, 42));
  EXPECT_TRUE(marked(4, {-5, 0, 0}, {-2, 1, 1}).empty());
  std::int32_t status = 0, position = 0;
  kva_vol_sbfcim_(7, {}, {}, status);
  EXPECT_EQ(status, 1);
  const std::array<std::int32_t, 4> list{5, 7, 7, 9};
  index_list_(list, 7, position);
  EXPECT_EQ(position, 2);
  index_list_(list, 8, position);
  EXPECT_EQ(position, 0);
}

// Frames.

TEST(VolumeFrames, keep_lengths_and_angles_of_the_cell) {
  struct Case {
    std::int32_t frame;
    std::array<float, 6> cell;
  };
  const std::array<float, 6> skew{7, 8, 11, 75, 95, 112}, upright{3, 4, 5, 90, 90, 90};
  const std::array<float, 6> hexagonal{4, 4, 9, 90, 90, 120};
  for (const auto& [frame, cell] : {Case{1, skew}, Case{2, skew}, Case{3, skew}, Case{5, skew}, Case{6, skew},
                                    Case{1, upright}, Case{6, upright}, Case{4, hexagonal}, Case{6, hexagonal}}) {
    volorthog_ = {};
    volorthog_.a = cell[0], volorthog_.b = cell[1], volorthog_.c = cell[2];
    volorthog_.alpha = cell[3], volorthog_.beta = cell[4], volorthog_.gamma = cell[5];
    volorthog_.frame = frame;
    ASSERT_EQ(status_of(kva_vol_corfrm_), 0) << frame;
    const auto& m = volorthog_.to_space;
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j) {
        const double product =
            double(m[3 * i]) * m[3 * j] + double(m[3 * i + 1]) * m[3 * j + 1] + double(m[3 * i + 2]) * m[3 * j + 2];
        const double cosine = i == j ? 1 : std::cos(double(cell[6 - i - j]) * std::numbers::pi / 180);
        EXPECT_NEAR(product, double(cell[i]) * cell[j] * cosine, 2e-5 * cell[i] * cell[j]) << frame;
        if (frame == 6) {
          EXPECT_NEAR(m[i + 3 * j], m[j + 3 * i], 1e-6);
        }
      }
    }
  }
  for (const std::int32_t frame : {0, 7}) {
    volorthog_.frame = frame;
    EXPECT_EQ(status_of(kva_vol_corfrm_), 1);
  }
}

TEST(VolumeFrames, come_from_eigenvectors_that_give_the_matrix_back) {
  std::mt19937 random(22);
  std::normal_distribution<double> normal;
  for (int round = 0; round < 1000; ++round) {
    Matrix3 m{};
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = i; j < 3; ++j) m[i + 3 * j] = m[j + 3 * i] = round % 7 == int(i + j) ? 0 : normal(random);
    }
    Vector3 values{};
    Matrix3 vectors{};
    ASSERT_EQ(status_of(kva_vol_house_, m, values, vectors), 0);
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j) {
        double back = 0, product = 0;
        for (std::size_t k = 0; k < 3; ++k) {
          back += values[k] * vectors[3 * k + i] * vectors[3 * k + j];
          product += vectors[3 * i + k] * vectors[3 * j + k];
        }
        ASSERT_NEAR(back, m[i + 3 * j], 1e-12);
        ASSERT_NEAR(product, i == j ? 1 : 0, 1e-12);
      }
    }
  }
}

TEST(VolumeFrames, tell_a_search_that_fails) {
  Matrix3 root{};
  std::int32_t status = 0;
  EXPECT_EQ(stdout_of([&] {
              kva_vol_xtlaxs_({NAN, 1, 1}, {80, 80, 80}, root, status);
            }),
            " XTLAXS> HOSE: FAILED TO CONVERGE ON ROOT NUMBER     1\n");
  EXPECT_EQ(status, 1);
}

/// A grid on a skew cell, through the whole file.
TEST_F(VolumeFile, on_a_skew_cell_is_read_where_its_points_stand) {
  std::mt19937 random(23);
  auto v = random_volume(4, 1, {6, 5, 4}, random);
  v.frame = 1, v.cell = {6, 5, 8, 90, 90, 120};
  volinfo_.frame = v.frame, volinfo_.cell = v.cell;
  write(v);
  EXPECT_EQ(read_file(), v.bytes());
  const auto& o = open();
  ASSERT_EQ(o.status, 0);
  EXPECT_THAT(o.spacing, ElementsAre(1, 1, 2));
  EXPECT_THAT(o.origin, ElementsAre(6, 5, 8));
  const float root = std::sqrt(3.0f) / 2;
  Floats values(1), place(3);
  std::int32_t status = 0;
  kvA_VOL_GetPoints(o.unit, Floats{3 - 0.5f * 2, root * 2, 6}, values, place, {}, status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(values[0], std::clamp(v.values[v.point(3, 2, 3)], v.min, v.max));
  EXPECT_NEAR(place[0], 2, 1e-5);
  EXPECT_NEAR(place[1], 2 * root, 1e-5);
}

}  // namespace
}  // namespace pathstat
