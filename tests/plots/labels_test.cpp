#include "plots/labels.h"

#include "state/analysis_settings.h"
#include "testing.h"

namespace pathstat {
namespace {

std::string label(std::int32_t id, std::int32_t mode, std::int32_t index) {
  Text<32> text;
  EXPECT_EQ(status_of(trjdatalabel_, id, mode, index, text), 0);
  return text.str();
}

TEST(ColourWheel, comes_round_after_thirteen) {
  EXPECT_EQ(colourwheel_(0), 10);
  EXPECT_EQ(colourwheel_(1), 4);
  EXPECT_EQ(colourwheel_(8), 2);
  EXPECT_EQ(colourwheel_(12), 5);
  EXPECT_EQ(colourwheel_(13), 10);
  EXPECT_EQ(colourwheel_(25), 5);
}

struct Case {
  std::int32_t id, mode, index, periodicity, ensemble;
  const char* text;
};
class DataLabel : public testing::TestWithParam<Case> {
  TrjGuiI before_ = trj_gui_i_;

 protected:
  ~DataLabel() override { trj_gui_i_ = before_; }
};
TEST_P(DataLabel, names_the_curve) {
  trj_gui_i_.periodicity = GetParam().periodicity;
  trj_gui_i_.ensemble = GetParam().ensemble;
  EXPECT_EQ(label(GetParam().id, GetParam().mode, GetParam().index), GetParam().text);
}
constexpr std::int32_t profile = profile_mode;
INSTANTIATE_TEST_SUITE_P(scalars, DataLabel,
                         testing::Values(Case{4, profile, 1, 0, 1, "Non-bond Energy"},
                                         Case{107, profile, 1, 0, 1, "vdW Energy"},
                                         Case{119, profile, 1, 0, 1, "vdW Repulsive Energy"},
                                         Case{124, profile, 1, 0, 1, "Stret-Tors-Stret E"},
                                         Case{208, profile, 1, 2, 1, "Area"},
                                         Case{402, profile, 1, 0, 1, "Fractional Free Volume"},
                                         Case{901, profile, 3, 0, 1, "Dielectric Constant"},
                                         Case{902, profile, 1, 0, 1, "Unknown"}, Case{0, profile, 1, 0, 1, "Unknown"}));
INSTANTIATE_TEST_SUITE_P(columns, DataLabel,
                         testing::Values(Case{205, profile, 4, 3, 1, "Stress YZ"},
                                         Case{205, profile, 6, 2, 1, "Stress XY"},
                                         Case{205, profile, 1, 1, 1, "Unknown"}, Case{205, profile, 7, 3, 1, "Unknown"},
                                         Case{206, profile, 6, 3, 1, "gamma"}, Case{206, profile, 3, 2, 1, "theta"},
                                         Case{206, profile, 4, 2, 1, "Unknown"}, Case{206, profile, 9, 1, 1, "D"},
                                         Case{302, profile, 3, 0, 1, "Dipole Vector Z"},
                                         Case{302, profile, 0, 0, 1, "Unknown"}));
INSTANTIATE_TEST_SUITE_P(fluctuations, DataLabel,
                         testing::Values(Case{803, profile, 1, 3, 1, "Gamma_v - Pressure-Potential"},
                                         Case{803, profile, 2, 3, 1, "Gamma_v - Pressure-Kinetic"},
                                         Case{803, profile, 1, 3, 2, "Gamma_v"},
                                         Case{806, profile, 1, 3, 2, "Cv - Total Energy"},
                                         Case{806, profile, 2, 3, 2, "Cv - Potential Energy"},
                                         Case{806, profile, 1, 3, 1, "Cv - Potential Energy"},
                                         Case{806, profile, 2, 3, 1, "Cv - Kinetic Energy"},
                                         Case{806, profile, 1, 3, 3, "Cv"}, Case{808, profile, 1, 3, 3, "mu"}));
INSTANTIATE_TEST_SUITE_P(pooled_measures, DataLabel,
                         testing::Values(Case{501, distribution_mode, 1, 0, 1, "Distance Measures"},
                                         Case{505, distribution_mode, 9, 0, 1, "Inversion Measures"},
                                         Case{506, distribution_mode, 2, 0, 1, "Distance Vector Y"},
                                         Case{506, distribution_mode, 4, 0, 1, "Unknown"}));

TEST(MeasureLabel, comes_from_the_registered_source) {
  EXPECT_EQ(label(501, profile_mode, 1), "Unknown");
  register_measure_labels([](std::int32_t id, std::int32_t number, TextField field) {
    if (number > 2) return false;
    field.set(number == 2 ? std::string(31, 'x') : std::to_string(id) + ": 7-8");
    return true;
  });
  EXPECT_EQ(label(503, profile_mode, 1), "503: 7-8");
  EXPECT_EQ(label(502, profile_mode, 2), std::string(31, 'x'));
  EXPECT_EQ(label(502, profile_mode, 3), "Unknown");
  EXPECT_EQ(label(506, profile_mode, 1), "501: 7-8 X");
  EXPECT_EQ(label(506, profile_mode, 2), "501: 7-8 Y");
  EXPECT_EQ(label(506, profile_mode, 3), "501: 7-8 Z");
  EXPECT_EQ(label(506, profile_mode, 4), "Unknown") << "no room for the axis";
  register_measure_labels(nullptr);
}

}  // namespace
}  // namespace pathstat
