#include "desk/script/script.h"

#include <cerrno>
#include <tuple>

#include "desk/script/answer_text.h"
#include "desk/script/console.h"
#include "desk/script/file_content.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

struct LineCase {
  const char* text;
  LineKind kind;
  const char* word;
  const char* arguments;
  std::vector<std::string> words;
};

TEST(Script, reads_each_kind_of_line) {
  const LineCase cases[] = {
      {"PROFILE", LineKind::command, "PROFILE", "", {}},
      {"  TRAJECTORY\t argon.trj \r", LineKind::command, "TRAJECTORY", "argon.trj", {}},
      {"SELECT_PROPERTIES \"Total Energy\" # both", LineKind::command, "SELECT_PROPERTIES", "\"Total Energy\"", {}},
      {"RDF_TYPE \"# no comment\" C#1", LineKind::command, "RDF_TYPE", "\"# no comment\" C#1", {}},
      {"@import w 'my run.gro' a.xtc --step 2", LineKind::import, "", "", {"w", "my run.gro", "a.xtc", "--step", "2"}},
      {"@select atoms element O H", LineKind::select_atoms, "", "", {"element", "O", "H"}},
      {"@select atoms ids 1,2-5", LineKind::select_atoms, "", "", {"ids", "1,2-5"}},
      {"@group water = (element 'O') # all", LineKind::group, "", "", {"water", "=", "(element", "O", ")"}},
      {"@select  models 'my model'", LineKind::select_models, "", "", {"my model"}},
      {"@answer PATHSTAT_DLG_1 2", LineKind::answer, "", "", {"PATHSTAT_DLG_1", "2"}},
      {"@request RDF_TYPE RDF_CUTOFF", LineKind::request, "", "", {"RDF_TYPE", "RDF_CUTOFF"}},
      {"@show model", LineKind::show_model, "", "", {}},
      {"@step forwards 12", LineKind::step, "", "", {"forwards", "12"}},
      {"@step backwards", LineKind::step, "", "", {"backwards"}},
      {"@pick \"Profile of Pressure\" 0.5", LineKind::pick, "", "", {"Profile of Pressure", "0.5"}},
      {"@pick Profile -1e2 3", LineKind::pick, "", "", {"Profile", "-1e2", "3"}},
      {"@overlay Both 'Profile of A' B", LineKind::overlay, "", "", {"Both", "Profile of A", "B"}},
      {"@measure angle C1:1 3 4-a", LineKind::measure, "", "", {"angle", "C1:1", "3", "4-a"}},
      {"@measure list", LineKind::list_measures, "", "", {}},
      {"@measure remove 12", LineKind::remove_measures, "", "", {"12"}},
      {"@stop-on-error no", LineKind::stop_on_error, "", "", {"no"}}};
  for (const auto& [text, kind, word, arguments, words] : cases) {
    const auto script = read_script(text);
    EXPECT_THAT(script.problems, IsEmpty()) << text;
    ASSERT_EQ(script.lines.size(), 1u) << text;
    EXPECT_EQ(script.lines[0].kind, kind) << text;
    EXPECT_EQ(script.lines[0].word, word) << text;
    EXPECT_EQ(script.lines[0].arguments, arguments) << text;
    EXPECT_EQ(script.lines[0].words, words) << text;
  }
}

TEST(Script, numbers_lines_as_they_stand_in_the_file) {
  const auto script = read_script("# title\n\nPROFILE\n   # more\nRDF");
  ASSERT_EQ(script.lines.size(), 2u);
  EXPECT_EQ(script.lines[0].number, 3);
  EXPECT_EQ(script.lines[1].number, 5);
}

TEST(Script, passes_over_a_byte_order_mark_and_carriage_returns) {
  const auto script = read_script("\xef\xbb\xbfTRAJECTORY a.trj\r\nPROFILE\r\n");
  ASSERT_EQ(script.lines.size(), 2u);
  EXPECT_EQ(script.lines[0].word, "TRAJECTORY");
  EXPECT_EQ(script.lines[0].arguments, "a.trj");
  EXPECT_EQ(script.lines[1].text, "PROFILE");
}

TEST(Script, finds_a_mark_that_is_not_closed) {
  for (const auto& [text, mark] : {std::pair{"\"Total Energy", '"'},
                                   {"a 'b", '\''},
                                   {"{a b", '{'},
                                   {"\"a\"", '\0'},
                                   {"it's", '\0'},
                                   {"\"a\"b", '\0'},
                                   {"", '\0'}}) {
    EXPECT_EQ(open_mark(text), mark) << text;
  }
}

TEST(Answers, offer_what_can_be_had_and_no_heading_of_nothing) {
  const std::vector<std::string> ranges{"BULK,     Pressure,     Volume,DIPOLE,     < Magnitude >,MEASUREMENTS"};
  EXPECT_THAT(choices_of(ranges), ElementsAre("Pressure", "Volume"));
  EXPECT_EQ(spelled_choices(ranges), "BULK, Pressure, Volume");
  EXPECT_THAT(choices_of({"ALL,SELECTED"}), ElementsAre("ALL", "SELECTED"));
  EXPECT_EQ(spelled_choices({"MEASUREMENTS,  < Distance >"}), "MEASUREMENTS");
}

TEST(TimeLeft, is_told_when_enough_is_done) {
  for (const auto& [fraction, seconds, text] : {std::tuple{0.5, 12.0, "12 s left"},
                                                {0.25, 50.0, "2 min 30 s left"},
                                                {0.1, 433.0, "1 h 04 min left"},
                                                {0.005, 10.0, ""},
                                                {0.5, 0.5, ""},
                                                {1.0, 10.0, ""}}) {
    EXPECT_EQ(time_left(fraction, seconds), text) << fraction;
  }
}

struct ProblemCase {
  const char* text;
  const char* sentence;
};

TEST(Script, tells_what_is_wrong_with_a_line_and_what_was_probably_meant) {
  for (const auto& [text, sentence] :
       {ProblemCase{"PROFILE\n@selct atoms all", "2: there is no line @selct atoms all; did you mean @select atoms"},
        ProblemCase{"@anser A 1", "did you mean @answer KEY CHOICE"},
        ProblemCase{"@stop-on-eror yes", "did you mean @stop-on-error yes | no"},
        ProblemCase{"@answer PATHSTAT_DLG_1", "this line is written @answer KEY CHOICE"},
        ProblemCase{"@answer PATHSTAT_DLG_1 yes", "this line is written @answer KEY CHOICE"},
        ProblemCase{"@answer PATHSTAT_DLG_1 0", "this line is written @answer KEY CHOICE"},
        ProblemCase{"@stop-on-error maybe", "this line is written @stop-on-error yes | no"},
        ProblemCase{"@import water", "this line is written @import NAME TOPOLOGY TRAJECTORY ..."},
        ProblemCase{"@import a/b top.gro", "a/b is no name for the files"},
        ProblemCase{"@import a top.gro --selct all", "there is no option --selct; did you mean --select?"},
        ProblemCase{"@import a top.gro --last 0", "--last: 0 is no number above 0"},
        ProblemCase{"@select atoms", "this line is written @select atoms"},
        ProblemCase{"@show", "did you mean @show model"},
        ProblemCase{"@show model now", "this line is written @show model"},
        ProblemCase{"@step", "this line is written @step"},
        ProblemCase{"@step up 3", "this line is written @step"},
        ProblemCase{"@step forwards 0", "this line is written @step"},
        ProblemCase{"@step forwards 1.5", "this line is written @step"},
        ProblemCase{"@step forwards 3 4", "this line is written @step"},
        ProblemCase{"@overlay Both A", "this line is written @overlay NAME GRAPH GRAPH ..."},
        ProblemCase{"@pick Profile", "this line is written @pick"},
        ProblemCase{"@pick Profile of Pressure 0.5", "this line is written @pick"},
        ProblemCase{"@pick Profile nan", "this line is written @pick"},
        ProblemCase{"@measure", "this line is written @measure distance"},
        ProblemCase{"@measure torsion 1 2 3", "this line is written @measure distance"},
        ProblemCase{"@measure remove 0", "this line is written @measure remove N | all"},
        ProblemCase{"@mesure list", "did you mean @measure list"},
        ProblemCase{"@request", "this line is written @request WORD ..."}}) {
    EXPECT_THAT(read_script(text).problems, ElementsAre(HasSubstr(sentence))) << text;
  }
  EXPECT_THAT(read_script(std::string_view("a\0b", 3)).problems, ElementsAre(HasSubstr("not a line of text")));
}

struct PathCase {
  const char* word;
  const char* arguments;
  const char* resolved;
};

TEST(Script, takes_relative_paths_as_relative_to_its_folder) {
  for (const auto& [word, arguments, resolved] :
       {PathCase{"TRAJECTORY", "argon.trj", "\"/runs/argon.trj\""},
        PathCase{"TRAJECTORY", "../data/argon", "\"/data/argon\""},
        PathCase{"TRAJECTORY", "\"my run.trj\"", "\"/runs/my run.trj\""},
        PathCase{"TRAJECTORY", "/abs/argon.trj", "\"/abs/argon.trj\""},
        PathCase{"TRAJECTORY", "$HOME/a.trj", "$HOME/a.trj"}, PathCase{"TRAJECTORY", "", ""},
        PathCase{"STATISTICS_FILENAME", "{out.dat} more", "\"/runs/out.dat\" more"},
        PathCase{"TRAJECTORY", "'a\"b'", "'/runs/a\"b'"}, PathCase{"TRAJECTORY", "{a\"b'c}", "{/runs/a\"b'c}"},
        PathCase{"RDF_TYPE", "O H", "O H"}}) {
    EXPECT_EQ(with_resolved_path(word, arguments, "/runs"), resolved) << arguments;
  }
}

TEST(Script, splits_words_at_blanks_and_keeps_quoted_ones_whole) {
  EXPECT_THAT(words_of(" a 'b c'\t\"d\" {e f} g'h "), ElementsAre("a", "b c", "d", "e f", "g'h"));
  EXPECT_THAT(words_of("\"unclosed text"), ElementsAre("unclosed text"));
  EXPECT_THAT(words_of(" \t"), IsEmpty());
}

TEST(FileContent, of_a_file_that_is_not_there_is_nothing_and_says_so) {
  std::string content = "of another";
  errno = 0;
  EXPECT_FALSE(read_content("/nowhere/at/all", content));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(content, "");
}

}  // namespace
}  // namespace pathstat::desk
