#include "corelink/remote_call.h"

#include "corelink/test_peer.h"
#include "testing.h"

namespace pathstat {
namespace {

using namespace std::string_literals;

constexpr std::int32_t data_model = 10000;
constexpr std::int32_t second_word = 5;

const std::string bind_frame = ints({data_model}) +
                               "\0\x0D"
                               "kvD_ATM_Mass\0"s;

class RemoteCallFrame : public testing::Test {
 protected:
  RemoteCallFrame() {
    PNC_init_write_buffer(core.connection, 4096);
    kvC_API_pnc = &core.connection;
    fixture = this;
    set_nested_input_handler(record_code);
  }
  ~RemoteCallFrame() override {
    kvC_API_pnc = nullptr;
    set_nested_input_handler(nullptr);
  }

  /// A call with one array in and one out, whose replies the test has written.
  void mass_of_two_atoms() {
    RemoteCall call("kvD_ATM_Mass", data_model, second_word, binding);
    const std::array<std::int32_t, 2> atoms{8, 9};
    call.send(std::int32_t{2});
    call.send(std::span<const std::int32_t>(atoms));
    call.wait();
    call.receive(std::span<float>(masses));
    error = call.receive<std::int32_t>();
    result = call.receive<std::int32_t>();
  }
  void write_masses() {
    core.write(TestPeer::bytes_of(1.5F) + TestPeer::bytes_of(12.0F));
    core.write_ints({3, 4});
  }

  static int record_code(std::int32_t code) {
    fixture->nested_codes.push_back(code);
    if (fixture->on_nested) fixture->on_nested();
    return 0;
  }

  static inline RemoteCallFrame* fixture = nullptr;
  TestPeer core{SOCK_SEQPACKET};
  std::int32_t binding = unbound;
  std::array<float, 2> masses{};
  std::int32_t error = 0;
  std::int32_t result = 0;
  std::vector<std::int32_t> nested_codes;
  std::function<void()> on_nested;
};

TEST_F(RemoteCallFrame, binds_once_and_leaves_as_one_write) {
  core.write_ints({1, 77, 1});
  write_masses();
  core.write_int(1);
  write_masses();
  mass_of_two_atoms();
  EXPECT_EQ(binding, 77);
  EXPECT_EQ(masses, (std::array{1.5F, 12.0F}));
  EXPECT_EQ(error, 3);
  EXPECT_EQ(result, 4);
  const std::string frame = ints({77, 2, 5, 2, 8, 9});
  EXPECT_EQ(core.packets(), (std::vector{bind_frame, frame}));
  mass_of_two_atoms();
  EXPECT_EQ(core.packets(), (std::vector{frame}));
}

TEST_F(RemoteCallFrame, nested_call_of_the_same_operation_runs_to_its_end) {
  core.write_ints({-1, 1, 55, 1});
  core.write(TestPeer::bytes_of(7.0F) + TestPeer::bytes_of(8.0F));
  core.write_ints({0, 6, 1, 55, 1});
  write_masses();
  on_nested = [&] {
    mass_of_two_atoms();
    EXPECT_EQ(masses, (std::array{7.0F, 8.0F}));
    EXPECT_EQ(result, 6);
  };
  mass_of_two_atoms();
  EXPECT_EQ(nested_codes, std::vector{-1});
  EXPECT_EQ(result, 4);
  const std::string frame = ints({55, 2, 5, 2, 8, 9});
  EXPECT_EQ(core.packets(), (std::vector{bind_frame, bind_frame, frame, frame}));
}

using RemoteCallDeathTest = RemoteCallFrame;

struct EndOfCore {
  const char* rule;
  std::vector<std::int32_t> codes;
  const char* text;
};

TEST_F(RemoteCallDeathTest, lost_or_confused_core_ends_the_process) {
  constexpr const char* lost = "Communications with Varlane Core has been lost, must exit.\n";
  constexpr const char* disconnected = "Core has disconnected, must exit.\n";
  for (const auto& [rule, codes, text] :
       {EndOfCore{"unknown code", {7}, disconnected}, EndOfCore{"load during a call", {-5}, disconnected},
        EndOfCore{"zero", {-1, 0}, disconnected}, EndOfCore{"socket closed in the wait", {}, lost},
        EndOfCore{"socket closed in the reply", {1}, lost}, EndOfCore{"closed behind a command", {-1}, lost}}) {
    EXPECT_EXIT(
        {
          ::dup2(STDERR_FILENO, STDOUT_FILENO);
          TestPeer leaving;
          kvC_API_pnc = &leaving.connection;
          for (const auto code : codes) leaving.write_int(code);
          leaving.close_for_writing();
          mass_of_two_atoms();
        },
        testing::ExitedWithCode(1), text)
        << rule;
  }
  EXPECT_EXIT(
      {
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        for (int k = 0; k < 101; ++k) core.write_int(-1);
        on_nested = [&] { mass_of_two_atoms(); };
        mass_of_two_atoms();
      },
      testing::ExitedWithCode(1), "^The Core asks within its own calls without an end, must exit.\n$")
      << "a hundred of them are served";
  kvC_API_pnc = nullptr;
  EXPECT_EXIT(mass_of_two_atoms(), testing::ExitedWithCode(1), "");
}

}  // namespace
}  // namespace pathstat
