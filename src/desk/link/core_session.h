#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "desk/link/child_process.h"
#include "desk/link/listener.h"
#include "desk/link/output_follower.h"
#include "desk/link/session_stream.h"
#include "desk/ops/operation_server.h"
#include "desk/ops/typed_stream.h"

namespace pathstat::desk {

/// In the private directory: what the process leaves there for the error of a fit to a displacement.
constexpr const char* origin_blocks_file = "origin-blocks";

/// Where and how the process runs.
struct SessionOptions {
  std::filesystem::path program;
  std::filesystem::path work_directory;     ///< must exist
  std::filesystem::path private_directory;  ///< for the socket and such; nobody else may enter it
  Protocol protocol = Protocol::unix_socket;
  SilenceLimits silence{};
};

/// What the process tells about one word: its values and the ranges that they may have. A list value is one text with
/// commas between its items and `\,` for a comma in an item.
struct WordAnswer {
  std::vector<std::string> values;
  std::vector<std::string> ranges;
};

/// Input codes that have no data of their own.
enum class Notice : std::int32_t { initialize = -3, terminate = -4, load = -5, save = -6 };

/// One run of the analysis process: starts it, takes its connection, sends commands and requests, and serves its calls
/// while it waits for their ends. A served operation may send commands and requests itself, which run nested.
///
/// Once the process is lost every exchange fails, and loss() says how it was lost. The program has to live with
/// SIGPIPE, which comes of writing to a process that is gone.
class CoreSession {
 public:
  /// @param output   gets each line that the process prints
  /// @param stop_now  asked while waiting: true gives the process up
  /// @param tell     gets a sentence when the process is waited for in vain: which side waits for what
  CoreSession(
      const OperationServer& server, LineSink output, std::function<bool()> stop_now,
      std::function<void(const std::string&)> tell = [](const std::string&) {});
  ~CoreSession();
  CoreSession(const CoreSession&) = delete;
  CoreSession& operator=(const CoreSession&) = delete;

  /// Starts the process and takes its greeting. @return empty, or what went wrong
  std::string start(const SessionOptions& options);

  /// Runs one command to its end.
  /// @return its status, 1 for a text that is too long for the wire; none if the process is lost
  std::optional<std::int32_t> command(std::string_view word, std::string_view arguments);

  /// Tells the process to work on by itself, now or, from within a call that it waits for, once that is answered. It
  /// waits at most so many seconds when it needs a Core. @return as command()
  std::optional<std::int32_t> tell_to_detach(std::int32_t seconds);

  /// Lets the process go, which has been told to detach: serves it until it closes the connection, and leaves it alone
  /// from then on. @return false if it was lost instead
  bool part();
  /// Takes over a process that has detached, once it waits for a Core.
  /// @param output     the file into which it prints, of which so many bytes have been shown
  /// @return empty, or what went wrong
  std::string attach(pid_t process, const std::filesystem::path& output, std::uintmax_t shown);
  /// The part of it behind the connection, which needs no process: goes on with whoever is at its other end.
  void take_up(Connection connection, const std::filesystem::path& output, std::uintmax_t shown);
  /// Serves the command that an attached process is working on to its end. @return as command()
  std::optional<std::int32_t> resume();

  /// Asks for the values and ranges of words.
  /// @return one answer for each word, empty where a word defines nothing; no list if the process is lost
  std::optional<std::vector<WordAnswer>> request(std::span<const std::string> words);

  /// Sends an input code. @return false if the process is lost
  bool notify(Notice notice);

  /// Has the applications stopped, closes the connection and waits for the end of the process.
  void finish();

  /// True once the process works on by itself.
  bool detached() const { return detached_; }
  /// Bytes of its printed output that have been shown.
  std::uintmax_t shown_output() const { return follower_ ? follower_->handed_on() : 0; }
  bool lost() const { return lost_; }
  /// How the process was lost, with its last lines of output.
  const std::string& loss() const { return loss_; }
  pid_t process_id() const { return process_.id(); }
  /// True if the process ended by itself with status 0.
  bool ended_well() const { return process_.ended_well(); }

 private:
  bool fail(std::string what);
  bool fail_link();
  bool wait_for_input(std::string_view what = {});
  bool next_code(std::int32_t& code, std::string_view what = {});
  std::string why_no_port(pid_t process, std::string& port);
  bool open_exchange(std::int32_t code);
  bool accepted(bool with_threads);
  bool serve_until_done();
  bool bind(std::int32_t family);
  bool serve_call(std::int32_t binding);
  /// Asks one application for words, whose answers go to `answers`. @return false if the process is lost
  bool request(std::string_view application, std::span<const std::string> words, WordAnswer* answers);
  std::optional<std::string> ask(std::string_view application, const std::string& keys, std::size_t count,
                                 std::int32_t selector);

  const OperationServer& server_;
  std::function<bool()> stop_now_;
  LineSink output_;
  std::function<void(const std::string&)> tell_;
  SilenceLimits silence_;
  std::unique_ptr<OutputFollower> follower_;
  ChildProcess process_;
  Connection connection_;
  std::unique_ptr<SessionStream> stream_;
  std::int32_t last_group_ = 0;
  int calls_ = 0;         ///< that are served now, each within the one before
  bool parting_ = false;  ///< it has been told to detach
  bool leaving_ = false;  ///< it has said that it does
  bool detached_ = false;
  bool lost_ = true;
  std::string loss_ = "pathstat has not been started";
};

}  // namespace pathstat::desk
