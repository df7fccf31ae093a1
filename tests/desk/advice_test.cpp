#include "desk/advice/advice.h"

#include "desk/advice/nearest.h"
#include "desk/advice/trajectory_advice.h"
#include "desk/advice/word_table.h"
#include "desk/link/work_directory.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

/// A run of 200 frames, 0.02 ps apart, as its process answers.
struct Fake {
  std::map<std::string, WordAnswer> answers{
      {"FIRST_FRAME_NO", {{"   150"}, {}}},
      {"LAST_FRAME_NO", {{"   200"}, {}}},
      {"INCREMENT_NO", {{"     1"}, {}}},
      {"FIRST_FRAME_TIME", {{"         2.98000"}, {}}},
      {"LAST_FRAME_TIME", {{"         3.98000"}, {}}},
      {"INCREMENT_TIME", {{"         0.02000"}, {}}},
      {"MIN_FIT_TIME", {{"  0.50000     "}, {}}},
      {"MAX_FIT_TIME", {{"  1.0000     "}, {}}},
      {"MSD_MAX_INTERVAL", {{"  1.0000     "}, {}}},
      {"MSD_MAX_INTERVAL_NO", {{"    50"}, {}}},
      {"MSD_ATOMS", {{"SELECTED"}, {}}},
      {"RDF_CUTOFF", {{"50.00000"}, {}}},
      {"RDF_INTERVAL", {{" 0.05000"}, {}}},
      {"RDF_BETWEEN", {{"ALL ATOMS"}, {}}},
      {"RDF_FOR", {{"TRAJECTORY"}, {}}},
      {"ANALYSIS_INPUT_SOURCE", {{"TRAJECTORY"}, {}}},
      {"SELECT_PROPERTIES",
       {{"Pressure"}, {"ENERGY TOTALS,     Total Energy,     Temperature,     < Dipole Vector >"}}},
  };
  std::map<std::string, std::string> returned{{"TRAJECTORY_FILE_NAME", "argon.trj"}, {"NUMBER_OF_FRAMES", "200"}};

  bool charged = true;

  StateSources sources() {
    return {.answer = [this](const std::string& word) { return answers[word]; },
            .returned = [this](const std::string& key) { return returned[key]; },
            .cell_width = [] { return 29.0; },
            .selected_atoms = [] { return std::size_t{216}; },
            .model_atoms = [] { return std::size_t{216}; },
            .charged = [this] { return charged; }};
  }
  std::vector<std::string> about(const EndedCommand& command) {
    std::vector<std::string> texts;
    Adviser adviser(sources());
    for (const auto& advice : adviser.about(command)) texts.push_back(advice.text);
    return texts;
  }
};

TEST(Advice, warns_of_dipoles_where_no_atom_has_a_charge) {
  for (const bool charged : {true, false}) {
    Fake fake;
    fake.charged = charged;
    for (const auto& [word, arguments] : {std::pair{"DAC", ""}, {"SELECT_PROPERTIES", "\"Dipole Vector\""}}) {
      const auto texts = fake.about({word, arguments, 0});
      EXPECT_EQ(texts.size(), charged ? 0u : 1u) << word;
      for (const auto& text : texts) EXPECT_NE(text.find("no atom of the model has a charge"), std::string::npos);
    }
    EXPECT_TRUE(fake.about({"SELECT_PROPERTIES", "Temperature", 0}).empty());
  }
}

struct AdviceCase {
  const char* word;
  const char* arguments;
  int status;
  const char* text;  ///< empty: nothing is said
};

void expect_advice(std::initializer_list<AdviceCase> cases) {
  for (const auto& [word, arguments, status, text] : cases) {
    const auto texts = Fake().about({word, arguments, status});
    EXPECT_EQ(texts, *text ? std::vector<std::string>{text} : std::vector<std::string>{}) << word << ' ' << arguments;
  }
}

TEST(Advice, says_why_a_command_failed_that_the_process_does_not_explain) {
  expect_advice(
      {{"LAST_FRAME_NO", "1000", 1, "1000 is above 200, the last frame of the file"},
       {"LAST_FRAME_NO", "100", 1, "100 is below 150, the present FIRST_FRAME_NO: lower FIRST_FRAME_NO first"},
       {"LAST_FRAME_NO", "end", 1, "LAST_FRAME_NO: \"end\" is neither a whole number nor LAST"},
       {"LAST_FRAME_TIME", "100", 1, "100 ps is above 3.98 ps, the time of the last frame of the file"},
       {"FIRST_FRAME_TIME", "-1", 1001, "-1 ps is below 0 ps, the time of the first frame of the file"},
       {"INCREMENT_NO", "52", 1002, "52 is above 51, the length of the range in frames"},
       {"INCREMENT_TIME", "0.001", 1, "0.001 ps is below 0.02 ps, the time between two frames of the file"},
       {"MSD_MAX_INTERVAL", "0.001", 1, "0.001 ps is below 0.02 ps, one step of the range"},
       {"MIN_FIT_TIME", "3", 1002, "3 ps is above 1 ps, the present MAX_FIT_TIME: raise MAX_FIT_TIME first"},
       {"MAX_FIT_TIME", "0.1", 1001, "0.1 ps is below 0.5 ps, the present MIN_FIT_TIME: lower MIN_FIT_TIME first"},
       {"K_SPACE_INTERVAL", "0", 1, "K_SPACE_INTERVAL must be above 0"},
       {"RDF_FOR", "trajectry", 1003, "RDF_FOR takes one of TRAJECTORY, MODEL; did you mean TRAJECTORY?"},
       {"EXTREMA", "", 1005, "EXTREMA takes one of HIGHEST, LOWEST"},
       {"CELL", "5 5 5 90 90", 1005, "CELL takes six numbers: a, b, c in Å, alpha, beta, gamma in degrees"},
       {"EXTREMA_NUMBER", "101", 1002, "EXTREMA_NUMBER takes an integer from 1 to 100"},
       {"CELL", "5 5 5 90 90 180", 1002, "CELL takes six numbers: a, b, c in Å, alpha, beta, gamma in degrees"},
       {"PROFLE", "", 1, "did you mean PROFILE?"},
       {"RESET", "", -1, "its question was not answered with Reset: everything is as it was"},
       {"profile", "", 1, "command words are written in capitals: PROFILE"},
       {"PROPERTY", "Temperatur", -1,
        "no property is called \"Temperatur\" in capitals: did you mean TEMPERATURE?, and none is selected now"}});
}

TEST(Advice, warns_of_mistakes_that_pass_in_silence) {
  expect_advice(
      {{"SELECT_PROPERTIES", "\"Total Energy\" Temprature", 0,
        "SELECT_PROPERTIES does not know \"Temprature\": did you mean Temperature?"},
       {"SELECT_PROPERTIES", "Total Energy", 0,
        "a name with blanks stands in quotes: SELECT_PROPERTIES \"Total Energy\""},
       {"SELECT_PROPERTIES", "Charm", 0,
        "SELECT_PROPERTIES does not know \"Charm\"; @request SELECT_PROPERTIES lists the names"},
       {"FIRST_FRAME_NO", "150.5", 0, "FIRST_FRAME_NO: \"150.5\" is not a whole number and is taken as 150"},
       {"MAX_FIT_TIME", "2ps", 0, "MAX_FIT_TIME: \"2ps\" is not a number and is taken as 2"},
       {"STATISTICS_TEXT", "on", 0, "STATISTICS_TEXT: \"on\" is taken as no: write yes or no"},
       {"STATISTICS_TEXT", "2", 0, "STATISTICS_TEXT: \"2\" is taken as yes: write yes or no"},
       {"PROFILE", "now please", 0, "PROFILE takes no argument: \"now please\" is passed over"},
       {"RDF_CUTOFF", "50", 0,
        "50 Å is above 14.5 Å, half the width of the cell, beyond which atoms meet images of their own neighbours"},
       {"MSD_MAX_INTERVAL", "100", 0,
        "MSD_MAX_INTERVAL is 1 now, not 100: 100 ps is above 1 ps, the longest lag (one frame less than the "
        "range has)"},
       {"RDF_INTERVAL", "0.04", 0, "RDF_INTERVAL is 0.05 now, not 0.04"}});
  auto fake = Fake();
  fake.answers["SELECT_PROPERTIES"].values.clear();
  EXPECT_THAT(fake.about({"SELECT_PROPERTIES", "Charm", 0}),
              ElementsAre(HasSubstr("does not know"), "nothing is selected now"));
  EXPECT_THAT(Fake().about({"RDF_BETWEEN", "ALL ATOMS", 1003}),
              ElementsAre(HasSubstr("in quotes: RDF_BETWEEN \"ALL ATOMS\""), HasSubstr("RDF_BETWEEN takes one of")));
  EXPECT_THAT(Fake().about({"TRAJECTORY", "\"a b.trj", 1}),
              Contains("the mark \" is not closed: everything behind it is one text"));
}

TEST(Advice, says_nothing_of_lines_that_are_right) {
  expect_advice({{"SELECT_PROPERTIES", "'Total Energy' temperature \"< Dipole Vector >\"", 0, ""},
                 {"FIRST_FRAME_NO", "+150", 0, ""},
                 {"LAST_FRAME_NO", "last", 0, ""},
                 {"STATISTICS_TEXT", "No", 0, ""},
                 {"PROFILE", "", 0, ""},
                 {"MAX_FIT_TIME", "1.00001", 0, ""},
                 {"MSD_MAX_INTERVAL", "1.009", 0, ""},
                 {"RDF_INTERVAL", "5e-2", 0, ""},
                 {"RDF_TYPE", "O H", 0, ""},
                 {"GET", "FRAME_STEP", 0, ""}});
}

TEST(Advice, says_what_must_come_first_without_a_trajectory) {
  Fake fake;
  fake.returned.clear();
  fake.answers["ANALYSIS_INPUT_SOURCE"].values = {"SELECTED MODELS"};
  for (const auto* word : {"LAST_FRAME_NO", "MSD_MAX_INTERVAL", "EXTRACT_FRAME_TIME"}) {
    EXPECT_THAT(fake.about({word, "3", 1}), ElementsAre("no trajectory is loaded: load one with TRAJECTORY first"));
  }
  EXPECT_THAT(fake.about({"RDF", "", 1}), ElementsAre(HasSubstr("no trajectory is loaded")));
  EXPECT_THAT(fake.about({"RDF", "", 0}),
              Contains("this is the radial distribution of models as they are: no trajectory is loaded"));
  const std::vector<Message> told{{MessageKind::error, 2, "PATHSTAT_MSG_30", {}, "No property is selected."}};
  EXPECT_THAT(fake.about({"PROFILE", "", 1, told}), IsEmpty());
  EXPECT_THAT(fake.about({"PROFILE", "", 1}), ElementsAre(HasSubstr("PROFILE needs: a property is selected")));
}

TEST(Advice, names_the_words_by_number_where_frames_carry_no_times) {
  Fake fake;
  fake.answers["INCREMENT_TIME"].values = {std::string(16, ' ')};
  EXPECT_THAT(fake.about({"LAST_FRAME_TIME", "3", 1}),
              ElementsAre("the frames of this trajectory carry no times: use LAST_FRAME_NO"));
  EXPECT_THAT(fake.about({"BLOCK_WIDTH", "3", 1}),
              ElementsAre("the frames of this trajectory carry no times: use BLOCK_WIDTH_NO"));
}

TEST(Advice, says_of_which_displacement_a_line_is) {
  Fake fake;
  Adviser adviser(fake.sources());
  EXPECT_THAT(adviser.about({"LINEAR_FIT", "", 0}), IsEmpty());
  adviser.about({"MSD", "", 0});
  fake.answers["MSD_ATOMS"].values = {"ALL"};
  fake.answers["INCREMENT_NO"].values = {"2"};
  const auto advice = adviser.about({"LINEAR_FIT", "", 0});
  ASSERT_EQ(advice.size(), 1u);
  EXPECT_EQ(advice[0].kind, MessageKind::note);
  EXPECT_EQ(advice[0].text, "LINEAR_FIT: of the displacement of the 216 selected atoms, frames 150 to 200");
  adviser.forget_results();
  EXPECT_THAT(adviser.about({"LINEAR_FIT", "", 0}), IsEmpty());
}

TEST(Advice, warns_once_of_a_cut_off_that_stood_before_the_model_came) {
  Fake fake;
  Adviser adviser(fake.sources());
  EXPECT_EQ(adviser.about({"RDF", "", 0}).size(), 1u);
  EXPECT_THAT(adviser.about({"RDF", "", 0}), IsEmpty());
}

TEST(Advice, tells_a_spread_of_rounding_alone_as_a_constant) {
  const auto statistics = [](double mean, double deviation) {
    return constant_in_words(message_of(2, "PATHSTAT_MSG_61", {mean, deviation, -1.0, -2.0, mean, mean}));
  };
  EXPECT_THAT(statistics(1.359958, 2.4e-15).value_or(""), AllOf(HasSubstr("constant"), HasSubstr("1.359958")));
  EXPECT_EQ(statistics(-1.359958, 2.4e-12), std::nullopt);
  EXPECT_EQ(statistics(0, 1e-20), std::nullopt);
  EXPECT_EQ(constant_in_words(message_of(2, "PATHSTAT_MSG_65", {1, "a", 0.0})), std::nullopt);
}

TEST(Advice, knows_words_that_are_one_or_two_letters_off) {
  const std::vector<std::string> words{"Temperature", "Pressure", "MSD", "RDF"};
  for (const auto& [wanted, meant] : {std::pair{"temprature", "Temperature"},
                                      {"Temperatrue", "Temperature"},
                                      {"Presure", "Pressure"},
                                      {"msd", "MSD"},
                                      {"MSF", "MSD"},
                                      {"RFD", "RDF"},
                                      {"MS", ""},
                                      {"Pressings", ""},
                                      {"", ""}}) {
    EXPECT_EQ(nearest(wanted, words), meant) << wanted;
  }
  EXPECT_EQ(distance("abcd", "acbd"), 1u);
  EXPECT_EQ(distance("kitten", "sitting"), 3u);
}

TEST(Advice, every_word_of_the_table_has_a_shape_that_its_help_tells) {
  std::size_t plain_texts = 0;
  for (const auto& row : command_helps()) {
    const auto [form, most] = argument_shape(row);
    EXPECT_EQ(form == ArgumentForm::none, row.arguments == "none") << row.word;
    plain_texts += form == ArgumentForm::text;
  }
  EXPECT_LT(plain_texts, 16u);  // names of properties, files, functions, groups and phases of a press
  EXPECT_TRUE(takes_time(*find_command_help("MAX_FIT_TIME")));
  EXPECT_FALSE(takes_time(*find_command_help("RDF_CUTOFF")));
}

TEST(TrajectoryAdvice, says_why_a_file_cannot_be_loaded_and_what_was_meant) {
  std::string error;
  const PrivateDirectory folder(error);
  ASSERT_EQ(error, "");
  const auto write = [&](const char* name, std::string_view text) { std::ofstream(folder.path() / name) << text; };
  write("empty.trj", "");
  write("text.trj", "this is a letter, and not a short one either, but long enough to be a head of a file\n");
  write("cut.trj", std::string_view("\0\0\0TMDTR\0\0\x07\xda\0\0", 14));
  write("points.xyz", "3\n");
  write("model.qfx", "(1 Model a\n");
  std::filesystem::create_symlink("own.his", folder.path() / "own.his");
  for (const auto& [name, text] : {std::pair{"empty.trj", "empty.trj is an empty file"},
                                   {"text.trj", "text.trj is no trajectory: it holds text"},
                                   {"cut.trj", "cut.trj is no trajectory: its head is damaged, or cut off"},
                                   {"points.xyz", "points.xyz is there, but not of a kind that can be loaded; "},
                                   {"model.qfx", "model.qfx holds a model; "},
                                   {"emty.trj", "did you mean empty.trj?"},
                                   {"emty", "did you mean empty?"},
                                   {"water.trj", " holds cut.trj, empty.trj, own.his, text.trj"},
                                   {"deep/water.trj", "there is no folder "},
                                   {".", "is a folder, not a trajectory"},
                                   {"own.his", "own.his cannot be opened: Too many levels of symbolic links"}}) {
    EXPECT_THAT(why_not_loaded(folder.path() / name, 0), HasSubstr(text)) << name;
  }
  const std::filesystem::path argon = EXAMPLES_DIR "/argon/argon";
  EXPECT_EQ(why_not_loaded(argon, 500), "");
  EXPECT_EQ(why_not_loaded(argon, 14), "the trajectory is of 500 atoms, and the model has 14");
}

}  // namespace
}  // namespace pathstat::desk
