#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "corelink/test_peer.h"
#include "corelink/transport_log.h"
#include "corelink/typed_log.h"
#include "corelink/typed_values.h"

namespace pathstat {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::MatchesRegex;

class TransportLog : public testing::Test {
 protected:
  TransportLog() { pnc_log = std::tmpfile(); }
  ~TransportLog() override {
    pnc_debug = pd_debug = 0;
    std::fclose(pnc_log);
    pnc_log = nullptr;
  }
  std::string logged() {
    std::string text(static_cast<std::size_t>(std::ftell(pnc_log)), '\0');
    std::rewind(pnc_log);
    EXPECT_EQ(std::fread(text.data(), 1, text.size(), pnc_log), text.size());
    return text;
  }
  TestPeer peer;
};

TEST_F(TransportLog, level_1_has_one_line_a_transfer) {
  pnc_debug = 1;
  std::array<std::byte, 3> bytes{};
  PNC_send(peer.connection, bytes_of("0123456789"));
  peer.write("abc");
  PNC_receive(peer.connection, bytes, 1);
  PNC_close(peer.connection);
  EXPECT_THAT(logged(), MatchesRegex("send [0-9:.]+ [^ ]+ -> core \\(4711\\) 10 b\\. [0-9]+ ms  0x3031323334353637\n"
                                     "recv [0-9:.]+ [^ ]+ <- core \\(4711\\) 3 b\\. [0-9]+ ms  0x616263\n"
                                     "closed 4711@here <-> core at [0-9:.]+\n"));
}

TEST_F(TransportLog, level_2_has_each_read_and_write) {
  pnc_debug = 2;
  std::array<std::byte, 3> bytes{};
  PNC_send(peer.connection, bytes_of("0123456789"));
  peer.write("abc");
  PNC_receive(peer.connection, bytes, 1);
  const std::string text = logged();
  EXPECT_THAT(text, HasSubstr("PNC_send (pathstat):\t10 bytes -> core (4711) (Sent so far: 0)\n"));
  EXPECT_THAT(text, HasSubstr("PNC (pathstat) recv: need 3 <- core (4711), timeout=1 (Got so far 0)\n"));
  EXPECT_THAT(text, ContainsRegex("PNC \\(pathstat\\) recv [^ ]+ <- core \\(4711\\) 3 b\\.  0x616263\n"));
}

TEST_F(TransportLog, level_3_has_buffers_and_waits) {
  pnc_debug = 3;
  PNC_init_write_buffer(peer.connection, 16);
  std::array<std::byte, 1> bytes{};
  PNC_send(peer.connection, bytes_of("012"));
  PNC_receive(peer.connection, bytes, 0);
  const std::string text = logged();
  EXPECT_THAT(text, HasSubstr("PNC_send: buffered 3 bytes; next_unwritten_char=3\n"));
  EXPECT_THAT(text, ContainsRegex("PNC_flush socket=[0-9]+, next_unwritten_char=3\n"));
  EXPECT_THAT(text, ContainsRegex("readmask before select\\(\\) for socket [0-9]+: [0-9A-F]+\n"));
  EXPECT_THAT(text, ContainsRegex("readmask after select\\(\\) \\(0\\): 0+\n"));
}

TEST_F(TransportLog, value_lines) {
  pd_debug = 1;
  const std::array<std::int32_t, 3> integers{1, -2, 3};
  const std::vector<std::int16_t> shorts(101, 5);
  const std::vector<float> floats{1.5F};
  const std::vector<double> doubles(11, 0.25);
  PD_send_int(peer.connection, integers);
  PD_send_short(peer.connection, shorts);
  PD_send_float(peer.connection, floats);
  PD_send_double(peer.connection, doubles);
  PD_send_char(peer.connection, std::string_view("\x01"
                                                 "a\x02"));
  std::array<double, 11> received{};
  for (int k = 0; k < 11; ++k) peer.write(TestPeer::bytes_of(0.25));
  PD_receive_double(peer.connection, received, 1);
  std::array<std::int32_t, 2> cut{};
  peer.write_int(9);
  peer.close_for_writing();
  PD_receive_int(peer.connection, cut, 1);
  std::string hundred;
  for (int k = 0; k < 100; ++k) hundred += " 5";
  std::string ten;
  for (int k = 0; k < 10; ++k) ten += " 0.250000";
  EXPECT_EQ(logged(),
            "PD (pathstat) sending 3 int(s) to core (4711): 1 -2 3\n"
            "PD (pathstat) sending 101 short(s) to core (4711):" +
                hundred +
                " ...\n"
                "PD (pathstat) sending 1 float(s) to core (4711): 1.500000\n"
                "PD (pathstat) sending 3 char(s) to core (4711): <0x1 a\x02>\n"
                "PD (pathstat) received 88 bytes of double(s) from core (4711):" +
                ten +
                "\n 0.250000\n"
                "PD (pathstat) received 4 bytes of int from core (4711): 9\n");
}

struct LevelCase {
  const char* setting;
  std::int32_t level;
};

class LogLevel : public testing::TestWithParam<LevelCase> {};

TEST_P(LogLevel, follows_the_setting_and_appends_to_the_file) {
  const std::string path = testing::TempDir() + "transport_" + std::to_string(::getpid()) + ".log";
  std::ofstream(path) << "kept\n";
  const ScopedVariable setting("PNC_DEBUG", GetParam().setting);
  const ScopedVariable file("PNC_LOG", path.c_str());
  pnc_debug = -1;
  PNC_InitDebug();
  EXPECT_EQ(pnc_debug, GetParam().level);
  EXPECT_EQ(pnc_log != nullptr, GetParam().level > 0);
  if (pnc_log != nullptr) std::fclose(pnc_log);
  pnc_log = nullptr;
  pnc_debug = 0;
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  std::remove(path.c_str());
  EXPECT_THAT(text.str(), MatchesRegex(GetParam().level > 0 ? "kept\n=== Starting pnc log by pathstat at [0-9:.]+ ===\n"
                                                            : "kept\n"));
}

INSTANTIATE_TEST_SUITE_P(settings, LogLevel,
                         testing::Values(LevelCase{nullptr, 0}, LevelCase{"LOG", 1}, LevelCase{"log", 2},
                                         LevelCase{"anything", 2}, LevelCase{"VERBOSE", 3}));

}  // namespace
}  // namespace pathstat
