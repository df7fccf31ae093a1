#include "services/file_names.h"

#include <pwd.h>
#include <unistd.h>

#include "services/unit_paths.h"
#include "services/work_directory.h"

namespace pathstat {
namespace {

class FileNames : public WorkDirectory {};

TEST_F(FileNames, expand_their_prefix) {
  setenv("HOME", "/h", 1);
  setenv("EXPAND_DIR", "/data/runs", 1);
  unsetenv("EXPAND_UNSET");
  const passwd* self = getpwuid(geteuid());
  ASSERT_NE(self, nullptr);
  struct {
    std::string source, target;
  } const cases[] = {
      {"./x", path("x")},
      {"~", "/h"},
      {"~/run.his", "/h/run.his"},
      {std::string("~") + self->pw_name + "/x", std::string(self->pw_dir) + "/x"},
      {"~no_such_user_here/x", "/x"},
      {"$EXPAND_DIR/a", "/data/runs/a"},
      {"$EXPAND_UNSET/a", "/a"},
      {"$EXPAND_DIR:a", ""},  // not a path variable: a name of the environment with a ":" in it
      {"a/~/$EXPAND_DIR/./b", "a/~/$EXPAND_DIR/./b"},
      {"", ""},
  };
  for (const auto& [source, target] : cases) EXPECT_EQ(expanded_name(source), target) << source;
}

TEST_F(FileNames, change_their_extension) {
  struct {
    const char *path, *extension, *result;
  } const cases[] = {
      {"dir.v1/run", ".qfx", "dir.v1/run.qfx"},
      {"run.his", "qfx", "run.qfx"},
      {"a.b.his", "qfx", "a.b.qfx"},
      {"run.his", "", "run"},
  };
  for (const auto& [from, extension, result] : cases) {
    char direct[32];
    kvS_FIL_ReplaceExt(from, extension, direct);
    EXPECT_STREQ(direct, result);
    Text<32> field;
    kvs_fil_replaceext_(Text<24>(from).full(), Text<6>(extension).full(), field);
    EXPECT_EQ(field, result);
  }
  char small[8];
  kvS_FIL_ReplaceExt("abcdefgh.his", ".qfx", small);
  EXPECT_STREQ(small, "abcdefg");
}

TEST_F(FileNames, open_along_a_list_of_directories) {
  for (const char* made : {"one", "two", "lib/res/RULES", "lib/Varlane-Resources/RULES", "one/dir.dat"}) {
    std::filesystem::create_directories(made);
  }
  write("two/a.dat", "2");
  write("two/dir.dat", "2");
  write("lib/res/RULES/b.dat", "r");
  write("lib/Varlane-Resources/RULES/c.dat", "v");
  write("plain.dat", "p");
  setenv("RULES", (path("one") + ":" + path("two")).c_str(), 1);
  setenv("VLDIR", path("lib").c_str(), 1);
  struct {
    std::string name, path;
  } const cases[] = {
      {"RULES:a.dat", path("two/a.dat")},
      {"RULES:dir.dat", path("two/dir.dat")},  // a directory of the name is passed over
      {"RULES:b.dat", path("lib/res/RULES/b.dat")},
      {"RULES:c.dat", path("lib/Varlane-Resources/RULES/c.dat")},
      {"plain.dat", "plain.dat"},
      {"RULES:none.dat", ""},
      {"one", ""},
      {"", ""},
  };
  for (const auto& [name, found] : cases) {
    Text<256> field;
    std::FILE* stream = kvs_fil_opensearch_(name + "  ", "r", field);
    EXPECT_EQ(stream != nullptr, !found.empty()) << name;
    EXPECT_EQ(field, found) << name;
    if (stream != nullptr) std::fclose(stream);
  }
}

TEST(UnitPath, replaces_an_environment_prefix) {
  setenv("UNIT_DIR", "/data", 1);
  setenv("UNIT_DIR_SLASH", "/data/", 1);
  setenv("UNIT_BLANK", "  ", 1);
  unsetenv("UNIT_UNSET");
  struct {
    const char *source, *target;
  } const cases[] = {
      {"$UNIT_DIR/a", "/data/a"},       {"$UNIT_DIR:a", "/data/a"},   {"$UNIT_DIR:a/b:c", "/data/a/b:c"},
      {"$UNIT_DIR_SLASH/a", "/data/a"}, {"$UNIT_UNSET/a", "./a"},     {"$UNIT_BLANK:a", "./a"},
      {"$UNIT_DIR", "/data/"},          {"a$UNIT_DIR", "a$UNIT_DIR"}, {"./a b", "./a b"},
  };
  for (const auto& [source, target] : cases) {
    Text<40> field;
    interpenv_(Text<30>(source).full(), field);
    EXPECT_EQ(field, target) << source;
  }
}

}  // namespace
}  // namespace pathstat
