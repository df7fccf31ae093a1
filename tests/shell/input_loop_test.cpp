#include "shell/input_loop.h"

#include <csignal>

#include "corelink/last_error.h"
#include "corelink/remote_call.h"
#include "corelink/test_peer.h"
#include "shell/application_table.h"
#include "shell/core_start.h"
#include "shell/fatal_signals.h"
#include "shell/output_texts.h"
#include "shell/program_arguments.h"
#include "shell/threads.h"
#include "testing.h"

namespace pathstat {
namespace {

using namespace std::string_literals;

std::string text(std::string_view characters) {
  return TestPeer::bytes_of(static_cast<std::int16_t>(characters.size() + 1)) + std::string(characters) + '\0';
}
std::string long_text(std::string_view characters) {
  return ints({static_cast<std::int32_t>(characters.size() + 1)}) + std::string(characters) + '\0';
}
std::string command(std::string_view word, std::string_view arguments, std::string_view key = "MD_ANALYSIS") {
  return ints({-1, 4}) + text(key) + text(word) + text(arguments);
}
std::string request(std::string_view keys, std::int32_t count, std::int32_t capacity,
                    std::string_view key = "MD_ANALYSIS") {
  return ints({-2, 4}) + text(key) + text(keys) + ints({count, 2, capacity});
}

/// The shell over two applications that note what they are asked, with the test as the Core: one that is found by its
/// first letter, whose notes are the words alone, and one by its whole key.
class InputLoop : public testing::Test {
 protected:
  InputLoop() {
    PNC_init_write_buffer(core.connection, 4096);
    kvC_API_pnc = &core.connection;
    applications_started = termination_requested = false;
    fixture = this;
    set_nested_input_handler(process_input);
    register_applications(rows);
  }
  ~InputLoop() override {
    kvC_API_pnc = nullptr;
    set_nested_input_handler(nullptr);
    applications_started = termination_requested = false;
  }

  /// Serves one exchange. @return what the process has sent
  std::string exchange(const std::string& input, std::int32_t result = 0) {
    core.write(input);
    testing::internal::CaptureStdout();
    EXPECT_EQ(get_command(), result);
    printed = testing::internal::GetCapturedStdout();
    return core.read();
  }

  static inline InputLoop* fixture = nullptr;
  static std::int32_t note_command(std::string_view from, std::string_view word, std::string_view arguments) {
    fixture->calls.push_back(std::string(from) + std::string(word) + "(" + std::string(arguments) + ")");
    return fixture->on_command ? fixture->on_command(word) : 0;
  }
  static void note_request(std::string_view from, std::string_view key) {
    fixture->calls.push_back(std::string(from) + "?" + std::string(key));
    if (fixture->on_request) fixture->on_request(key);
  }

  static void note(std::string_view what) { fixture->calls.emplace_back(what); }

  static constexpr std::array rows{
      Application{
          "STRUCTURE",
          true,
          1,
          {[](std::string_view word, std::string_view arguments) { return note_command("S:", word, arguments); },
           [](std::string_view key) { note_request("S:", key); }, [] {}, [] {}, [] {}, [] {}}},
      Application{"MD_ANALYSIS",
                  false,
                  0,
                  {[](std::string_view word, std::string_view arguments) { return note_command("", word, arguments); },
                   [](std::string_view key) { note_request("", key); }, [] { note("init"); }, [] { note("end"); },
                   [] { note("load"); }, [] { note("save"); }}}};
  TestPeer core;
  std::vector<std::string> calls;
  std::function<std::int32_t(std::string_view)> on_command;
  std::function<void(std::string_view)> on_request;
  std::string printed;
};

TEST_F(InputLoop, command_starts_the_application_and_answers_its_status) {
  const char* arguments[] = {"/somewhere/bin/pathstat"};
  main_argc = 1;
  main_argv = const_cast<char**>(arguments);
  on_command = [](std::string_view) { return 5; };
  EXPECT_EQ(exchange(command("PROFILE", "a b")), ints({1, 1, -64, 5}));
  EXPECT_EQ(printed, "pathstat  :  revision 99.0102\n");
  EXPECT_EQ(exchange(command("RESET", "")), ints({1, 1, -64, 5}));
  EXPECT_EQ(printed, "");
  EXPECT_THAT(calls, ElementsAre("init", "PROFILE(a b)", "RESET()"));
  main_argc = 0;
}

TEST_F(InputLoop, codes_without_input) {
  EXPECT_EQ(exchange(ints({-4})), ints({1, -64})) << "nothing to stop";
  EXPECT_TRUE(termination_requested);
  EXPECT_EQ(exchange(ints({-5})), ints({1, -64}));
  EXPECT_EQ(exchange(ints({-6})), ints({1, -64}));
  EXPECT_EQ(exchange(ints({-3})), ints({1, -64}));
  EXPECT_EQ(exchange(ints({-3})), ints({1, -64}));
  EXPECT_EQ(exchange(ints({-4})), ints({1, -64}));
  EXPECT_FALSE(applications_started);
  EXPECT_THAT(calls, ElementsAre("init", "load", "save", "init", "init", "end"));
}

TEST_F(InputLoop, unknown_code_is_acknowledged_and_skipped) {
  for (const std::int32_t code : {7, -7, 0}) {
    EXPECT_EQ(exchange(ints({code})), ints({1}));
    EXPECT_EQ(printed, "Unknown input " + std::to_string(code) + " in application\n");
  }
  EXPECT_TRUE(calls.empty());
}

TEST_F(InputLoop, request_tells_a_status_only_when_answers_are_missing) {
  on_request = [](std::string_view key) {
    kvZ_DefineValue("v" + std::string(key));
    kvZ_DefineValue("w");
  };
  EXPECT_EQ(exchange(request("a\x10"
                             "b",
                             2, 100)),
            ints({1, 1, -64}) + long_text("va\x11w\x10vb\x11w") + ints({2}));
  EXPECT_EQ(exchange(request("a\x10"
                             "b",
                             2, 7)),
            ints({1, 1, -64}) + long_text("va\x11w\x10v") + ints({1, -10}));
  EXPECT_EQ(exchange(request("", 0, 7)), ints({1, 1, -64}) + long_text("") + ints({0}));
}

TEST_F(InputLoop, thread_answer_is_1_unless_the_key_is_not_in_the_table) {
  EXPECT_EQ(exchange(command("A", "", "MX")), ints({1, 1, -64, 0})) << "not started yet";
  EXPECT_EQ(exchange(command("A", "", "MX")), ints({1, 4, -64, 0}));
  EXPECT_EQ(exchange(request("", 0, 7, "MX")), ints({1, 4, -64}) + long_text("") + ints({0}));
  EXPECT_EQ(exchange(command("A", "")), ints({1, 1, -64, 0}));
  EXPECT_EQ(sch_MultiThread("MD_ANALYSIS"), 0);
  EXPECT_EQ(sch_MultiThread("MD_ANALYSIS "), -1);
}

TEST_F(InputLoop, finds_an_application_by_its_whole_key_and_another_by_its_first_letter) {
  using Case = std::tuple<std::string_view, std::string_view>;
  constexpr std::array cases{Case{"STRUCTURE", "S:"}, Case{"MD_ANALYSIS", ""}, Case{"MX", ""}, Case{"M", ""}};
  exchange(command("FIRST", ""));
  for (const auto& [key, called] : cases) {
    calls.clear();
    exchange(command("W", "x", key));
    exchange(request("w", 1, 100, key));
    EXPECT_THAT(calls, ElementsAre(std::string(called) + "W(x)", std::string(called) + "?w")) << key;
  }
  EXPECT_EQ(sch_MultiThread("STRUCTURE"), 1);
  EXPECT_EQ(sch_MultiThread("STRUCTURES"), -1);
}

TEST_F(InputLoop, input_that_breaks_off_ends_the_loop) {
  const std::string whole = request("a", 1, 10);
  core.write(whole.substr(0, whole.size() - 2));
  core.close_for_writing();
  EXPECT_EQ(get_command(), 1);
  EXPECT_EQ(core.read(), ints({1}));
  EXPECT_TRUE(calls.empty());
}

TEST_F(InputLoop, lost_connection_is_an_error_unless_termination_came) {
  core.close_for_writing();
  EXPECT_EQ(exchange("", 1), "");
  EXPECT_EQ(
      printed,
      "Error in application: command was not received:\n\tEnd of file while receiving - tcp server is 4711@here\n");
  termination_requested = true;
  EXPECT_EQ(exchange("", 1), "");
  EXPECT_EQ(printed, "");
}

/// A call of the analysis to the Core, bound as number 9.
std::int32_t ask_the_core() {
  static std::int32_t binding = 9;
  RemoteCall call("kvD_Any", 10000, 5, binding);
  call.wait();
  return call.receive<std::int32_t>();
}

TEST_F(InputLoop, command_and_request_are_served_inside_a_call) {
  on_request = [](std::string_view key) { kvZ_DefineValue(key); };
  on_command = [](std::string_view word) { return word == "OUTER" ? ask_the_core() : 3; };
  const std::string nested = command("INNER", "x") + request("key", 1, 10);
  EXPECT_EQ(exchange(command("OUTER", "") + nested + ints({1, 42})),
            ints({1, 1}) + ints({9, 2, 5}) + ints({1, 1, -64, 3}) + ints({1, 1, -64}) + long_text("key") + ints({1}) +
                ints({-64, 42}));
  EXPECT_THAT(calls, ElementsAre("init", "OUTER()", "INNER(x)", "?key"));
}

TEST_F(InputLoop, request_inside_a_request_leaves_the_outer_answers) {
  const std::string large(3000, 'z');
  on_request = [&](std::string_view key) {
    kvZ_DefineValue("head of " + std::string(key));
    kvZ_AddToValueList("listed");
    if (key == "outer") ask_the_core();
    if (key == "inner") kvZ_DefineValue(large);
    kvZ_AddToValueList(key);
    kvZ_DefineValueFromList();
  };
  const std::string nested = request("inner", 1, 5000);
  const std::string inner_reply =
      ints({1, 1, -64}) + long_text("head of inner\x11" + large + "\x11listed,inner") + ints({1});
  const auto outer_text = "head of first\x11listed,first\x10head of outer\x11listed,outer"s;
  EXPECT_EQ(exchange(request("first\x10outer", 2, 200) + nested + ints({1, 0})),
            ints({1, 1, 9, 2, 5}) + inner_reply + ints({-64}) + long_text(outer_text) + ints({2}));
}

TEST_F(InputLoop, notices_to_the_core) {
  detach_notify();
  error_notify();
  cmd_done(7);
  EXPECT_EQ(core.read(), ints({-65, -66, -64, 7}));
  kvC_API_pnc = nullptr;
  cmd_done(7);
  request_done();
  EXPECT_EQ(core.read(), "");
}

TEST_F(InputLoop, unknown_application_gives_a_message_and_1) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process from the start: the operations are not bound yet
  const std::string replies = ints({1, 100, 1, 1, 101, 1, 0, 0});
  EXPECT_EXIT(
      {
        const std::string sent = exchange(command("A", "", "OTHER") + replies);
        const std::string expected = ints({1, 1}) + ints({70000}) + text("kvU_MSG_ArgS") + ints({100, 2, 1}) +
                                     text("OTHER") + ints({70000}) + text("kvU_MSG_Display") + ints({101, 2, 1, 2}) +
                                     text("KVZ_APP_UNDEF") + ints({-64, 1});
        std::exit(sent == expected ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
  GTEST_FLAG_SET(death_test_style, "fast");
}

TEST_F(InputLoop, fatal_signal_tells_the_core_and_ends_the_process) {
  EXPECT_EXIT(
      {
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        install_signal_handlers();
        std::raise(SIGTERM);
      },
      testing::ExitedWithCode(1),
      "Terminate external process due to error 15\\.\nThis error is caused by a software termination signal\\.\n");
  EXPECT_EQ(core.read(), ints({-66}));
}

TEST_F(InputLoop, fatal_signal_ends_the_process_while_the_core_does_not_read) {
  EXPECT_EXIT(
      {
        const std::string block(4096, ' ');
        while (::send(core.connection.socket, block.data(), block.size(), MSG_DONTWAIT) > 0) continue;
        install_signal_handlers();
        std::raise(SIGTERM);
      },
      testing::ExitedWithCode(1), "");
}

TEST_F(InputLoop, notice_signal_does_not_disturb) {
  EXPECT_EXIT(
      {
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        install_signal_handlers();
        std::raise(SIGUSR1);
        std::raise(SIGUSR1);
        std::exit(3);
      },
      testing::ExitedWithCode(3), "Caught SIGUSR1 signal\nCaught SIGUSR1 signal\n");
}

TEST(CoreStart, needs_its_three_variables) {
  const ScopedVariable machine("RJMACHINE", "localhost");
  const ScopedVariable protocol("RJPROTOCOL", "tcp");
  const ScopedVariable server("RJSERVER", nullptr);
  Connection record;
  EXPECT_EQ(RJ_execed(record), nullptr);
  EXPECT_STREQ(PLE_get_error(), "Job creation failed: environment variables not set");
  const ScopedVariable wrong("RJSERVER", "port");
  EXPECT_EQ(RJ_execed(record), nullptr);
  EXPECT_STREQ(PLE_get_error(),
               "Could not contact local process.\n\tCannot create client for port@localhost (not a tcp port number)");
}

TEST(CoreStart, greets_the_core_over_tcp) {
  auto listening = PNC_create_server(nullptr, "tcp");
  ASSERT_NE(listening, nullptr);
  const ScopedVariable machine("RJMACHINE", "localhost");
  const ScopedVariable protocol("RJPROTOCOL", "tcp");
  const ScopedVariable server("RJSERVER", listening->server.c_str());
  Connection record;
  EXPECT_STREQ(RJ_execed(record), "somejob");
  Connection accepted;
  PNC_accept_client(accepted, *listening, 5);
  std::string greeting(30, '\0');
  EXPECT_EQ(PNC_receive(accepted, std::as_writable_bytes(std::span(greeting)), 5), 30);
  EXPECT_EQ(greeting,
            "\x00\x1C"
            "remote process success IEEE\0"s);
  PNC_close(record);
  PNC_close(accepted);
  PNC_close_server(std::move(listening));
}

TEST(Threads, count_is_set_within_the_processors) {
  const std::int32_t processors = kvZ_COM_GetNProc();
  EXPECT_GE(processors, 1);
  EXPECT_EQ(kvZ_COM_SetNThreadsF(processors + 3), processors + 3);
  EXPECT_EQ(kvZ_COM_GetNThreads(), processors + 3);
  EXPECT_EQ(stderr_of([&] { EXPECT_EQ(kvZ_COM_SetNThreads(processors + 1), processors); }),
            "You have asked for more threads (" + std::to_string(processors + 1) + ") than available processors (" +
                std::to_string(processors) + ")\n");
}

TEST(Threads, preset_and_trace_come_from_the_environment) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process from the start: they are read once
  const ScopedVariable trace("NCPU_DEBUG", "");
  const ScopedVariable first("MP_SET_NUMTHREADS", "5");
  const ScopedVariable second("NPROC", "6");
  EXPECT_EXIT(
      {
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        kvZ_COM_SetNThreadsF(2);
        std::exit(kvZ_COM_SetNThreadsF(0));
      },
      testing::ExitedWithCode(5),
      "COM_ncpu_init: processors on .*\nkvZ_COM_SetNThreads: Currently 5 threads\n"
      "kvZ_COM_SetNThreads: creating 2 threads\nkvZ_COM_SetNThreads: Currently 2 threads\n"
      "-- create preset 5 thread\\(s\\), or [0-9]+ \\(number of CPUs\\)\nkvZ_COM_SetNThreads: creating 5 threads\n");
  GTEST_FLAG_SET(death_test_style, "fast");
}

TEST(ProgramArguments, are_copied_to_blank_padded_fields) {
  const char* arguments[] = {"/bin/pathstat", "second"};
  main_argc = 2;
  main_argv = const_cast<char**>(arguments);
  EXPECT_EQ(iargc_(), 1);
  Text<8> field;
  for (const auto& [index, expected] : {std::pair{1, "second  "}, {0, "/bin/pat"}, {2, "        "}, {-1, "        "}}) {
    getarg_(index, field);
    EXPECT_EQ(field.full(), expected);
  }
  main_argc = 0;
}

}  // namespace
}  // namespace pathstat
