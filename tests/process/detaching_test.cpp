#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "desk/link/reconnection.h"
#include "desk/script/kept_session.h"
#include "process/desk_with_process.h"
#include "scratch_folder.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

/// The rows of a table, without what is told ahead of them.
std::string rows_of(const fs::path& path) {
  std::ifstream file(path);
  std::string rows;
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with('#')) rows += line + '\n';
  }
  return rows;
}

/// Runs of pathdesk one after the other, with a folder for temporary files of their own.
class LeftBehind : public testing::Test {
 protected:
  LeftBehind() { ::setenv("TMPDIR", folder.c_str(), 1); }
  ~LeftBehind() override {
    for (const auto process : detached_processes()) ::kill(process, SIGKILL);
    ::unsetenv("TMPDIR");
  }

  /// Runs a script under `out`. @return the exit code
  int run(const std::string& lines, const std::string& out = "out") {
    std::ofstream(folder / "lines") << lines;
    const auto command = "cd '" + folder.string() +
                         "' && timeout 100 '" PATHDESK_PROGRAM "' run lines --format tsv,html" + " --out " + out +
                         " >output 2>trouble";
    const int status = std::system(command.c_str());
    output = content_of(folder / "output");
    trouble = content_of(folder / "trouble");
    return WEXITSTATUS(status);
  }

  const ScratchFolder scratch;
  const fs::path folder = scratch.path();
  std::string output, trouble;
  const std::string load = "TRAJECTORY " EXAMPLES_DIR "/water/water.trj\n";
};

TEST_F(LeftBehind, keeps_what_was_loaded_and_set_for_a_later_run) {
  ASSERT_EQ(run(load + "@select atoms element O\nEXTREMA_NUMBER 7\n@detach\n"), 0) << trouble;
  EXPECT_THAT(output, HasSubstr("pathstat waits as process "));
  const auto processes = detached_processes();
  ASSERT_EQ(processes.size(), 1u);
  struct stat facts {};
  ASSERT_EQ(::stat(kept_folder(processes[0]).c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 0777u, 0700u);

  ASSERT_EQ(
      run("@attach\n@request EXTREMA_NUMBER SELECTED_TRAJECTORY\n@show model\nRDF_BETWEEN SELECTED\nRDF_CUTOFF 3\n"
          "RDF\n",
          "second"),
      0)
      << trouble;
  EXPECT_THAT(output, AllOf(HasSubstr("EXTREMA_NUMBER = 7"), HasSubstr("water.trj")));
  EXPECT_THAT(detached_processes(), IsEmpty());
  EXPECT_EQ(start_of_process(processes[0]), 0u) << "it ends with the run that took it over";
  EXPECT_FALSE(fs::exists(kept_folder(processes[0])));

  ASSERT_EQ(run(load + "@select atoms element O\nEXTREMA_NUMBER 7\nRDF_BETWEEN SELECTED\nRDF_CUTOFF 3\nRDF\n", "whole"),
            0)
      << trouble;
  std::size_t compared = 0;
  for (const auto& entry : fs::directory_iterator(folder / "whole")) {
    if (entry.path().extension() != ".tsv" || entry.path().filename() == "summary.tsv") continue;
    EXPECT_EQ(rows_of(folder / "second" / entry.path().filename()), rows_of(entry.path())) << entry.path();
    ++compared;
  }
  EXPECT_GT(compared, 0u);
}

TEST_F(LeftBehind, takes_names_of_any_bytes) {
  for (const char* extension : {".trj", ".qfx"}) {
    fs::create_symlink(EXAMPLES_DIR "/water/water" + std::string(extension),
                       folder / ("\xff" + std::string(extension)));
  }
  ASSERT_EQ(run("TRAJECTORY \xff.trj\n@detach\n"), 0) << trouble;
  ASSERT_EQ(run("@attach\n@show model\n", "second"), 0) << trouble;
}

TEST_F(LeftBehind, works_on_when_its_run_has_ended) {
  const std::string settings = "ORIGIN_STEP_NO 1\nMAX_INTERVAL_NO 400\n";
  ASSERT_EQ(run(load + settings + "@detach MSD\n"), 0) << trouble;
  EXPECT_THAT(output, ContainsRegex("pathstat (works on|waits) as process"));
  ASSERT_EQ(run("@attach\n", "second"), 0) << trouble;
  ASSERT_EQ(run(load + settings + "MSD\n", "whole"), 0) << trouble;
  if (output.find("works on") != std::string::npos) {
    for (const auto& entry : fs::directory_iterator(folder / "whole")) {
      if (entry.path().extension() != ".tsv" || entry.path().filename() == "summary.tsv") continue;
      EXPECT_EQ(rows_of(folder / "second" / entry.path().filename()), rows_of(entry.path())) << entry.path();
    }
  }
}

TEST_F(LeftBehind, is_told_from_what_is_not_there) {
  EXPECT_EQ(run("@attach\n"), 1);
  EXPECT_THAT(trouble, HasSubstr("there is no detached process"));
  EXPECT_EQ(run("@attach 1\n"), 1);
  EXPECT_THAT(trouble, HasSubstr("there is no detached process 1"));
  EXPECT_EQ(run(load + "@attach\n"), 1);
  EXPECT_THAT(trouble, HasSubstr("@attach comes ahead of them"));
  EXPECT_EQ(run("@attach x\n"), 2);
}

TEST(ReconnectionFile, is_read_if_it_is_this_users_alone) {
  const ScratchFolder folder;
  const auto path = folder.file("reconnect");
  std::string port;
  EXPECT_EQ(read_reconnection_file(path, port), "");
  EXPECT_EQ(port, "") << "there is none yet";

  const auto write = [&](const std::string& text, mode_t mode) {
    fs::remove(path);
    std::ofstream(path) << text;
    ::chmod(path.c_str(), mode);
  };
  write("4711\ntcp\n", 0600);
  EXPECT_EQ(read_reconnection_file(path, port), "");
  EXPECT_EQ(port, "4711");
  write("4711\ntcp\n", 0644);
  EXPECT_THAT(read_reconnection_file(path, port), HasSubstr("is open to other users"));
  for (const auto* text : {"4711\nunix\n", "x\ntcp\n", "99999\ntcp\n", "4711", "4711\ntcp\nmore\n"}) {
    write(text, 0600);
    EXPECT_THAT(read_reconnection_file(path, port), HasSubstr("does not say where")) << text;
    EXPECT_EQ(port, "");
  }
  write("4711\ntcp\n", 0600);
  if (::chown(path.c_str(), 65534, 65534) == 0) {
    EXPECT_THAT(read_reconnection_file(path, port), HasSubstr("belongs to somebody else"));
  }
  const auto link = path + ".link";
  write("4711\ntcp\n", 0600);
  fs::create_symlink(path, link);
  EXPECT_THAT(read_reconnection_file(link, port), HasSubstr("it is a link"));
  EXPECT_EQ(port, "");
}

}  // namespace
}  // namespace pathstat::desk
