#include "reports/fluctuations.h"

#include "catalogue/catalogue.h"
#include "catalogue/catalogue_rows.h"
#include "extraction/scratch_file.h"
#include "plots/labels.h"
#include "recording_core.h"
#include "reports/frame_means.h"
#include "services/work_directory.h"
#include "settings_of_a_test.h"
#include "testing.h"

namespace pathstat {
namespace {

using Rows = std::vector<std::vector<double>>;

constexpr double gas = 0.00198717, kcal = 6.9478e9, cal = 6947800;

/// The statistics of some frames, from deviations off their means.
struct Frames {
  const Rows& rows;
  std::size_t first, last;

  double mean(std::size_t column) const {
    long double sum = 0;
    for (std::size_t k = first; k <= last; ++k) sum += rows[k][column - 1];
    return static_cast<double>(sum / (last - first + 1));
  }
  double covariance(std::size_t a, std::size_t b) const {
    const long double at = mean(a), bt = mean(b);
    long double sum = 0;
    for (std::size_t k = first; k <= last; ++k) sum += (rows[k][a - 1] - at) * (rows[k][b - 1] - bt);
    return static_cast<double>(sum / (last - first + 1));
  }
  double variance(std::size_t column) const { return covariance(column, column); }
};

struct System {
  std::int32_t ensemble, atoms;
  double mass, freedom;
};

/// Textbook relations between the response functions, in kcal/mol, Å^3 and Pa; Cp - Cv = T V beta^2 / Kt is what links
/// those of constant pressure.
std::vector<double> plain_response(std::int32_t id, const System& of, const Frames& in) {
  const double P = in.mean(1), V = in.mean(2), T = in.mean(3), rt = gas * T, half = of.freedom / 2;
  if (id == 901) {
    return {1 + 3 * 10113.008096539035 * (in.variance(4) + in.variance(5) + in.variance(6)) / (T * V)};
  }
  const double v0 = in.rows[0][1];
  if (of.ensemble == 1) {
    std::vector<double> cv, gamma;
    for (const std::size_t energy : {4U, 5U}) {
      cv.push_back(1000 * half * gas / (1 - in.variance(energy) / (half * rt * rt)));
      const double sign = energy == 4 ? 1 : -1;
      const double coupling = sign * in.covariance(1, energy) * v0 / kcal / (of.atoms * rt * rt);
      gamma.push_back(2.0 / 3.0 * cal * 1e-9 * cv.back() / v0 * (1 + coupling));
    }
    return id == 806 ? cv : gamma;
  }
  if (of.ensemble == 2) {
    if (id == 803) return {1e-9 * (in.covariance(1, 5) / (rt * T) + of.atoms * gas * kcal / v0)};
    return {1000 * in.variance(4) / (rt * T), 1000 * (half * gas + in.variance(5) / (rt * T))};
  }
  const double compressibility = 1e9 * in.variance(2) / (V * rt * kcal);
  double Cp = 0, Cv = 0, beta = 0, Ks = 0, Kt = 0;
  if (of.ensemble == 3) {
    Cp = 1000 * in.variance(4) / (rt * T);
    beta = in.covariance(2, 4) / (rt * T * V);
    Kt = compressibility;
    Cv = Cp - T * V * beta * beta * 1e9 / (Kt * cal);
    Ks = Kt * Cv / Cp;
  } else {
    Cp = 1000 * half * gas * 2 / (2 - 2 * in.variance(4) / (half * rt * rt));
    beta = -Cp / 1000 * in.covariance(2, 4) / (half * rt * rt * V);
    Ks = compressibility;
    Cv = Cp / (1 + T * V * beta * beta * 1e9 / (Cp * cal * Ks));
    Kt = Ks * Cp / Cv;
  }
  const double phi = V - T * V * beta;
  const double gamma = beta / Kt, gruneisen = V * gamma * 1e9 / (Cv * cal), mu = -phi * 1e9 / (Cp * cal);
  const double sound = std::sqrt(std::abs(P / (of.mass / V * 1000 / 0.6022) * Cp / Cv));
  const std::array of_rows{Ks, Kt, gamma, gruneisen, Cp, Cv, beta, mu, phi, sound};
  return {of_rows.at(static_cast<std::size_t>(id - 801))};
}

/// A working directory with the columns of a run.
class Fluctuations : public WorkDirectory {
 protected:
  Fluctuations() {
    trj_gui_c_.input_source = from_trajectory;
    trj_gui_l_.has_time_axis = true;
    EXPECT_EQ(status_of(trj_propinit_), 0);
  }

  void simulate(const System& of) {
    trj_gui_i_.ensemble = of.ensemble;
    trj_gui_i_.total_atoms = of.atoms;
    trj_gui_d_.model_mass = of.mass;
    trj_gui_d_.degrees_of_freedom = of.freedom;
  }
  /// Writes the file of a row, at 0.5, 1, 1.5, ... ps, and selects these rows.
  void put(const std::vector<std::int32_t>& ids, const Rows& rows) {
    std::vector<std::int32_t> numbers;
    std::vector<double> x, table;
    for (std::size_t k = 0; k < rows.size(); ++k) {
      numbers.push_back(static_cast<std::int32_t>(k + 1));
      x.push_back(0.5 * static_cast<double>(k + 1));
      table.insert(table.end(), rows[k].begin(), rows[k].end());
    }
    const auto width = static_cast<std::int32_t>(rows[0].size());
    std::int32_t status = 7;
    writescratchfile_(kind_frames, fluctuation_file(fluctuation_rows[fluctuation_row_of(ids[0])].extension), numbers, x,
                      table, width, width, 1, {}, {}, {}, status);
    ASSERT_EQ(status, 0);
    for (const auto id : ids) {
      const std::size_t row = fluctuation_row_of(id);
      fluctuation_table().selected[row] = fluctuation_table().selectable[row] = fluctuation_table().on_disk[row] = true;
    }
  }
  void forget_rows() {
    for (auto& each : fluctuation_table().selected) each = false;
  }
  std::int32_t report(std::int32_t mode) {
    core_.forget();
    return status_of(fluctuations_, mode);
  }
  /// The numbers of the table file behind its heading, row by row.
  Rows table(std::int32_t mode) {
    std::filesystem::remove("TrajectoryStats.dat");
    trj_stats_.stats_file = true;
    EXPECT_EQ(report(mode), 0);
    Rows rows;
    std::istringstream lines(content("TrajectoryStats.dat"));
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
      std::istringstream cells(line);
      rows.emplace_back();
      for (double number; cells >> number;) rows.back().push_back(number);
    }
    return rows;
  }

  const SettingsOfATest settings_;
  RecordingCore core_;
};

struct EnsembleCase {
  System of;
  std::vector<std::int32_t> ids;
  std::vector<std::pair<double, double>> columns;  ///< mean and spread
};

const EnsembleCase ensembles[]{
    {{1, 500, 19974.0, 1497}, {803, 806}, {{2e7, 4e6}, {24389, 0}, {94, 2}, {-655, 3}, {140, 3}}},
    {{2, 648, 3891.4, 1941}, {803, 806}, {{3e7, 6e7}, {6478.5, 0}, {300, 8}, {-2000, 20}, {-2390, 16}}},
    {{3, 648, 3891.4, 1941},
     {801, 802, 803, 804, 805, 806, 807, 808, 809, 810},
     {{-1e7, 6e7}, {6500, 60}, {295, 8}, {-2020, 25}}},
    {{4, 648, 3891.4, 1941},
     {801, 802, 803, 804, 805, 806, 807, 808, 809, 810},
     {{2e7, 6e7}, {6500, 60}, {295, 8}, {370, 9}}},
    {{2, 648, 3891.4, 1941}, {901}, {{0, 0}, {6478.5, 0}, {300, 8}, {3, 20}, {-5, 25}, {1, 30}}},
};

Rows random_run(const EnsembleCase& of, std::size_t frames) {
  std::mt19937_64 random(static_cast<std::uint64_t>(of.of.ensemble) + of.ids.size());
  std::normal_distribution<double> normal;
  Rows rows(frames);
  for (auto& row : rows) {
    for (const auto& [mean, spread] : of.columns) row.push_back(mean + spread * normal(random));
    if (of.ids[0] != 901) row[3] += 0.4 * of.columns[3].second * (row[0] - of.columns[0].first) / of.columns[0].second;
  }
  return rows;
}

/// The values of all rows of the case.
std::vector<double> plain_responses(const EnsembleCase& of, const Frames& in) {
  std::vector<double> values;
  for (const auto id : of.ids) std::ranges::copy(plain_response(id, of.of, in), std::back_inserter(values));
  return values;
}

std::vector<double> behind_x(const std::vector<double>& line) { return {line.begin() + 1, line.end()}; }

void expect_near(const std::vector<double>& found, const std::vector<double>& wanted, double tolerance = 1e-10) {
  ASSERT_EQ(found.size(), wanted.size());
  for (std::size_t k = 0; k < found.size(); ++k) EXPECT_NEAR(found[k], wanted[k], tolerance * std::abs(wanted[k]));
}

TEST_F(Fluctuations, of_all_ensembles_are_those_of_plain_statistics) {
  for (const auto& of : ensembles) {
    SCOPED_TRACE("ensemble " + std::to_string(of.of.ensemble) + ", row " + std::to_string(of.ids[0]));
    const Rows run = random_run(of, 60);
    simulate(of.of);
    forget_rows();
    put(of.ids, run);
    const Rows running = table(running_average_mode);
    ASSERT_EQ(running.size(), run.size());
    EXPECT_THAT(behind_x(running[0]), Each(0.0));
    for (const std::size_t k : {5U, 30U, 59U}) {
      EXPECT_EQ(running[k][0], 0.5 * static_cast<double>(k + 1));
      expect_near(behind_x(running[k]), plain_responses(of, {run, 0, k}));
    }
    trj_stats_.block_width = 17;
    trj_stats_.block_interval = 11;
    const Rows blocks = table(block_average_mode);
    ASSERT_EQ(blocks.size(), 6u);
    for (std::size_t b = 0; b < blocks.size(); ++b) {
      EXPECT_EQ(blocks[b][0], 0.5 * static_cast<double>(11 * b + 1));
      const std::size_t first = b == 0 ? 0 : 11 * b - 8, last = std::min<std::size_t>(59, 11 * b + 8);
      expect_near(behind_x(blocks[b]), plain_responses(of, {run, first, last}));
    }
    EXPECT_EQ(report(whole_run_mode), 0);
    EXPECT_THAT(core_.calls("kvP"), IsEmpty());
    std::vector<double> printed;
    for (const auto& call : core_.calls("kvU_MSG_ArgD")) printed.push_back(std::stod(call.substr(13)));
    expect_near(printed, plain_responses(of, {run, 0, 59}), 1e-5);
  }
}

/// Two values in turn, d off their mean: a variance is d^2, and a covariance the product of two such d.
TEST_F(Fluctuations, of_two_valued_runs_have_closed_forms) {
  struct Case {
    System of;
    std::int32_t id;
    std::vector<double> mean, half_difference;
    std::string message;
  };
  const double rt = gas * 100;
  for (const auto& [of, id, mean, half_difference, message] : std::initializer_list<Case>{
           // The energy's variance is a half of Nf (RT)^2 / 2: the heat capacity doubles.
           {{1, 10, 40, 24},
            806,
            {1e6, 500, 100, -50, 80},
            {0, 0, 0, std::sqrt(6.0) * rt, 0},
            "Isometric Heat Capacity (Cv) 47.69208 Cal/(Mol K) Potential Energy Isometric Heat Capacity (Cv) 23.84604 "
            "Cal/(Mol K) Kinetic Energy PATHSTAT_MSG_33"},
           // An ideal gas has no covariance: N R / V.
           {{2, 10, 40, 30},
            803,
            {1e6, 500, 100, -50, 80},
            {1e6, 0, 0, 1, 0},
            "Thermal Pressure Coefficient 0.000276129195 GPa/K PATHSTAT_MSG_32"},
           // A fluctuation of sqrt(R) T around the mean is 1000 cal/(mol K).
           {{3, 10, 40, 30},
            805,
            {1e6, 500, 100, -50},
            {0, 0, 0, std::sqrt(gas) * 100},
            "Isobaric Heat Capacity (Cp) 1000 Cal/(Mol K) PATHSTAT_MSG_32"},
           {{4, 10, 40, 24},
            801,
            {1e6, 500, 100, 80},
            {0, 5, 0, 0},
            "Adiabatic Compressibility 0.036214932 1/GPa PATHSTAT_MSG_32"},
           {{2, 10, 40, 30},
            901,
            {0, 303.39024289617107, 100, 2, 3, 4},
            {0, 0, 0, 1, 0, 0},
            "Dielectric Constant 2  PATHSTAT_MSG_32"},
       }) {
    Rows run(6, mean);
    for (std::size_t k = 0; k < run.size(); ++k) {
      for (std::size_t c = 0; c < mean.size(); ++c) run[k][c] += k % 2 == 0 ? half_difference[c] : -half_difference[c];
    }
    simulate(of);
    forget_rows();
    put({id}, run);
    EXPECT_EQ(report(whole_run_mode), 0);
    EXPECT_THAT(core_.messages(), ElementsAre(message));
  }
}

TEST_F(Fluctuations, are_drawn_one_by_one_and_printed) {
  simulate({1, 10, 40, 24});
  put({803, 806}, {{1e6, 500, 100, -50, 80}, {2e6, 500, 110, -51, 81}, {1e6, 500, 100, -50, 80}});
  trj_stats_.stats_text = true;
  EXPECT_EQ(report(running_average_mode), 0);
  EXPECT_EQ(core_.calls("kvP_DAT_WriteXY").size(), 4u) << "two curves each";
  EXPECT_THAT(core_.calls("kvP_VWR_SetGraphList"),
              ElementsAre("kvP_VWR_SetGraphList|1|1|2", "kvP_VWR_SetGraphList|1|2|2|5"));
  EXPECT_THAT(core_.messages(),
              AllOf(Contains("TIME Gamma_v - Pressure-Potential PATHSTAT_MSG_7"), Contains("0.5 0 PATHSTAT_MSG_9")));
  EXPECT_EQ(core_.calls("kvP_SYS").size(), 2u);
}

TEST_F(Fluctuations, of_narrow_blocks_damaged_files_and_one_frame) {
  simulate({2, 10, 40, 24});
  put({803, 806}, {{1e6, 500, 100, -50, 80}});
  trj_stats_.block_width = 1;
  EXPECT_EQ(report(block_average_mode), 1);
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_MSG_35"));
  EXPECT_EQ(core_.calls("kvP_SYS").size(), 2u) << "the transaction is closed";
  EXPECT_EQ(stdout_of([&] { EXPECT_EQ(report(whole_run_mode), 0); }),
            "Fluctuations: the range has one frame, so that every variance is 0\n");
  EXPECT_EQ(core_.messages()[1],
            "Isometric Heat Capacity (Cv) 0 Cal/(Mol K) Total Energy Isometric Heat Capacity (Cv) 23.84604 Cal/(Mol K) "
            "Potential Energy PATHSTAT_MSG_33");
  put({803, 806}, {{1e6, 500, 100, -50}});
  EXPECT_EQ(report(whole_run_mode), scratch_file_damaged) << "a column is missing";
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_MSG_4"));
  std::filesystem::resize_file("PathStat_fluc.thrm", 50);
  EXPECT_EQ(report(running_average_mode), scratch_file_damaged);
  EXPECT_THAT(core_.messages(), ElementsAre("PATHSTAT_MSG_4"));
  std::filesystem::remove("PathStat_fluc.thrm");
  EXPECT_NE(report(running_average_mode), 0);
  EXPECT_THAT(core_.messages(), IsEmpty());
}

TEST(FrameMeans, refuse_what_is_not_in_the_table) {
  const std::vector<double> table{1, 2, 3, 4, 5, 6};
  std::vector<double> result(2, -1.0);
  double mean = -1.0;
  EXPECT_EQ(status_of(avgval_, 3, 2, table, 4, mean), 1);
  EXPECT_EQ(status_of(avgval2_, 3, 3, table, 1, 1, mean), 1);
  EXPECT_EQ(status_of(avgvecsqr_, 3, 2, table, 2, mean), 1);
  EXPECT_EQ(status_of(cumavgval_, 2, 3, table, 1, result), 1);
  EXPECT_EQ(status_of(blkavgvec2_, 3, 2, table, 1, 1, 2, 1, 2, result), 1);
  EXPECT_EQ(mean, -1.0);
  EXPECT_THAT(result, ElementsAre(-1.0, -1.0));
  EXPECT_EQ(status_of(avgvec2_, 3, 2, table, 1, 1, mean), 0);
  EXPECT_EQ(mean, (1 + 4 + 9 + 16 + 25 + 36) / 2.0);
}

}  // namespace
}  // namespace pathstat
