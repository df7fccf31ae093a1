// A peer that sends any bytes in the place of pathstat, among them heads of calls that are right: every exchange ends,
// and the session is lost sooner or later. The input says how many of its bytes are sent as they stand, or which
// operation is called.
#include "desk/link/core_session.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <vector>

#include "desk/graphs/figure.h"
#include "desk/graphs/plot_operations.h"
#include "desk/model/data_model.h"
#include "desk/ops/model_operations.h"
#include "desk/ops/user_interface.h"
#include "fuzz_input.h"

namespace {

using namespace pathstat;
using namespace pathstat::desk;

constexpr const char* nowhere = "/proc/self/fdinfo";
constexpr std::size_t most_bytes = 60000;  // what a socket takes in without a reader
constexpr ssize_t most_taken = 1 << 20;    // of the numbers that a peer asks for, before it goes away

/// Keeps what is written.
class Kept : public fuzz::MemoryStream {
 public:
  Kept() : MemoryStream({}) {}
  bool write(std::span<const std::byte> more) override {
    bytes.insert(bytes.end(), more.begin(), more.end());
    return true;
  }

  std::vector<std::byte> bytes;
};

/// What binds an operation and begins a call of it.
void write_head(ByteStream& out, const OperationRow& row, std::int32_t binding) {
  const auto family = static_cast<std::int32_t>(row.family);
  write_value(out, family);
  write_text(out, row.name);
  for (const std::int32_t value : {binding, 2, second_frame_word(row.family)}) write_value(out, value);
}

std::vector<std::byte> sent_bytes(fuzz::Numbers numbers, const OperationServer& server) {
  constexpr int longest = 200;
  Kept out;
  const auto rows = all_operations();
  while (!numbers.ended()) {
    const int length = numbers.byte();
    if (length > longest) {
      const auto& row = rows[numbers.byte() % rows.size()];
      write_head(out, row, server.bind(static_cast<std::int32_t>(row.family), row.name));
    }
    for (int k = 0; k < length && length <= longest && !numbers.ended(); ++k) {
      out.bytes.push_back(static_cast<std::byte>(numbers.byte()));
    }
  }
  return std::move(out.bytes);
}

/// The two ends of a connection, of which the far one has sent all it ever will.
class ScriptedPeer {
 public:
  explicit ScriptedPeer(std::span<const std::byte> bytes) {
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends_.data()) != 0) __builtin_trap();
    if (!bytes.empty() && ::send(far(), bytes.data(), bytes.size(), 0) < 0) __builtin_trap();
    ::shutdown(far(), SHUT_WR);
  }
  ~ScriptedPeer() { ::close(far()); }
  ScriptedPeer(const ScriptedPeer&) = delete;
  ScriptedPeer& operator=(const ScriptedPeer&) = delete;

  Connection near() const {
    Connection record;
    record.socket = ends_[0];
    record.connected = 1;
    record.state = connection_state::client;
    return record;
  }
  /// Takes what has come, so that a session that waits for room goes on.
  void take_all() {
    static std::array<char, 65536> block;
    ssize_t got = 0;
    while (taken_ < most_taken && (got = ::recv(far(), block.data(), block.size(), MSG_DONTWAIT)) > 0) taken_ += got;
    if (taken_ >= most_taken) ::shutdown(far(), SHUT_RD);
  }

 private:
  int far() const { return ends_[1]; }

  std::array<int, 2> ends_{};
  ssize_t taken_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  OperationServer server;
  const auto bytes = sent_bytes(fuzz::Numbers(std::span(data, size)), server);
  if (bytes.size() > most_bytes) return 0;
  ScriptedPeer peer(bytes);
  DataModel model;
  model.set_folder(nowhere);
  GraphStore store;
  const auto stop_now = [&] {
    peer.take_all();
    return false;
  };
  CoreSession session(server, {}, stop_now);
  const std::array<std::string, 3> words{"RDF_TYPE", "CURRENT_FRAME_NUMBER", "BUILD_CRYSTAL"};
  UserInterface ui{{.values_changed = [&](const std::string&) { session.request(words); }}};
  register_data_model_operations(server, model);
  register_analysis_operations(server, model);
  register_interface_operations(server, ui);
  register_plot_operations(server, store);
  session.take_up(peer.near(), "/dev/null", 0);
  for (int k = 0; k < 3 && !session.lost(); ++k) {
    session.command("RDF", "1 2");
    session.request(words);
  }
  session.finish();
  if (!session.lost()) __builtin_trap();
  figures_of(store);
  return 0;
}
