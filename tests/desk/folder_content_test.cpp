#include "desk/link/folder_content.h"

#include "desk/link/work_directory.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

TEST(FolderContent, is_listed_and_removed_without_following_links) {
  std::string error;
  const PrivateDirectory directory(error);
  ASSERT_EQ(error, "");
  const auto& base = directory.path();
  const auto folder = base / "folder";
  fs::create_directories(folder / "deep/deeper");
  fs::create_directories(base / "outside");
  std::ofstream(folder / "deep/deeper/.file") << 1;
  std::ofstream(base / "outside/file") << 1;
  fs::create_directory_symlink(base / "outside", folder / "link");

  std::error_code failure;
  EXPECT_THAT(names_in(folder, failure), UnorderedElementsAre("deep", "link"));
  EXPECT_FALSE(failure);
  EXPECT_TRUE(remove_tree(folder));
  EXPECT_FALSE(fs::exists(folder));
  EXPECT_TRUE(fs::exists(base / "outside/file"));
  EXPECT_TRUE(remove_tree(folder));  // which is not there
  EXPECT_THAT(names_in(folder, failure), IsEmpty());
  EXPECT_EQ(failure, std::errc::no_such_file_or_directory);
}

}  // namespace
}  // namespace pathstat::desk
