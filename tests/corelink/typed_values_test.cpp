#include "corelink/typed_values.h"

#include <gtest/gtest.h>

#include <numeric>
#include <thread>

#include "corelink/last_error.h"
#include "corelink/test_peer.h"

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

TEST(TypedValues, greeting_is_one_write_without_a_buffer) {
  TestPeer peer(SOCK_SEQPACKET);
  EXPECT_EQ(PD_send_string(peer.connection, "remote process success IEEE"), 0);
  EXPECT_EQ(peer.packets(), std::vector{"\x00\x1C"
                                        "remote process success IEEE\0"s});
}

TEST(TypedValues, request_is_formatted) {
  TestPeer peer;
  EXPECT_EQ(PD_send_request(peer.connection, "%s %d", "attach", 7), 0);
  EXPECT_EQ(peer.read(),
            "\0\x09"
            "attach 7\0"s);
}

template <class T>
class TypedArray : public testing::Test {};
using ElementTypes = testing::Types<std::int16_t, std::int32_t, float, double>;
TYPED_TEST_SUITE(TypedArray, ElementTypes);

std::int32_t send_all(Connection& c, std::span<const std::int16_t> v) { return PD_send_short(c, v); }
std::int32_t send_all(Connection& c, std::span<const std::int32_t> v) { return PD_send_int(c, v); }
std::int32_t send_all(Connection& c, std::span<const float> v) { return PD_send_float(c, v); }
std::int32_t send_all(Connection& c, std::span<const double> v) { return PD_send_double(c, v); }
std::int32_t receive_all(Connection& c, std::span<std::int16_t> v) { return PD_receive_short(c, v, 10); }
std::int32_t receive_all(Connection& c, std::span<std::int32_t> v) { return PD_receive_int(c, v, 10); }
std::int32_t receive_all(Connection& c, std::span<float> v) { return PD_receive_float(c, v, 10); }
std::int32_t receive_all(Connection& c, std::span<double> v) { return PD_receive_double(c, v, 10); }

TYPED_TEST(TypedArray, of_many_blocks_arrives_as_sent) {
  std::vector<TypeParam> sent(100001);
  std::iota(sent.begin(), sent.end(), TypeParam(-7));
  std::vector<TypeParam> received(sent.size());
  TestPeer peer;
  PNC_init_write_buffer(peer.connection, 4096);
  Connection far;
  far.state = connection_state::accepted;
  far.socket = peer.far_socket();
  std::thread sender([&] { EXPECT_EQ(send_all(peer.connection, sent), 0); });
  EXPECT_EQ(receive_all(far, received), 0);
  sender.join();
  EXPECT_TRUE(received == sent);
}

TEST(TypedValues, array_of_none_moves_nothing) {
  TestPeer peer(SOCK_SEQPACKET);
  EXPECT_EQ(PD_send_int(peer.connection, std::span<const std::int32_t>()), 0);
  EXPECT_TRUE(peer.packets().empty());
  EXPECT_EQ(PD_receive_double(peer.connection, {}, 0), 0);
}

TEST(TypedValues, results_of_a_read_that_fails) {
  TestPeer peer;
  std::int32_t value = 0;
  EXPECT_EQ(PD_receive_int(peer.connection, value, 0), 2);
  peer.write("abc");
  peer.close();
  EXPECT_EQ(PD_receive_int(peer.connection, value, 1), 1);
  EXPECT_EQ(pd_interpret_nreceived(-1, 4), 1);
}

TEST(TypedValues, send_on_a_closed_record_counts_as_success) {
  Connection closed;
  std::int32_t value = 0;
  EXPECT_EQ(PD_send_int(closed, 1), 0);
  EXPECT_EQ(PD_receive_int(closed, value, 0), 1);
  EXPECT_STREQ(PLE_get_error(), "Connection broken");
}

struct TextCase {
  std::string wire;
  std::int32_t result;
  std::string text;
  const char* error;
};

class ReceivedString : public testing::TestWithParam<TextCase> {};

TEST_P(ReceivedString, is_checked) {
  const auto& [wire, result, text, error] = GetParam();
  TestPeer peer;
  peer.write(wire);
  peer.close();
  std::string received = "before";
  PLE_reset_error();
  EXPECT_EQ(PD_receive_string(peer.connection, received, 1), result);
  EXPECT_EQ(received, text);
  EXPECT_STREQ(PLE_get_error(), error);
}

INSTANTIATE_TEST_SUITE_P(
    lengths, ReceivedString,
    testing::Values(
        TextCase{"\0\4abc\0"s, 0, "abc", ""}, TextCase{"\0\1\0"s, 0, "", ""}, TextCase{"\0\5ab\0c\0"s, 0, "ab", ""},
        TextCase{"\0\0"s, 1, "", "PD_receive_string: string size 0 is non-positive. Possible protocol error"},
        TextCase{"\xFF\xFF"s, 1, "", "PD_receive_string: string size -1 is non-positive. Possible protocol error"},
        TextCase{"\0\5ab"s, 1, "", "End of file while receiving - tcp server is 4711@here"},
        TextCase{"\0\5"s, 2, "", "End of file while receiving - tcp server is 4711@here"},
        TextCase{"\0"s, 1, "", "End of file while receiving - tcp server is 4711@here"}));

TEST(LongString, arrives_whole) {
  const std::string sent(3000000, 'x');
  TestPeer peer;
  Connection far;
  far.state = connection_state::accepted;
  far.socket = peer.far_socket();
  std::thread sender([&] {
    EXPECT_EQ(PD_send0_longstring(peer.connection, sent), 0);
    PNC_flush(peer.connection);
  });
  std::string received;
  EXPECT_EQ(PD_receive_longstring(far, received, 10), 0);
  sender.join();
  EXPECT_TRUE(received == sent);
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
