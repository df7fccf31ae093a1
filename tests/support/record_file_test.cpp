#include "support/record_file.h"

#include <sys/resource.h>

#include <csignal>

#include "scratch_folder.h"
#include "surroundings.h"
#include "testing.h"

namespace pathstat {
namespace {

using Bytes = std::vector<std::byte>;

Bytes bytes(std::initializer_list<int> values) {
  Bytes result;
  for (const int value : values) result.push_back(static_cast<std::byte>(value));
  return result;
}

class TemporaryFile {
 public:
  const std::string& path() const { return path_; }
  void write(std::span<const std::byte> content) const {
    std::ofstream file(path_, std::ios::binary | std::ios::app);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
  }
  Bytes content() const {
    Bytes all(std::filesystem::file_size(path_));
    std::ifstream(path_, std::ios::binary)
        .read(reinterpret_cast<char*>(all.data()), static_cast<std::streamsize>(all.size()));
    return all;
  }

 private:
  const ScratchFolder folder_;
  const std::string path_ = folder_.file("records");
};

/// Every rule of the reader holds for a file and for a block of memory.
class RecordReaderOver : public testing::TestWithParam<bool> {
 protected:
  RecordReader over(std::span<const std::byte> content) {
    block_.assign(content.begin(), content.end());
    if (!GetParam()) return RecordReader(block_);
    file_ = std::make_unique<TemporaryFile>();
    std::ofstream(file_->path());
    file_->write(block_);
    RecordReader reader;
    EXPECT_EQ(reader.open(file_->path()), RecordStatus::ok);
    return reader;
  }

 private:
  Bytes block_;
  std::unique_ptr<TemporaryFile> file_;
};
INSTANTIATE_TEST_SUITE_P(sources, RecordReaderOver, testing::Values(false, true),
                         [](const auto& row) { return row.param ? "file" : "memory"; });

const Bytes two_records = bytes({0, 0, 0, 3, 'a', 'b', 'c', 0, 0, 0, 3, 0, 0, 0, 1, 'd', 0, 0, 0, 1});

TEST_P(RecordReaderOver, tells_an_end_from_a_cut_at_every_byte) {
  for (std::size_t kept = 0; kept < two_records.size(); ++kept) {
    auto reader = over(std::span(two_records).first(kept));
    RecordStatus status = reader.expect_any(1000);
    if (status == RecordStatus::ok) {
      reader.skip();
      status = reader.expect_any(1000);
    }
    EXPECT_EQ(status, kept == 0 || kept == 11 ? RecordStatus::end : RecordStatus::cut) << kept << " bytes";
    EXPECT_EQ(reader.position(), kept < 11 ? 0 : 11) << "a refused record is not passed";
  }
}

TEST_P(RecordReaderOver, refuses_a_length_before_it_is_used) {
  auto reader = over(two_records);
  EXPECT_EQ(reader.expect(2), RecordStatus::wrong_length);
  EXPECT_EQ(reader.expect_any(2), RecordStatus::wrong_length);
  auto hostile = over(bytes({0xff, 0xff, 0xff, 0xff, 1, 2, 3, 4, 5, 6, 7, 8}));
  EXPECT_EQ(hostile.expect_any(std::numeric_limits<std::int64_t>::max()), RecordStatus::cut);
  EXPECT_EQ(hostile.expect(-1), RecordStatus::wrong_length);
}

TEST_P(RecordReaderOver, refuses_offsets_outside_the_file) {
  auto reader = over(two_records);
  Bytes into(4);
  EXPECT_EQ(reader.read_at(18, into), RecordStatus::cut);
  EXPECT_EQ(reader.read_at(std::int64_t{1} << 60, into), RecordStatus::cut);
  for (const std::int64_t outside : {std::int64_t{1} << 60, std::int64_t{-5}}) {
    reader.seek(outside);
    EXPECT_EQ(reader.expect_any(10), RecordStatus::end);
    EXPECT_EQ(reader.read_bytes(into), RecordStatus::cut);
  }
}

TEST_P(RecordReaderOver, keeps_its_place_through_any_mix_of_calls) {
  const unsigned seed = std::random_device{}();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  const std::array<std::size_t, 8> lengths{0, 1, 20, 500, 4095, 4096, 70'000, 300'000};
  std::vector<Bytes> payloads;
  std::vector<std::int64_t> starts;
  Bytes content;
  for (int k = 0; k < 60; ++k) {
    Bytes payload(lengths[random() % lengths.size()]);
    for (auto& byte : payload) byte = static_cast<std::byte>(random());
    std::array<std::byte, 4> length;
    store_big_endian(static_cast<std::int32_t>(payload.size()), length.data());
    starts.push_back(static_cast<std::int64_t>(content.size()));
    content.insert(content.end(), length.begin(), length.end());
    content.insert(content.end(), payload.begin(), payload.end());
    content.insert(content.end(), length.begin(), length.end());
    payloads.push_back(std::move(payload));
  }
  auto reader = over(content);
  std::size_t next = 0;
  for (int step = 0; step < 400; ++step) {
    if (next == payloads.size() || random() % 8 == 0) {
      next = random() % payloads.size();
      reader.seek(starts[next]);
    }
    ASSERT_EQ(reader.position(), starts[next]);
    ASSERT_EQ(reader.expect(static_cast<std::int64_t>(payloads[next].size())), RecordStatus::ok);
    if (random() % 2 == 0) {
      reader.skip();
    } else {
      ASSERT_EQ(reader.load(), RecordStatus::ok);
      ASSERT_TRUE(std::ranges::equal(reader.payload(), payloads[next]));
    }
    ++next;
  }
}

TEST(RecordReader, opens_only_regular_files) {
  RecordReader reader;
  EXPECT_EQ(reader.open(testing::TempDir() + "no such file"), RecordStatus::failed);
  EXPECT_EQ(reader.open(testing::TempDir()), RecordStatus::failed);
  EXPECT_EQ(reader.open("/dev/zero"), RecordStatus::failed);
  EXPECT_EQ(reader.expect(0), RecordStatus::end);
}

TEST(BigEndianCursor, reads_typed_values_and_cannot_overrun) {
  const auto payload = bytes({0xff, 0xff, 0xff, 0xfe, 0x3f, 0xc0, 0, 0, 0xc0, 0x04, 0, 0, 0, 0, 0, 0, 'o', 'k', 7});
  BigEndian in(payload);
  EXPECT_EQ(in.i32(), -2);
  EXPECT_EQ(in.f32(), 1.5F);
  EXPECT_EQ(in.f64(), -2.5);
  EXPECT_EQ(in.text(2), "ok");
  EXPECT_EQ(in.left(), 1U);
  EXPECT_TRUE(in.ok());
  EXPECT_EQ(in.i32(), 0) << "one byte is not a number";
  EXPECT_FALSE(in.ok());
  EXPECT_EQ(in.text(1), "") << "nothing is read once a read went past the end";
}

TEST(RecordWriter, frames_and_turns_every_value) {
  TemporaryFile file;
  RecordWriter writer;
  ASSERT_EQ(writer.create(file.path()), RecordStatus::ok);
  RecordBytes record;
  const std::array<double, 2> pair{1.0, -2.5};
  record.i32(-2).f32(1.5F).text("ab", 4).text("cut", 2).all(std::span<const double>(pair));
  ASSERT_EQ(writer.write(record), RecordStatus::ok);
  ASSERT_EQ(writer.close(), RecordStatus::ok);
  ASSERT_EQ(writer.append(file.path()), RecordStatus::ok);
  EXPECT_EQ(writer.position(), 38);
  ASSERT_EQ(writer.write(std::span<const std::byte>{}), RecordStatus::ok);
  EXPECT_EQ(writer.position(), 46);
  ASSERT_EQ(writer.close(), RecordStatus::ok);
  EXPECT_EQ(file.content(),
            bytes({0,   0,   0,    30,   0xff, 0xff, 0xff, 0xfe, 0x3f, 0xc0, 0,    0,    'a', 'b', ' ', ' ',
                   'c', 'u', 0x3f, 0xf0, 0,    0,    0,    0,    0,    0,    0xc0, 0x04, 0,   0,   0,   0,
                   0,   0,   0,    0,    0,    30,   0,    0,    0,    0,    0,    0,    0,   0}));
}

TEST(RecordWriter, cuts_a_half_written_record_off_when_the_disk_was_full) {
  TemporaryFile file;
  RecordWriter writer;
  ASSERT_EQ(writer.create(file.path()), RecordStatus::ok);
  ASSERT_EQ(writer.write(bytes({'a', 'b', 'c'})), RecordStatus::ok);
  ASSERT_EQ(writer.flush(), RecordStatus::ok);
  {
    const FileSizeLimit limit(1000);
    EXPECT_EQ(writer.write(Bytes(100'000)), RecordStatus::failed);
  }
  EXPECT_EQ(std::filesystem::file_size(file.path()), 1000U);
  ASSERT_EQ(writer.roll_back(11), RecordStatus::ok);
  ASSERT_EQ(writer.write(bytes({'d'})), RecordStatus::ok);
  ASSERT_EQ(writer.close(), RecordStatus::ok);
  EXPECT_EQ(file.content(), two_records);
}

}  // namespace
}  // namespace pathstat
