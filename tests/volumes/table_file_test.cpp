#include "volumes/table_file.h"

#include <unistd.h>

#include "scratch_folder.h"
#include "testing.h"

namespace pathstat {
namespace {

class TableFile : public testing::Test {
 protected:
  ~TableFile() override { kvA_TBL_Close(status); }

  std::string file(const std::string& text, const std::string& name = "table") { return folder_.write(name, text); }

  std::int32_t status_of(const std::string& path) {
    testing::internal::CaptureStderr();
    kvA_TBL_Open(path, status);
    told = testing::internal::GetCapturedStderr();
    return status;
  }

  std::vector<float> column(const std::string& path, const std::string& function, std::size_t capacity = 100) {
    std::vector<float> values(capacity, -7);
    std::int32_t count = -7;
    kvA_TBL_GetFunction(path, function, values, count, status);
    values.resize(static_cast<std::size_t>(count));
    return values;
  }

  std::string title(const std::string& path, const std::string& function, std::size_t size = 100) {
    std::vector<char> buffer(size, '?');
    kvA_TBL_GetFunctionTitle(path, buffer, function, status);
    EXPECT_EQ(buffer.back(), '\0');
    return buffer.data();
  }

  std::string told;
  std::int32_t status = -7;

 private:
  const ScratchFolder folder_;
};

const std::string two_columns =
    "made by hand\n"
    "# first mark\n"
    "TITLE:   Distance between planes  \n"
    "MEASUREMENT TYPE: length\n"
    "UNITS OF MEASUREMENT: Angstrom\n"
    "FUNCTION: distance\n"
    "#\n"
    "  FUNCTION:\tenergy of it\n"
    "anything else is ignored\n"
    "#\n"
    "# the second in a row\n"
    "1.5 -2e3\n"
    "# between the data\n"
    "  2.5\t 4 \n"
    "3.5\n"
    "4.5 5\n";

TEST_F(TableFile, tells_functions_and_lines) {
  const auto path = file(two_columns);
  std::int32_t functions = 0, lines = 0, count = 0;
  EXPECT_EQ(pathstat::status_of(kvA_TBL_GetInfo, path, functions, lines), 0);
  EXPECT_EQ(functions, 2);
  EXPECT_EQ(lines, 4);
  std::array<std::string, 3> names{"", "", "untouched"};
  kvA_TBL_GetFunctionNames(path, names, count, status);
  EXPECT_EQ(count, 2);
  EXPECT_THAT(names, ElementsAre("distance", "energy of it", "untouched"));
  kvA_TBL_GetFunctionNames(path, std::span(names).first(1), count, status);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(title(path, "distance"), "Distance between planes");
  EXPECT_EQ(title(path, "energy of it"), "none");
}

TEST_F(TableFile, reads_a_column_as_far_as_it_goes) {
  const auto path = file(two_columns);
  EXPECT_THAT(column(path, "distance"), ElementsAre(1.5f, 2.5f, 3.5f, 4.5f));
  EXPECT_THAT(column(path, "energy of it"), ElementsAre(-2000.0f, 4.0f));
  EXPECT_THAT(column(path, "distance", 2), ElementsAre(1.5f, 2.5f));
  EXPECT_THAT(column(file("#\nTITLE: t\nFUNCTION: f\n#\n#\n1\nx\n3\n", "word"), "f"), ElementsAre(1.0f));
}

TEST_F(TableFile, knows_functions_by_their_exact_names) {
  const auto path = file(two_columns);
  for (const auto* name : {"Distance", "distanc", "", "energy"}) {
    EXPECT_EQ(title(path, name), "") << name;
    EXPECT_EQ(status, 1) << name;
    EXPECT_TRUE(column(path, name).empty());
    EXPECT_EQ(status, 1) << name;
  }
}

TEST_F(TableFile, cuts_what_is_too_long) {
  const auto path = file("#\nTITLE: " + std::string(100, 'a') + "\nFUNCTION: f\n#\nTITLE: " + std::string(80, 'b') +
                         "\nFUNCTION: g\n#\n#\n");
  EXPECT_EQ(title(path, "f"), std::string(79, 'a'));
  EXPECT_EQ(title(path, "g"), std::string(80, 'b'));
  EXPECT_EQ(title(path, "g", 81), std::string(80, 'b'));
  EXPECT_EQ(title(path, "g", 80), std::string(78, 'b'));
  EXPECT_EQ(title(path, "g", 1), "");
}

TEST_F(TableFile, is_read_once_while_its_name_stays_the_same) {
  const auto path = file(two_columns);
  EXPECT_EQ(status_of(path), 0);
  std::filesystem::remove(path);
  EXPECT_EQ(status_of(path), 0);
  const auto other = file("#\nTITLE: t\nFUNCTION: f\n#\n#\n7\n", "other");
  EXPECT_THAT(column(other, "f"), ElementsAre(7.0f));
  EXPECT_EQ(status_of(path), 50503);
}

TEST_F(TableFile, may_have_a_title_and_no_function_to_find) {
  const auto path = file("#\nTITLE: alone\n#\n#\n1\n");
  std::int32_t functions = 0, lines = 0;
  kvA_TBL_GetInfo(path, functions, lines, status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(functions, 1);
  EXPECT_TRUE(column(path, "").empty());
  EXPECT_EQ(status, 1);
}

TEST_F(TableFile, takes_blank_padded_fields) {
  const auto path = file(two_columns);
  std::array<char, 8> first{}, second{};
  std::array names{TextField(first), TextField(second)};
  std::int32_t count = 0;
  kva_tbl_getfunctionnames_(path + "   ", names, count, status);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(names[0].view(), "distance");
  EXPECT_EQ(names[1].view(), "energy o");
  EXPECT_EQ(pathstat::status_of(kva_tbl_getfunctiontitle_, path, names[0], "distance  "), 0);
  EXPECT_EQ(names[0].view(), "Distanc ");
}

TEST_F(TableFile, is_refused_with_a_status_and_lines_on_standard_error) {
  const std::string format = "Not a valid TBL data file format\nUnable to open TBL file\n";
  EXPECT_EQ(status_of("/nowhere/at.all"), 50503);
  EXPECT_EQ(told, "Unable to open file /nowhere/at.all\nUnable to open TBL file\n");
  EXPECT_EQ(status_of(""), 50503);
  const std::array<std::string, 9> no_tables{
      "",
      "no mark at all\n1 2 3\n",
      "#\n",
      "#\n#\n1 2\n",
      "#\nnothing of interest\n#\n#\n1\n",
      "#\nTITLE: t\nFUNCTION:   \n#\n#\n1\n",
      "#\nTITLE: t\n   \nFUNCTION: f\n#\n#\n1\n",
      "#\nTITLE: " + std::string(2041, 'x') + "\nFUNCTION: f\n#\n#\n1\n",
      "#\nFUNCTION: f\n#\n#\n" + std::string(2048, '1') + "\n",
  };
  for (const auto& text : no_tables) {
    EXPECT_EQ(status_of(file(text)), 50516) << text.substr(0, 50);
    EXPECT_EQ(told, format);
  }
  EXPECT_EQ(status_of(file("#\nFUNCTION: f\n#\n#\n" + std::string(2047, '1') + "\n")), 0);
  EXPECT_EQ(status_of(testing::TempDir()), 50516);
}

}  // namespace
}  // namespace pathstat
