#include "services/file_units.h"

#include <array>
#include <cstring>

#include "services/unit_paths.h"
#include "services/work_directory.h"

namespace pathstat {
namespace {

class FileUnits : public WorkDirectory {
 protected:
  ~FileUnits() override {
    for (std::int32_t unit = 1; unit <= unit_count; ++unit) kvs_fil_closeunit_(unit);
  }

  static std::int32_t assign(std::int32_t unit, const std::string& name, std::int32_t record, std::int32_t form,
                             std::int32_t status, std::int32_t mode) {
    std::int32_t error = -1;
    kvs_fil_assign_(unit, name, record, form, status, mode, error);
    return error;
  }
};

TEST_F(FileUnits, are_taken_from_the_top_and_not_reserved) {
  std::int32_t unit = 0;
  std::int32_t error = -1;
  for (std::int32_t expected = 99; expected >= 1; --expected) {
    for (int time = 0; time < 2; ++time) kvs_fil_getunit_(unit, error);
    ASSERT_EQ(unit, expected);
    ASSERT_EQ(error, 0);
    ASSERT_EQ(assign(unit, "", 0, 0, -1, 0), 0);
  }
  FileUnit none("x", {}, error);
  EXPECT_EQ(error, 21008);
  EXPECT_FALSE(none);
  kvs_fil_unit_close_(42);
  kvs_fil_getunit_(unit, error);
  EXPECT_EQ(unit, 42);
}

TEST_F(FileUnits, open_by_their_codes_or_refuse) {
  write("there", "content");
  std::filesystem::create_directory("directory");
  struct {
    const char* name;
    std::int32_t unit, record, form, status, mode, error;
  } const cases[] = {
      {"there", 1, 0, 0, 0, 0, 0},         {"there", 1, 0, 1, 1, 1, 0},
      {"there", 1, 0, 2, 1, 2, 0},         {"there", 1, 5, 0, 1, 0, 0},
      {"there", 1, 0, 0, 2, 0, 21005},     {"there", 1, 0, 3, 0, 0, 21005},
      {"there", 1, 0, -1, 0, 0, 21005},    {"there", 1, -4, 0, 0, 0, 21005},
      {"missing", 1, 0, 1, 1, 1, 21005},   {"missing", 1, 0, 0, 1, 0, 21005},
      {"new", 1, 0, 0, 2, 0, 0},           {"no/such/directory", 1, 0, 0, 0, 0, 21005},
      {"directory", 1, 0, 0, 0, 1, 21005}, {"", 1, 0, 0, 0, 0, 21005},
      {"there", 0, 0, 0, 0, 0, 21005},     {"there", 100, 0, 0, 0, 0, 21005},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(assign(c.unit, c.name, c.record, c.form, c.status, c.mode), c.error)
        << c.name << " form " << c.form << " status " << c.status << " mode " << c.mode;
    EXPECT_EQ(kvs_fil_isunitopen_(c.unit), c.error == 0);
    kvs_fil_closeunit_(c.unit);
  }
  EXPECT_EQ(content("there"), "content");
  EXPECT_FALSE(exists_("missing"));
  EXPECT_EQ(assign(1, std::string(1001, 'n'), 0, 0, 0, 0), 21005);
  std::filesystem::create_symlink("own", "own");  // to itself: nobody can open it
  EXPECT_THAT(stderr_of([&] { EXPECT_NE(assign(1, "own", 0, 0, 1, 1), 0); }),
              HasSubstr("own: Too many levels of symbolic links"));
}

TEST_F(FileUnits, read_lines_of_either_ending_and_an_open_last_one) {
  write("dos.txt", "one\r\ntwo\nthree");
  std::int32_t error = -1;
  const FileUnit unit("dos.txt", {.form = UnitForm::formatted, .mode = UnitMode::read_only}, error);
  std::vector<std::string> lines;
  for (std::string line; unit_read_line(unit.number(), line, 3);) lines.push_back(line);
  EXPECT_EQ(lines, (std::vector<std::string>{"one", "two", "thr"}));
  EXPECT_FALSE(unit_write_line(unit.number(), "no"));
  EXPECT_EQ(content("dos.txt"), "one\r\ntwo\nthree");
}

TEST_F(FileUnits, hold_direct_records_of_four_byte_words_in_any_order) {
  std::int32_t error = -1;
  FileUnit unit("direct", {.record_words = 3}, error);
  ASSERT_EQ(error, 0);
  const auto bytes = [](const char* text) { return std::as_bytes(std::span(text, std::strlen(text))); };
  EXPECT_TRUE(unit_write_record(unit.number(), 3, bytes("cccccccccccc")));
  EXPECT_TRUE(unit_write_record(unit.number(), 1, bytes("aaaaaaaaaaaa")));
  EXPECT_TRUE(unit_write_record(unit.number(), 3, bytes("CCCC")));
  EXPECT_FALSE(unit_write_record(unit.number(), 2, bytes("thirteen char")));
  EXPECT_EQ(content("direct"), "aaaaaaaaaaaa" + std::string(12, '\0') + "CCCC" + std::string(8, '\0'));

  std::array<char, 4> head{};
  EXPECT_TRUE(unit_read_record(unit.number(), 3, std::as_writable_bytes(std::span(head))));
  EXPECT_EQ(std::string(head.data(), 4), "CCCC");
  std::array<std::byte, 12> record{};
  for (const std::int64_t beyond : {std::int64_t{4}, std::int64_t{1} << 40}) {
    EXPECT_FALSE(unit_read_record(unit.number(), beyond, record));
    EXPECT_TRUE(unit_at_end(unit.number()));
  }
  for (const std::int64_t wrong : {std::int64_t{0}, std::int64_t{-1}, INT64_MAX}) {
    EXPECT_FALSE(unit_read_record(unit.number(), wrong, record));
    EXPECT_FALSE(unit_write_record(unit.number(), wrong, record));
  }
  std::filesystem::resize_file("direct", 30);
  EXPECT_FALSE(unit_read_record(unit.number(), 3, record));
  EXPECT_TRUE(unit_at_end(unit.number()));
}

TEST_F(FileUnits, reach_records_behind_four_gibibytes) {
  std::int32_t error = -1;
  const FileUnit unit("large", {.record_words = 1 << 20}, error);
  const std::int64_t k = 1500;  // at almost 6 GiB of a sparse file
  std::array<std::byte, 4> sent{std::byte{1}, std::byte{2}, std::byte{3}, std::byte{4}};
  ASSERT_TRUE(unit_write_record(unit.number(), k, sent));
  EXPECT_EQ(std::filesystem::file_size("large"), std::uintmax_t{1500} << 22);
  std::array<std::byte, 4> got{};
  EXPECT_TRUE(unit_read_record(unit.number(), k, got));
  EXPECT_EQ(got, sent);
}

TEST_F(FileUnits, say_that_the_disk_is_full) {
  std::int32_t error = -1;
  FileUnit direct("/dev/full", {.record_words = 1, .status = UnitStatus::existing}, error);
  ASSERT_EQ(error, 0);
  EXPECT_FALSE(unit_write_record(direct.number(), 1, {}));
  FileUnit text("/dev/full", {.form = UnitForm::formatted, .status = UnitStatus::existing}, error);
  ASSERT_EQ(error, 0);
  EXPECT_TRUE(unit_write_line(text.number(), "held back"));
  EXPECT_FALSE(text.close());
}

}  // namespace
}  // namespace pathstat
