#include "trajectory/archive_file.h"

#include <cstdio>
#include <memory>

#include "testing.h"
#include "trajectory/front_end.h"

namespace pathstat {
namespace {

using namespace trajectory_status;

auto near(const std::vector<double>& numbers) { return Pointwise(DoubleNear(1e-14), numbers); }

/// The lines of a text as records of 80 bytes.
std::string as_records(const std::string& text) {
  std::string records;
  for (std::size_t at = 0; at < text.size();) {
    const auto end = std::min(text.find('\n', at), text.size());
    std::string line = text.substr(at, end - at);
    line.resize(80, ' ');
    records += line;
    at = end + 1;
  }
  return records;
}

/// An archive in a file without a name.
class Archive {
 public:
  explicit Archive(const std::string& content) : stream_(std::tmpfile(), std::fclose) {
    std::fwrite(content.data(), 1, content.size(), stream_.get());
    std::fflush(stream_.get());
    file = ArchiveFile(::fileno(stream_.get()), status);
  }
  std::int32_t read(std::int32_t frame) {
    xyz.assign(3 * static_cast<std::size_t>(file.header().atoms), -7);
    charges.assign(static_cast<std::size_t>(file.header().atoms), -7);
    std::int32_t result = -1;
    file.read(frame, values, xyz, charges, result);
    return result;
  }

  std::int32_t status = -1;
  ArchiveFile file;
  ArchiveFrame values;
  std::vector<double> xyz, charges;

 private:
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream_;
};

const std::string long_title = "first frame                                                     ";  // 64 characters

/// Two frames of two molecules in a crystal.
const std::string crystal =
    "an archive\n"
    "PBC=ON\n" +
    long_title + "      -12.500000\n" +
    "!DATE\n"
    "PBC   10.0000   12.0000   14.0000   90.0000   90.0000   90.0000\n"
    "C1    1.0 2.0 3.0 RES 1 c C -0.25\n"
    "end\n"
    "H1    -4.5 5e-1 +6.125 RES 2 h H 0.25\n"
    "H2    7.0 8.0 9.0 RES 2 h H 0.5\n"
    "end\n"
    "end\n" +
    long_title + "      7.25\n" +
    "!DATE\n"
    "PBC   11.0000   12.0000   14.0000   90.0000   90.0000   90.0000\n"
    "C1    1.5 2.5 3.5 RES 1 c C -0.25\n"
    "end\n"
    "H1    -4.0 0.25 6.25 RES 2 h H 0.25\n"
    "H2    7.5 8.5 9.5 RES 2 h H 0.125\n"
    "end\n"
    "end\n";

TEST(ArchiveFile, holds_the_same_frames_with_line_ends_and_as_records) {
  for (const auto& content : {crystal, as_records(crystal)}) {
    Archive archive(content);
    ASSERT_EQ(archive.status, 0);
    const auto& header = archive.file.header();
    EXPECT_EQ(header.form, content == crystal ? ArchiveForm::text : ArchiveForm::records);
    EXPECT_EQ(header.title, "an archive");
    EXPECT_EQ(header.header_lines, 2);
    EXPECT_EQ(header.lines_per_frame, 9);
    EXPECT_EQ(header.atoms, 3);
    EXPECT_TRUE(header.has_energy);
    ASSERT_EQ(archive.read(1), 0);
    EXPECT_EQ(archive.values.energy, -12.5);
    EXPECT_THAT(archive.values.cell, ElementsAre(10, 12, 14, DoubleNear(1.5707963267948966, 1e-15),
                                                 DoubleNear(1.5707963267948966, 1e-15), testing::_));
    EXPECT_THAT(archive.xyz, near({1, 2, 3, -4.5, 0.5, 6.125, 7, 8, 9}));
    EXPECT_THAT(archive.charges, ElementsAre(-0.25, 0.25, 0.5));
    ASSERT_EQ(archive.read(2), 0);
    EXPECT_EQ(archive.values.energy, 7.25);
    EXPECT_EQ(archive.values.cell[0], 11);
    EXPECT_THAT(archive.xyz, near({1.5, 2.5, 3.5, -4, 0.25, 6.25, 7.5, 8.5, 9.5}));
    EXPECT_FALSE(archive.file.goes_on());
    EXPECT_EQ(archive.read(3), end_of_file);
    EXPECT_EQ(archive.read(2147483647), end_of_file);
    EXPECT_EQ(archive.read(0), read_error);
    EXPECT_EQ(archive.read(1), 0) << "behind the end";
    EXPECT_EQ(archive.charges[2], 0.5);
  }
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (auto at = text.find(from); at != text.npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

TEST(ArchiveFile, takes_lines_in_either_case_and_with_carriage_returns) {
  for (const auto& content : {replaced(crystal, "\n", "\r\n"), replaced(replaced(crystal, "end", "END"), "PBC", "pbc"),
                              replaced(crystal, "end", "End   of a molecule"), crystal.substr(0, crystal.size() - 1)}) {
    Archive archive(content);
    ASSERT_EQ(archive.status, 0);
    EXPECT_EQ(archive.file.header().title, "an archive");
    ASSERT_EQ(archive.read(2), 0);
    EXPECT_THAT(archive.xyz[8], DoubleNear(9.5, 1e-14));
    EXPECT_EQ(archive.charges[2], 0.125);
    EXPECT_EQ(archive.read(3), end_of_file);
  }
}

TEST(ArchiveFile, may_have_blank_lines_at_its_end) {
  Archive archive(crystal + "\n  \n\n\n\n");
  EXPECT_EQ(archive.read(4), end_of_file);
  EXPECT_EQ(archive.read(3), end_of_file);
  EXPECT_EQ(archive.read(2), 0);
  EXPECT_FALSE(archive.file.goes_on());
}

TEST(ArchiveFile, tells_its_form_by_the_first_81_bytes) {
  const std::string rest = "\nf\nd\nC 1 2 3 R 1 c C 0\nend\nend\n";
  EXPECT_EQ(Archive(std::string(80, 't') + rest).file.header().form, ArchiveForm::text);
  EXPECT_EQ(Archive(std::string(81, 't') + rest).file.header().form, ArchiveForm::records);
  EXPECT_EQ(Archive(std::string(80, 't') + rest).status, 0);
  EXPECT_EQ(Archive("t" + rest).status, 0) << "shorter than two records";
  EXPECT_EQ(Archive("").status, fixed_header_cut);
}

/// Only 80 characters of a line count, however long it is.
TEST(ArchiveFile, cuts_lines_at_80_characters) {
  const std::string line = "C 1 2 3 RES 1 c C ";
  for (const std::size_t blanks : {0, 61, 62, 1000, 400000}) {
    Archive archive("t\nf\nd\n" + line + std::string(blanks, ' ') + "5.25\nend\nend\n" + "f\nd\n" + line +
                    "0.5\nend\nend\n");
    ASSERT_EQ(archive.status, 0) << blanks;
    EXPECT_EQ(archive.read(1), blanks < 62 ? 0 : read_error) << blanks;
    EXPECT_EQ(archive.charges[0], blanks == 0 ? 5.25 : blanks == 61 ? 5 : -7) << "5 is the 80th character";
    EXPECT_EQ(archive.read(2), 0) << blanks;
    EXPECT_EQ(archive.charges[0], 0.5);
  }
}

struct SecondLine {
  const char* line;
  std::int32_t status, type, directions, header_lines;
};

TEST(ArchiveFile, is_periodic_as_its_second_line_says) {
  const SecondLine cases[] = {
      {"PBC=ON", 0, 100, 3, 2},    {"pbc on", 0, 100, 3, 2},  {"PBC 3", 0, 100, 3, 2}, {"PBC=2", 0, 101, 2, 2},
      {"PBCx2D", 0, 101, 2, 2},    {"PBC=OFF", 0, 0, 0, 2},   {"Pbc=off", 0, 0, 0, 2}, {"any title", 0, 0, 0, 1},
      {" PBC=ON", 0, 0, 0, 1},     {"PBC=1", 50023, 0, 0, 1}, {"PBC", 50023, 0, 0, 1}, {"PBC= ON", 50023, 0, 0, 1},
      {"helix 3", 50013, 0, 0, 1}, {"HELIX", 50013, 0, 0, 1},
  };
  for (const auto& c : cases) {
    const std::string title = c.header_lines == 2 ? "\nf" : "";
    const std::string cell = c.directions == 0 ? "" : c.directions == 2 ? "PBC 8 9 60\n" : "PBC 8 9 7 90 90 90\n";
    Archive archive("t\n" + std::string(c.line) + title + "\nd\n" + cell + "C 1 2 3 R 1 c C 0\nend\nend\n");
    EXPECT_EQ(archive.status, c.status) << c.line;
    EXPECT_EQ(archive.file.header().periodicity.type, c.type) << c.line;
    EXPECT_EQ(archive.file.header().periodicity.directions, c.directions) << c.line;
    EXPECT_EQ(archive.file.header().header_lines, c.header_lines) << c.line;
    if (c.status == 0) {
      EXPECT_EQ(archive.read(1), 0) << c.line;
    }
  }
}

TEST(ArchiveFile, has_energies_if_its_first_title_is_longer_than_64_characters) {
  const std::string body = "\nd\nC 1 2 3 R 1 c C 0\nend\nend\n";
  Archive without("t\n" + long_title + body + long_title + " -3.5" + body);
  ASSERT_EQ(without.read(2), 0);
  EXPECT_EQ(without.values.energy, 0) << "only the first title counts";
  Archive with("t\n" + long_title + " 4.25D+01" + body + "short" + body + long_title + "text" + body);
  ASSERT_EQ(with.read(1), 0);
  EXPECT_EQ(with.values.energy, 42.5);
  for (const int frame : {2, 3}) {
    ASSERT_EQ(with.read(frame), 0);
    EXPECT_EQ(with.values.energy, 0) << frame;
  }
}

struct AtomLine {
  const char* line;
  std::int32_t status;
  std::vector<double> numbers;  ///< x, y, z, charge
};

TEST(ArchiveFile, reads_numbers_or_gives_an_error) {
  const AtomLine cases[] = {
      {"Na+ 1 -2.5 +3.25 R 1 t E 0.5", 0, {1, -2.5, 3.25, 0.5}},
      {"  C   1.e1  .5  -.25   R 1 t E   -1   and more", 0, {10, 0.5, -0.25, -1}},
      {"C 1.5D+01 2d0 1E-3 R 1 t E 0", 0, {15, 2, 0.001, 0}},
      {"1 2 3 4 5 6 7 8 9", 0, {2, 3, 4, 9}},
      {"C 1 2 3 R 1 t E", 50003, {}},
      {"C 1 2 3 R 1 t", 50003, {}},
      {"C 1 2", 50003, {}},
      {"a blank line:", 50003, {}},
      {"C 1 2 x R 1 t E 0", 50003, {}},
      {"C 1.0a 2 3 R 1 t E 0", 50003, {}},
      {"C ******* 2 3 R 1 t E 0", 50003, {}},
      {"C 1 nan 3 R 1 t E 0", 50003, {}},
      {"C 1 2 inf R 1 t E 0", 50003, {}},
      {"C 1e999 2 3 R 1 t E 0", 50003, {}},
      {"C 1 2 3 R 1 t E -", 50003, {}},
      {"C 1 2 3 R 1 t E +-1", 50003, {}},
      {"C 1-2 3 4 R 1 t E 1", 50003, {}},
      {"C 0x10 3 4 R 1 t E 1", 50003, {}},
      {"C D 3 4 R 1 t E 1", 50003, {}},
  };
  for (const auto& c : cases) {
    Archive archive("t\nf\nd\n" + std::string(c.line) + "\nend\nend\n");
    ASSERT_EQ(archive.status, 0) << c.line;
    ASSERT_EQ(archive.read(1), c.status) << c.line;
    if (c.status != 0) continue;
    archive.xyz.push_back(archive.charges[0]);
    EXPECT_THAT(archive.xyz, Pointwise(DoubleEq(), c.numbers)) << c.line;
  }
}

TEST(ArchiveFile, refuses_a_cell_that_cannot_be_read_or_spans_no_space) {
  for (const char* cell : {"PBC 8 9 7 90 90", "PBC 8 9 x 90 90 90", "8 9 7 90 90 90", "PBC", "PBC 0 9 7 90 90 90",
                           "PBC 8 9 7 90 90 200", "PBC 8 9 7 20 30 90"}) {
    Archive archive("t\nPBC=ON\nf\nd\n" + std::string(cell) + "\nC 1 2 3 R 1 c C 0\nend\nend\n");
    ASSERT_EQ(archive.status, 0);
    EXPECT_EQ(archive.read(1), read_error) << cell;
  }
  Archive slab("t\nPBC=2\nf\nd\nPBC 8 9\nC 1 2 3 R 1 c C 0\nend\nend\n");
  EXPECT_EQ(slab.read(1), read_error);
}

/// No frame with other lines than the first has shifts the atoms of those behind it.
TEST(ArchiveFile, refuses_frames_of_other_lines) {
  const std::string frame = "f\nd\nA 1 1 1 R 1 c C 0\nend\nB 2 2 2 R 1 c C 0\nend\nend\n";
  for (const std::string second : {"f\nd\nA 1 1 1 R 1 c C 0\nend\nend\n",
                                   "f\nd\nA 1 1 1 R 1 c C 0\nend\nB 2 2 2 R 1 c C 0\nC 3 3 3 R 1 c C 0\nend\nend\n",
                                   "f\nd\nA 1 1 1 R 1 c C 0\nB 2 2 2 R 1 c C 0\nend\nend\n",
                                   "f\nd\nA 1 1 1 R 1 c C 0\nB 2 2 2 R 1 c C 0\nC 3 3 3 R 1 c C 0\nend\nend\n",
                                   "f\nA 1 1 1 R 1 c C 0\nend\nB 2 2 2 R 1 c C 0\nend\nend\n",
                                   "f\nd\nA 1 1 1 R 1 c C 0\nend\nB 2 2 2 R 1 c C 0\n\nend\nend\n"}) {
    for (const bool records : {false, true}) {
      const std::string text = "t\n" + frame + second + frame + frame;
      Archive archive(records ? as_records(text) : text);
      ASSERT_EQ(archive.read(1), 0);
      EXPECT_EQ(archive.read(2), read_error) << second;
      // With line ends the frames behind cannot be reached.
      if (!records) {
        EXPECT_EQ(archive.read(3), read_error) << second;
      }
      EXPECT_EQ(archive.read(1), 0) << second;
      EXPECT_EQ(archive.xyz[3], 2) << second;
    }
  }
}

/// Cut anywhere, a file gives its whole frames and then the status of its form.
TEST(ArchiveFile, cut_anywhere_keeps_its_whole_frames) {
  for (const bool records : {false, true}) {
    const std::string whole = records ? as_records(crystal) : crystal;
    const auto first = records ? std::size_t{11 * 80} : crystal.find(long_title, 200);
    for (std::size_t bytes = 0; bytes < whole.size(); ++bytes) {
      Archive archive(whole.substr(0, bytes));
      const bool first_there = bytes + (records ? 0 : 1) >= first;  // the last line end may be missing
      // Below 82 bytes the line feed decides.
      const bool as_text = !records && bytes > crystal.find('\n');
      ASSERT_EQ(archive.status, first_there ? 0 : as_text ? header_cut : fixed_header_cut) << bytes;
      if (!first_there) continue;
      ASSERT_EQ(archive.read(1), 0) << bytes;
      EXPECT_EQ(archive.file.goes_on(), bytes > first) << bytes;
      const bool second_there = bytes + (records ? 0 : 1) >= whole.size();
      const std::int32_t cut = !records || bytes < first + 80 ? end_of_file : read_error;
      ASSERT_EQ(archive.read(2), second_there ? 0 : cut) << bytes;
      ASSERT_EQ(archive.read(1), 0) << bytes;
      EXPECT_EQ(archive.charges[2], 0.5);
    }
  }
}

TEST(ArchiveFile, of_lines_too_short_for_atoms_is_refused_before_anything_is_allocated) {
  EXPECT_EQ(Archive("t\nf\nd\n" + std::string(100000, '\n') + "end\nend\n").status, read_error);
}

/// Frames far larger than what is read at once, in any order.
TEST(ArchiveFile, gives_frames_in_any_order) {
  constexpr int atoms = 5000, frames = 6;
  std::mt19937 random(5);
  std::string text = "t\n";
  std::vector<std::vector<double>> wanted(frames);
  for (auto& frame : wanted) {
    text += "f\nd\n";
    for (int k = 0; k < atoms; ++k) {
      text += "Ar";
      for (int c = 0; c < 3; ++c) {
        frame.push_back(static_cast<double>(random() % 128000) / 64 - 1000);
        text += " " + std::to_string(frame.back());
      }
      text += " RES 1 ar Ar 0.0\n";
    }
    text += "end\nend\n";
  }
  for (const auto& content : {text, as_records(text)}) {
    Archive archive(content);
    for (const int frame : {1, 4, 3, 2, 6, 1, 7, 5, 6, 2}) {
      ASSERT_EQ(archive.read(frame), frame > frames ? end_of_file : 0) << frame;
      if (frame <= frames) {
        EXPECT_THAT(archive.xyz, Pointwise(DoubleEq(), wanted[static_cast<std::size_t>(frame - 1)]));
      }
    }
  }
}

}  // namespace
}  // namespace pathstat
