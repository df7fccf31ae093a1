#include "process/desk_with_process.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

using Series = std::vector<double>;

constexpr double gas = 0.00198717, pa_a3_per_kcal = 6.9478e9, pa_of_atmosphere = 101325;

double mean(const Series& of, std::size_t count) {
  double sum = 0;
  for (std::size_t k = 0; k < count; ++k) sum += of[k];
  return sum / static_cast<double>(count);
}

double covariance(const Series& a, const Series& b, std::size_t count) {
  Series products(count);
  for (std::size_t k = 0; k < count; ++k) products[k] = (a[k] - mean(a, count)) * (b[k] - mean(b, count));
  return mean(products, count);
}

/// The results that are printed of these quantities, in their order.
Series calculated(DeskWithProcess& desk, const char* quantities) {
  desk.messages.clear();
  EXPECT_EQ(desk.run("SELECT_FLUCTUATIONS", quantities), 0);
  EXPECT_EQ(desk.run("CALCULATE_FLUCTUATIONS"), 0);
  Series numbers;
  for (const auto& message : desk.messages) {
    if (message.key != "PATHSTAT_MSG_32" && message.key != "PATHSTAT_MSG_33") continue;
    for (const auto& argument : message.arguments) {
      if (std::holds_alternative<double>(argument)) numbers.push_back(std::get<double>(argument));
    }
  }
  return numbers;
}

void expect_near(const Series& found, const Series& wanted) {
  ASSERT_EQ(found.size(), wanted.size());
  for (std::size_t k = 0; k < found.size(); ++k) EXPECT_NEAR(found[k], wanted[k], 1e-5 * std::abs(wanted[k])) << k;
}

/// The run's columns from the log of the engine.
struct Log {
  explicit Log(const std::string& example) : name(example), count(column("Temp").size()) {}
  Series column(const char* heading, double factor = 1) const {
    Series found = log_column(name, heading);
    for (double& value : found) value *= factor;
    return found;
  }
  Series pressure() const { return column("Press", pa_of_atmosphere); }

  std::string name;
  std::size_t count;
};

TEST(FluctuationsOfExamples, at_constant_energy) {
  const Log log("argon");
  DeskWithProcess desk("argon");
  const Series found = calculated(desk, "\"Isometric Heat Capacity (Cv)\" \"Thermal Pressure Coefficient\"");
  const Series potential = log.column("PotEng"), kinetic = log.column("KinEng"), pressure = log.pressure();
  const double rt = gas * mean(log.column("Temp"), log.count), half = 1497 / 2.0, volume = 24389;
  Series cv, gamma;
  for (const auto* energy : {&potential, &kinetic}) {
    cv.push_back(1000 * half * gas / (1 - covariance(*energy, *energy, log.count) / (half * rt * rt)));
    const double sign = energy == &potential ? 1 : -1;
    const double coupling = sign * covariance(pressure, *energy, log.count) * volume / pa_a3_per_kcal / (500 * rt * rt);
    gamma.push_back(2.0 / 3.0 * pa_a3_per_kcal * 1e-12 * cv.back() / volume * (1 + coupling));
  }
  expect_near(found, {gamma[0], gamma[1], cv[0], cv[1]});
}

TEST(FluctuationsOfExamples, at_constant_temperature) {
  const Log log("water");
  DeskWithProcess desk("water");
  const Series found = calculated(desk, "\"Isometric Heat Capacity (Cv)\" \"Thermal Pressure Coefficient\"");
  const Series total = log.column("TotEng"), potential = log.column("PotEng");
  const double t = mean(log.column("Temp"), log.count), rt2 = gas * t * t;
  const double gamma =
      covariance(log.pressure(), potential, log.count) / rt2 + 648 * gas * pa_a3_per_kcal / 6478.545465;
  ASSERT_EQ(found.size(), 3U);
  expect_near({found[0], found[1]}, {gamma * 1e-9, 1000 * covariance(total, total, log.count) / rt2});
  // What the potential energy does not give is R / 2 for each degree of freedom.
  const double configurational = 1000 * covariance(potential, potential, log.count) / rt2;
  EXPECT_NEAR((found[2] - configurational) / (500 * gas), 3 * 648 - 3, 0.01);
}

TEST(FluctuationsOfExamples, at_constant_pressure_as_numbers_and_curves) {
  const Log log("water-npt");
  DeskWithProcess desk("water-npt");
  const Series found =
      calculated(desk, "\"Isobaric Heat Capacity (Cp)\" \"Isothermal Compressibility\" \"Volume Expansivity\"");
  const Series volume = log.column("Volume"), temperature = log.column("Temp");
  // The trajectory's enthalpy is that of the pressure which the run was held at, 1 atm.
  Series enthalpy = log.column("TotEng");
  for (std::size_t k = 0; k < log.count; ++k) enthalpy[k] += pa_of_atmosphere / pa_a3_per_kcal * volume[k];
  const auto expected = [&](std::size_t count) {
    const double t = mean(temperature, count), v = mean(volume, count);
    return Series{1e9 * covariance(volume, volume, count) / (v * gas * t * pa_a3_per_kcal),
                  1000 * covariance(enthalpy, enthalpy, count) / (gas * t * t),
                  covariance(volume, enthalpy, count) / (gas * t * t * v)};
  };
  expect_near(found, expected(log.count));

  ASSERT_EQ(desk.run("RUNNING_AVERAGE_FLUCTUATIONS"), 0);
  EXPECT_THAT(desk.graph_titles(), ElementsAre("Kt", "Cp", "beta"));
  const auto partly = expected(40);
  for (std::size_t q = 0; q < 3; ++q) {
    const auto& curve = desk.data_set(q).points;
    ASSERT_EQ(curve.size(), log.count);
    EXPECT_EQ(curve[0].y, 0.0F);
    EXPECT_NEAR(curve[39].x, 39 * 0.05, 1e-5);
    EXPECT_NEAR(curve[39].y, partly[q], 1e-5 * std::abs(partly[q]));
  }
  ASSERT_EQ(desk.run("BLOCK_WIDTH_NO", "1"), 0);
  desk.take_keys();
  EXPECT_THAT(desk.told("BLOCK_AVERAGE_FLUCTUATIONS"), Pair(1, Contains("PATHSTAT_MSG_35")));
  ASSERT_EQ(desk.run_lines({"BLOCK_WIDTH_NO 80", "BLOCK_INTERVAL_NO 30", "BLOCK_AVERAGE_FLUCTUATIONS"}), 0);
  const auto& blocks = desk.data_set(3).points;
  ASSERT_EQ(blocks.size(), 4U);
  EXPECT_NEAR(blocks[0].y, partly[0], 1e-5 * partly[0]) << "the first window holds half its width";

  ASSERT_EQ(desk.run("LAST_FRAME_NO", "1"), 0);
  EXPECT_EQ(calculated(desk, "\"Isobaric Heat Capacity (Cp)\""), Series{0.0});
  EXPECT_THAT(desk.output, Contains("Fluctuations: the range has one frame, so that every variance is 0"));
}

}  // namespace
}  // namespace pathstat::desk
