#include "desk/cli/manual_page.h"

#include <CLI/CLI.hpp>

#include <cstdio>

#include "small_models.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

/// A program with a subcommand of each kind of place.
class SmallProgram {
 public:
  SmallProgram() {
    app.add_flag("--hidden")->group("");
    auto* run = app.add_subcommand("run", "Runs\n.a script");
    run->add_option("SCRIPT", text, "The script")->required();
    run->add_option("--format", list, "What to write")->option_text("svg,png")->delimiter(',');
    run->add_option("--out", text, "Where to")->option_text("DIR");
    run->add_flag("-v,--verbose", flag, "Tells more");
    run->footer("Lines:\n  @step N\\x\nEnd.");
    app.add_subcommand("info", "Tells")->add_option("FILE", text, "The file")->required();
    auto* analyse = app.add_subcommand("analyse", "Looks");
    analyse->add_option("FILES", list, "The files");
    analyse->footer("Of its own.");
  }

  std::string text;
  std::vector<std::string> list;
  bool flag = false;
  CLI::App app{"About it", "pathdesk"};
};

TEST(ManualPage, tells_all_that_the_help_tells) {
  const SmallProgram program;
  const auto page = manual_page(program.app, "1.2");
  for (const auto* text :
       {".TH PATHDESK 1 \"\" \"pathdesk 1.2\"", "run SCRIPT [OPTIONS]", "info FILE\n", "About it", ".SH PATHDESK RUN\n",
        "\n\\&.a script\n", ".B \\-\\-format svg,png\nWhat to write", ".B \\-v, \\-\\-verbose\nTells more",
        ".I SCRIPT\nThe script", ".SH PATHDESK ANALYSE\nLooks\n.TP\n.I FILES\nThe files\n.TP\n",
        "\n.PP\nOf its own.\n.SH SCRIPTS", "Lines:\n.nf\n  @step N\\ex\n.fi\nEnd."}) {
    EXPECT_THAT(page, HasSubstr(text));
  }
  EXPECT_THAT(page, Not(HasSubstr("hidden")));
}

/// What bash offers behind a line.
std::vector<std::string> offered(const ScratchFolder& folder, const std::string& line) {
  const SmallProgram program;
  folder.write("completion", bash_completion(program.app));
  folder.write("ask",
               "cd \"$1\"; compopt() { :; }; . ./completion\n"
               "read -ra COMP_WORDS <<< \"$2\"; [[ $2 == *' ' ]] && COMP_WORDS+=('')\n"
               "COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _pathdesk; printf '%s\\n' \"${COMPREPLY[@]}\"\n");
  const auto command = "bash '" + folder.file("ask") + "' '" + folder.path().string() + "' '" + line + "' > '" +
                       folder.file("answer") + "'";
  EXPECT_EQ(std::system(command.c_str()), 0);
  std::vector<std::string> words;
  std::ifstream answer(folder.file("answer"));
  for (std::string word; std::getline(answer, word);) words.push_back(word);
  return words;
}

TEST(BashCompletion, offers_what_each_place_takes) {
  const ScratchFolder folder;
  folder.write("a run.trj", "");
  folder.write("b.qfx", "");
  folder.write("c.script", "");
  std::filesystem::create_directories(folder.file("sub"));
  EXPECT_THAT(offered(folder, "pathdesk "), ElementsAre("run", "info", "analyse", "-h", "--help"));
  EXPECT_THAT(offered(folder, "pathdesk r"), ElementsAre("run"));
  EXPECT_THAT(offered(folder, "pathdesk run "), UnorderedElementsAre("c.script", "sub"));
  EXPECT_THAT(offered(folder, "pathdesk info "), UnorderedElementsAre("a run.trj", "b.qfx", "sub"));
  EXPECT_THAT(offered(folder, "pathdesk info b"), ElementsAre("b.qfx"));
  EXPECT_THAT(offered(folder, "pathdesk analyse c."), ElementsAre("c.script"));
  EXPECT_THAT(offered(folder, "pathdesk run --o"), ElementsAre("--out"));
  EXPECT_THAT(offered(folder, "pathdesk run --out "), ElementsAre("sub"));
  EXPECT_THAT(offered(folder, "pathdesk run --format "), ElementsAre("svg", "png"));
  EXPECT_THAT(offered(folder, "pathdesk run --format svg,p"), ElementsAre("svg,png"));
  EXPECT_THAT(offered(folder, "pathdesk info c."), ElementsAre("c.script")) << "where nothing else fits";
}

}  // namespace
}  // namespace pathstat::desk
