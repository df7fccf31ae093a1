#include <chrono>
#include <thread>

#include "process/desk_with_process.h"
#include "testing.h"
#include "trajectory/written_trajectory.h"

namespace pathstat::desk {
namespace {

using Vector = std::array<double, 3>;
using Doubles = std::vector<double>;

constexpr double debye = 4.802;

struct Atom {
  const char* element;
  double charge;
  Vector position;
  bool moves;
  int molecule;
  int cells_along_a;  ///< to the rest of its molecule
};

/// A molecule with a net charge which a face of the cell cuts, an ion, a fixed molecule and an atom without a charge.
const std::vector<Atom> atoms{{"O", -0.8, {9.5, 5, 5}, true, 0, 0},  {"H", 0.5, {0.4, 5, 5.5}, true, 0, 1},
                              {"H", 0.5, {9.2, 5.9, 5}, true, 0, 0}, {"Na", 1.0, {3, 3, 3}, true, 1, 0},
                              {"C", 0.3, {7, 1, 1}, false, 2, 0},    {"N", -0.3, {7, 2.2, 1}, false, 2, 0},
                              {"Ar", 0.0, {1, 8, 8}, true, 3, 0}};
const std::vector<std::int32_t> moved_ids{7, 3, 1, 4, 2};  // in the order of the frames

Vector a_vector(int frame) { return {10 + 0.1 * frame, 0.3, -0.2}; }

/// Positions of a frame: atoms that move do so in different directions.
Vector position(std::size_t atom, int frame) {
  Vector p = atoms[atom].position;
  if (atoms[atom].moves) p[atom % 3] += 0.07 * frame * (atom % 2 == 0 ? 1 : -1);
  return p;
}

double time_of(int frame) { return 0.5 + 0.02 * frame; }

std::string column(const char* name, auto text_of) {
  std::string text = std::string(" (A ") + name + " (";
  for (std::size_t k = 0; k < atoms.size(); ++k) text += text_of(k) + " ";
  return text + "))\n";
}

/// The run with its model beside it.
class SmallRun {
 public:
  explicit SmallRun(double (*time)(int) = time_of, double charge_factor = 1, int directions = 3)
      : run_(static_cast<std::int32_t>(atoms.size()), moved_ids, directions) {
    for (int frame = 1; frame <= 12; ++frame) {
      Doubles xyz;
      for (const auto id : moved_ids) {
        for (const double x : position(static_cast<std::size_t>(id - 1), frame)) xyz.push_back(x);
      }
      const Vector a = a_vector(frame);
      run_.set(1000, {time(frame)}).set(1003, {0.001}).set(1071, xyz);
      if (directions > 0) run_.set(1058, {a[0], 10, 10, 0.1, a[2], a[1]});
      run_.frame();
    }
    path_ = run_.path();
    std::ofstream model(path_.substr(0, path_.size() - 3) + "qfx");
    const char* types[] = {"0", "102", "101", "100"};
    model << "(1 Model small\n (A I PeriodicType " << types[directions]
          << ")\n (A V Cell ((10 0.3 -0.2) (0 10 0.1) (0 0 10)))\n"
          << column("I AtomId", [](std::size_t k) { return std::to_string(k + 1); })
          << column("C Element", [](std::size_t k) { return std::string(atoms[k].element); })
          << column("D Charge", [&](std::size_t k) { return std::to_string(charge_factor * atoms[k].charge); })
          << column("V XYZ",
                    [](std::size_t k) {
                      const auto& p = atoms[k].position;
                      return "(" + std::to_string(p[0]) + " " + std::to_string(p[1]) + " " + std::to_string(p[2]) + ")";
                    })
          << column("I Movable", [](std::size_t k) { return std::string(atoms[k].moves ? "1" : "0"); })
          << " (A I Bond (1 2 1 3 5 6))\n)\n";
  }
  const std::string& path() const { return path_; }

 private:
  WrittenTrajectory run_;
  std::string path_;
};

/// The definition: molecules 0, 1, 2 each with their centres, or the listed atoms as one group.
Vector by_definition(int frame, const std::vector<std::size_t>& listed, bool by_molecules) {
  Vector total{};
  for (int molecule = 0; molecule < (by_molecules ? 3 : 1); ++molecule) {
    double plus = 0, minus = 0;
    Vector at_plus{}, at_minus{};
    for (const auto k : listed) {
      const double q = atoms[k].charge;
      if (by_molecules && atoms[k].molecule != molecule) continue;
      for (std::size_t axis = 0; axis < 3; ++axis) {
        const double x = position(k, frame)[axis] + atoms[k].cells_along_a * a_vector(frame)[axis];
        (q > 0 ? at_plus : at_minus)[axis] += q * x;
      }
      (q > 0 ? plus : minus) += q;
    }
    if (plus == 0 || minus == 0) continue;
    const double w = std::min(plus, -minus) * debye;
    for (std::size_t axis = 0; axis < 3; ++axis) total[axis] += (at_plus[axis] / plus - at_minus[axis] / minus) * w;
  }
  return total;
}

struct RunCase {
  const char* kind;
  const char* selection;  ///< none for all atoms
  std::vector<std::size_t> listed;
  bool by_molecules;
};

TEST(Dipole, of_frames_is_that_of_the_definition) {
  const SmallRun run;
  const std::vector<std::size_t> all{0, 1, 2, 3, 4, 5, 6};
  for (const auto& c : {RunCase{"MOLECULES", nullptr, all, true}, RunCase{"ATOMS", nullptr, all, false},
                        RunCase{"MOLECULES", "2-6", {1, 2, 3, 4, 5}, true},
                        RunCase{"MOLECULES", "1-3", {0, 1, 2}, true}, RunCase{"ATOMS", "1-4", {0, 1, 2, 3}, false}}) {
    DeskWithProcess desk;
    ASSERT_EQ(desk.run("TRAJECTORY", run.path()), 0);
    ASSERT_EQ(desk.run_lines({"FIRST_FRAME_NO 2", "INCREMENT_NO 5"}), 0);
    ASSERT_EQ(desk.run("DIPOLE_USING", c.kind), 0);
    if (c.selection != nullptr) {
      desk.select(std::string("id ") + c.selection);
      ASSERT_EQ(desk.run("DIPOLE_ATOMS", "SELECTED"), 0);
    }
    ASSERT_EQ(desk.run("DIPOLE"), 0) << c.kind;
    const auto vectors = read_scratch(desk.work() / "PathStat_prf.dip_v");
    const auto lengths = read_scratch(desk.work() / "PathStat_prf.dip");
    ASSERT_THAT(vectors.numbers, ElementsAre(2, 7, 12));
    ASSERT_EQ(vectors.kind, 10004);
    for (std::size_t k = 0; k < 3; ++k) {
      const auto wanted = by_definition(vectors.numbers[k], c.listed, c.by_molecules);
      EXPECT_NEAR(vectors.x[k], time_of(vectors.numbers[k]), 1e-12);
      for (std::size_t axis = 0; axis < 3; ++axis) EXPECT_NEAR(vectors.values[k][axis], wanted[axis], 1e-9) << c.kind;
      EXPECT_NEAR(lengths.values[k][0], std::hypot(wanted[0], wanted[1], wanted[2]), 1e-9);
    }
    ASSERT_EQ(desk.run("SELECT_PROPERTIES", "\"Dipole Vector\""), 0);
    EXPECT_THAT(desk.told("PROFILE"), Pair(0, IsEmpty())) << "the rows are calculated now";
  }
}

TEST(Dipole, of_one_model_is_printed) {
  DeskWithProcess desk;
  const SmallRun run;
  ASSERT_EQ(desk.run("TRAJECTORY", run.path()), 0);
  ASSERT_EQ(desk.run_lines({"ANALYSIS_INPUT_SOURCE \"SELECTED MODELS\"", "DIPOLE_USING ATOMS"}), 0);
  desk.output.clear();
  ASSERT_EQ(desk.run("DIPOLE"), 0);
  // What the Core shows is frame 1 of the run. Centres by hand: positive 0.5 + 0.5 + 1 + 0.3, negative -0.8 - 0.3.
  const auto number = [&](std::size_t line, std::size_t place) {
    std::istringstream words(desk.output.at(line).substr(15));
    double value = NAN;
    for (std::size_t k = 0; k <= place; ++k) words >> value;
    return value;
  };
  ASSERT_EQ(desk.output.size(), 6u);
  for (std::size_t line = 0; line < 6; ++line) {
    constexpr std::array labels{"Dipole moment = ", "Dipole Vector = ", "Positive COC  = ",
                                "Negative COC  = ", "Dipole origin = ", "Net charge    = "};
    EXPECT_THAT(desk.output[line], StartsWith(labels[line]));
  }
  Vector plus{}, minus{};
  for (std::size_t k = 0; k < atoms.size(); ++k) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double x = position(k, 1)[axis] + atoms[k].cells_along_a * a_vector(1)[axis];
      (atoms[k].charge > 0 ? plus : minus)[axis] += x * atoms[k].charge / (atoms[k].charge > 0 ? 2.3 : -1.1);
    }
  }
  double squares = 0;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const double dipole = (plus[axis] - minus[axis]) * 1.1 * debye;
    squares += dipole * dipole;
    EXPECT_NEAR(number(1, axis), dipole, 1e-9);
    EXPECT_NEAR(number(2, axis), plus[axis], 1e-9);
    EXPECT_NEAR(number(3, axis), minus[axis], 1e-9);
    EXPECT_NEAR(number(4, axis), (plus[axis] + minus[axis]) / 2, 1e-9);
  }
  EXPECT_NEAR(number(0, 0), std::sqrt(squares), 1e-9);
  EXPECT_NEAR(number(5, 0), 1.2, 1e-9);

  const auto series = read_scratch(desk.work() / "PathStat_prf.dip");
  EXPECT_EQ(series.kind, 10005);
  EXPECT_NEAR(series.values[0][0], std::sqrt(squares), 1e-9);
}

TEST(Dipole, of_models_tells_which_have_none) {
  DeskWithProcess desk;
  const SmallRun neutral(time_of, 0), charged, layer(time_of, 1, 2);
  for (const auto* run : {&neutral, &charged}) ASSERT_EQ(desk.run("TRAJECTORY", run->path()), 0);
  ASSERT_EQ(desk.run("ANALYSIS_INPUT_SOURCE", "\"SELECTED MODELS\""), 0);
  const std::vector<std::string> names{"small"};
  ASSERT_EQ(desk.model.select_models(names), "");
  desk.take_keys();
  desk.output.clear();
  EXPECT_THAT(desk.told("DIPOLE"), Pair(0, ElementsAre("PATHSTAT_WARN_14")));
  EXPECT_THAT(desk.output, IsEmpty()) << "only a lone model is printed";
  const auto series = read_scratch(desk.work() / "PathStat_prf.dip_v");
  ASSERT_EQ(series.points, 2);
  EXPECT_EQ(series.values[0], Doubles({0, 0, 0}));
  EXPECT_GT(std::abs(series.values[1][1]), 1.0);

  desk.select("id 4");
  ASSERT_EQ(desk.run("DIPOLE_ATOMS", "SELECTED"), 0);
  EXPECT_THAT(desk.told("DIPOLE"), Pair(0, ElementsAre("PATHSTAT_WARN_14", "PATHSTAT_WARN_15")));

  ASSERT_EQ(desk.run("TRAJECTORY", layer.path()), 0);
  ASSERT_EQ(desk.model.select_models(names), "");
  desk.take_keys();
  EXPECT_THAT(desk.told("DIPOLE"), Pair(1, ElementsAre("PATHSTAT_ERROR_1")));
}

struct RefusalCase {
  double charge_factor;
  int directions;
  const char* selection;  ///< none for all atoms
  const char* key;
};

TEST(Dipole, of_frames_that_have_none_is_refused) {
  for (const auto& c : {RefusalCase{0, 3, nullptr, "PATHSTAT_ERROR_2"}, RefusalCase{1, 3, "", "PATHSTAT_ERROR_2"},
                        RefusalCase{1, 3, "4", "PATHSTAT_ERROR_3"}, RefusalCase{1, 2, nullptr, "PATHSTAT_ERROR_1"}}) {
    DeskWithProcess desk;
    const SmallRun run(time_of, c.charge_factor, c.directions);
    ASSERT_EQ(desk.run("TRAJECTORY", run.path()), 0);
    ASSERT_EQ(desk.run("DIPOLE_ATOMS", c.selection == nullptr ? "ALL" : "SELECTED"), 0);
    if (c.selection != nullptr && *c.selection != 0) {
      desk.select(std::string("id ") + c.selection);
    }
    desk.take_keys();
    EXPECT_THAT(desk.told("DIPOLE"), Pair(1, ElementsAre(c.key))) << c.key;
    EXPECT_FALSE(std::filesystem::exists(desk.work() / "PathStat_prf.dip"));
  }
}

TEST(Dipole, of_frames_apart_unevenly_is_kept_but_not_correlated) {
  DeskWithProcess desk;
  const SmallRun run([](int frame) { return frame < 8 ? 0.1 * frame : 0.1 * frame + 0.05; });
  ASSERT_EQ(desk.run("TRAJECTORY", run.path()), 0);
  desk.messages.clear();
  ASSERT_EQ(desk.run("DIPOLE"), 0);
  ASSERT_EQ(desk.messages.size(), 2u) << "a longer step, and a shorter one behind it";
  EXPECT_EQ(desk.messages[0].key, "PATHSTAT_WARN_11");
  EXPECT_THAT(desk.messages[0].text, HasSubstr("frames 7 and 8"));
  EXPECT_THAT(desk.messages[1].text, HasSubstr("frames 8 and 9"));
  EXPECT_EQ(read_scratch(desk.work() / "PathStat_prf.dip").points, 12);
  desk.messages.clear();
  EXPECT_THAT(desk.told("DAC"), Pair(1, ElementsAre("PATHSTAT_ERROR_63")));
}

TEST(DipoleAutocorrelation, of_a_series_that_is_damaged_or_gone_is_refused) {
  DeskWithProcess desk;
  const SmallRun run;
  ASSERT_EQ(desk.run("TRAJECTORY", run.path()), 0);
  ASSERT_EQ(desk.run("DIPOLE"), 0);
  const auto file = desk.work() / "PathStat_prf.dip_v";
  desk.take_keys();
  std::filesystem::resize_file(file, std::filesystem::file_size(file) - 1);
  EXPECT_THAT(desk.told("DAC"), Pair(1, ElementsAre("PATHSTAT_MSG_4")));
  std::filesystem::copy_file(desk.work() / "PathStat_prf.dip", file, std::filesystem::copy_options::overwrite_existing);
  EXPECT_THAT(desk.told("DAC"), Pair(1, ElementsAre("PATHSTAT_MSG_4"))) << "one value per frame is no vector";
  std::filesystem::remove(file);
  EXPECT_THAT(desk.told("DAC"), Pair(1, IsEmpty()));
  EXPECT_FALSE(std::filesystem::exists(desk.work() / "PathStat.dac"));
}

/// XX, YY, ZZ, XY, XZ, YZ and the total by lag, the last frame an origin too.
std::vector<std::array<double, 7>> correlated(const ScratchSeries& dipoles, std::size_t lags, std::size_t step) {
  constexpr std::array<std::array<std::size_t, 2>, 6> axes{{{0, 0}, {1, 1}, {2, 2}, {0, 1}, {0, 2}, {1, 2}}};
  const std::size_t frames = dipoles.values.size();
  std::vector<std::array<double, 7>> table(lags);
  for (std::size_t lag = 0; lag < lags; ++lag) {
    double pairs = 0;
    for (std::size_t origin = 0; origin + lag < frames; origin += step, ++pairs) {
      const auto &u = dipoles.values[origin], &w = dipoles.values[origin + lag];
      for (std::size_t c = 0; c < 6; ++c) {
        const auto [p, q] = axes[c];
        table[lag][c] += 0.5 * (u[p] * w[q] + u[q] * w[p]);
      }
      table[lag][6] += u[0] * w[0] + u[1] * w[1] + u[2] * w[2];
    }
    for (double& value : table[lag]) value /= pairs;
  }
  return table;
}

TEST(DipoleAutocorrelation, of_water_is_that_of_the_definition) {
  DeskWithProcess desk("water");
  ASSERT_EQ(desk.run_lines({"DIPOLE_USING MOLECULES", "DAC_ANISOTROPIC yes", "DAC_MAX_INTERVAL_NO 199",
                            "DAC_MAX_TIME_TRANSFORM 2.505"}),
            0);
  struct Way {
    std::size_t step;
    const char* monitor;  ///< a watched curve is summed origin by origin
  };
  for (const auto& [step, monitor] : {Way{1, "yes"}, Way{1, "no"}, Way{7, "yes"}, Way{7, "no"}}) {
    ASSERT_EQ(desk.run("DAC_ORIGIN_STEP_NO", std::to_string(step)), 0);
    ASSERT_EQ(desk.run("MONITOR_DAC", monitor), 0);
    ASSERT_EQ(desk.run("DAC"), 0);
    const auto wanted = correlated(read_scratch(desk.work() / "PathStat_prf.dip_v"), 200, step);
    const auto series = read_scratch(desk.work() / "PathStat.dac");
    ASSERT_EQ(series.points, 200) << "the longest lag and one more for lag 0";
    ASSERT_EQ(series.values_per_point, 7);
    for (std::size_t lag = 0; lag < 200; ++lag) {
      EXPECT_EQ(series.numbers[lag], static_cast<std::int32_t>(lag + 1));
      EXPECT_NEAR(series.x[lag], 0.01 * static_cast<double>(lag), 1e-9);
      for (std::size_t c = 0; c < 7; ++c) EXPECT_NEAR(series.values[lag][c], wanted[lag][c], 1e-8) << lag << ' ' << c;
    }
  }
  EXPECT_THAT(desk.take_keys(), ElementsAre("PATHSTAT_MSG_37")) << "the dipoles are calculated once";

  EXPECT_THAT(desk.told("DAC_POWER_SPECTRUM"), Pair(0, IsEmpty())) << "the correlation is there";
  const auto correlation = read_scratch(desk.work() / "PathStat.dac");
  const auto spectrum = read_scratch(desk.work() / "PathStat.fftdac");
  constexpr std::size_t m = 250;  // the lags, then zeros
  ASSERT_EQ(spectrum.points, static_cast<std::int32_t>(m));
  EXPECT_EQ(spectrum.values[0], Doubles(7, 0.0));
  for (std::size_t i = 1; i < m; i += 31) {
    EXPECT_NEAR(spectrum.x[i], static_cast<double>(i) * 0.5 / (m * 0.01 * 0.03), 1e-9);
    for (std::size_t c = 0; c < 7; ++c) {
      double sum = correlation.values[0][c];
      for (std::size_t k = 1; k < 200; ++k) {
        sum += 2 * correlation.values[k][c] * std::cos(std::numbers::pi * static_cast<double>(k * i) / (m - 1));
      }
      EXPECT_NEAR(spectrum.values[i][c], std::pow(sum * 0.01, 2), 1e-7 * std::pow(sum * 0.01, 2) + 1e-7);
    }
  }
  const auto graph = desk.graph_titles().size() - 1;
  EXPECT_EQ(desk.graph_titles()[graph], "Total DAC Power Spectrum");
  EXPECT_EQ(desk.data_set(graph).points.size(), m);
  EXPECT_EQ(desk.data_set(graph).points[0].y, 0.0F);
}

TEST(DipoleSpectrum, begins_with_what_is_missing) {
  DeskWithProcess desk("water");
  EXPECT_THAT(desk.told("DAC_POWER_SPECTRUM"), Pair(0, ElementsAre("PATHSTAT_MSG_38", "PATHSTAT_MSG_37")));
  EXPECT_EQ(read_scratch(desk.work() / "PathStat.fftdac").values_per_point, 1);
  EXPECT_THAT(desk.graph_titles(), ElementsAre("Total DAC", "Total DAC Power Spectrum"));
  ASSERT_EQ(desk.run("DAC_MAX_TIME_TRANSFORM", "2000"), 0);
  EXPECT_EQ(desk.run("DAC_POWER_SPECTRUM"), 1) << "200000 points";
  ASSERT_EQ(desk.run("DAC_MAX_TIME_TRANSFORM", "0.015"), 0);
  EXPECT_THAT(desk.told("DAC_POWER_SPECTRUM"), Pair(1, IsEmpty())) << "one point";
}

TEST(DipoleAutocorrelation, that_is_interrupted_keeps_nothing) {
  DeskWithProcess desk("water");
  ASSERT_EQ(desk.run("DAC"), 0);
  const auto before = read_scratch(desk.work() / "PathStat.dac").values;
  ASSERT_EQ(desk.run("DAC_ORIGIN_STEP_NO", "2"), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(450));  // the process asks no earlier
  desk.interrupt = true;
  EXPECT_EQ(desk.run("DAC"), 1);
  desk.interrupt = false;
  EXPECT_EQ(read_scratch(desk.work() / "PathStat.dac").values, before);
  desk.take_keys();
  EXPECT_THAT(desk.told("DAC_POWER_SPECTRUM"), Pair(0, ElementsAre("PATHSTAT_MSG_38")));

  ASSERT_EQ(desk.run("USE_ALL_FRAMES"), 0) << "the dipoles are out of date";
  std::filesystem::remove(desk.work() / "PathStat_prf.dip");
  std::this_thread::sleep_for(std::chrono::milliseconds(450));
  desk.interrupt = true;
  EXPECT_EQ(desk.run("DIPOLE"), 1);
  EXPECT_FALSE(std::filesystem::exists(desk.work() / "PathStat_prf.dip"));
}

}  // namespace
}  // namespace pathstat::desk
