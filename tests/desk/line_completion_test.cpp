#include "desk/cli/line_completion.h"

#include "desk/link/work_directory.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

Completer offering(std::vector<std::string> candidates) {
  return [=](const auto&, auto) { return Completion{.candidates = candidates, .files = false}; };
}

struct Case {
  const char* line;
  std::vector<std::string> candidates;
  const char* after;
  bool choice;
};

TEST(LineCompletion, replaces_the_word_by_as_much_as_is_certain) {
  for (const auto& [line, candidates, after, choice] : {
           Case{"PROF", {"PROFILE"}, "PROFILE ", false},
           Case{"a prof", {"PROFILE"}, "a PROFILE ", false},
           Case{"MSD_A", {"MSD_ANISOTROPIC", "MSD_ATOMS"}, "MSD_A", true},
           Case{"ms", {"MSD_ANISOTROPIC", "MSD_ATOMS"}, "MSD_A", true},
           Case{"x t", {"Temperature", "Total Energy"}, "x \"T", true},
           Case{"x \"t", {"Temperature"}, "x \"Temperature\" ", false},
           Case{"x 'tot", {"Total Energy"}, "x 'Total Energy' ", false},
           Case{"x {to", {"Total Energy"}, "x {Total Energy} ", false},
           Case{"x \"a b\" t", {"Total Energy"}, "x \"a b\" \"Total Energy\" ", false},
           Case{"x ", {"yes"}, "x yes ", false},
           Case{"x nothing", {}, "x nothing", false},
           Case{"x \xc3", {"\xc3\xa4", "\xc3\xb6"}, "x \xc3", true},
       }) {
    const auto done = complete_line(line, offering(candidates));
    EXPECT_EQ(std::string(line).substr(0, done.from) + done.text, after) << line;
    EXPECT_EQ(!done.choices.empty(), choice) << line;
  }
}

TEST(LineCompletion, gives_the_words_in_front_without_their_marks) {
  complete_line("a 'b c' {d} e", [](const std::vector<std::string>& before, std::string_view begun) {
    EXPECT_THAT(before, ElementsAre("a", "b c", "d"));
    EXPECT_EQ(begun, "e");
    return Completion{};
  });
}

TEST(LineCompletion, goes_on_with_paths) {
  std::string error;
  const PrivateDirectory folder(error);
  ASSERT_EQ(error, "");
  std::filesystem::create_directories(folder.path() / "with blank/below");
  for (const char* name : {"one.trj", "only.msi", ".hidden"}) std::ofstream(folder.path() / name) << "x";
  const auto in = folder.path().string() + "/";
  EXPECT_THAT(paths_beginning(in + "o"), ElementsAre(in + "one.trj", in + "only.msi"));
  EXPECT_THAT(paths_beginning(in), ElementsAre(in + "one.trj", in + "only.msi", in + "with blank/"));
  const auto trajectories = [](const std::filesystem::path& file) { return file.extension() == ".trj"; };
  EXPECT_THAT(paths_beginning(in + "o", trajectories), ElementsAre(in + "one.trj"));
  EXPECT_THAT(paths_beginning(in, trajectories), ElementsAre(in + "one.trj", in + "with blank/"));
  EXPECT_THAT(paths_beginning(in + ".h"), ElementsAre(in + ".hidden"));
  EXPECT_THAT(paths_beginning(in + "missing/"), IsEmpty());

  const auto files = [](const auto&, auto) { return Completion{.candidates = {}, .files = true}; };
  EXPECT_EQ(complete_line("T " + in + "w", files).text, "\"" + in + "with blank/") << "the folder goes on";
  EXPECT_EQ(complete_line("T \"" + in + "with blank/b", files).text, "\"" + in + "with blank/below/");
  EXPECT_EQ(complete_line("T " + in + "on", files).text, in + "on");
  EXPECT_EQ(complete_line("T " + in + "onl", files).text, in + "only.msi ");

  ::setenv("HOME", folder.path().c_str(), 1);
  EXPECT_THAT(paths_beginning("~/o"), ElementsAre("~/one.trj", "~/only.msi"));
}

}  // namespace
}  // namespace pathstat::desk
