#include "desk/panel/start_folder.h"

#include "desk/link/work_directory.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

/// A folder with a trajectory and an inner folder, beside one that is outside.
class StartFolderTest : public testing::Test {
 protected:
  StartFolderTest() {
    for (const auto* name : {"start", "start/inner", "outside"}) fs::create_directory(root_.path() / name);
    for (const auto* name : {"start/water.trj", "start/water.qfx", "start/inner/a.trj", "outside/b.trj"}) {
      std::ofstream(root_.path() / name) << "x";
    }
    fs::create_symlink("../outside", start() / "way-out");
    fs::create_symlink("inner", start() / "way-in");
    fs::create_symlink("../outside/b.trj", start() / "b.trj");
    fs::create_symlink("../outside/b.trj", start() / "c.2.trj");
    fs::create_symlink("../outside/not-yet", start() / "nowhere");
    fs::create_directories(start() / "deep" / "er");
    fs::create_symlink("deep/er", start() / "shortcut");
  }
  fs::path start() const { return root_.path() / "start"; }

  std::string refusal(const std::string& line) const {
    return StartFolder(start()).refusal(read_script(line).lines.at(0));
  }

  std::string error_;
  PrivateDirectory root_{error_};
};

TEST_F(StartFolderTest, resolves_links_before_it_judges_a_path) {
  const StartFolder folder(start());
  for (const auto* path :
       {"", ".", "water.trj", "inner/a.trj", "way-in/a.trj", "inner/../water.trj", "not/yet/there"}) {
    EXPECT_TRUE(folder.inside(path)) << path;
  }
  EXPECT_TRUE(folder.inside(start() / "water.trj"));
  for (const auto* path : {"..", "../outside/b.trj", "b.trj", "way-out", "way-out/b.trj", "/etc/passwd", "../start2",
                           "nowhere", "not-yet/../way-out/b.trj", "not-yet/../nowhere"}) {
    EXPECT_FALSE(folder.inside(path)) << path;
  }
}

TEST_F(StartFolderTest, refuses_lines_whose_path_leads_outside) {
  for (const auto* line :
       {"TRAJECTORY water.trj", "TRAJECTORY \"inner/a.trj\"", "TRAJECTORY", "TRAJECTORY {b'\".x}", "PROFILE",
        "STATISTICS_FILENAME table", "@select atoms all", "@import w water.gro inner/a.xtc --first 2"}) {
    EXPECT_EQ(refusal(line), "") << line;
  }
  for (const auto* line :
       {"TRAJECTORY ../outside/b.trj", "TRAJECTORY b.trj", "TRAJECTORY \"way-out/b.trj\"", "TRAJECTORY {/etc/passwd}",
        "TRAJECTORY $HOME/b.trj", "TRAJECTORY ~/b.trj", "STATISTICS_FILENAME ../outside/table", "TRAJECTORY b",
        "TRAJECTORY c.2", "STATISTICS_FILENAME nowhere", "TRAJECTORY not-yet/../way-out/b.trj",
        "TRAJECTORY shortcut/../../outside/b.trj", "@import w ../outside/b.gro", "@import w a.gro /etc/passwd",
        "@import w a.gro a.xtc --energies way-out/b.csv"}) {
    EXPECT_NE(refusal(line).find("outside of"), std::string::npos) << line;
  }
}

TEST_F(StartFolderTest, refuses_a_trajectory_whose_model_lies_outside) {
  fs::remove(start() / "water.qfx");
  fs::create_symlink("../outside/b.trj", start() / "water.qfx");
  for (const auto& name : {fs::path("water.trj"), start() / "water.trj"}) {
    EXPECT_NE(refusal("TRAJECTORY " + name.string()).find("water.qfx"), std::string::npos) << name;
  }
}

TEST_F(StartFolderTest, lists_folders_first_and_nothing_from_outside) {
  std::ofstream(start() / ".hidden") << "x";
  std::string names;
  const auto entries = StartFolder(start()).list("").value();
  for (const auto& entry : entries) names += entry.name + ':' + entry.kind + ' ';
  EXPECT_EQ(names, "deep:folder inner:folder shortcut:folder way-in:folder water.qfx:model water.trj:trajectory ");
  EXPECT_FALSE(StartFolder(start()).list("way-out"));
  EXPECT_FALSE(StartFolder(start()).list("not-yet/../way-out"));
  EXPECT_FALSE(StartFolder(start()).list("water.trj"));
}

}  // namespace
}  // namespace pathstat::desk
