#include <thread>

#include "corelink/last_error.h"
#include "corelink/socket_setup.h"
#include "corelink/test_peer.h"
#include "testing.h"

namespace pathstat {
namespace {

struct BufferingCase {
  const char* rule;
  std::int32_t buffer;
  std::vector<std::size_t> sends;
  std::vector<std::size_t> writes;
  std::int32_t waiting;
};

const BufferingCase cases[] = {{"one less than free is held", 8, {3, 4}, {}, 7},
                               {"exactly free fills, flushes and leaves nothing", 8, {3, 5}, {8}, 0},
                               {"exactly size plus free goes directly behind a flush", 8, {3, 13}, {3, 13}, 0},
                               {"an empty buffer of 8 takes up to 15", 8, {15}, {8}, 7},
                               {"but not 16", 8, {16}, {16}, 0},
                               {"no buffer, two writes", 0, {2, 2}, {2, 2}, 0}};

TEST(Buffering, writes_when_the_buffer_says) {
  for (const auto& [rule, buffer, sends, writes, waiting] : cases) {
    TestPeer peer(SOCK_SEQPACKET);
    PNC_init_write_buffer(peer.connection, buffer);
    std::string sent;
    for (const auto size : sends) {
      std::string block;
      while (block.size() < size) block += static_cast<char>('a' + sent.size() + block.size());
      EXPECT_EQ(PNC_send(peer.connection, bytes_of(block)), 1);
      sent += block;
    }
    EXPECT_EQ(peer.connection.next_unwritten_char, waiting) << rule;
    std::vector<std::size_t> sizes;
    std::string arrived;
    auto take = [&] {
      for (const auto& packet : peer.packets()) {
        sizes.push_back(packet.size());
        arrived += packet;
      }
    };
    take();
    EXPECT_EQ(sizes, writes) << rule;
    EXPECT_EQ(PNC_flush(peer.connection), 1);
    take();
    EXPECT_EQ(arrived, sent) << rule;
    EXPECT_EQ(peer.connection.sent_count, static_cast<std::int64_t>(sent.size()));
  }
}

class Stream : public testing::Test {
 protected:
  std::int64_t receive(std::size_t count, std::int32_t timeout) {
    received.assign(count, '?');
    return PNC_receive(peer.connection, std::as_writable_bytes(std::span(received)), timeout);
  }
  TestPeer peer;
  std::string received;
};

TEST_F(Stream, timeout_delivers_what_the_input_buffer_held) {
  PNC_init_read_buffer(peer.connection, 64);
  peer.write("01234");
  ASSERT_EQ(receive(2, 1), 2);
  EXPECT_EQ(receive(4, 0), 3);
  EXPECT_EQ(received.substr(0, 3), "234");
  EXPECT_STREQ(PLE_get_error(), "Timed out while receiving - tcp server is 4711@here");
}

TEST(StreamProperty, any_cut_of_a_stream_gives_the_same_bytes) {
  const auto seed = std::random_device{}();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  std::string stream(200000, '\0');
  for (auto& c : stream) c = static_cast<char>(random());
  for (const std::int32_t buffer : {0, 1, 7, 512}) {
    TestPeer peer;
    PNC_init_read_buffer(peer.connection, buffer);
    std::thread writer([&, pieces = std::mt19937(seed + 1)]() mutable {
      for (std::size_t at = 0; at < stream.size();) {
        const auto size = std::min<std::size_t>(1 + pieces() % 3000, stream.size() - at);
        peer.write(std::string_view(stream).substr(at, size));
        at += size;
      }
    });
    std::string all;
    while (all.size() < stream.size()) {
      std::string part(std::min<std::size_t>(1 + random() % 2000, stream.size() - all.size()), '\0');
      ASSERT_EQ(PNC_receive(peer.connection, std::as_writable_bytes(std::span(part)), 10),
                static_cast<std::int64_t>(part.size()));
      all += part;
    }
    writer.join();
    EXPECT_TRUE(all == stream) << "buffer " << buffer;
  }
}

TEST_F(Stream, write_to_a_dead_peer_fails_and_drops_what_waited) {
  install_broken_pipe_handler();
  PNC_init_write_buffer(peer.connection, 64);
  peer.close();
  EXPECT_EQ(PNC_send(peer.connection, bytes_of("lost")), 1);
  EXPECT_EQ(PNC_flush(peer.connection), 0);
  EXPECT_STREQ(PLE_get_error(), "Network connection broken for tcp server 4711@here");
  EXPECT_EQ(peer.connection.next_unwritten_char, 0);
}

}  // namespace
}  // namespace pathstat
