#include "desk/cli/completion.h"

#include "desk/advice/word_groups.h"
#include "desk/cli/command_help.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

const CompletionSources sources{.allowed_values =
                                    [](const std::string& word) {
                                      return word == "SELECT_PROPERTIES"
                                                 ? std::vector<std::string>{"Total Energy", "Temperature", "Pressure"}
                                                 : std::vector<std::string>{};
                                    },
                                .graphs = [] { return std::vector<std::string>{"Profile of Pressure"}; },
                                .models = [] { return std::vector<std::string>{"butane"}; },
                                .groups = [] { return std::vector<std::string>{"water"}; }};

struct Case {
  std::vector<std::string> before;
  const char* begun;
  std::vector<std::string> candidates;
};

TEST(Completion, offers_what_may_stand_at_each_place_of_a_line) {
  for (const auto& [before, begun, candidates] : {
           Case{{}, "PROF", {"PROFILE"}},
           Case{{}, "prof", {"PROFILE"}},
           Case{{}, "@s", {"@select", "@show", "@step", "@stop-on-error"}},
           Case{{"@select"}, "", {"atoms", "models"}},
           Case{{"@select", "atoms"}, "e", {"element"}},
           Case{{"@select", "atoms", "element", "O"}, "", {"and", "or"}},
           Case{{"@select", "atoms", "element", "O", "and"}, "w", {"water", "within"}},
           Case{{"@group", "near", "="}, "wi", {"within"}},
           Case{{"@select", "atoms", "within", "3"}, "", {"of"}},
           Case{{"@overlay", "Both"}, "pro", {"Profile of Pressure"}},
           Case{{"@select", "models", "butane"}, "", {"all", "butane", "none"}},
           Case{{"@step"}, "", {"backwards", "forwards"}},
           Case{{"@step", "forwards"}, "", {}},
           Case{{"@pick"}, "pro", {"Profile of Pressure"}},
           Case{{"@request", "PROFILE"}, "MSD_AT", {"MSD_ATOMS"}},
           Case{{"@stop-on-error"}, "", {"no", "yes"}},
           Case{{"help"}, "@pi", {"@pick"}},
           Case{{"SELECT_PROPERTIES"}, "t", {"Temperature", "Total Energy"}},
           Case{{"SELECT_PROPERTIES", "Pressure"}, "tem", {"Temperature"}},
           Case{{"MSD_ANISOTROPIC"}, "", {"no", "yes"}},
           Case{{"FRAME_STEPPING_MODE"}, "L", {"LOOP AT END"}},
           Case{{"PROFILE"}, "", {}},
           Case{{"NO_SUCH_WORD"}, "", {}},
       }) {
    EXPECT_EQ(completion_of(before, begun, sources).candidates, candidates) << testing::PrintToString(before) << begun;
  }
  EXPECT_THAT(completion_of({"@answer"}, "", sources).candidates, Contains("PATHSTAT_DLG_1"));
  EXPECT_THAT(completion_of({"@answer"}, "", sources).candidates, Not(Contains("PATHSTAT_DLG_2"))) << "its answers";
}

TEST(WordGroups, hold_each_word_once) {
  std::map<std::string_view, int> times;
  for (const auto& group : word_groups()) {
    EXPECT_FALSE(group.words.empty()) << group.name;
    for (const auto* row : group.words) ++times[row->word];
  }
  EXPECT_EQ(times.size(), command_helps().size());
  for (const auto& [word, count] : times) EXPECT_EQ(count, 1) << word;
}

TEST(Completion, leaves_names_of_files_to_the_editor) {
  const auto trajectories = completion_of({"TRAJECTORY"}, "a", sources);
  EXPECT_TRUE(trajectories.files);
  ASSERT_TRUE(trajectories.fits);
  EXPECT_TRUE(trajectories.fits("run.trj"));
  EXPECT_FALSE(trajectories.fits("run.qfx"));
  EXPECT_FALSE(completion_of({"PROFILE"}, "a", sources).files);
  EXPECT_FALSE(completion_of({"STATISTICS_FILENAME"}, "a", sources).files) << "trajectories are no tables";
  EXPECT_FALSE(completion_of({"TRAJECTORY", "a.trj"}, "a", sources).files);
}

TEST(CommandHelp, knows_every_word_with_its_meaning) {
  EXPECT_GT(command_helps().size(), 100u);
  for (const auto& row : command_helps()) {
    EXPECT_THAT(row.word, Not(IsEmpty()));
    EXPECT_THAT(row.arguments, Not(IsEmpty())) << row.word;
    EXPECT_THAT(row.meaning, Not(IsEmpty())) << row.word;
    EXPECT_EQ(find_command_help(row.word), &row);
  }
}

TEST(CommandHelp, answers_by_word_by_line_and_by_search) {
  const auto meaning = std::string(find_command_help("MSD_ATOMS")->meaning);
  EXPECT_EQ(help_text("msd_atoms"), "MSD_ATOMS\n  " + meaning + "\n  Arguments: one of ALL, SELECTED\n");
  EXPECT_THAT(help_text("@select"), AllOf(HasSubstr("@select atoms SELECTION"), HasSubstr("@select models all")));
  EXPECT_THAT(help_text("diffusion"), AllOf(HasSubstr("LINEAR_FIT"), HasSubstr("MSD_ATOMS"), Not(HasSubstr("VAC"))));
  EXPECT_THAT(help_text("Temperature"), AllOf(HasSubstr("SELECT_PROPERTIES"), HasSubstr("PROFILE")));
  EXPECT_THAT(help_text("temprature"), HasSubstr("did you mean temperature?"));
  EXPECT_THAT(help_text("profile"), HasSubstr("Needs: a property is selected"));
  EXPECT_THAT(help_text("xyzzy"), HasSubstr("no word about xyzzy"));
  EXPECT_THAT(help_text(""), AllOf(HasSubstr("  PROFILE"), HasSubstr("@pick GRAPH")));
}

}  // namespace
}  // namespace pathstat::desk
