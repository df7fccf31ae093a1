#include "services/detaching.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <future>
#include <thread>

#include "corelink/last_error.h"
#include "corelink/typed_values.h"
#include "scratch_folder.h"
#include "testing.h"

namespace pathstat {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t answer = 0x01020304;

/// What a Core finds in the reconnection file.
struct Found {
  mode_t mode = 0;
  std::string server, protocol, end;
  Connection core;
};

/// Waits for the reconnection file of this process to be whole.
Found find_file() {
  Found found;
  for (int tries = 0; tries < 500 && found.protocol.empty(); ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::ifstream file(reconnection_file(::getpid()));
    struct stat facts {};
    if (::lstat(reconnection_file(::getpid()).c_str(), &facts) == 0) found.mode = facts.st_mode;
    std::getline(std::getline(file, found.server), found.protocol);
    std::getline(file, found.end);
  }
  return found;
}

/// Connects as a Core of this user, which stays, and sends a number.
Found attach() {
  auto found = find_file();
  PNC_create_client(found.core, "127.0.0.1", found.server.c_str(), "tcp");
  PD_send_int(found.core, answer);
  return found;
}

class Detached : public testing::Test {
 protected:
  ~Detached() override { fs::remove(path); }

  std::int32_t wait(std::int32_t seconds, const DetachNotifier& notifier = {}) {
    testing::internal::CaptureStdout();
    const auto status = RJ_detachedX(record, seconds, notifier);
    printed = testing::internal::GetCapturedStdout();
    return status;
  }
  void expect_connection() {
    std::int32_t value = 0;
    EXPECT_EQ(record.state, connection_state::accepted);
    EXPECT_EQ(PD_receive_int(record, value, 10), 0);
    EXPECT_EQ(value, answer);
    EXPECT_FALSE(fs::exists(fs::symlink_status(path)));
    EXPECT_EQ(printed, "");
    PNC_close(record);
  }

  const std::string path = reconnection_file(::getpid());
  Connection record;
  std::string printed;
};

TEST_F(Detached, is_found_by_a_file_for_its_user_alone) {
  auto core = std::async(std::launch::async, attach);
  EXPECT_EQ(wait(10), 0);
  const auto found = core.get();
  EXPECT_EQ(found.mode, static_cast<mode_t>(S_IFREG | 0600));
  EXPECT_EQ(found.protocol, "tcp");
  EXPECT_EQ(found.end, "");
  EXPECT_EQ(found.server, std::to_string(std::stoi(found.server)));
  expect_connection();
}

TEST_F(Detached, gives_up_in_time) {
  EXPECT_EQ(wait(1), 1);
  EXPECT_THAT(printed, HasSubstr("RJ_detached failed: timed out waiting for client"));
  EXPECT_EQ(record.state, connection_state::closed);
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(Detached, never_writes_through_a_link) {
  const ScratchFolder folder;
  const auto victim = folder.write("victim", "precious");
  fs::create_symlink(victim, path);
  auto core = std::async(std::launch::async, attach);
  EXPECT_EQ(wait(10), 0);
  EXPECT_EQ(core.get().mode, static_cast<mode_t>(S_IFREG | 0600));
  expect_connection();
  EXPECT_EQ(folder.read("victim"), "precious");
}

TEST_F(Detached, refuses_a_file_of_somebody_else) {
  std::ofstream(path) << "";
  if (::chown(path.c_str(), 65534, 65534) != 0) GTEST_SKIP() << "files can't be given away by this user";
  EXPECT_EQ(wait(10), 1);
  EXPECT_EQ(printed, "RJ_detached failed: Cannot open " + path + " to create a reconnection file: File exists\n");
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(Detached, turns_away_another_user) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs to be another user for a while";
  auto core = std::async(std::launch::async, [&] {
    const auto found = find_file();
    const pid_t stranger = ::fork();
    if (stranger == 0) {
      Connection there;
      if (::setuid(65534) != 0) ::_exit(2);
      for (int k = 0; k < 4; ++k) {  // gone before anybody can ask whose it was, with a goodbye or a reset
        PNC_create_client(there, "127.0.0.1", found.server.c_str(), "tcp");
        const linger at_once{k % 2, 0};
        ::setsockopt(there.socket, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
        PNC_close(there);
      }
      PNC_create_client(there, "127.0.0.1", found.server.c_str(), "tcp");
      std::int32_t value = 0;
      ::_exit(is_connected(there) && PD_receive_int(there, value, 10) != 0 ? 0 : 1);
    }
    int status = -1;
    ::waitpid(stranger, &status, 0);
    attach();
    return status;
  });
  EXPECT_EQ(wait(10), 0);
  EXPECT_EQ(core.get(), 0);
  expect_connection();
}

TEST_F(Detached, tells_the_core_where_it_waits) {
  auto public_server = PNC_create_server(nullptr, "tcp");
  auto core = std::async(std::launch::async, [&] {
    Connection from;
    PNC_accept_client(from, *public_server, 10);
    std::string text(256, '\0');
    const auto length = PNC_receive(from, std::as_writable_bytes(std::span(text)), 10);
    PNC_close(from);
    text.resize(static_cast<std::size_t>(std::max<std::int64_t>(length, 0)));
    attach();
    return text;
  });
  std::string port;
  EXPECT_EQ(wait(10,
                 [&](const ListeningServer& server) {
                   port = PNC_server_name(server);
                   send_attach("127.0.0.1", PNC_server_name(*public_server), "ps-7", server);
                 }),
            0);
  EXPECT_THAT(core.get(), testing::MatchesRegex("attach ps-7 [^ ]+ " + std::to_string(::getpid()) + " " + port));
  expect_connection();
  PNC_close_server(std::move(public_server));
}

TEST_F(Detached, goes_on_where_the_core_cannot_be_told) {
  EXPECT_THAT(
      stderr_of([&] { send_attach("127.0.0.1", "1", "ps", {.protocol = "tcp", .machine = "here", .server = "99"}); }),
      StartsWith("Cannot send command 'attach ps here " + std::to_string(::getpid()) + " 99' to Varlane:\n\t"));
}

}  // namespace
}  // namespace pathstat
