#include "desk/link/session_stream.h"

#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "testing.h"

namespace pathstat::desk {
namespace {

class SessionStreams : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, sockets_.data()), 0); }
  void TearDown() override {
    ::close(near());
    close_far();
  }
  int near() const { return sockets_[0]; }
  int far() const { return sockets_[1]; }
  void close_far() {
    if (far() >= 0) ::close(std::exchange(sockets_[1], -1));
  }

 private:
  std::array<int, 2> sockets_{-1, -1};
};

TEST_F(SessionStreams, carry_blocks_of_all_sizes_both_ways) {
  std::vector<std::byte> all(3000000);
  for (std::size_t k = 0; k < all.size(); ++k) all[k] = static_cast<std::byte>(k * 7919 >> 5);
  const auto go_on = [] { return false; };
  std::thread echo([&] {
    SessionStream stream(far(), go_on);
    for (std::size_t done = 0, size = 1; done < all.size(); done += size, size = size * 3 % 150001 + 1) {
      std::vector<std::byte> block(std::min(size, all.size() - done));
      if (!stream.read(block) || !stream.write(block) || !stream.flush()) break;
    }
  });
  SessionStream stream(near(), go_on);
  std::thread sending([&] {
    for (std::size_t done = 0; done < all.size();) {
      const auto sent = ::send(near(), &all[done], all.size() - done, 0);
      if (sent <= 0) break;
      done += static_cast<std::size_t>(sent);
    }
  });
  std::vector<std::byte> back(all.size());
  for (std::size_t done = 0, size = 5; done < back.size(); done += size, size = 70000) {
    ASSERT_TRUE(stream.read(std::span(back).subspan(done).first(std::min(size, back.size() - done))));
  }
  sending.join();
  echo.join();
  EXPECT_TRUE(back == all);
}

TEST_F(SessionStreams, stop_in_the_middle_of_a_text_and_of_a_block_that_is_not_taken) {
  const auto start = std::chrono::steady_clock::now();
  const auto stop = [start] { return std::chrono::steady_clock::now() - start > std::chrono::milliseconds(150); };
  SessionStream stream(near(), stop);
  ASSERT_EQ(::send(far(), "\0", 1, 0), 1);  // half the length of a text
  std::string text;
  EXPECT_FALSE(read_text(stream, text));
  const std::vector<std::byte> much(10000000);
  EXPECT_FALSE(stream.write(much));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(SessionStreams, fail_when_the_other_side_is_gone) {
  SessionStream stream(near(), [] { return false; });
  ASSERT_EQ(::send(far(), "\0\0", 2, 0), 2);
  close_far();
  std::int32_t number = 0;
  EXPECT_FALSE(read_value(stream, number));
  write_value(stream, number);
  EXPECT_FALSE(stream.flush());
}

// A peer that stops in the middle of a value, and one that takes nothing.
TEST_F(SessionStreams, tell_of_a_silent_other_side_and_give_it_up) {
  using namespace std::chrono_literals;
  struct Silence {
    const char* name;
    bool (*wait)(SessionStream& stream);
    const char *told, *problem;
  };
  const Silence silences[]{
      {"inside a number",
       [](SessionStream& stream) {
         std::int32_t number = 0;
         return read_value(stream, number);
       },
       "for pathstat to send the rest of a value", "pathstat did not send the rest of a value"},
      {"full of what it does not take",
       [](SessionStream& stream) { return stream.write(std::vector<std::byte>(10000000)); },
       "for pathstat to take a value", "pathstat did not take a value"},
  };
  ASSERT_EQ(::send(far(), "\0", 1, 0), 1);
  for (const auto& silence : silences) {
    SCOPED_TRACE(silence.name);
    std::vector<std::string> told;
    SessionStream stream(
        near(), [] { return false; }, {150ms, 400ms}, [&](const std::string& text) { told.push_back(text); });
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(silence.wait(stream));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 400ms);
    ASSERT_THAT(told, SizeIs(1));
    EXPECT_THAT(told[0], HasSubstr(silence.told));
    EXPECT_THAT(stream.problem(), StartsWith(silence.problem));
  }
}

// Each byte counts anew: a slow peer is not a silent one.
TEST_F(SessionStreams, wait_for_a_slow_other_side) {
  using namespace std::chrono_literals;
  std::thread slow([&] {
    for (const char byte : {'\0', '\0', '\1', '\2'}) {
      std::this_thread::sleep_for(200ms);
      ::send(far(), &byte, 1, MSG_NOSIGNAL);
    }
  });
  SessionStream stream(near(), [] { return false; }, {400ms, 600ms});
  std::int32_t number = 0;
  EXPECT_TRUE(read_value(stream, number));
  EXPECT_EQ(number, 258);
  slow.join();
}

}  // namespace
}  // namespace pathstat::desk
