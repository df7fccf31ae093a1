#include "desk/link/core_session.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "corelink/typed_values.h"
#include "desk/link/work_directory.h"
#include "testing.h"

// The test program is its own peer: started with PEER_ROLE set, it plays the analysis process instead of running tests.

namespace pathstat::desk {
namespace {

/// The process's side of the wire, in the calls of its own typed layer.
class Peer {
 public:
  bool connect() {
    PNC_create_client(link_, std::getenv("RJMACHINE"), std::getenv("RJSERVER"), std::getenv("RJPROTOCOL"));
    return is_connected(link_);
  }
  void greet(const char* words) { PD_send_string(link_, words); }
  std::int32_t receive() {
    std::int32_t value = 0;
    if (PD_receive_int(link_, value, -1) != 0) std::_Exit(0);
    return value;
  }
  std::string receive_text() {
    std::string text;
    PD_receive_string(link_, text, 10);
    return text;
  }
  void send(std::initializer_list<std::int32_t> values) {
    for (const auto value : values) PD_send_int(link_, value);
  }
  /// Sends the half of a number and no more.
  void stall() {
    [[maybe_unused]] const auto sent = ::write(link_.socket, "\0\0", 2);
    ::pause();
  }
  void send_text(const char* text) { PD_send_string(link_, text); }
  void send_long_text(std::string_view text) { PD_send0_longstring(link_, text); }

  struct Command {
    std::string word, arguments;
  };
  /// Takes what follows the code of a command.
  Command take_command() {
    receive();
    receive_text();
    Command command{receive_text(), receive_text()};
    send({1, 1});
    return command;
  }
  void end_command(std::int32_t status) { send({-64, status}); }

  /// Answers a request of words as the process does: with fewer answers and a negative status if they do not fit.
  void answer_request(const std::string& prefix) {
    receive();
    receive_text();
    auto keys = receive_text();
    const auto count = receive(), selector = receive(), capacity = receive();
    std::string reply = prefix + ((selector & 15) == 2 ? "value of " : "range of ") + keys + " in group " +
                        std::to_string(selector >> 8 & 0xffff);
    const bool fits = static_cast<std::int32_t>(reply.size()) < capacity;
    send({1, 1, -64});
    send_long_text(fits ? reply : reply.substr(0, static_cast<std::size_t>(capacity)));
    send({fits ? count : count - 1});
    if (!fits) send({-static_cast<std::int32_t>(reply.size())});
  }

  /// Calls an operation without inputs and takes the integers of its answer, serving commands while it waits.
  std::vector<std::int32_t> call(std::int32_t family, std::int32_t second_word, const char* name, int outputs) {
    send({family});
    send_text(name);
    wait_for_reply();
    send({receive(), 2, second_word});
    wait_for_reply();
    std::vector<std::int32_t> values;
    for (int k = 0; k < outputs; ++k) values.push_back(receive());
    return values;
  }

 private:
  void wait_for_reply() {
    for (std::int32_t code = receive(); code != 1; code = receive()) {
      if (code == -1) {
        const auto command = take_command();
        std::printf("nested %s %s\n", command.word.c_str(), command.arguments.c_str());
        std::fflush(stdout);
        if (command.word == "CALL") call(10000, 5, "kvD_Root", 3);
        end_command(5);
      } else if (code == -2) {
        answer_request("");
      } else {
        std::_Exit(9);
      }
    }
  }

  Connection link_;
};

void run_command(Peer& peer) {
  const auto command = peer.take_command();
  std::printf("running %s %s\n", command.word.c_str(), command.arguments.c_str());
  std::fflush(stdout);
  if (command.word == "CALL") return peer.end_command(peer.call(10000, 5, "kvD_Root", 3).front());
  if (command.word == "STRANGE") peer.call(10000, 5, "kvD_NoSuchOperation", 1);
  if (command.word == "NUMBER") peer.send({123});
  if (command.word == "STALL") peer.stall();
  if (command.word == "CRASH") std::raise(SIGKILL);
  if (command.word == "EXIT") std::_Exit(3);
  if (command.word == "STOP") std::_Exit(0);
  peer.end_command(command.word == "FAIL" ? 1003 : 0);
}

int play(const std::string& role) {
  if (role == "silent") return 0;
  if (role == "rude") {
    std::puts("cannot go on");
    std::fflush(stdout);
    return 4;
  }
  Peer peer;
  if (!peer.connect()) return 8;
  peer.greet(role == "stranger" ? "hello" : "remote process success IEEE");
  for (;;) {
    const auto code = peer.receive();
    if (code == -1)
      run_command(peer);
    else if (code == -2)
      peer.answer_request(role == "wordy" ? std::string(10000, '.') : "");
    else
      peer.send({1, -64});
  }
}

/// Set before main() runs: in the peer it never does.
const bool is_test = [] {
  if (const char* role = std::getenv("PEER_ROLE")) std::_Exit(play(role));
  return true;
}();

/// A session with this program as its process.
class CoreSessionTest : public testing::TestWithParam<Protocol> {
 protected:
  std::string start(const char* role, Protocol protocol = Protocol::unix_socket) {
    return start(session_, role, protocol);
  }
  std::string start(CoreSession& session, const char* role, Protocol protocol = Protocol::unix_socket) {
    std::string error;
    directories_.push_back(std::make_unique<PrivateDirectory>(error));
    const auto& directory = directories_.back()->path();
    ::setenv("PEER_ROLE", role, 1);
    error = session.start({std::filesystem::read_symlink("/proc/self/exe"), directory, directory, protocol, silence_});
    ::unsetenv("PEER_ROLE");
    return error;
  }

  OperationServer server_;
  std::vector<std::string> lines_;
  bool stop_ = false;
  SilenceLimits silence_;
  std::vector<std::unique_ptr<PrivateDirectory>> directories_;
  CoreSession session_{server_, [this](std::string_view line) { lines_.emplace_back(line); }, [this] { return stop_; }};
};

TEST_P(CoreSessionTest, runs_commands_and_tells_their_statuses_and_what_they_print) {
  ASSERT_THAT(start("plain", GetParam()), IsEmpty());
  EXPECT_THAT(session_.command("TRAJECTORY", "argon.trj"), Optional(0));
  EXPECT_THAT(session_.command("FAIL", ""), Optional(1003));
  EXPECT_THAT(lines_, ElementsAre("running TRAJECTORY argon.trj", "running FAIL "));
  EXPECT_TRUE(session_.notify(Notice::save));
  session_.finish();
  EXPECT_TRUE(session_.ended_well());
}

TEST_P(CoreSessionTest, serves_calls_and_runs_commands_and_requests_inside_them) {
  ASSERT_THAT(start("plain", GetParam()), IsEmpty());
  std::optional<std::int32_t> inner;
  std::optional<std::vector<WordAnswer>> answers;
  server_.on("kvD_Root", [&](const OperationCall&, OperationReply& reply) {
    inner = session_.command("INNER", "x");
    const std::string words[] = {"RDF_TYPE"};
    answers = session_.request(words);
    reply.put(std::int32_t{42});
  });
  EXPECT_THAT(session_.command("CALL", ""), Optional(42));
  EXPECT_THAT(inner, Optional(5));
  ASSERT_TRUE(answers);
  EXPECT_THAT((*answers)[0].values, ElementsAre("value of RDF_TYPE in group 1"));
  EXPECT_THAT(lines_, ElementsAre("running CALL ", "nested INNER x"));
  EXPECT_THAT(session_.command("CALL", ""), Optional(42)) << "a second time, when the operation is bound anew";
}

INSTANTIATE_TEST_SUITE_P(protocols, CoreSessionTest, testing::Values(Protocol::unix_socket, Protocol::tcp),
                         [](const auto& test) { return std::string(protocol_name(test.param)); });

using OneSession = CoreSessionTest;

TEST_F(OneSession, asks_again_with_the_capacity_that_an_answer_needs) {
  ASSERT_THAT(start("wordy"), IsEmpty());
  const std::string words[] = {"SELECT_PROPERTIES"};
  const auto answers = session_.request(words);
  ASSERT_TRUE(answers);
  const std::string dots(10000, '.');
  EXPECT_THAT((*answers)[0].values, ElementsAre(dots + "value of SELECT_PROPERTIES in group 1"));
  EXPECT_THAT((*answers)[0].ranges, ElementsAre(dots + "range of SELECT_PROPERTIES in group 1"));
}

struct LossCase {
  const char* role;
  const char* word;
  const char* report;
};

TEST_F(OneSession, tells_why_the_process_did_not_come_up) {
  for (const auto& [role, word, report] :
       {LossCase{"silent", "", "exit status 0"}, LossCase{"rude", "", "exit status 4\n  pathstat: cannot go on"},
        LossCase{"stranger", "", "greeted with \"hello\""}}) {
    CoreSession session(server_, {}, [] { return false; });
    EXPECT_THAT(start(session, role), HasSubstr(report)) << role;
  }
}

TEST_F(OneSession, tells_how_the_process_was_lost_in_a_command) {
  for (const auto& [role, word, report] :
       {LossCase{"plain", "CRASH", "signal 9"}, LossCase{"plain", "EXIT", "exit status 3\n  pathstat: running EXIT"},
        LossCase{"plain", "STRANGE", "unknown operation kvD_NoSuchOperation of family 10000"},
        LossCase{"plain", "NUMBER", "sent 123, which is no operation"}}) {
    CoreSession session(server_, {}, [] { return false; });
    EXPECT_THAT(start(session, role), IsEmpty());
    EXPECT_EQ(session.command(word, ""), std::nullopt) << word;
    EXPECT_TRUE(session.lost()) << word;
    EXPECT_THAT(session.loss(), HasSubstr(report)) << word;
    EXPECT_EQ(session.command("PROFILE", ""), std::nullopt) << "once lost, always lost";
  }
}

TEST_F(OneSession, knows_the_command_that_ends_the_process_from_a_crash) {
  ASSERT_THAT(start("plain"), IsEmpty());
  EXPECT_EQ(session_.command("STOP", ""), std::nullopt);
  EXPECT_TRUE(session_.ended_well());
}

TEST_F(OneSession, gives_up_a_process_that_calls_within_its_own_calls_without_an_end) {
  ASSERT_THAT(start("plain"), IsEmpty());
  int calls = 0;
  server_.on("kvD_Root", [&](const OperationCall&, OperationReply&) {
    ++calls;
    session_.command("CALL", "");
  });
  EXPECT_EQ(session_.command("CALL", ""), std::nullopt);
  EXPECT_EQ(calls, 100);
  EXPECT_THAT(session_.loss(), HasSubstr("calls within its own calls"));
}

TEST_F(OneSession, gives_up_when_asked_to_while_it_waits) {
  ASSERT_THAT(start("plain"), IsEmpty());
  server_.on("kvD_Root", [this](const OperationCall&, OperationReply&) { stop_ = true; });
  EXPECT_EQ(session_.command("CALL", ""), std::nullopt);
  EXPECT_EQ(session_.loss(), "stopped by the user");
}

TEST_F(OneSession, gives_up_a_process_that_stalls_in_a_value) {
  silence_ = {std::chrono::milliseconds(100), std::chrono::milliseconds(300)};
  std::vector<std::string> told;
  CoreSession session(
      server_, {}, [] { return false; }, [&](const std::string& text) { told.push_back(text); });
  ASSERT_THAT(start(session, "plain"), IsEmpty());
  EXPECT_EQ(session.command("STALL", ""), std::nullopt);
  EXPECT_THAT(session.loss(), HasSubstr("pathstat did not send the rest of a value for 0.3"));
  EXPECT_THAT(told, ElementsAre(HasSubstr("for pathstat to send the rest of a value; a second Ctrl-C")));
}

TEST_F(OneSession, says_why_a_program_cannot_be_started) {
  std::string error;
  const PrivateDirectory directory(error);
  EXPECT_THAT(session_.start({"/no/such/program", directory.path(), directory.path(), Protocol::unix_socket}),
              HasSubstr("/no/such/program: No such file"));
}

TEST(ListenerTest, turns_away_every_process_but_the_one_it_waits_for) {
  for (const auto protocol : {Protocol::unix_socket, Protocol::tcp}) {
    std::string error;
    const PrivateDirectory directory(error);
    Listener listener(protocol, directory.path(), error);
    ASSERT_THAT(error, IsEmpty());
    Connection mine, taken;
    PNC_create_client(mine, listener.machine().c_str(), listener.name().c_str(), protocol_name(protocol));
    ASSERT_TRUE(is_connected(mine));
    int turns = 5;
    EXPECT_FALSE(listener.accept_from(::getppid(), taken, [&] { return turns-- > 0; }));
    EXPECT_FALSE(is_connected(taken));
    std::byte byte;
    EXPECT_EQ(PNC_receive(mine, std::span(&byte, 1), 5), 0) << "the connection was closed";
    PNC_close(mine);

    PNC_create_client(mine, listener.machine().c_str(), listener.name().c_str(), protocol_name(protocol));
    turns = 5;
    EXPECT_TRUE(listener.accept_from(::getpid(), taken, [&] { return turns-- > 0; }));
    PNC_close(taken);
    PNC_close(mine);
  }
}

}  // namespace
}  // namespace pathstat::desk
