#include <cstring>

#include "corelink/last_error.h"
#include "corelink/socket_setup.h"
#include "corelink/test_peer.h"
#include "testing.h"

namespace pathstat {
namespace {

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
  EXPECT_EQ(client.server, name);
  EXPECT_EQ(accepted.server, name);

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

const RefusedCase cases[] = {
    {"127.0.0.1", "1", "udp", "Unknown protocol udp for network connection"},
    {"127.0.0.1", "70000", "tcp", "Cannot create client for 70000@127.0.0.1 (not a tcp port number)"},
    {"no machine!", "1", "tcp", "Cannot create tcp client for 1@no machine! - unknown machine"},
    {"127.0.0.1", "1", "tcp", "Cannot connect to 1@127.0.0.1 - tcp server does not exist"},
    {"x", "/nowhere/at/all", "unix", "Cannot contact server\n\tsystem error: "}};

TEST(RefusedClient, leaves_the_closed_record_and_says_why) {
  for (const auto& [machine, server, protocol, text] : cases) {
    SCOPED_TRACE(text);
    Connection record;
    record.state = connection_state::client;
    PNC_create_client(record, machine, server, protocol);
    EXPECT_EQ(record.state, connection_state::closed);
    EXPECT_TRUE(record.server.empty());
    EXPECT_THAT(PLE_get_error(), StartsWith(text));
  }
}

}  // namespace
}  // namespace pathstat
