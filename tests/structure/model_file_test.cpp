#include "structure/model_file.h"

#include "scratch_folder.h"
#include "testing.h"

namespace pathstat {
namespace {

namespace fs = std::filesystem;

/// An item with texts of its own.
struct Item {
  std::int32_t kind = 0;
  std::int32_t id_or_type = 0;
  std::string name, value;
  bool operator==(const Item&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Item& item) {
  return out << item.kind << ' ' << item.id_or_type << " <" << item.name << "> <" << item.value << '>';
}

class ModelFileTest : public testing::Test {
 protected:
  ModelFileTest() {
    set_model_file_messages([this](std::string_view key, std::initializer_list<ModelFileMessageArgument> arguments) {
      std::ostringstream text;
      text << key;
      for (const auto& argument : arguments) std::visit([&](const auto& value) { text << ' ' << value; }, argument);
      messages_.push_back(text.str());
    });
  }
  ~ModelFileTest() override { set_model_file_messages({}); }

  std::string path(const char* name = "model.qfx") const { return folder_.file(name); }
  ModelFile writing() const {
    ModelFile file(FIL_QFXioCreate(path()));
    EXPECT_EQ(FIL_QFXioOpenWrite(*file), 0);
    return file;
  }
  std::string written(ModelFile file) const {
    EXPECT_EQ(FIL_QFXioClose(*file), 0);
    return content_of(path());
  }
  std::vector<Item> items(std::string_view text) const {
    std::ofstream(path(), std::ios::binary) << text;
    return items_of_file(path());
  }
  std::vector<Item> items_of_file(const std::string& name) const {
    ModelFile file(FIL_QFXioCreate(name));
    EXPECT_EQ(FIL_QFXioOpenRead(*file), 0);
    std::vector<Item> result;
    while (true) {
      const ModelItem item = next_model_item(*file);
      if (item.kind == item_end_of_file) return result;
      if (item.kind == item_format_error || item.kind == item_object_end) {
        result.push_back({.kind = item.kind, .name = {}, .value = {}});
      } else {
        result.push_back({item.kind, item.id_or_type, std::string(item.name), std::string(item.value)});
      }
    }
  }

  const ScratchFolder folder_;
  std::vector<std::string> messages_;
};

TEST_F(ModelFileTest, values_are_written_by_the_format_of_their_type) {
  const std::int32_t ints[] = {-2147483647 - 1, 7};
  const float floats[] = {0.1f, 1e-30f};
  const double doubles[] = {0.1, 1, 1e300, -2.5, 3, 4};
  const std::string texts[] = {"one", "two"};
  const auto one = [](auto& values) { return std::span(values).first(1); };
  ModelFile file = writing();
  QFXio& f = *file;
  EXPECT_EQ(FIL_WriteAttr(f, "i", attribute_int, std::span(ints)), 0);
  EXPECT_EQ(FIL_WriteAttr(f, "o", attribute_reference_array, one(ints)), 0);
  EXPECT_EQ(FIL_WriteAttr(f, "f", attribute_float, std::span(floats)), 0);
  EXPECT_EQ(FIL_WriteAttr(f, "two words", attribute_double, std::span(doubles).first(2)), 0);
  EXPECT_EQ(FIL_WriteAttr(f, "v", attribute_vector, std::span(doubles).first(3)), 0);
  EXPECT_EQ(FIL_WriteAttr(f, "v", attribute_vector, std::span(doubles)), 0);
  EXPECT_EQ(FIL_WriteAttr(f, "c", attribute_text, one(texts)), 0);
  EXPECT_EQ(FIL_WriteAttr(f, "c", attribute_text, std::span(texts)), 0);
  EXPECT_EQ(FIL_WriteAttr(f, "none", attribute_int, std::span(ints).first(0)), 0);
  FIL_PushObject(f, 12, "Frame", "3");
  FIL_WriteObjRef(f, 7, "Atom", "H1");
  EXPECT_EQ(FIL_PopObject(f), 0);
  EXPECT_EQ(FIL_PopObject(f), 1) << "nothing is open";
  EXPECT_EQ(written(std::move(file)),
            "(A I i (-2147483648 7))\n"
            "(A O o (-2147483648))\n"
            "(A F f (0.1 1E-30))\n"
            "(A D \"two words\" (0.10000000000000001 1))\n"
            "(A V v (0.10000000000000001 1 1.0000000000000001E+300))\n"
            "(A V v ((0.10000000000000001 1 1.0000000000000001E+300) (-2.5 3 4)))\n"
            "(A C c \"one\")\n"
            "(A C c (one two))\n"
            "(A I none )\n"
            "(12 Frame 3\n (7 Atom H1)\n)\n");
}

TEST_F(ModelFileTest, text_that_does_not_reach_the_disk_is_told_on_closing) {
  ModelFile file(FIL_QFXioCreate("/dev/full"));
  ASSERT_EQ(FIL_QFXioOpenAppend(*file), 0);
  FIL_PushObject(*file, 1, "Model", "");
  EXPECT_EQ(FIL_QFXioClose(*file), 1);
  EXPECT_TRUE(FIL_QFXioIsClosed(*file));
}

struct Fold {
  const char* what;
  std::int32_t type;
  std::string text;
  std::string written;
};

TEST_F(ModelFileTest, long_values_are_folded_behind_blanks_near_column_78) {
  const auto x = [](std::size_t count) { return std::string(count, 'x'); };
  const Fold folds[] = {
      {"cut behind the last blank", attribute_text, x(30) + " " + x(60),
       "(A C t \"" + x(30) + " \\\n " + x(60) + "\")\n"},
      {"cut before a blank", attribute_text, x(71) + " " + x(9), "(A C t \"" + x(71) + "\\\n \\ " + x(9) + "\")\n"},
      {"the guard takes a place", attribute_text, x(71) + " " + x(80),
       "(A C t \"" + x(71) + "\\\n \\ \\\n " + x(77) + "\\\n " + x(3) + "\")\n"},
      {"an array isn't quoted", attribute_int_array, x(40) + " " + x(40),
       "(A I t (" + x(40) + " \\\n " + x(40) + "))\n"},
      {"escapes", attribute_text, "a\nb\bc\"d\\e", "(A C t \"a\\nb\\bc\\\"d\\\\e\")\n"},
      {"a scalar with a blank", attribute_vector, "1 2 3", "(A V t \"1 2 3\")\n"},
      {"cut within an escape", attribute_text, x(70) + "\"" + x(5), "(A C t \"" + x(70) + "\\\\\n \"" + x(5) + "\")\n"},
      {"cut before an escaped quote", attribute_text, x(71) + "\"" + x(5),
       "(A C t \"" + x(71) + "\\\n \\\"" + x(5) + "\")\n"},
  };
  for (const Fold& fold : folds) {
    SCOPED_TRACE(fold.what);
    ModelFile file = writing();
    EXPECT_EQ(FIL_WriteAttrString(*file, "t", fold.type, fold.text), 0);
    const std::string text = written(std::move(file));
    EXPECT_EQ(text, fold.written);
    EXPECT_EQ(items(text).at(0).value, fold.text);
  }
}

TEST_F(ModelFileTest, any_text_reads_back_as_it_was_written) {
  const unsigned seed = std::random_device{}();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  constexpr std::string_view letters("    \\\\\\\"\"'()\n\b\t\r\0nbxyzA1", 25);
  std::vector<Item> texts;
  ModelFile file = writing();
  for (unsigned round = 0; round < 10000; ++round) {
    std::string text(1 + random() % (round % 20 == 0 ? 3000 : 200), ' ');
    const std::size_t most = round % 3 == 0 ? 8 : letters.size();  // often little but blanks and escapes
    for (char& c : text) c = letters[random() % most];
    file->depth = static_cast<std::int32_t>(random() % (round % 2 == 0 ? 4 : 120));
    const std::string name(1 + random() % (round % 5 == 0 ? 120 : 10), round % 7 == 0 ? 'n' : 'm');
    texts.push_back({item_attribute, attribute_text, name, text});
    ASSERT_EQ(FIL_WriteAttrString(*file, name, attribute_text, text), 0);
  }
  ASSERT_EQ(FIL_QFXioClose(*file), 0);
  EXPECT_THAT(items_of_file(path()), ElementsAreArray(texts));
}

struct Line {
  const char* text;
  Item item;
};

const Item malformed{.kind = item_format_error, .name = {}, .value = {}};
const Item object_end{.kind = item_object_end, .name = {}, .value = {}};

TEST_F(ModelFileTest, each_line_is_one_item) {
  const Line lines[] = {
      {"(1 Model", {1, 1, "Model", ""}},
      {"  ( 1\tModel  water ", {1, 1, "Model", "water"}},
      {"(1 Model \"two words\") ", {2, 1, "Model", "two words"}},
      {"(-5 'My class' ''", {1, -5, "My class", ""}},
      {" )", object_end},
      {"(A I n 5)", {0, 1, "n", "5"}},
      {"(A S n 5)", {0, 1, "n", "5"}},
      {"(A T n 5)", {0, 0, "n", "5"}},
      {"(A I n (5 6))", {0, 6, "n", "5 6"}},
      {"(A V n ((1 2 3) (4 5 6)))", {0, 10, "n", "(1 2 3) (4 5 6)"}},
      {"(A C \"a name\" \"a \\\"value\\\"\\n\\b\\x\")", {0, 11, "a name", "a \"value\"\n\bx"}},
      {"(A C n (O5' H5\"))", {0, 11, "n", "O5' H5\""}},
      {"(A I n 5)\r", {0, 1, "n", "5"}},
      {"", malformed},
      {"(", malformed},
      {"(99999999999 Model", malformed},
      {"(1 Model water x", malformed},
      {"(A I n 5 6)", malformed},
      {"(A I n ())", malformed},
      {"(A V n ((1 2 3) (4 5 6))", malformed},
      {"(A C n \"endless)", malformed},
      {"(A C \"n 5)", malformed},
  };
  for (const Line& line : lines) {
    EXPECT_THAT(items(line.text + std::string("\n)\n")), ElementsAre(line.item, object_end)) << line.text;
  }
}

TEST_F(ModelFileTest, a_line_goes_on_behind_a_backslash) {
  EXPECT_THAT(items("(A I n (1 \\\n     2\\\r\n 3 \\\n\\ 4))"), ElementsAre(Item{0, 6, "n", "1 23  4"}));
  EXPECT_THAT(items("(A C n \"a\\\n \\\"b\\\n\\\"\")"), ElementsAre(Item{0, 11, "n", "a\"b\""}));
  EXPECT_THAT(items("(1 Model\\\n\\\n)\n"), ElementsAre(Item{1, 1, "Model", ""}));
  EXPECT_THAT(items("(1 Model\\"), ElementsAre(Item{1, 1, "Model", ""}));
}

TEST_F(ModelFileTest, errors_are_shown_with_their_line_and_what_is_wrong_there) {
  items("(1 Model\n(A C t \"two \\\n lines\")\n*\n(A X n 5)\n(A I n ())\n(A I n (5 6\n");
  const std::string file = path();
  EXPECT_THAT(messages_, ElementsAre("FIL_ReadError 4 " + file, "FIL_ReadObjOrAttr1 *", "FIL_ReadError 5 " + file,
                                     "FIL_ReadObjOrAttr2 X", "FIL_ReadError 6 " + file, "FIL_ReadObjOrAttr3 0 )",
                                     "FIL_ReadError 7 " + file, "FIL_ReadObjOrAttr3 3 ("));
}

TEST_F(ModelFileTest, a_file_cut_anywhere_still_ends) {
  const std::string whole =
      "(1 Model \"w\\\"x\"\n (A V XYZ ((0 0 0) \\\n (1 2 3)))\n (A C t \"a\\\\\\n\\\n \\ b\")\n (2 M x)\n)\n";
  for (std::size_t cut = 0; cut <= whole.size(); ++cut) EXPECT_LE(items(whole.substr(0, cut)).size(), 5u);
  EXPECT_THAT(items("(A I n " + std::string(200'000, '(')), ElementsAre(malformed));
  EXPECT_THAT(items(std::string_view("\0(\0\n\0", 5)), ElementsAre(malformed, malformed));
}

TEST_F(ModelFileTest, a_copy_holds_the_same_items) {
  fs::copy_file(EXAMPLES_DIR "/butane/butane.qfx", path());
  EXPECT_EQ(status_of(kvd_trj_testparsing_, path() + "   "), 0);
  const auto before = items_of_file(path());
  EXPECT_GT(before.size(), 20u);
  EXPECT_EQ(items_of_file(path("model.qfx.new")), before);
}

}  // namespace
}  // namespace pathstat
