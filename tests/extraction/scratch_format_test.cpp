#include "extraction/scratch_format.h"

#include "services/work_directory.h"
#include "testing.h"

namespace pathstat {
namespace {

std::string bytes_of(std::string_view hex) {
  std::string bytes;
  std::string digits;
  for (const char c : hex) {
    if (c == ' ') continue;
    digits += c;
    if (digits.size() < 2) continue;
    bytes += static_cast<char>(std::stoi(digits, nullptr, 16));
    digits.clear();
  }
  return bytes;
}

/// Two models of up to two values each, and one extra.
const std::string model_file = bytes_of(
    "00000014 00000002 00000002 0000014D 00002715 00000001 00000014"                 // head
    "0000001C 00000001 3FF0000000000000 3FF8000000000000 C000000000000000 0000001C"  // 1, 1.0: 1.5, -2.0
    "0000001C 00000003 4008000000000000 4014000000000000 0000000000000000 0000001C"  // 3, 3.0: 5.0, 0.0
    "00000008 00000065 FFFFFFFF 00000008"                                            // objects 101, -1
    "00000008 00000002 00000001 00000008"                                            // sizes
    "00000008 4024000000000000 00000008");                                           // 10.0

RecordReader reader_of(const std::string& bytes) {
  return RecordReader(std::as_bytes(std::span(bytes.data(), bytes.size())));
}

class ScratchFile : public WorkDirectory {};

TEST_F(ScratchFile, of_models_has_the_bytes_of_the_format) {
  const std::vector<std::int32_t> numbers{1, 3};
  const std::vector<double> x{1.0, 3.0};
  const std::vector<double> values{1.5, -2.0, 5.0, 0.0};
  const std::vector<std::int32_t> models{101, -1};
  const std::vector<std::int32_t> sizes{2, 1};
  const std::vector<double> extras{10.0};
  ASSERT_EQ(write_scratch(path("models"), {{2, 2, kind_models, 1}, numbers, x, values, 0, 2, models, sizes, extras}),
            RecordStatus::ok);
  EXPECT_EQ(content("models"), model_file);
}

TEST_F(ScratchFile, takes_a_slice_of_wider_rows_and_leaves_out_absent_records) {
  const std::vector<std::int32_t> numbers{7};
  const std::vector<double> x{0.5};
  const std::vector<double> values{9.0, 1.0, 2.0, 9.0};
  ASSERT_EQ(write_scratch(path("slice"), {{1, 2, kind_frames, 0}, numbers, x, values, 1, 4, {}, {}, {}}),
            RecordStatus::ok);
  EXPECT_EQ(content("slice"),
            bytes_of("00000014 00000001 00000002 0000014D 00002714 00000000 00000014"
                     "0000001C 00000007 3FE0000000000000 3FF0000000000000 4000000000000000 0000001C"));
}

struct Arrays {
  std::vector<std::int32_t> numbers = std::vector<std::int32_t>(4);
  std::vector<double> x = std::vector<double>(4);
  std::vector<double> values = std::vector<double>(8);
  std::vector<std::int32_t> models = std::vector<std::int32_t>(4);
  std::vector<std::int32_t> sizes = std::vector<std::int32_t>(4);
  std::vector<double> extras = std::vector<double>(4);

  ScratchArrays spans() { return {numbers, x, values, models, sizes, extras}; }
};

TEST(ScratchReading, gives_back_what_the_bytes_say) {
  RecordReader file = reader_of(model_file);
  ScratchHead head;
  ASSERT_EQ(read_scratch_head(file, head), RecordStatus::ok);
  EXPECT_EQ(head.points, 2);
  EXPECT_EQ(head.values, 2);
  EXPECT_EQ(head.kind, kind_models);
  EXPECT_EQ(head.extras, 1);
  Arrays into;
  ASSERT_EQ(read_scratch_points(file, head, into.spans()), RecordStatus::ok);
  EXPECT_THAT(into.numbers, ElementsAre(1, 3, 0, 0));
  EXPECT_THAT(into.x, ElementsAre(1.0, 3.0, 0.0, 0.0));
  EXPECT_THAT(into.values, ElementsAre(1.5, -2.0, 5.0, 0.0, 0.0, 0.0, 0.0, 0.0));
  EXPECT_THAT(into.models, ElementsAre(101, -1, 0, 0));
  EXPECT_THAT(into.sizes, ElementsAre(2, 1, 0, 0));
  EXPECT_THAT(into.extras, ElementsAre(10.0, 0.0, 0.0, 0.0));
}

TEST(ScratchReading, refuses_every_cut) {
  for (std::size_t length = 0; length < model_file.size(); ++length) {
    const std::string cut = model_file.substr(0, length);
    RecordReader file = reader_of(cut);
    ScratchHead head;
    EXPECT_NE(read_scratch_head(file, head), RecordStatus::ok) << length << " bytes";
    EXPECT_EQ(head.points, 0) << "no count is passed on";
  }
}

struct Head {
  const char* name;
  const char* counts;
};
class HostileHead : public testing::TestWithParam<Head> {};
TEST_P(HostileHead, is_refused_before_anything_is_sized_by_it) {
  const std::string bytes = bytes_of(std::string("00000014") + GetParam().counts + "00000014") + model_file.substr(28);
  RecordReader file = reader_of(bytes);
  ScratchHead head;
  EXPECT_NE(read_scratch_head(file, head), RecordStatus::ok);
  EXPECT_EQ(head.points, 0);
}
INSTANTIATE_TEST_SUITE_P(counts, HostileHead,
                         testing::Values(Head{"many_points", "7FFFFFFF 00000002 0000014D 00002715 00000001"},
                                         Head{"negative_points", "FFFFFFFF 00000002 0000014D 00002715 00000001"},
                                         Head{"wide_points", "00000002 7FFFFFFF 0000014D 00002715 00000001"},
                                         Head{"product_past_64_bits", "7FFFFFFF 7FFFFFFF 0000014D 00002715 7FFFFFFF"},
                                         Head{"negative_width", "00000002 FFFFFFFE 0000014D 00002715 00000001"},
                                         Head{"many_extras", "00000002 00000002 0000014D 00002715 7FFFFFFF"},
                                         Head{"negative_extras", "00000002 00000002 0000014D 00002715 FFFFFFFF"},
                                         Head{"unknown_kind", "00000002 00000002 0000014D 00002716 00000001"}),
                         [](const auto& named) { return named.param.name; });

TEST(ScratchReading, refuses_a_point_size_beyond_the_width) {
  std::string bytes = model_file;
  bytes[bytes.find(bytes_of("00000002 00000001 00000008")) + 3] = 3;
  RecordReader file = reader_of(bytes);
  ScratchHead head;
  ASSERT_EQ(read_scratch_head(file, head), RecordStatus::ok);
  Arrays into;
  EXPECT_EQ(read_scratch_points(file, head, into.spans()), RecordStatus::wrong_length);
}

}  // namespace
}  // namespace pathstat
