// The ends of the process in the middle of its work: a Core that leaves, one that breaks the protocol, and one that
// stops it, at the calls of every analysis.
#include <sys/socket.h>

#include <csignal>

#include "process/desk_with_process.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

struct End {
  const char* name;
  void (*come)(DeskWithProcess& desk);
  const char* exit;
};

/// The far end of the process: the one TCP connection that the test holds.
int connection_to_process() {
  for (int descriptor = 3; descriptor < 256; ++descriptor) {
    sockaddr_storage peer{};
    socklen_t size = sizeof peer;
    if (::getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &size) == 0) return descriptor;
  }
  return -1;
}

void leave(DeskWithProcess&) { ::shutdown(connection_to_process(), SHUT_RDWR); }

void leave_inside_an_integer(DeskWithProcess& desk) {
  EXPECT_EQ(::send(connection_to_process(), "\0\0", 2, MSG_NOSIGNAL), 2);
  leave(desk);
}

constexpr End ends[]{
    {"stops it", [](DeskWithProcess& desk) { desk.run("STOP"); }, "exit status 0"},
    {"leaves", leave, "exit status 1"},
    {"leaves inside an integer", leave_inside_an_integer, "exit status 1"},
    {"sends what no wait takes", [](DeskWithProcess& desk) { desk.session.notify(Notice::load); }, "exit status 1"},
};

struct Analysis {
  const char* word;
  const char* arguments = "";
  const char* before = "";  ///< a word that has to run ahead of it
};

class Ends : public testing::TestWithParam<Analysis> {
 protected:
  Ends() { std::signal(SIGPIPE, SIG_IGN); }

  /// The first twenty-odd frames of argon, which is quick to analyse.
  static void load(DeskWithProcess& desk) {
    const std::string whole = EXAMPLES_DIR "/argon/argon.trj", model = EXAMPLES_DIR "/argon/argon.qfx";
    std::vector<char> start(std::filesystem::file_size(whole) / 8);
    std::ifstream(whole, std::ios::binary).read(start.data(), std::ssize(start));
    std::ofstream(desk.work() / "run.trj", std::ios::binary).write(start.data(), std::ssize(start));
    std::filesystem::copy_file(model, desk.work() / "run.qfx");
    ASSERT_EQ(desk.run("TRAJECTORY", (desk.work() / "run.trj").string()), 0);
    ASSERT_TRUE(*GetParam().before == '\0' || desk.run(GetParam().before) == 0);
  }

  /// Runs the analysis with a hook on each of its calls.
  static void run(DeskWithProcess& desk, const std::function<void(const std::string& operation)>& at_call) {
    load(desk);
    const OperationServer usual = desk.server;
    for (const auto& row : all_operations()) {
      desk.server.on(row.name, [&](const OperationCall& call, OperationReply& reply) {
        at_call(std::string(call.row.name));
        reply = usual.serve(call);
      });
    }
    desk.run(GetParam().word, GetParam().arguments);
    desk.server = usual;
  }
};

TEST_P(Ends, come_at_any_call_with_the_exit_code_of_their_kind) {
  std::map<std::string, std::set<std::size_t>> places;  // of each operation, the first and the last call
  {
    DeskWithProcess desk;
    std::map<std::string, std::vector<std::size_t>> all;
    std::size_t calls = 0;
    run(desk, [&](const std::string& operation) { all[operation].push_back(calls++); });
    ASSERT_FALSE(desk.session.lost()) << desk.session.loss();
    for (const auto& [operation, at] : all) places[operation] = {at.front(), at.back()};
  }
  ASSERT_FALSE(places.empty());
  std::size_t turn = 0;
  for (const auto& [operation, calls] : places) {
    for (const std::size_t place : calls) {
      const End& end = ends[turn++ % std::size(ends)];
      DeskWithProcess desk;
      std::size_t call = 0;
      run(desk, [&](const std::string&) {
        if (call++ == place) end.come(desk);
      });
      EXPECT_THAT(desk.session.loss(), HasSubstr(std::string("pathstat ended with ") + end.exit))
          << operation << ", call " << place << ": the Core " << end.name;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(analyses, Ends,
                         testing::Values(Analysis{"PROFILE"}, Analysis{"DISTRIBUTION"}, Analysis{"FIND_MAXIMA"},
                                         Analysis{"MSD"}, Analysis{"LINEAR_FIT", "", "MSD"}, Analysis{"VAC"},
                                         Analysis{"POWER_SPECTRUM", "", "VAC"}, Analysis{"RDF"},
                                         Analysis{"STRUCTURE_FACTOR", "", "RDF"}, Analysis{"EXTRACT_FRAME"},
                                         Analysis{"USE_ALL_FRAMES"}, Analysis{"FRAME_STEP_FORWARDS", "START"},
                                         Analysis{"TRAJECTORY", "run.trj"}),
                         [](const auto& each) { return std::string(each.param.word); });

}  // namespace
}  // namespace pathstat::desk
