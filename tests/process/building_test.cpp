#include "process/refusal.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

TEST(Building, keeps_an_asymmetric_unit_beside_the_analysis) {
  DeskWithProcess desk;
  EXPECT_THAT(desk.values("CELL"), IsEmpty());
  EXPECT_EQ(desk.run_lines({"CELL 4.9137 4.9137 5.4047 90 90 120", "SPACE_GROUP 152", "SITE Si 0.4697 0 0",
                            "SITE O 0.4135 0.2669 0.1191", "EXTREMA_NUMBER 7"}),
            0);

  const std::vector<std::string> words{"SPACE_GROUP", "EXTREMA_NUMBER", "CELL", "SITE"};
  const auto answers = desk.session.request(words);
  ASSERT_TRUE(answers);
  EXPECT_THAT((*answers)[0].values, ElementsAre("152"));
  EXPECT_THAT((*answers)[1].values, ElementsAre("  7"));
  EXPECT_THAT((*answers)[2].values,
              ElementsAre("     4.91370", "     4.91370", "     5.40470", "   90.0000", "   90.0000", "  120.0000"));
  EXPECT_THAT((*answers)[3].values,
              ElementsAre("Si   0.469700   0.000000   0.000000", "O    0.413500   0.266900   0.119100"));

  EXPECT_EQ(desk.run("SPACE_GROUP", "\"P n -3\" 2"), 0);
  EXPECT_THAT(desk.values("SPACE_GROUP"), ElementsAre("P n -3", " 2"));
  EXPECT_EQ(desk.run("CLEAR_SITES"), 0);
  EXPECT_THAT(desk.values("SITE"), IsEmpty());
  EXPECT_THAT(desk.take_keys(), IsEmpty());
}

constexpr Refusal refusals[]{
    {"CELL", "1 2 3 90 90", 1005, nullptr},
    {"CELL", "0 2 3 90 90 90", 1001, nullptr},
    {"CELL", "1 2 3 90 90 180", 1002, nullptr},
    {"CELL", "1 2 3 100 30 30", 1, "STRUCTURE_CELL_IMPOSSIBLE"},
    {"CELL", "1 2 3 60 60 120", 1, "STRUCTURE_CELL_IMPOSSIBLE"},
    {"SITE", "Si 0 0", 1005, nullptr},
    {"SITE", "Qq 0 0 0", 1, "STRUCTURE_ELEMENT_UNKNOWN"},
    {"SITE", "X 0 0 0", 1, "STRUCTURE_ELEMENT_UNKNOWN"},
    {"SITE", "SI 0 0 0", 1, "STRUCTURE_ELEMENT_UNKNOWN"},
    {"SPACE_GROUP", "", 1005, nullptr},
    {"SPACE_GROUP", "0", 1, "STRUCTURE_GROUP_UNKNOWN"},
    {"SPACE_GROUP", "231", 1, "STRUCTURE_GROUP_UNKNOWN"},
    {"SPACE_GROUP", "5 0", 1001, nullptr},
};

TEST(Building, refuses_what_does_not_fit_and_keeps_what_there_was) {
  DeskWithProcess desk;
  desk.run("CELL", "1 2 3 90 91 92");
  desk.run("SPACE_GROUP", "5");
  desk.run("SITE", "C 0 0.5 1");
  const std::vector<std::string> words{"CELL", "SPACE_GROUP", "SITE"};
  const auto before = desk.session.request(words);
  for (const auto& refusal : refusals) expect_refused(desk, refusal);
  const auto after = desk.session.request(words);
  ASSERT_TRUE(before && after);
  for (std::size_t k = 0; k < words.size(); ++k) EXPECT_EQ((*after)[k].values, (*before)[k].values) << words[k];
}

}  // namespace
}  // namespace pathstat::desk
