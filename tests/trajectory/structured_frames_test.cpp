#include "trajectory/structured_frames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "in_process_core.h"
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
  kvD_TRJ_OpenWrite(disk.path(), status);
  ASSERT_EQ(status, 0);
  kvD_TRJ_StartFrame(12, status, id);
  ASSERT_EQ(status, 0);
  const auto outer = std::to_string(id);
  const std::array<std::int32_t, 2> counts{3, 4};
  kvD_TRJ_WriteAttr("Counts", attribute_int, AttributeValues(std::span<const std::int32_t>(counts)), status);
  EXPECT_EQ(status, 0);
  kvD_TRJ_PushObj(7, "Cell", "", status);
  EXPECT_EQ(status, 0);
  kvD_TRJ_EndFrame(status);
  EXPECT_EQ(status, 1) << "an object inside is open";
  kvD_TRJ_PopObj(status);
  EXPECT_EQ(status, 0);
  kvD_TRJ_PopObj(status);
  EXPECT_EQ(status, 1) << "the frame is not popped as an object";
  std::int32_t none = -1;
  kvD_TRJ_StartFrame(13, status, none);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(none, 0);
  kvD_TRJ_EndFrame(status);
  EXPECT_EQ(status, 0);
  kvD_TRJ_Close(status);
  EXPECT_EQ(status, 0);
  const std::string first = "(" + outer + " Frame 12\n (A I Counts (3 4))\n (7 Cell\n )\n)\n";
  EXPECT_EQ(text_of(disk), first);

  kvD_TRJ_OpenWrite(disk.path(), status);
  kvD_TRJ_StartFrame(13, status, id);
  kvD_TRJ_PushObj(8, "Cell", "", status);
  kvD_TRJ_Close(status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(text_of(disk), first + "(" + std::to_string(id) + " Frame 13\n (8 Cell\n )\n)\n")
      << "open objects are ended";
  EXPECT_NE(std::to_string(id), outer);
}

TEST(StructuredFrames, refuse_what_has_no_open_file_or_frame) {
  const AttributeValues nothing = std::span<const std::int32_t>();
  std::int32_t status = 0, id = 0;
  kvD_TRJ_Close(status);
  EXPECT_EQ(status, 1);
  kvD_TRJ_StartFrame(1, status, id);
  EXPECT_EQ(status, 1);
  kvD_TRJ_OpenWrite(testing::TempDir() + "no such folder/file", status);
  EXPECT_EQ(status, 1);
  FileOnDisk disk;
  kvD_TRJ_OpenWrite(disk.path(), status);
  ASSERT_EQ(status, 0);
  kvD_TRJ_WriteAttr("A", attribute_int, nothing, status);
  EXPECT_EQ(status, 1);
  kvD_TRJ_PushObj(1, "Cell", "", status);
  EXPECT_EQ(status, 1);
  kvD_TRJ_EndFrame(status);
  EXPECT_EQ(status, 1);
  kvD_TRJ_OpenWrite(disk.path(), status);
  EXPECT_EQ(status, 1) << "one file at a time";
  kvD_TRJ_OpenRead(disk.path(), status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(TRJ_OpenMode, structured_mode::write);
  kvD_TRJ_Close(status);
  EXPECT_EQ(status, 0);
}

TEST(StructuredFrames, are_read_by_the_core) {
  InProcessCore core;
  std::int32_t status = 0;
  kvD_TRJ_OpenRead("/no such file", status);
  EXPECT_EQ(status, 1);
  EXPECT_THAT(core.messages, testing::ElementsAre("kvD_TRJ_OpenRead1 \"/no such file\""));
  EXPECT_EQ(TRJ_OpenMode, structured_mode::none);
  FileOnDisk disk;
  disk.replace({});
  kvD_TRJ_OpenRead(disk.path(), status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(TRJ_OpenMode, structured_mode::read);
  EXPECT_EQ(TRJ_OpenedFileName, disk.path());
  kvD_TRJ_Close(status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(TRJ_CloseMode, structured_mode::read);
  EXPECT_EQ(TRJ_OpenMode, structured_mode::none);
}

}  // namespace
}  // namespace pathstat
