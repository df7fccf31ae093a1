#include "desk/link/core_session.h"

#include <fmt/format.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <thread>

#include "desk/advice/word_table.h"
#include "desk/link/reconnection.h"
#include "desk/ops/frame_codec.h"
#include "services/detaching.h"
#include "services/process_signals.h"
#include "support/level.h"

namespace pathstat::desk {
namespace {

constexpr std::string_view greeting = "remote process success IEEE";
constexpr char between_keys = '\x10';
constexpr char between_values = '\x11';

constexpr std::int32_t command_code = -1;
constexpr std::int32_t request_code = -2;
constexpr std::int32_t acknowledged = 1;
constexpr std::int32_t done = -64;
constexpr std::int32_t detached_code = -65;
constexpr std::int32_t fatal_error = -66;

constexpr std::int32_t value_texts = 2;
constexpr std::int32_t range_texts = 0;
constexpr std::int32_t most_groups = 65535;

constexpr std::int32_t first_capacity = 4096;
constexpr std::int32_t most_capacity = 64 << 20;
/// An exchange that breaks off inside cannot be taken up again.
constexpr int most_calls = 100;  // within each other; each takes room of the stack
constexpr const char* no_memory = "there is not enough memory for an exchange with pathstat";
constexpr auto start_limit = std::chrono::seconds(30);

bool is_family(std::int32_t code) { return code >= 0 && code <= 80000 && code % 10000 == 0; }

std::vector<std::string> cut_at(std::string_view text, char mark) {
  std::vector<std::string> pieces;
  std::size_t from = 0;
  for (auto at = text.find(mark); at != std::string_view::npos; at = text.find(mark, from)) {
    pieces.emplace_back(text.substr(from, at - from));
    from = at + 1;
  }
  pieces.emplace_back(text.substr(from));
  return pieces;
}

}  // namespace

CoreSession::CoreSession(const OperationServer& server, LineSink output, std::function<bool()> stop_now,
                         std::function<void(const std::string&)> tell)
    : server_(server), stop_now_(std::move(stop_now)), output_(std::move(output)), tell_(std::move(tell)) {}

CoreSession::~CoreSession() {
  PNC_close(connection_);
  process_.end(0);
}

std::string CoreSession::start(const SessionOptions& options) {
  std::string error;
  Listener listener(options.protocol, options.private_directory, error);
  if (!error.empty()) return error;
  const auto output = options.work_directory / "pathstat.out";
  const auto origin_blocks = options.private_directory / origin_blocks_file;
  error = process_.start({.program = options.program,
                          .directory = options.work_directory,
                          .output = output,
                          .environment = {{"RJMACHINE", listener.machine()},
                                          {"RJPROTOCOL", protocol_name(options.protocol)},
                                          {"RJSERVER", listener.name()},
                                          {"PATHSTAT_ORIGIN_BLOCKS", origin_blocks.string()}}});
  if (!error.empty()) return error;
  follower_ = std::make_unique<OutputFollower>(output, output_);
  connection_ = {};  // nothing of a process before this one is left in its buffers
  stream_.reset();
  parting_ = leaving_ = detached_ = lost_ = false;

  const auto limit = std::chrono::steady_clock::now() + start_limit;
  const auto go_on = [&] { return process_.runs() && !stop_now_() && std::chrono::steady_clock::now() < limit; };
  std::string words;
  if (!listener.accept_from(process_.id(), connection_, go_on)) {
    fail("pathstat did not connect");
  } else {
    silence_ = options.silence;
    stream_ = std::make_unique<SessionStream>(connection_.socket, stop_now_, silence_, tell_);
    if (!wait_for_input("greet") || !read_text(*stream_, words))
      fail("pathstat did not greet: " + stream_->problem());
    else if (words != greeting)
      fail(fmt::format("pathstat greeted with \"{}\"", words));
  }
  return lost_ ? loss_ : std::string{};
}

bool CoreSession::fail(std::string what) {
  if (lost_) return false;
  lost_ = true;
  PNC_close(connection_);
  if (leaving_ && !stop_now_()) {
    process_.release();
    follower_->follow();
    detached_ = true;
    loss_ = "pathstat works on by itself";
    return false;
  }
  if (stop_now_()) {
    process_.end(0);
    follower_->finish();
    loss_ = "stopped by the user";
    return false;
  }
  const bool ended = process_.wait(2000);
  loss_ = fmt::format("{}; {}", what, ended ? "pathstat ended with " + process_.ending() : "pathstat was ended");
  process_.end(0);
  follower_->finish();
  if (stream_ && ended_well()) return false;
  for (const auto& line : follower_->last_lines()) loss_ += "\n  pathstat: " + line;
  return false;
}

bool CoreSession::fail_link() {
  if (lost_) return false;
  const auto& why = stream_->problem();
  return fail(why.empty() ? "pathstat has closed the connection" : why);
}

/// @param what  what the process has to do at once, so that its silence is told; empty while it may work
bool CoreSession::wait_for_input(std::string_view what) {
  if (!stream_->flush()) return fail_link();
  const auto told_at = std::chrono::steady_clock::now() + silence_.told;
  for (bool told = what.empty(); !stream_->has_input();) {
    pollfd waiting{connection_.socket, POLLIN, 0};
    const int ready = ::poll(&waiting, 1, 100);
    follower_->follow();
    if (stop_now_()) return fail("stopped");
    if (ready > 0) return true;
    if (told || std::chrono::steady_clock::now() < told_at) continue;
    told = true;
    tell_(fmt::format("pathdesk has waited {:.3g} seconds for pathstat to {}; a second Ctrl-C gives the run up",
                      std::chrono::duration<double>(silence_.told).count(), what));
  }
  return true;
}

bool CoreSession::next_code(std::int32_t& code, std::string_view what) {
  if (!wait_for_input(what)) return false;
  if (!read_value(*stream_, code)) return fail_link();
  follower_->follow();
  return true;
}

bool CoreSession::open_exchange(std::int32_t code) { return !lost_ && write_value(*stream_, code); }

bool CoreSession::accepted(bool with_threads) {
  std::int32_t answer = 0, threads = 0;
  if (!next_code(answer, "take a command")) return false;
  if (answer != acknowledged) return fail(fmt::format("pathstat answered an input code with {}", answer));
  return !with_threads || next_code(threads, "take a command");
}

bool CoreSession::serve_until_done() {
  for (;;) {
    std::int32_t code = 0;
    if (!next_code(code)) return false;
    if (code == done) return true;
    bool served = false;
    if (code == detached_code) {
      leaving_ = served = parting_;
      if (!served) fail("pathstat has detached itself");
    } else if (code == fatal_error) {
      fail("pathstat is dying on a signal");
    } else if (is_family(code)) {
      served = bind(code);
    } else {
      served = serve_call(code);
    }
    if (!served) return false;
  }
}

bool CoreSession::bind(std::int32_t family) {
  std::string name;
  if (!read_text(*stream_, name)) return fail("the stream broke off inside a binding: " + stream_->problem());
  const auto binding = server_.bind(family, name);
  if (binding == 0) return fail(fmt::format("pathstat asked for the unknown operation {} of family {}", name, family));
  if (!write_value(*stream_, acknowledged) || !write_value(*stream_, binding)) {
    return fail_link();
  }
  return true;
}

bool CoreSession::serve_call(std::int32_t binding) {
  const auto* row = server_.bound(binding);
  if (!row) return fail(fmt::format("pathstat sent {}, which is no operation and no code", binding));
  OperationCall call{*row, {}};
  const auto good = [&](std::string error) {
    if (error.empty()) return true;
    if (!stream_->problem().empty()) error += ": " + stream_->problem();
    return fail(std::move(error));
  };
  if (!good(read_call(*stream_, *row, call.inputs))) return false;
  if (calls_ == most_calls) return fail("pathstat calls within its own calls without an end");
  const Level level(calls_);
  const auto reply = server_.serve(call);
  return !lost_ && good(write_reply(*stream_, call, reply));
}

std::optional<std::int32_t> CoreSession::command(std::string_view word, std::string_view arguments) try {
  if (word.size() > longest_text || arguments.size() > longest_text) return 1;
  std::int32_t status = 0;
  const bool ran = open_exchange(command_code) && write_value(*stream_, std::int32_t{1}) &&
                   write_text(*stream_, application_of(word)) && write_text(*stream_, word) &&
                   write_text(*stream_, arguments) && accepted(true) && serve_until_done() && next_code(status);
  if (ran) return status;
  fail_link();
  return std::nullopt;
} catch (const std::bad_alloc&) {
  fail(no_memory);
  return std::nullopt;
}

std::optional<std::int32_t> CoreSession::tell_to_detach(std::int32_t seconds) {
  parting_ = true;
  return command("DETACH", std::to_string(seconds));
}

bool CoreSession::part() {
  // What it still asks for is its own name and the port of this Core.
  while (!lost_ && serve_until_done()) continue;
  return detached_;
}

std::string CoreSession::why_no_port(pid_t process, std::string& port) {
  const auto path = reconnection_file(process);
  while (port.empty()) {
    if (auto problem = read_reconnection_file(path, port); !problem.empty()) return problem;
    if (stop_now_()) return "stopped by the user";
    if (!process_.runs()) return fmt::format("process {} has ended", process);
    if (port.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return {};
}

void CoreSession::take_up(Connection connection, const std::filesystem::path& output, std::uintmax_t shown) {
  connection_ = std::move(connection);
  follower_ = std::make_unique<OutputFollower>(output, output_, shown);
  stream_ = std::make_unique<SessionStream>(connection_.socket, stop_now_, silence_, tell_);
  parting_ = leaving_ = detached_ = lost_ = false;
}

std::string CoreSession::attach(pid_t process, const std::filesystem::path& output, std::uintmax_t shown) {
  process_.adopt(process);
  std::string port;
  auto problem = COM_sigusr1_send(std::to_string(process).c_str()) == 0 ? why_no_port(process, port)
                                                                        : fmt::format("process {} has ended", process);
  Connection connection;
  if (problem.empty()) problem = connect_to_waiting(process, port, connection);
  if (!problem.empty()) {
    process_.release();
    return problem;
  }
  take_up(std::move(connection), output, shown);
  std::int32_t threads = 0;
  return next_code(threads) ? std::string{} : loss_;
}

std::optional<std::int32_t> CoreSession::resume() {
  std::int32_t status = 0;
  if (!lost_ && serve_until_done() && next_code(status)) return status;
  fail("pathstat has closed the connection");
  return std::nullopt;
}

std::optional<std::string> CoreSession::ask(std::string_view application, const std::string& keys, std::size_t count,
                                            std::int32_t selector) try {
  for (std::int32_t capacity = first_capacity;;) {
    std::string reply;
    std::int32_t answers = 0, status = 0;
    const bool asked = open_exchange(request_code) && write_value(*stream_, std::int32_t{1}) &&
                       write_text(*stream_, application) && write_text(*stream_, keys) &&
                       write_value(*stream_, static_cast<std::int32_t>(count)) && write_value(*stream_, selector) &&
                       write_value(*stream_, capacity) && accepted(true) && serve_until_done() && wait_for_input() &&
                       read_long_text(*stream_, static_cast<std::size_t>(capacity) + 2, reply) && next_code(answers);
    if (!asked) break;
    if (answers >= static_cast<std::int32_t>(count)) return reply;
    if (!next_code(status)) break;
    if (status >= 0 || status <= -most_capacity || -status + 64 <= capacity) {
      constexpr std::int32_t without_memory = 1;
      fail(fmt::format("pathstat answered a request of {} words with {} answers and status {}{}", count, answers,
                       status, status == without_memory ? ", as without memory" : ""));
      return std::nullopt;
    }
    capacity = -status + 64;
  }
  fail_link();
  return std::nullopt;
} catch (const std::bad_alloc&) {
  fail(no_memory);
  return std::nullopt;
}

bool CoreSession::request(std::string_view application, std::span<const std::string> words, WordAnswer* answers) {
  std::string keys;
  for (const auto& word : words) keys += (keys.empty() ? "" : std::string(1, between_keys)) + word;
  if (keys.size() > longest_text) return true;

  // One group for both: the process evaluates the words once and answers the second time from what it kept.
  last_group_ = last_group_ % most_groups + 1;
  for (const auto part : {&WordAnswer::values, &WordAnswer::ranges}) {
    const auto pool = part == &WordAnswer::values ? value_texts : range_texts;
    const auto reply = ask(application, keys, words.size(), pool | last_group_ << 8);
    if (!reply) return false;
    const auto texts = cut_at(*reply, between_keys);
    for (std::size_t k = 0; k < std::min(texts.size(), words.size()); ++k) {
      if (!texts[k].empty()) answers[k].*part = cut_at(texts[k], between_values);
    }
  }
  return true;
}

std::optional<std::vector<WordAnswer>> CoreSession::request(std::span<const std::string> words) {
  std::vector<WordAnswer> answers(words.size());
  for (std::size_t from = 0; from < words.size();) {
    const auto application = application_of(words[from]);
    auto end = from + 1;
    while (end < words.size() && application_of(words[end]) == application) ++end;
    if (!request(application, words.subspan(from, end - from), answers.data() + from)) return std::nullopt;
    from = end;
  }
  return answers;
}

bool CoreSession::notify(Notice notice) try {
  const bool sent = open_exchange(static_cast<std::int32_t>(notice)) && accepted(false) && serve_until_done();
  return sent || fail_link();
} catch (const std::bad_alloc&) {
  return fail(no_memory);
}

void CoreSession::finish() {
  if (lost_) return;
  notify(Notice::terminate);
  if (lost_) return;
  PNC_close(connection_);
  process_.end(5000);
  follower_->finish();
  lost_ = true;
  loss_ = "pathstat has ended";
}

}  // namespace pathstat::desk
