#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

#include "trajectory/binary_open.h"

namespace pathstat {
namespace {

using namespace testing_bytes;

struct Column {
  const char* name;
  std::int32_t key;
  std::size_t item;
  double factor;  ///< from the log's unit to that of the file
};

constexpr double gpa_per_atmosphere = 1.01325e-4;
constexpr std::array columns{Column{"time_ps", 1000, 0, 1.0},
                             Column{"Temp", 1001, 0, 1.0},
                             Column{"PotEng", 1006, 0, 1.0},
                             Column{"KinEng", 1034, 0, 1.0},
                             Column{"TotEng", 1032, 0, 1.0},
                             Column{"E_vdwl", 1011, 0, 1.0},
                             Column{"Press", 1036, 0, gpa_per_atmosphere},
                             Column{"Volume", 1037, 0, 1.0},
                             Column{"Pxx", 1065, 0, gpa_per_atmosphere},
                             Column{"Pyz", 1065, 3, gpa_per_atmosphere},
                             Column{"Pxy", 1065, 5, gpa_per_atmosphere},
                             Column{"Lx", 1058, 0, 1.0}};

std::vector<std::string> cells(const std::string& line) {
  std::vector<std::string> all;
  std::istringstream in(line);
  for (std::string cell; std::getline(in, cell, ',');) all.push_back(cell);
  return all;
}

/// The engine's own log says what each frame holds.
class ExampleRun : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(runs, ExampleRun, testing::Values("argon", "water", "water-npt", "butane"),
                         [](const auto& row) { return row.param == "water-npt" ? "water_npt" : row.param; });

TEST_P(ExampleRun, holds_what_the_engine_logged) {
  const std::string base = std::string(EXAMPLES_DIR) + "/" + GetParam() + "/" + GetParam();
  std::int32_t handle = 0, status = -1, count = 0;
  kvA_TRJ_Open(base + ".trj", 100, handle, status);
  ASSERT_EQ(status, 0);
  std::ifstream log(base + ".thermo.csv");
  std::string line;
  ASSERT_TRUE(std::getline(log, line));
  const auto names = cells(line);
  std::int32_t frame = 0;
  while (std::getline(log, line)) {
    const auto row = cells(line);
    kvA_TRJ_ReadFrame(handle, ++frame, status);
    ASSERT_EQ(status, 0) << "frame " << frame;
    for (const auto& column : columns) {
      const auto place = std::ranges::find(names, column.name);
      if (place == names.end()) continue;
      std::array<double, 6> values{};
      kvA_TRJ_ValueDouble(handle, column.key, values, count, status);
      if (status == 50512) continue;  // a run without a cell
      const double logged = std::stod(row[static_cast<std::size_t>(place - names.begin())]) * column.factor;
      ASSERT_NEAR(values[column.item], logged, 1e-9 * std::max(1.0, std::abs(logged)))
          << column.name << " of frame " << frame;
    }
  }
  kvA_TRJ_ReadFrame(handle, frame + 1, status);
  EXPECT_EQ(status, 50519) << "as many frames as rows";
  kvA_TRJ_Close(handle, status);
}

}  // namespace
}  // namespace pathstat
