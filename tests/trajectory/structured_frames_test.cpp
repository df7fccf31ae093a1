#include "trajectory/structured_frames.h"

#include "in_process_core.h"
#include "testing.h"
#include "trajectory/binary_open.h"

namespace pathstat {
namespace {

using testing_bytes::FileOnDisk;

std::string text_of(const FileOnDisk& file) {
  const auto bytes = file.content();
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

TEST(StructuredFrames, nest_objects_and_attributes_in_a_frame) {
  FileOnDisk disk;
  std::int32_t status = -1, id = 0;
  ASSERT_EQ(status_of(kvD_TRJ_OpenWrite, disk.path()), 0);
  kvD_TRJ_StartFrame(12, status, id);
  ASSERT_EQ(status, 0);
  const auto outer = std::to_string(id);
  const std::array<std::int32_t, 2> counts{3, 4};
  EXPECT_EQ(
      status_of(kvD_TRJ_WriteAttr, "Counts", attribute_int, AttributeValues(std::span<const std::int32_t>(counts))), 0);
  EXPECT_EQ(status_of(kvD_TRJ_PushObj, 7, "Cell", ""), 0);
  EXPECT_EQ(status_of(kvD_TRJ_EndFrame), 1) << "an object inside is open";
  EXPECT_EQ(status_of(kvD_TRJ_PopObj), 0);
  EXPECT_EQ(status_of(kvD_TRJ_PopObj), 1) << "the frame is not popped as an object";
  std::int32_t none = -1;
  kvD_TRJ_StartFrame(13, status, none);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(none, 0);
  EXPECT_EQ(status_of(kvD_TRJ_EndFrame), 0);
  EXPECT_EQ(status_of(kvD_TRJ_Close), 0);
  const std::string first = "(" + outer + " Frame 12\n (A I Counts (3 4))\n (7 Cell\n )\n)\n";
  EXPECT_EQ(text_of(disk), first);

  kvD_TRJ_OpenWrite(disk.path(), status);
  kvD_TRJ_StartFrame(13, status, id);
  kvD_TRJ_PushObj(8, "Cell", "", status);
  EXPECT_EQ(status_of(kvD_TRJ_Close), 0);
  EXPECT_EQ(text_of(disk), first + "(" + std::to_string(id) + " Frame 13\n (8 Cell\n )\n)\n")
      << "open objects are ended";
  EXPECT_NE(std::to_string(id), outer);
}

TEST(StructuredFrames, refuse_what_has_no_open_file_or_frame) {
  const AttributeValues nothing = std::span<const std::int32_t>();
  std::int32_t status = 0, id = 0;
  EXPECT_EQ(status_of(kvD_TRJ_Close), 1);
  kvD_TRJ_StartFrame(1, status, id);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(status_of(kvD_TRJ_OpenWrite, testing::TempDir() + "no such folder/file"), 1);
  FileOnDisk disk;
  ASSERT_EQ(status_of(kvD_TRJ_OpenWrite, disk.path()), 0);
  EXPECT_EQ(status_of(kvD_TRJ_WriteAttr, "A", attribute_int, nothing), 1);
  EXPECT_EQ(status_of(kvD_TRJ_PushObj, 1, "Cell", ""), 1);
  EXPECT_EQ(status_of(kvD_TRJ_EndFrame), 1);
  EXPECT_EQ(status_of(kvD_TRJ_OpenWrite, disk.path()), 1) << "one file at a time";
  EXPECT_EQ(status_of(kvD_TRJ_OpenRead, disk.path()), 1);
  EXPECT_EQ(TRJ_OpenMode, structured_mode::write);
  EXPECT_EQ(status_of(kvD_TRJ_Close), 0);
}

TEST(StructuredFrames, are_read_by_the_core) {
  InProcessCore core;
  EXPECT_EQ(status_of(kvD_TRJ_OpenRead, "/no such file"), 1);
  EXPECT_THAT(core.messages, ElementsAre("kvD_TRJ_OpenRead1 \"/no such file\""));
  EXPECT_EQ(TRJ_OpenMode, structured_mode::none);
  FileOnDisk disk;
  disk.replace({});
  EXPECT_EQ(status_of(kvD_TRJ_OpenRead, disk.path()), 0);
  EXPECT_EQ(TRJ_OpenMode, structured_mode::read);
  EXPECT_EQ(TRJ_OpenedFileName, disk.path());
  EXPECT_EQ(status_of(kvD_TRJ_Close), 0);
  EXPECT_EQ(TRJ_CloseMode, structured_mode::read);
  EXPECT_EQ(TRJ_OpenMode, structured_mode::none);
}

}  // namespace
}  // namespace pathstat
