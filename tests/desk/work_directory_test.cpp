#include "desk/link/work_directory.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "desk/link/child_process.h"
#include "surroundings.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

/// Another process that has done something, tells a number of it, and waits to be killed.
class Killed {
 public:
  explicit Killed(const std::function<int()>& work) {
    std::array<int, 2> told{};
    if (::pipe(told.data()) != 0) return;
    id_ = ::fork();
    if (id_ == 0) {
      const int number = work();
      if (::write(told[1], &number, sizeof number) > 0) ::pause();
      ::_exit(1);
    }
    if (::read(told[0], &number_, sizeof number_) != sizeof number_) number_ = -1;
    ::close(told[0]);
    ::close(told[1]);
  }
  ~Killed() { kill(); }
  int number() const { return number_; }
  void kill() {
    if (id_ <= 0) return;
    ::kill(id_, SIGKILL);
    ::waitpid(id_, nullptr, 0);
    id_ = 0;
  }

 private:
  pid_t id_ = 0;
  int number_ = -1;
};

class Folders : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(error_, ""); }
  const fs::path& folder() const { return directory_.path(); }
  int entries() const { return static_cast<int>(std::distance(fs::directory_iterator(folder()), {})); }

 private:
  std::string error_;
  PrivateDirectory directory_{error_};
  ScopedVariable for_temporary_files_{"TMPDIR", directory_.path().c_str()};
};

TEST_F(Folders, of_dead_runs_are_cleared_and_those_of_others_are_not) {
  fs::create_directories(folder() / "pathdesk-output");
  fs::create_directories(folder() / "pathdesk-tmp.shared");
  fs::create_directories(folder() / "another-folder");
  fs::create_directory_symlink(folder() / "another-folder", folder() / "pathdesk-tmp.LINKED");
  const auto make = [] {
    std::string error;
    return (new PrivateDirectory(error))->path().empty() ? 0 : 1;
  };
  Killed dead(make), alive(make);
  ASSERT_EQ(dead.number() + alive.number(), 2);
  EXPECT_EQ(entries(), 6);
  dead.kill();
  {
    std::string error;
    const PrivateDirectory next(error);
    EXPECT_EQ(error, "");
    EXPECT_EQ(entries(), 6) << "one went, one came";
  }
  EXPECT_EQ(entries(), 5);
  EXPECT_TRUE(fs::exists(folder() / "another-folder"));
}

TEST_F(Folders, that_cannot_be_made_are_named_with_the_reason) {
  const ScopedVariable missing("TMPDIR", (folder() / "none").c_str());
  std::string error;
  const PrivateDirectory none(error);
  EXPECT_EQ(error, "cannot make a folder for temporary files in " + (folder() / "none").string() +
                       ": No such file or directory");
}

TEST_F(Folders, serve_one_run_until_it_ends_in_whatever_way) {
  const auto take = [this] {
    auto* lock = new FolderLock;
    return lock->take(folder()).empty() ? 1 : 0;
  };
  Killed other(take);
  ASSERT_EQ(other.number(), 1);
  FolderLock second;
  EXPECT_THAT(second.take(folder()),
              testing::MatchesRegex("another run \\(process [0-9]+\\) writes into the folder .*"));
  other.kill();
  {
    FolderLock third;
    EXPECT_EQ(third.take(folder()), "");
    EXPECT_THAT(second.take(folder()), HasSubstr("another run"));
  }
  EXPECT_EQ(entries(), 0) << "no lock is left";
  EXPECT_THAT(second.take(folder() / "none"), HasSubstr("cannot be written: No such file"));
}

TEST_F(Folders, a_child_dies_with_its_parent) {
  Killed parent([this] {
    auto* child = new ChildProcess;
    return child->start({"/usr/bin/yes", folder(), "/dev/null", {}}).empty() ? static_cast<int>(child->id()) : -1;
  });
  ASSERT_GT(parent.number(), 0);
  const auto runs = [&] {
    std::ifstream status("/proc/" + std::to_string(parent.number()) + "/stat");
    std::string number, name, state;
    return (status >> number >> name >> state) && state != "Z";
  };
  EXPECT_TRUE(runs());
  parent.kill();
  for (int tries = 0; tries < 200 && runs(); ++tries) ::usleep(10000);
  EXPECT_FALSE(runs());
}

}  // namespace
}  // namespace pathstat::desk
