#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "corelink/host_name.h"
#include "corelink/last_error.h"
#include "scratch_folder.h"
#include "services/file_search.h"
#include "services/process_signals.h"
#include "services/process_start.h"
#include "services/process_times.h"
#include "surroundings.h"
#include "testing.h"

namespace pathstat {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

std::string with_mark(const char* text) { return text == nullptr ? "null: " + std::string(PLE_get_error()) : text; }

TEST(TranslatedNames, are_translated_from_left_to_right) {
  const ScopedVariable home("HOME", "/h"), set("PS_X1", "v:w"), unset("PS_NONE", nullptr);
  struct Case {
    const char *name, *result;
  };
  constexpr Case cases[]{{"$HOME/x:y", "/h/x/y"},
                         {"a~b", "a~b"},
                         {"~", "/h"},
                         {"~/x", "/h/x"},
                         {"~you/x", "~you/x"},
                         {"$PS_X1.z", "v:w.z"},
                         {"", ""},
                         {"a$PS_NONE/b", "null: Environment variable 'PS_NONE' is not defined"},
                         {"a$", "null: Environment variable '' is not defined"}};
  for (const auto& [name, result] : cases) EXPECT_EQ(with_mark(FILNAM_xlate(name)), result) << name;
  EXPECT_EQ(std::string(FILNAM_xlate(std::string(1023, 'a').c_str())).size(), 1023u);
  EXPECT_EQ(FILNAM_xlate(std::string(1024, 'a').c_str()), nullptr);
  EXPECT_THAT(PLE_get_error(), HasSubstr("ran out of space"));

  std::string field(8, 'x');
  filnam_xlate_f_("~/x:y   ", field);
  EXPECT_EQ(field, "/h/x/y  ");
  EXPECT_THAT(stderr_of([&] { filnam_xlate_f_("~/longer/than/8", field); }), HasSubstr("the field 8"));
  EXPECT_EQ(field, "        ");

  EXPECT_STREQ(FILNAM_strip_directory("/a/b.c"), "b.c");
  EXPECT_STREQ(FILNAM_strip_directory("b.c"), "b.c");
  EXPECT_STREQ(FILNAM_strip_directory("/a/"), "");
  EXPECT_STREQ(FILNAM_append_file_to_dir("/a", "b").get(), "/a/b");
}

class Files : public testing::Test {
 protected:
  Files() {
    file("one/tool", "x");
    file("two/tool", "xyz");
    file("two/other", "");
  }
  void file(const std::string& path, std::string_view content) {
    const std::filesystem::path full = std::filesystem::path(folder) / path;
    std::filesystem::create_directories(full.parent_path());
    std::ofstream(full) << content;
  }
  const ScratchFolder scratch;
  const std::string folder = scratch.path().string();
};

TEST_F(Files, are_sized_renamed_and_removed) {
  const std::string one = folder + "/one/tool", moved = folder + "/moved";
  EXPECT_EQ(FILE_exists(one.c_str()), 1);
  EXPECT_EQ(FILE_size((folder + "/two/tool").c_str()), 3);
  EXPECT_EQ(FILE_rename(one.c_str(), moved.c_str()), 1);
  EXPECT_EQ(FILE_exists(one.c_str()), 0);
  EXPECT_EQ(FILE_size(one.c_str()), -1);
  EXPECT_EQ(FILE_rename(one.c_str(), moved.c_str()), 0);
  EXPECT_THAT(PLE_get_error(), HasSubstr("Cannot rename " + one + " to " + moved));
  EXPECT_EQ(FILE_delete(moved.c_str()), 1);
  EXPECT_EQ(FILE_delete(moved.c_str()), 0);
  EXPECT_EQ(FILE_delete(""), 0);
  EXPECT_EQ(FILE_delete(nullptr), 0);
  EXPECT_EQ(FILE_delete(folder.c_str()), 0) << "a folder is no file";
}

TEST_F(Files, are_looked_for_in_the_folders_of_a_variable) {
  const std::string one = folder + "/one", two = folder + "/two";
  const ScopedVariable path("PS_PATH", (one + ":" + two + "/").c_str()), none("PS_NONE", nullptr),
      name("PS_F", "other");
  EXPECT_EQ(with_mark(FILE_dirpath_search("PS_PATH", "tool")), one + "/tool") << "the first wins";
  EXPECT_EQ(with_mark(FILE_dirpath_search("PS_PATH", "$PS_F")), two + "//other");
  EXPECT_EQ(with_mark(FILE_dirpath_search("PS_NONE", (one + "/tool").c_str())), one + "/tool");
  EXPECT_EQ(with_mark(FILE_dirpath_search("PS_NONE", (one + "/x").c_str())),
            "null: file '" + one + "/x' does not exist");
  EXPECT_EQ(with_mark(FILE_dirpath_search("PS_PATH", "x")),
            "null: File 'x' does not exist in PS_PATH=" + one + ":" + two + "/");
  EXPECT_EQ(with_mark(FILE_dirpath_search("PS_PATH", "")), "null: " + one + " cannot be used: it is a directory");
  EXPECT_EQ(stderr_of([&] { EXPECT_EQ(FILE_dirpath_search("", ""), nullptr); }),
            "FILE_dirpath_search: both file name and path variable are empty\n");

  const auto here = std::filesystem::current_path();
  std::filesystem::current_path(two);
  EXPECT_EQ(with_mark(FILE_dirpath_search("PS_NONE", "other")), "./other");
  std::filesystem::current_path(here);

  const ScopedVariable far("PS_PATH", (std::string(1100, 'd') + ":" + one).c_str());
  EXPECT_EQ(with_mark(FILE_dirpath_search("PS_PATH", "tool")), one + "/tool") << "a folder that is too long is passed";
}

TEST_F(Files, that_run_have_the_bit_of_their_owner) {
  const ScopedVariable path("PATH", (folder + "/one").c_str());
  EXPECT_EQ(with_mark(FILE_path("tool")), "null: File '" + folder + "/one/tool' is not an executable");
  std::filesystem::permissions(folder + "/one/tool", std::filesystem::perms::owner_all);
  EXPECT_EQ(with_mark(FILE_path("tool")), folder + "/one/tool");
}

TEST(Processes, run_with_their_arguments_and_environment) {
  const char* const argv[]{"sh", "-c", "test \"$PS_A\" = b && exit 7", nullptr};
  const char* const envp[]{"PS_A=b", nullptr};
  const std::int32_t child = COM_exec0("/bin/sh", 3, argv, 1, envp);
  ASSERT_GT(child, 1);
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 7);

  std::int32_t process = -1;
  com_exec_fortran_("/bin/sh    ", " -c  exit ", process);
  ASSERT_GT(process, 1);
  ASSERT_EQ(::waitpid(process, &status, 0), process);
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(Processes, are_not_started_for_a_fault_and_by_hand) {
  const char* const argv[]{"sh", "-c", "exit 3", nullptr};
  const char* const envp[]{"PS_A=b", "PS_C=d", nullptr};
  EXPECT_EQ(COM_exec0("/nowhere/sh", 3, argv, 2, envp), 0);
  EXPECT_EQ(COM_exec0("/bin/sh", 2, argv, 2, envp), 0);
  EXPECT_STREQ(PLE_get_error(), "COM_exec error: argv array is not null-terminated");
  EXPECT_EQ(COM_exec0("/bin/sh", 3, argv, 1, envp), 0);
  EXPECT_STREQ(PLE_get_error(), "COM_exec error: environment array is not null-terminated");
  EXPECT_EQ(COM_exec("/nowhere/sh", 3, argv, 2, envp), nullptr);

  const ScopedVariable type("EXEC_TYPE", "MANUAL");
  EXPECT_EQ(stdout_of([&] { EXPECT_STREQ(COM_exec("/bin/sh", 3, argv, 2, envp), "1"); }),
            "=== MANUAL EXECUTION === environment: ===\nPS_A=b\nPS_C=d\n=== command: sh -c exit 3\n");
}

TEST(Processes, close_the_descriptors_that_they_are_told) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const ScopedVariable unwanted("COM_CloseMe", ("x 999 " + std::to_string(ends[1])).c_str());
  const std::string test = "test ! -e /proc/self/fd/" + std::to_string(ends[1]);
  const char* const argv[]{"sh", "-c", test.c_str(), nullptr};
  const std::int32_t child = COM_exec1("/bin/sh", 3, argv);
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  ::close(ends[0]);
  ::close(ends[1]);
}

/// A child that waits for a signal.
class Waiting {
 public:
  Waiting() : id(::fork()) {
    if (id != 0) return;
    for (;;) ::pause();
  }
  ~Waiting() {
    ::kill(id, SIGKILL);
    ::waitpid(id, nullptr, 0);
  }
  std::string number() const { return std::to_string(id); }
  const pid_t id;
};

TEST(Signals, stop_resume_and_end_a_process) {
  const Waiting child;
  int status = 0;
  EXPECT_EQ(COM_signal_send_stop(child.number().c_str()), 0);
  ASSERT_EQ(::waitpid(child.id, &status, WUNTRACED), child.id);
  EXPECT_TRUE(WIFSTOPPED(status));
  EXPECT_EQ(COM_signal_send_resume(child.number().c_str()), 0);
  ASSERT_EQ(::waitpid(child.id, &status, WCONTINUED), child.id);
  EXPECT_TRUE(WIFCONTINUED(status));

  const int before = ::getpriority(PRIO_PROCESS, static_cast<id_t>(child.id));
  EXPECT_EQ(COM_setpriority(2, child.number().c_str()), 0);
  EXPECT_EQ(::getpriority(PRIO_PROCESS, static_cast<id_t>(child.id)), std::min(before + 2, 19));

  EXPECT_EQ(COM_sigusr2_send(child.number().c_str()), 0);
  ASSERT_EQ(::waitpid(child.id, &status, 0), child.id);
  EXPECT_EQ(WTERMSIG(status), SIGUSR2);
}

TEST(Signals, refuse_what_names_no_single_process) {
  for (const auto* text : {"", "x", "12x", "0", "-1", "-12", "99999999999", " 5"}) {
    EXPECT_EQ(COM_signal(0, text), -1) << text;
    EXPECT_EQ(PLE_get_error(), "process " + std::string(text) + " is not a unix process number");
  }
  EXPECT_EQ(COM_signal(0, nullptr), -1);

  pid_t gone = ::fork();
  if (gone == 0) ::_exit(0);
  ::waitpid(gone, nullptr, 0);
  const std::string number = std::to_string(gone);
  struct Case {
    std::int32_t signal;
    std::string text;
  };
  const Case cases[]{{9, "cannot kill process " + number},
                     {23, "cannot stop process " + number},
                     {25, "cannot resume execution of process " + number},
                     {2, "cannot send signal 2 to process " + number}};
  for (const auto& [signal, text] : cases) {
    EXPECT_EQ(COM_signal(signal, number.c_str()), -1);
    EXPECT_THAT(PLE_get_error(), HasSubstr(text));
  }
  EXPECT_EQ(COM_setpriority(3, number.c_str()), -1);
  EXPECT_EQ(PLE_get_error(), "cannot change priority of " + number + " by 3");
}

volatile std::sig_atomic_t ended_child = 0;

TEST(Signals, tell_of_a_child_that_ends) {
  ended_child = 0;
  COM_sigchld_set([](std::int32_t process) { ended_child = process; });
  const pid_t child = ::fork();
  if (child == 0) ::_exit(0);
  for (int tries = 0; ended_child == 0 && tries < 500; ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  COM_signal_handler_child(SIG_DFL);
  EXPECT_EQ(ended_child, child);
}

TEST(Times, are_those_of_the_system) {
  const std::time_t before = std::time(nullptr);
  const std::string date = COM_getdate();
  EXPECT_EQ(date.size(), 25u);
  EXPECT_EQ(date.back(), '\n');
  tm parsed{};
  ASSERT_NE(::strptime(date.c_str(), "%a %b %d %H:%M:%S %Y", &parsed), nullptr);
  parsed.tm_isdst = -1;
  EXPECT_LE(std::abs(std::difftime(std::mktime(&parsed), before)), 2.0);

  std::array<std::int32_t, 3> clock{-1, -1, -1};
  COM_itime(clock);
  EXPECT_TRUE(clock[0] >= 0 && clock[0] < 24 && clock[1] >= 0 && clock[1] < 60 && clock[2] >= 0 && clock[2] < 61);

  std::array<float, 2> used{};
  const float sum = COM_etime(used);
  EXPECT_FLOAT_EQ(sum, used[0] + used[1]);
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  std::array<float, 2> later = used;
  while (later[0] + later[1] <= sum && std::chrono::steady_clock::now() < limit) COM_etime(later);
  EXPECT_GT(later[0] + later[1], sum);
}

TEST(Hosts, know_which_names_are_local) {
  EXPECT_EQ(COM_its_local("localhost"), 1);
  EXPECT_EQ(COM_its_local("no-such-machine"), 0);
  EXPECT_EQ(COM_its_local(nullptr), 0);
  const char* name = COM_gethostname();
  if (name != nullptr) {
    EXPECT_EQ(COM_its_local(std::string(name).c_str()), 1);
  }
  const char* address = COM_gethostaddr();
  if (address != nullptr) {
    EXPECT_EQ(COM_its_local(address), 1);
  }
}

}  // namespace
}  // namespace pathstat
