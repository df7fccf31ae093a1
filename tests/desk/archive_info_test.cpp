#include "desk/cli/file_info.h"
#include "desk/small_models.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

/// What `pathdesk info` prints of a file, standard error behind standard output.
struct Info {
  explicit Info(const std::string& path) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    code = print_file_info(path);
    std::fflush(stdout);
    text = testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
  }
  int code;
  std::string text;
};

const std::string title = "f                                                               ";  // 64 characters
const std::string frame = "\nd\nPBC 10 12 14 90 90 30\nC 1 2 3 R 1 c C 0\nH 1 2 4 R 1 h H 0\nend\nend\n";
const std::string archive = "a title\nPBC=ON\n" + title + "-1.5" + frame + title + "-2.5" + frame;

TEST(ArchiveInfo, tells_what_the_frames_hold) {
  const ScratchFolder folder;
  const Info info(folder.write("run.arc", archive));
  EXPECT_EQ(info.code, 0);
  for (const char* line : {"archive of lines\n", "a title\n", "periodic directions 3\n", "atoms               2\n",
                           "frames              2\n", "total energy          -1.5 (-2.5) kcal/mol\n",
                           "volume                840 (840) Å³\n", "cell                  10  12  14 (10  12  14) Å\n",
                           "cell angles           90  90  30 (90  90  30) °\n", "velocities          no\n"}) {
    EXPECT_THAT(info.text, HasSubstr(line));
  }
}

TEST(ArchiveInfo, tells_where_a_file_breaks_off) {
  const ScratchFolder folder;
  const Info cut(folder.write("cut.arc", archive.substr(0, archive.size() - 20)));
  EXPECT_EQ(cut.code, 2);
  EXPECT_THAT(cut.text, AllOf(HasSubstr("frames              1 (the file breaks off there)"),
                              HasSubstr("cut.arc is damaged (status 50004)")));
  const Info helical(folder.write("helix.arc", "t\nHELIX\n"));
  EXPECT_EQ(helical.code, 2);
  EXPECT_THAT(helical.text, HasSubstr("helix.arc cannot be read (status 50013)"));
}

}  // namespace
}  // namespace pathstat::desk
