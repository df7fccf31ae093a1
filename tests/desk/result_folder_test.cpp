#include "desk/report/result_folder.h"

#include <sys/resource.h>

#include <csignal>

#include "desk/link/work_directory.h"
#include "surroundings.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

class Results : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(error_, ""); }

  std::string text_of(const std::string& name) const {
    std::ifstream file(at(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  fs::path at(const std::string& name) const { return directory_.path() / name; }
  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const auto& entry : fs::directory_iterator(directory_.path())) all.push_back(entry.path().filename());
    std::sort(all.begin(), all.end());
    return all;
  }

 private:
  std::string error_;
  PrivateDirectory directory_{error_};

 protected:
  ResultFolder results_{directory_.path()};
};

TEST_F(Results, replace_links_and_do_not_follow_them) {
  std::ofstream(at("victim")) << "kept";
  fs::create_symlink(at("victim"), at("a"));
  fs::create_symlink(at("victim"), at("b"));
  fs::create_symlink(at("victim"), at(".pathdesk.part"));
  std::ofstream(at("source")) << "copied";
  EXPECT_TRUE(results_.write("a", "new"));
  EXPECT_TRUE(results_.copy(at("source"), "b"));
  EXPECT_TRUE(results_.copy(at("source"), "source")) << "on itself";
  EXPECT_EQ(text_of("victim") + text_of("a") + text_of("b") + text_of("source"), "keptnewcopiedcopied");
  EXPECT_THAT(names(), ElementsAre("a", "b", "source", "victim"));
}

TEST_F(Results, of_which_one_does_not_fit_leave_what_was_there_and_tell_the_reason_once) {
  results_.write("a", "old");
  const std::string large(10000, 'x');
  std::ofstream(at("source")) << large;
  {
    const FileSizeLimit limit(4096);
    EXPECT_FALSE(results_.write("a", large));
    for (const auto* name : {"b", "c", "d"}) EXPECT_FALSE(results_.copy(at("source"), name));
  }
  const auto problem = "cannot write " + at("a").string() + ", " + at("b").string() + ", " + at("c").string() +
                       " and 1 more: File too large";
  EXPECT_THAT(results_.take_problems(), ElementsAre(problem));
  EXPECT_THAT(results_.take_problems(), IsEmpty());
  EXPECT_EQ(text_of("a"), "old");
  EXPECT_THAT(names(), ElementsAre("a", "source"));
}

TEST_F(Results, that_cannot_be_made_are_told_with_their_reason) {
  fs::create_directories(at("folder/below"));
  EXPECT_FALSE(results_.write("folder", "x"));
  EXPECT_FALSE(results_.write("none/x", "x"));
  EXPECT_FALSE(results_.copy(at("missing"), "y"));
  const auto problems = results_.take_problems();
  EXPECT_THAT(problems, AllOf(Contains(HasSubstr("folder: Is a directory")),
                              Contains(HasSubstr("y: " + at("missing").string() + ": No such file"))));
  EXPECT_THAT(names(), ElementsAre("folder"));
}

}  // namespace
}  // namespace pathstat::desk
