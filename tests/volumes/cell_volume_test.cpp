#include "volumes/cell_volume.h"

#include "scratch_folder.h"
#include "testing.h"
#include "volumes/volume_file.h"

namespace pathstat {
namespace {

class CellVolume : public testing::Test {
 protected:
  ~CellVolume() override {
    std::int32_t status = 0;
    if (unit_ > 0) kvA_VOL_CloseVolume(unit_, status);
  }
  std::int32_t open() {
    std::int32_t type = 0, kind = 0, nx = 0, ny = 0, nz = 0, status = 0;
    float min = 0, max = 0;
    FloatVector origin{}, spacing{};
    kvA_VOL_OpenVolume(path_, unit_, type, kind, nx, ny, nz, min, max, origin, spacing, status);
    return status;
  }
  const ScratchFolder folder_;
  const std::string path_ = folder_.file("cell.mbk");
  std::int32_t unit_ = 0;
};

class CellVolumeOf : public CellVolume, public testing::WithParamInterface<Matrix3> {};

TEST_P(CellVolumeOf, has_each_point_where_the_cell_says) {
  CellField field{{4, 7, 3}, GetParam(), std::vector<float>(4 * 7 * 3)};
  std::iota(field.values.begin(), field.values.end(), 1.0F);
  bool turned = true;
  std::int32_t status = -7;
  ASSERT_EQ(status_of(write_cell_volume, path_, 4, field, std::vector<std::string>{"a field"}, turned), 0);
  EXPECT_FALSE(turned);
  EXPECT_FALSE(std::filesystem::exists(path_ + ".part"));
  ASSERT_EQ(open(), 0);
  for (int k = 0; k < 3; ++k) {
    for (int j = 0; j < 7; ++j) {
      for (int i = 0; i < 4; ++i) {
        std::vector<float> place(3), value(1), found(3);
        for (std::size_t axis = 0; axis < 3; ++axis) {
          place[axis] = static_cast<float>(field.cell[axis] * i / 4 + field.cell[3 + axis] * j / 7 +
                                           field.cell[6 + axis] * k / 3);
        }
        kvA_VOL_GetPoints(unit_, place, value, found, {}, status);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(value[0], field.values[static_cast<std::size_t>((k * 7 + j) * 4 + i)]);
        for (std::size_t axis = 0; axis < 3; ++axis) EXPECT_NEAR(found[axis], place[axis], 2e-3);
      }
    }
  }
}
INSTANTIATE_TEST_SUITE_P(cells, CellVolumeOf,
                         testing::Values(Matrix3{6, 0, 0, 0, 7, 0, 0, 0, 8},        // upright
                                         Matrix3{6, 1, -2, 0, 7, 3, 0, 0, 8},       // c along z, b beside it
                                         Matrix3{6, 0, 0, 1, 7, 0, -2, 3, 8},       // a along x, b beside it
                                         Matrix3{6, 1, 0.5, 1, 7, 2, 0.5, 2, 8}));  // symmetric

TEST_F(CellVolume, tells_of_a_cell_that_stands_otherwise) {
  const double c = std::cos(0.3), s = std::sin(0.3);
  CellField field{{2, 2, 2}, {6 * c, 6 * s, 0, -7 * s, 7 * c, 0, 0, 0, 8}, std::vector<float>(8, 1)};
  bool turned = false;
  std::int32_t status = -7;
  write_cell_volume(path_, 2, field, {}, turned, status);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(turned);
}

TEST_F(CellVolume, leaves_what_stands_there_when_it_cannot_be_written) {
  CellField field{{202, 2, 2}, {6, 0, 0, 0, 7, 0, 0, 0, 8}, std::vector<float>(808, 1)};
  bool turned = false;
  std::int32_t status = 0;
  testing::internal::CaptureStdout();
  write_cell_volume(path_, 4, field, {}, turned, status);
  EXPECT_EQ(status, 1);
  field.points = {2, 2, 2}, field.values.resize(8);
  write_cell_volume("/nowhere/at.all", 4, field, {}, turned, status);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(status, 5);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

}  // namespace
}  // namespace pathstat
