#include "corelink/typed_values.h"

#include <thread>

#include "corelink/last_error.h"
#include "corelink/test_peer.h"
#include "testing.h"

namespace pathstat {
namespace {

using namespace std::string_literals;

TEST(TypedValues, bytes_on_the_wire) {
  TestPeer peer;
  PNC_init_write_buffer(peer.connection, 256);
  const std::array<std::int16_t, 2> shorts{1, -2};
  const std::array<std::int32_t, 2> integers{258, -64};
  const std::array<float, 1> floats{1.5F};
  const std::array<double, 1> doubles{-2.0};
  EXPECT_EQ(PD_send0_char(peer.connection, "ab"s), 0);
  EXPECT_EQ(PD_send0_short(peer.connection, shorts), 0);
  EXPECT_EQ(PD_send0_int(peer.connection, integers), 0);
  EXPECT_EQ(PD_send0_float(peer.connection, floats), 0);
  EXPECT_EQ(PD_send0_string(peer.connection, ""), 0);
  EXPECT_EQ(PD_send0_longstring(peer.connection, "xy"), 0);
  EXPECT_EQ(peer.read(), "");
  EXPECT_EQ(PD_send_double(peer.connection, doubles), 0);
  EXPECT_EQ(peer.read(), "ab\0\1\xFF\xFE\0\0\1\2\xFF\xFF\xFF\xC0\x3F\xC0\0\0\0\1\0\0\0\0\3xy\0\xC0\0\0\0\0\0\0\0"s);
}

TEST(TypedValues, an_array_of_many_blocks_arrives_as_sent) {
  std::vector<double> sent(100001);
  std::iota(sent.begin(), sent.end(), -7.0);
  std::vector<double> received(sent.size());
  TestPeer peer;
  PNC_init_write_buffer(peer.connection, 4096);
  Connection far;
  far.state = connection_state::accepted;
  far.socket = peer.far_socket();
  std::thread sender([&] { EXPECT_EQ(PD_send_double(peer.connection, sent), 0); });
  EXPECT_EQ(PD_receive_double(far, received, 10), 0);
  sender.join();
  EXPECT_TRUE(received == sent);
}

TEST(TypedValues, an_array_of_any_length_is_one_block_of_the_transport) {
  TestPeer peer(SOCK_SEQPACKET);
  const std::vector<std::int32_t> values(20000, 1);
  EXPECT_EQ(PD_send_int(peer.connection, values), 0);
  EXPECT_EQ(peer.read().size(), values.size() * 4);
}

struct TextCase {
  std::string wire;
  std::int32_t result;
  std::string text;
  const char* error;
};

const TextCase cases[] = {
    {"\0\4abc\0"s, 0, "abc", ""},
    {"\0\1\0"s, 0, "", ""},
    {"\0\5ab\0c\0"s, 0, "ab", ""},
    {"\0\0"s, 1, "", "PD_receive_string: string size 0 is non-positive. Possible protocol error"},
    {"\xFF\xFF"s, 1, "", "PD_receive_string: string size -1 is non-positive. Possible protocol error"},
    {"\0\5ab"s, 1, "", "End of file while receiving - tcp server is 4711@here"},
    {"\0\5"s, 2, "", "End of file while receiving - tcp server is 4711@here"},
    {"\0"s, 1, "", "End of file while receiving - tcp server is 4711@here"}};

TEST(ReceivedString, is_checked) {
  for (const auto& [wire, result, text, error] : cases) {
    TestPeer peer;
    peer.write(wire);
    peer.close();
    std::string received = "before";
    PLE_reset_error();
    EXPECT_EQ(PD_receive_string(peer.connection, received, 1), result);
    EXPECT_EQ(received, text);
    EXPECT_STREQ(PLE_get_error(), error);
  }
}

TEST(LongString, hostile_length_allocates_only_what_comes) {
  TestPeer peer;
  peer.write("\x7F\xFF\xFF\xFFshort"s);
  peer.close();
  std::string received;
  EXPECT_EQ(PD_receive_longstring(peer.connection, received, 1), 1);
  EXPECT_LT(received.capacity(), std::size_t{4} << 20);
}

TEST(SentString, length_is_bounded_by_its_field) {
  TestPeer peer(SOCK_SEQPACKET);
  EXPECT_EQ(PD_send_string(peer.connection, std::string(32766, 'a')), 0);
  EXPECT_EQ(peer.packets().at(0).substr(0, 3),
            "\x7F\xFF"
            "a");
  EXPECT_EQ(PD_send_string(peer.connection, std::string(32767, 'a')), 1);
  EXPECT_EQ(PD_send0_string(peer.connection, std::string(32767, 'a')), 1);
  EXPECT_TRUE(peer.packets().empty());
}

}  // namespace
}  // namespace pathstat
