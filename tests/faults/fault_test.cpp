// Whole runs of both programs in which one call fails, returns short, or meets a signal (library/fault_library.cpp).
// Whatever happens, a run ends, says why, leaves nothing in the folder for temporary files, and each of its results is
// that of a run without trouble, or the one of an earlier run.
//
// With FAULTS_EVERY=N each N-th call gets its turn, otherwise some that are spread over the run.
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <regex>
#include <thread>

#include "faults/library/fault_library.h"
#include "scratch_folder.h"
#include "testing.h"

namespace pathstat {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// A run that takes longer hangs.
constexpr auto longest_run = 20s;
/// From a signal to one program until both are gone. A slow machine gets the chance to be quicker once more.
constexpr auto longest_end = 2s;
constexpr int chances = 3;

/// From one call that gets its turn to the next; 0 for the ordinary test.
std::size_t stride() {
  const char* text = std::getenv("FAULTS_EVERY");
  return text ? std::max(1UL, std::strtoul(text, nullptr, 10)) : 0;
}

/// Frames of butane that a run reads: the head and the first frames of its file.
constexpr std::size_t bytes_of_trajectory = 436 + 12 * 1324;

constexpr const char* script =
    "TRAJECTORY small.trj\n"
    "SELECT_PROPERTIES \"Potential Energy\" Temperature\n"
    "PROFILE\n"
    "NUMBER_OF_BINS 5\n"
    "STATISTICS_FILE yes\n"
    "STATISTICS_FILENAME table\n"
    "DISTRIBUTION\n"
    "MSD\n"
    "LINEAR_FIT\n"
    "VAC\n"
    "POWER_SPECTRUM\n"
    "RDF_CUTOFF 6\n"
    "RDF\n"
    "EXTRACT_FRAME\n"
    "@show model\n";

constexpr const char* requests =
    "{\"line\": \"TRAJECTORY small.trj\"}\n"
    "{\"line\": \"@measure torsion 1 2 3 4\"}\n"
    "{\"line\": \"SELECT_PROPERTIES Torsion\"}\n"
    "{\"line\": \"PROFILE\"}\n"
    "{\"line\": \"DIPOLE\"}\n"
    "{\"model\": true}\n"
    "{\"values\": [\"FIRST_FRAME\"]}\n"
    "{\"report\": true}\n";

constexpr const char* earlier = "of an earlier run\n";

struct Fault {
  const char* program;
  const char* call;
  std::string how;          ///< as the library takes it
  std::size_t fewest = 25;  ///< places in the ordinary test
  const char* protocol = "unix";
  bool converses = false;  ///< with a program on its standard input and output; else a script runs
};

void PrintTo(const Fault& fault, std::ostream* stream) {
  *stream << fault.program << ' ' << fault.call << ' ' << fault.how << ' ' << fault.protocol
          << (fault.converses ? " converse" : "");
}

void put(const fs::path& path, std::string_view text) {
  std::ofstream(path, std::ios::binary).write(text.data(), std::ssize(text));
}

using Files = std::map<std::string, std::string>;

Files files_in(const fs::path& folder) {
  Files files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const bool plain = fs::is_regular_file(entry.symlink_status());
    files[fs::relative(entry.path(), folder)] = plain ? content_of(entry.path()) : std::string{};
  }
  return files;
}

/// What came of a run.
struct Outcome {
  int status = 0;  ///< as wait has it
  bool hung = false;
  std::chrono::nanoseconds after{};  ///< from the fault to the end of the last program
  std::string out, err;
  Files left, results;  ///< in the folder for temporary files and in that of the results
  std::uint64_t calls = 0, fired = 0;

  bool exited() const { return !hung && WIFEXITED(status); }
  int code() const { return exited() ? WEXITSTATUS(status) : -1; }
};

/// A folder with the input of a run and room for what comes of it.
class Place {
 public:
  Place() {
    const std::string example = EXAMPLES_DIR "/butane/butane";
    fs::create_directories(base_ / "in");
    put(base_ / "in/small.trj", content_of(example + ".trj").substr(0, bytes_of_trajectory));
    put(base_ / "in/small.qfx", content_of(example + ".qfx"));
    put(base_ / "in/small.script", script);
    put(base_ / "in/requests", requests);
  }

  /// Runs the script with a fault at one call, 0 for none, where an earlier run has left results of these names.
  Outcome run(const Fault& fault, std::size_t at, const Files& before) {
    clean();
    for (const auto& [name, text] : before) put(base_ / "out" / name, earlier);
    return start(fault, at);
  }

  /// Once more without a fault, in the folders as they are.
  Outcome next_run() { return start({"pathdesk", "open", "once"}, 0); }

 private:
  void clean() {
    for (const auto* folder : {"tmp", "out"}) {
      fs::remove_all(base_ / folder);
      fs::create_directories(base_ / folder);
    }
    fs::remove(base_ / "in/table.dat");
  }

  std::string file(const char* name) const { return base_ / name; }

  Outcome start(const Fault& fault, std::size_t at) {
    put(base_ / "account", std::string(sizeof(faults::Account), '\0'));
    const int descriptor = ::open(file("account").c_str(), O_RDWR | O_CLOEXEC);
    void* shared = ::mmap(nullptr, sizeof(faults::Account), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    ::close(descriptor);
    if (shared == MAP_FAILED) throw std::runtime_error("no account for the test");
    const auto* account = static_cast<faults::Account*>(shared);

    Outcome outcome;
    const pid_t child = spawn(fault, at);
    const auto started = Clock::now();
    while (::waitpid(child, &outcome.status, WNOHANG) == 0) {
      if (Clock::now() - started > longest_run) {
        outcome.hung = true;
        ::kill(child, SIGKILL);
      }
      std::this_thread::sleep_for(1ms);
    }
    while (others_run() && Clock::now() - started < longest_run) std::this_thread::sleep_for(1ms);
    outcome.after = Clock::now().time_since_epoch() - std::chrono::nanoseconds(account->when);
    outcome.calls = account->calls;
    outcome.fired = account->fired;
    outcome.out = content_of(file("stdout"));
    outcome.err = content_of(file("stderr"));
    outcome.left = files_in(base_ / "tmp");
    outcome.results = files_in(base_ / "out");
    ::munmap(shared, sizeof(faults::Account));
    return outcome;
  }

  pid_t spawn(const Fault& fault, std::size_t at) {
    const std::set<std::string_view> ours{"TMPDIR", "LD_PRELOAD"};
    std::vector<std::string> environment{"TMPDIR=" + file("tmp"),
                                         "LD_PRELOAD=" FAULT_LIBRARY,
                                         "MP_SET_NUMTHREADS=1",
                                         mark(),
                                         "FAULT_CALL=" + std::string(fault.call),
                                         "FAULT_PROGRAM=" + std::string(fault.program),
                                         "FAULT_HOW=" + fault.how,
                                         "FAULT_AT=" + std::to_string(at)};
    for (char** entry = environ; *entry; ++entry) {
      const std::string_view text = *entry;
      if (!ours.contains(text.substr(0, text.find('=')))) environment.emplace_back(text);
    }
    std::vector<std::string> arguments{PATHDESK_PROGRAM, "run", file("in/small.script")};
    if (fault.converses) arguments = {PATHDESK_PROGRAM, "converse"};
    arguments.insert(arguments.end(), {"--out", file("out"), "--format", "tsv", "--protocol", fault.protocol});
    const auto pointers = [](std::vector<std::string>& texts) {
      std::vector<char*> all;
      for (auto& text : texts) all.push_back(text.data());
      all.push_back(nullptr);
      return all;
    };
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, file("in").c_str());
    posix_spawn_file_actions_addopen(&actions, 0, fault.converses ? "requests" : "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, file("stdout").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, file("stderr").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t child = 0;
    const int failure = ::posix_spawn(&child, PATHDESK_PROGRAM, &actions, nullptr, pointers(arguments).data(),
                                      pointers(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) throw std::runtime_error("pathdesk cannot be started");
    return child;
  }

  std::string mark() const { return "FAULT_ACCOUNT=" + file("account"); }

  /// True while a process of the run is there: all have its mark in their environment.
  bool others_run() const {
    for (const auto& entry : fs::directory_iterator("/proc")) {
      if (!std::isdigit(static_cast<unsigned char>(entry.path().filename().string()[0]))) continue;
      if (content_of(entry.path() / "environ").find(mark()) != std::string::npos) return true;
    }
    return false;
  }

  const ScratchFolder folder_;
  const fs::path base_ = folder_.path();
};

/// Lines of a text that are not in another.
std::string strange_lines(const std::string& text, const std::string& known) {
  std::istringstream known_lines(known), lines(text);
  std::set<std::string> all;
  for (std::string line; std::getline(known_lines, line);) all.insert(line);
  std::string strange;
  for (std::string line; std::getline(lines, line);) strange += all.contains(line) ? "" : line + '\n';
  return strange;
}

/// The words of a table on lines of their own, so that a table with fewer columns has none that are strange.
std::string words(std::string text) {
  std::ranges::replace_if(
      text, [](char mark) { return mark == '\t' || mark == '\n' || mark == ' '; }, '\n');
  return text;
}

/// True if a trajectory could not be read to its end: all results are of fewer frames, as is told.
bool breaks_off(const Outcome& run) { return run.err.find("breaks off") != std::string::npos; }

/// True if the run goes on without a number that is taken from a file beside the results, as is told.
bool leaves_out(const Outcome& run) { return (run.out + run.err).find("is left out: cannot") != std::string::npos; }

/// What is wrong with the results; the table, which a failed command leaves without its part, may be shorter.
std::vector<std::string> wrong_results(const Outcome& run, const Outcome& good) {
  std::vector<std::string> wrong;
  if (breaks_off(run)) return wrong;
  for (const auto& [name, text] : run.results) {
    const auto known = good.results.find(name);
    if (known == good.results.end()) {
      const bool taken_next = name == ".pathdesk.lock" || name == ".pathdesk.part";
      if (taken_next && !run.exited()) continue;  // of a killed run; the next one takes it
      wrong.push_back(name + " should not be there");
    } else if (text != known->second && (run.code() == 0 || text != earlier)) {
      const bool remarked = text.find("(interrupted after") != std::string::npos;
      const bool sums_up = name.starts_with("summary.");
      if (sums_up && run.code() != 0) continue;  // what there is
      if (leaves_out(run) && (sums_up || name == "diffusion.tsv" || name == "coordination.tsv")) continue;
      const bool shorter =
          name.ends_with(".dat") && run.code() != 0 && strange_lines(words(text), words(known->second)).empty();
      if (!shorter && !remarked) wrong.push_back(name + " is neither the old nor the new one");
    }
  }
  return wrong;
}

class Faults : public testing::TestWithParam<Fault> {
 protected:
  Faults() {
    good_ = place_.run(GetParam(), 0, {});
    names_ = good_.results;
  }

  /// So many places of the run, all where it has no more calls.
  std::vector<std::size_t> places(std::size_t count) const {
    const auto calls = static_cast<std::size_t>(good_.calls);
    const auto many = std::min(calls, count);
    std::vector<std::size_t> at;
    for (std::size_t k = 0; k < many; ++k) at.push_back(1 + k * calls / many);
    return at;
  }

  Place place_;
  Outcome good_;
  Files names_;
};

bool tells_cause(const std::string& text) {
  static const std::regex cause(
      "space|memory|device|nput/output|open files|denied|refused|reset|cannot|can't|temporarily|in use|closed|holds "
      "no|breaks off|broken pipe|has been lost|could not allocate|end of file",
      std::regex::icase);
  return std::regex_search(text, cause);
}

class FailedCalls : public Faults {};

TEST_P(FailedCalls, are_told_and_leave_results_whole) {
  ASSERT_EQ(good_.code(), 0) << good_.err;
  ASSERT_GT(good_.calls, 0U);
  for (const auto at : places(stride() > 0 ? (good_.calls + stride() - 1) / stride() : GetParam().fewest)) {
    const auto run = place_.run(GetParam(), at, names_);
    if (run.fired == 0) continue;  // the number of calls may differ by the pace of the other side
    SCOPED_TRACE(testing::Message() << "call " << at << " of " << good_.calls << ", exit code " << run.code() << ":\n"
                                    << run.err
                                    << run.out.substr(run.out.size() - std::min<std::size_t>(300, run.out.size())));
    EXPECT_FALSE(run.hung);
    EXPECT_TRUE(run.exited());
    EXPECT_THAT(wrong_results(run, good_), IsEmpty());
    if (run.code() == 0) {
      const auto missing = strange_lines(good_.out, run.out);
      EXPECT_TRUE(missing.empty() || breaks_off(run) || leaves_out(run)) << missing;
      const auto more = strange_lines(run.out, good_.out);
      EXPECT_TRUE(more.empty() || tells_cause(more + run.err)) << more;
    } else {
      EXPECT_TRUE(tells_cause(run.err));
      EXPECT_THAT(run.err, Not(HasSubstr("signal")));
    }
    // A folder that cannot be opened cannot be removed either, but by the next run.
    if (GetParam().how == "on") {
      EXPECT_THAT(place_.next_run().left, IsEmpty());
    } else {
      EXPECT_THAT(run.left, IsEmpty());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    of, FailedCalls,
    testing::Values(Fault{"pathdesk", "malloc", "once", 10}, Fault{"pathstat", "malloc", "once", 10},
                    Fault{"pathdesk", "malloc", "on", 10}, Fault{"pathstat", "malloc", "on", 10},
                    Fault{"pathdesk", "open", "once", 10}, Fault{"pathstat", "open", "once", 10},
                    Fault{"pathdesk", "open", "on", 10}, Fault{"pathstat", "open", "on", 10},
                    Fault{"pathdesk", "read", "once", 10}, Fault{"pathstat", "read", "once", 10},
                    Fault{"pathdesk", "read", "short", 10}, Fault{"pathstat", "read", "short", 10},
                    Fault{"pathdesk", "write", "once", 10}, Fault{"pathstat", "write", "once", 10},
                    Fault{"pathdesk", "write", "on", 10}, Fault{"pathstat", "write", "on", 10},
                    Fault{"pathdesk", "write", "short", 10}, Fault{"pathstat", "write", "short", 10},
                    Fault{"pathdesk", "close", "once", 10}, Fault{"pathstat", "close", "once", 10},
                    Fault{"pathdesk", "rename", "once", 20}, Fault{"pathstat", "rename", "once", 20},
                    Fault{"pathdesk", "accept", "once"}, Fault{"pathstat", "connect", "once"},
                    Fault{"pathdesk", "accept", "once", 5, "tcp"}, Fault{"pathstat", "connect", "once", 5, "tcp"},
                    Fault{"pathdesk", "socket", "once"}, Fault{"pathstat", "socket", "once"},
                    Fault{"pathdesk", "socket", "once", 5, "tcp"}, Fault{"pathdesk", "process", "once"}));

class Conversations : public Faults {};

TEST_P(Conversations, end_with_a_word_and_leave_no_folder) {
  ASSERT_EQ(good_.code(), 0) << good_.err;
  for (const auto at : places(stride() > 0 ? (good_.calls + stride() - 1) / stride() : GetParam().fewest)) {
    const auto run = place_.run(GetParam(), at, {});
    SCOPED_TRACE(testing::Message() << "call " << at << " of " << good_.calls << ", exit code " << run.code() << ":\n"
                                    << run.err);
    EXPECT_FALSE(run.hung);
    EXPECT_TRUE(run.exited());
    EXPECT_TRUE(run.code() == 0 || tells_cause(run.err + run.out));
    EXPECT_THAT(run.err + run.out, Not(HasSubstr("signal")));
    EXPECT_THAT(GetParam().how == "on" ? place_.next_run().left : run.left, IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(of, Conversations,
                         testing::Values(Fault{"pathdesk", "malloc", "once", 40, "unix", true},
                                         Fault{"pathdesk", "malloc", "on", 20, "unix", true},
                                         Fault{"pathstat", "malloc", "rarely", 40, "unix", true}));

class Signals : public Faults {
 protected:
  static bool to_pathdesk() { return std::string_view(GetParam().program) == "pathdesk"; }
  static int number() { return std::stoi(GetParam().how); }

  /// A run that gets the signal at one call, in time if one of several is.
  Outcome signalled(std::size_t at) {
    Outcome run;
    for (int chance = 0; chance < chances && (chance == 0 || run.after > longest_end); ++chance) {
      run = place_.run(GetParam(), at, names_);
      if (ignored()) break;
    }
    return run;
  }
  /// The interrupt key is for pathdesk: the other does not feel it.
  static bool ignored() { return !to_pathdesk() && number() == SIGINT; }
};

TEST_P(Signals, end_both_programs_and_leave_results_whole) {
  constexpr std::size_t all_moments = 50;
  ASSERT_EQ(good_.code(), 0) << good_.err;
  for (const auto at : places(stride() > 0 ? all_moments : GetParam().fewest)) {
    const auto run = signalled(at);
    if (run.fired == 0) continue;
    SCOPED_TRACE(testing::Message() << "call " << at << " of " << good_.calls << ", exit code " << run.code() << ":\n"
                                    << run.err);
    EXPECT_FALSE(run.hung);
    EXPECT_THAT(wrong_results(run, good_), IsEmpty());
    if (ignored()) {
      EXPECT_EQ(run.code(), 0);
      EXPECT_EQ(run.out, good_.out);
    } else {
      EXPECT_LE(run.after, longest_end);
    }
    if (to_pathdesk() && number() == SIGKILL) {
      const auto next = place_.next_run();
      EXPECT_EQ(next.code(), 0) << next.err;
      EXPECT_THAT(next.left, IsEmpty());
    } else {
      EXPECT_TRUE(run.exited());
      EXPECT_THAT(run.left, IsEmpty());
    }
  }
}

std::vector<Fault> all_signals() {
  std::vector<Fault> all;
  for (const auto* program : {"pathdesk", "pathstat"}) {
    for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGKILL}) {
      all.push_back({program, "write", std::to_string(number), 8});
    }
  }
  return all;
}

INSTANTIATE_TEST_SUITE_P(of, Signals, testing::ValuesIn(all_signals()));

}  // namespace
}  // namespace pathstat
