#include "support/whole_file.h"

#include <new>

#include "scratch_folder.h"
#include "testing.h"

namespace pathstat {
namespace {

namespace fs = std::filesystem;

class WholeFile : public testing::Test {
 protected:
  std::string content() const { return content_of(path_); }
  auto files() const { return std::distance(fs::directory_iterator(folder_), {}); }

  const ScratchFolder scratch_;
  const fs::path folder_ = scratch_.path(), path_ = scratch_.write("result", "of an earlier run");
};

TEST_F(WholeFile, takes_the_place_of_an_earlier_one_only_once_it_is_whole) {
  const auto status = write_whole_file(path_, [&](RecordWriter& file) {
    EXPECT_EQ(content(), "of an earlier run");
    return file.write(RecordBytes().i32(7));
  });
  EXPECT_EQ(status, RecordStatus::ok);
  EXPECT_EQ(content(), std::string("\0\0\0\4\0\0\0\7\0\0\0\4", 12));
  EXPECT_EQ(files(), 1);
}

TEST_F(WholeFile, is_never_written_through_a_link) {
  fs::create_symlink(path_, folder_ / ".pathstat.part");
  EXPECT_EQ(write_whole_file(folder_ / "other", [](RecordWriter&) { return RecordStatus::ok; }), RecordStatus::ok);
  EXPECT_EQ(content(), "of an earlier run");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder_ / "other")));
}

TEST_F(WholeFile, that_fails_leaves_the_earlier_one_and_nothing_else) {
  const auto too_little_memory = [](RecordWriter& file) -> RecordStatus {
    file.write(RecordBytes().i32(7));
    throw std::bad_alloc();
  };
  const auto full_disk = [](RecordWriter&) { return RecordStatus::failed; };
  EXPECT_EQ(write_whole_file(path_, too_little_memory), RecordStatus::failed);
  EXPECT_EQ(write_whole_file(path_, full_disk), RecordStatus::failed);
  EXPECT_EQ(write_whole_file(folder_ / "none/result", full_disk), RecordStatus::failed);
  EXPECT_EQ(content(), "of an earlier run");
  EXPECT_EQ(files(), 1);
}

}  // namespace
}  // namespace pathstat
