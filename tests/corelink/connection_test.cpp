#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>

#include <cstring>
#include <filesystem>

#include "corelink/host_name.h"
#include "corelink/last_error.h"
#include "corelink/socket_setup.h"
#include "corelink/test_peer.h"

namespace pathstat {
namespace {

using testing::StartsWith;

class MadeConnection : public testing::TestWithParam<const char*> {};

TEST_P(MadeConnection, carries_bytes_both_ways_and_closes) {
  const std::string protocol = GetParam();
  auto server = PNC_create_server(nullptr, protocol.c_str());
  ASSERT_NE(server, nullptr) << PLE_get_error();
  const std::string name = PNC_server_name(*server);
  Connection client;
  PNC_create_client(client, "localhost", name.c_str(), protocol.c_str());
  ASSERT_EQ(client.state, connection_state::client) << PLE_get_error();
  Connection accepted;
  PNC_accept_client(accepted, *server, 5);
  ASSERT_EQ(accepted.state, connection_state::accepted) << PLE_get_error();
  EXPECT_EQ(client.machine, "localhost");
  EXPECT_EQ(client.peer, "localhost");
  EXPECT_EQ(client.server, name);
  EXPECT_EQ(accepted.server, name);
  EXPECT_FALSE(accepted.peer.empty());
  EXPECT_EQ(client.write_buffer_size, 0);

  std::array<std::byte, 4> bytes{};
  EXPECT_EQ(PNC_send(client, bytes_of("ping")), 1);
  EXPECT_EQ(PNC_receive(accepted, bytes, 5), 4);
  EXPECT_EQ(PNC_send(accepted, bytes), 1);
  EXPECT_EQ(PNC_receive(client, bytes, 5), 4);
  EXPECT_EQ(std::memcmp(bytes.data(), "ping", 4), 0);
  EXPECT_EQ(PNC_close(client), 0);
  EXPECT_EQ(PNC_receive(accepted, bytes, no_time_limit), 0);
  EXPECT_EQ(PNC_close(accepted), 0);
  EXPECT_EQ(PNC_close_server(std::move(server)), 0);
  EXPECT_FALSE(std::filesystem::exists(name));
}

INSTANTIATE_TEST_SUITE_P(protocols, MadeConnection, testing::Values("tcp", "unix"));

struct RefusedCase {
  const char* machine;
  const char* server;
  const char* protocol;
  const char* text;
};

class RefusedClient : public testing::TestWithParam<RefusedCase> {};

TEST_P(RefusedClient, leaves_the_closed_record_and_says_why) {
  const auto& [machine, server, protocol, text] = GetParam();
  Connection record;
  record.state = connection_state::client;
  PNC_create_client(record, machine, server, protocol);
  EXPECT_EQ(record.state, connection_state::closed);
  EXPECT_TRUE(record.server.empty());
  EXPECT_THAT(PLE_get_error(), StartsWith(text));
}

INSTANTIATE_TEST_SUITE_P(
    reasons, RefusedClient,
    testing::Values(
        RefusedCase{"127.0.0.1", "1", "udp", "Unknown protocol udp for network connection"},
        RefusedCase{"127.0.0.1", "port", nullptr, "Cannot create client for port@127.0.0.1 (not a tcp port number)"},
        RefusedCase{"127.0.0.1", "80x", "tcp", "Cannot create client for 80x@127.0.0.1 (not a tcp port number)"},
        RefusedCase{"127.0.0.1", "70000", "tcp", "Cannot create client for 70000@127.0.0.1 (not a tcp port number)"},
        RefusedCase{"no machine!", "1", "tcp", "Cannot create tcp client for 1@no machine! - unknown machine"},
        RefusedCase{"127.0.0.1", "1", "tcp", "Cannot connect to 1@127.0.0.1 - tcp server does not exist"},
        RefusedCase{"x", "/nowhere/at/all", "unix", "Cannot contact server\n\tsystem error: "}));

TEST(Server, refuses_a_name_that_is_no_port_or_taken) {
  EXPECT_EQ(PNC_create_server("port", "tcp"), nullptr);
  EXPECT_STREQ(PLE_get_error(), "Illegal server port (not a tcp port number)");
  auto server = PNC_create_server(nullptr, "unix");
  ASSERT_NE(server, nullptr);
  EXPECT_EQ(PNC_create_server(server->server.c_str(), "unix"), nullptr);
  EXPECT_THAT(PLE_get_error(), StartsWith("Cannot create tcp server " + server->server + " - "));
  PNC_close_server(std::move(server));
}

TEST(Server, accept_gives_up_at_its_limit) {
  auto server = PNC_create_server(nullptr, "tcp");
  ASSERT_NE(server, nullptr);
  Connection record;
  PNC_accept_client(record, *server, 0);
  EXPECT_EQ(record.state, connection_state::closed);
  EXPECT_THAT(PLE_get_error(), StartsWith("timed out waiting for client for tcp server " + server->server + "@"));
  PNC_close_server(std::move(server));
}

struct AddressCase {
  const char* machine;
  const char* variable;
  const char* value;
  const char* address;  ///< null for none
};

class MachineAddress : public testing::TestWithParam<AddressCase> {};

TEST_P(MachineAddress, comes_from_the_variable_first) {
  const auto& [machine, variable, value, address] = GetParam();
  const ScopedVariable set(variable, value);
  const auto found = machine_address(machine);
  ASSERT_EQ(found.has_value(), address != nullptr);
  if (!found) return;
  const std::uint32_t number = load_big_endian<std::uint32_t>(reinterpret_cast<const std::byte*>(&found->s_addr));
  const std::string dotted = std::to_string(number >> 24) + "." + std::to_string(number >> 16 & 255) + "." +
                             std::to_string(number >> 8 & 255) + "." + std::to_string(number & 255);
  EXPECT_EQ(dotted, address);
}

INSTANTIATE_TEST_SUITE_P(order, MachineAddress,
                         testing::Values(AddressCase{"core!.lab", "CORE!.LAB_ADDR", "10.1.2.3", "10.1.2.3"},
                                         AddressCase{"core!.lab", "CORE!_ADDR", "10.1.2.4", "10.1.2.4"},
                                         AddressCase{"core!", "CORE!_ADDR", "10.1.2.5", "10.1.2.5"},
                                         AddressCase{"127.0.0.9", "CORE!_ADDR", "10.1.2.5", "127.0.0.9"},
                                         AddressCase{"127.0.0.9", "127.0.0.9_ADDR", "10.1.2.6", "10.1.2.6"},
                                         AddressCase{"127.0.0.9", "127.0.0.9_ADDR", "not an address", "127.0.0.9"},
                                         AddressCase{"core!", "CORE!_ADDR", "nonsense", nullptr}));

TEST(Creation, reads_its_settings_from_the_environment) {
  auto server = PNC_create_server(nullptr, "tcp");
  ASSERT_NE(server, nullptr);
  struct Case {
    const char* timeout;
    std::int32_t seconds;
    const char* warning;
  };
  for (const auto& [timeout, seconds, warning] :
       {Case{"7", 7, ""}, Case{"0", 60, "Wrong value PNC_TIMEOUT=0. Default 60 is accepted\n"},
        Case{"abc", 60, "Wrong value PNC_TIMEOUT=abc. Default 60 is accepted\n"}, Case{nullptr, 60, ""}}) {
    const ScopedVariable limit("PNC_TIMEOUT", timeout);
    const ScopedVariable input("READ_BUFFER", "100");
    const ScopedVariable output("WRITE_BUFFER", "200");
    Connection client;
    testing::internal::CaptureStderr();
    PNC_create_client(client, "127.0.0.1", server->server.c_str(), "tcp");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), warning);
    EXPECT_EQ(PNC_Timeout, seconds);
    EXPECT_EQ(client.read_buffer_size, 100);
    EXPECT_EQ(client.write_buffer_size, 200);
    PNC_close(client);
  }
  PNC_close_server(std::move(server));
}

class SocketOptions : public testing::Test {
 protected:
  static int option(int socket, int level, int name) {
    int value = -1;
    socklen_t size = sizeof value;
    EXPECT_EQ(::getsockopt(socket, level, name, &value, &size), 0);
    return value;
  }
  int asked = ::socket(AF_INET, SOCK_STREAM, 0);
  int plain = ::socket(AF_INET, SOCK_STREAM, 0);
  ~SocketOptions() override {
    ::close(asked);
    ::close(plain);
  }
};

TEST_F(SocketOptions, buffer_size_below_4096_stands_for_32768) {
  struct Case {
    const char* setting;
    std::int32_t size;
  };
  for (const auto& [setting, size] : {Case{"100", 32768}, Case{"4096", 4096}, Case{"x", 32768}, Case{"9000", 9000}}) {
    const ScopedVariable variable("PNC_SOCKBUF", setting);
    EXPECT_EQ(PNC_tcp_condbuf(asked), 0);
    ASSERT_EQ(::setsockopt(plain, SOL_SOCKET, SO_RCVBUF, &size, sizeof size), 0);
    ASSERT_EQ(::setsockopt(plain, SOL_SOCKET, SO_SNDBUF, &size, sizeof size), 0);
    EXPECT_EQ(option(asked, SOL_SOCKET, SO_RCVBUF), option(plain, SOL_SOCKET, SO_RCVBUF)) << setting;
    EXPECT_EQ(option(asked, SOL_SOCKET, SO_SNDBUF), option(plain, SOL_SOCKET, SO_SNDBUF)) << setting;
  }
}

TEST_F(SocketOptions, small_blocks_go_at_once_unless_delay_is_asked_for) {
  {
    const ScopedVariable delay("PNC_DELAY", "");
    EXPECT_EQ(PNC_tcp_nodelay(asked), 0);
    EXPECT_EQ(option(asked, IPPROTO_TCP, TCP_NODELAY), 0);
  }
  EXPECT_EQ(PNC_tcp_nodelay(asked), 0);
  EXPECT_NE(option(asked, IPPROTO_TCP, TCP_NODELAY), 0);
  testing::internal::CaptureStderr();
  EXPECT_EQ(PNC_tcp_nodelay(-1), -2);
  EXPECT_EQ(PNC_tcp_sockbuf(-1, 4096), -1);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              StartsWith("PNC_tcp_nodelay: setsockopt failed\n"
                         "PNC_tcp_sockbuf failed for the receive-buffer 4096 bytes:\n\tsystem error: "));
}

TEST(HostName, address_of_a_name) {
  EXPECT_STREQ(COM_inet_n2a("127.0.0.7"), "127.0.0.7");
  EXPECT_STREQ(COM_inet_n2a("localhost"), "127.0.0.1");
  EXPECT_EQ(COM_inet_n2a("no machine!"), nullptr);
}

TEST(HostName, useless_preference_is_told_and_ignored) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process from the start: the first answer is kept
  const ScopedVariable preference("HOSTNAME_PREFER", "no machine!");
  EXPECT_EXIT(
      {
        const char* name = COM_gethostname();
        std::exit(name != nullptr && std::string_view(name) == "no machine!" ? 1 : 0);
      },
      testing::ExitedWithCode(0),
      "COM_gethostname ERROR: HOSTNAME_PREFER is set to 'no machine!',\n"
      "but IP address of 'no machine!' cannot be defined. HOSTNAME_PREFER is ignored\n");
  const ScopedVariable good("HOSTNAME_PREFER", "127.0.0.1");
  EXPECT_EXIT(std::exit(std::string_view(COM_gethostname()) == "127.0.0.1" ? 0 : 1), testing::ExitedWithCode(0), "");
  GTEST_FLAG_SET(death_test_style, "fast");
}

}  // namespace
}  // namespace pathstat
