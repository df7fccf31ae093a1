#include "desk/cli/converse.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>

#include "desk/advice/word_table.h"
#include "desk/cli/typed_line.h"
#include "desk/graphs/figure.h"
#include "desk/graphs/pictures.h"
#include "desk/report/result_folder.h"
#include "desk/script/answer_text.h"
#include "desk/script/file_content.h"
#include "desk/script/interrupts.h"
#include "desk/script/words_body.h"
#include "support/record_file.h"

namespace pathstat::desk {
namespace {

using nlohmann::json;

constexpr std::array told_names{"result", "table", "complaint"};
constexpr std::array end_names{"done", "failed", "interrupted", "stopped", "lost"};
constexpr std::size_t longest_request = 1 << 20;

/// An answer: an object, and bytes that stand behind its line.
struct Answer {
  json body;
  std::string block = {};
};

Answer refusal(std::string problem) { return {{{"end", "refused"}, {"problem", std::move(problem)}}}; }

template <class T>
void append(std::string& block, const T& value) {
  std::array<char, sizeof(T)> bytes{};
  std::memcpy(bytes.data(), &value, sizeof(T));
  block.append(bytes.data(), bytes.size());
}

/// Lines of the standard input.
class RequestLines {
 public:
  /// Waits for a line. @return none at the end of the input, for a line that is too long, and when the run is given up
  std::optional<std::string> next() {
    for (;;) {
      if (is_too_long()) return std::nullopt;
      if (const auto end = text_.find('\n'); end != std::string::npos) {
        auto line = text_.substr(0, end);
        text_.erase(0, end + 1);
        return line;
      }
      if (interrupts() > 1) return std::nullopt;
      std::array<char, 4096> bytes{};
      const auto count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) return std::nullopt;
      text_.append(bytes.data(), static_cast<std::size_t>(count));
    }
  }

  bool is_too_long() const { return std::min(text_.find('\n'), text_.size()) > longest_request; }

 private:
  std::string text_;
};

/// True if nobody can read any more what is written to a pipe or socket.
bool has_no_reader(int out) {
  pollfd reader{out, 0, 0};
  return ::poll(&reader, 1, 0) == 1 && (reader.revents & POLLERR) != 0;
}

json words_of(const WordColumn& column, std::size_t atoms) {
  auto list = json::array();
  for (std::size_t k = 0; k < atoms; ++k) list.push_back(k < column.size() ? column[k] : std::string_view());
  return list;
}

json figure_of(const Figure& figure, std::string& block) {
  auto curves = json::array();
  for (const auto& curve : figure.curves) {
    curves.push_back({{"label", curve.label}, {"points", curve.points->size()}});
    for (const auto& point : *curve.points) {
      append(block, point.x);
      append(block, point.y);
    }
  }
  return {{"name", figure.name}, {"title", figure.title}, {"heading", figure.heading}, {"note", figure.note},
          {"x", figure.x_text},  {"y", figure.y_text},    {"of", figure.facts.of},     {"curves", std::move(curves)}};
}

class Conversation {
 public:
  Conversation(LineRunner& runner, int out) : runner_(runner), out_(out) {
    runner_.console().lead_to({.told =
                                   [this](Told kind, std::string_view text) {
                                     const auto* name = told_names.at(static_cast<std::size_t>(kind));
                                     told_.push_back({{"kind", name}, {"text", text}});
                                   },
                               .progress = [](double) {},
                               .status = [](std::string_view) {}});
    runner_.watch_with({.working =
                            [this] {
                              if (!has_no_reader(out_)) return;
                              while (interrupts() < 2) request_interrupt();
                            },
                        .frame = {}});
  }
  ~Conversation() { runner_.forget_owner(); }
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;

  int run() {
    RequestLines lines;
    while (!ended_) {
      const auto text = lines.next();
      if (!text) break;
      send(answer_to(*text));
      forget_interrupts();  // behind the answer: one that comes ahead of a line that was sent is meant for it
    }
    if (lines.is_too_long()) {
      send(refusal(fmt::format("a request has at most {} bytes", longest_request)));
      code_ = exit_code::not_run;
    }
    return code_;
  }

 private:
  Answer answer_to(const std::string& text) {
    const auto request = json::parse(text, nullptr, false);
    if (!request.is_object() || request.size() != 1) return refusal("a request is an object with one member");
    const auto member = request.begin();
    const auto& what = member.key();
    const auto& of = member.value();
    if (what == "words") return {words_body()};
    if (what == "model") return model();
    if (what == "frame") return frame();
    if (what == "report") return report();
    if (what == "values" && of.is_array()) return values(of);
    if (what == "line" && of.is_string()) return run_line(of.get<std::string>());
    if (what == "picture" && of.is_string()) return picture(of.get<std::string>());
    return refusal("there is no request of this kind: " + what);
  }

  Answer run_line(const std::string& text) {
    const auto typed = read_typed_line(text, ++number_, runner_.groups());
    if (!typed.problem.empty()) return refusal(typed.problem);
    ended_ = typed.ends;
    Answer answer{{{"end", "done"}}};
    if (!typed.help.empty()) told_.push_back({{"kind", "result"}, {"text", typed.help}});
    if (typed.line) {
      const auto end = runner_.run(*typed.line);
      answer.body["end"] = end_names.at(static_cast<std::size_t>(end));
      ended_ = end == LineEnd::stopped;
      if (runner_.lost()) answer = lost();
    }
    answer.body["told"] = std::exchange(told_, json::array());
    answer.body["graphs"] = changed_graphs(answer.block);
    return answer;
  }

  Answer lost() {
    code_ = exit_code::process_lost;
    ended_ = true;
    runner_.end_with(runner_.loss());
    return {{{"end", "lost"}, {"problem", runner_.loss()}}};
  }

  /// The graphs that have changed since they were last sent, with their points in the block.
  json changed_graphs(std::string& block) {
    auto list = json::array();
    for (const auto& figure : figures_of(runner_.graphs())) {
      const auto revision = runner_.graphs().revision(figure.graph);
      auto& sent = sent_[figure.graph];
      if (sent == revision) continue;
      sent = revision;
      list.push_back(figure_of(figure, block));
    }
    return list;
  }

  Answer values(const json& words) {
    std::vector<std::string> names;
    for (const auto& word : words) {
      if (word.is_string() && find_command_help(word.get<std::string>())) names.push_back(word.get<std::string>());
    }
    const auto answers = runner_.values(names);
    if (!answers) return lost();
    auto all = json::object();
    for (std::size_t k = 0; k < names.size(); ++k) {
      all[names[k]] = {{"values", items_of((*answers)[k].values)}, {"ranges", items_of((*answers)[k].ranges)}};
    }
    return {{{"end", "done"}, {"values", std::move(all)}}};
  }

  const ModelObject* current() const { return runner_.models().model(runner_.models().current_model()); }

  /// What does not change from frame to frame; the block holds the atomic numbers, a byte each.
  Answer model() const {
    const auto* object = current();
    if (!object) return refusal("no model is loaded");
    const auto& data = object->data;
    const auto atoms = data.positions.size();
    Answer answer{{{"end", "done"},
                   {"name", data.name},
                   {"names", words_of(data.names, atoms)},
                   {"types", words_of(data.ff_types, atoms)},
                   {"residues", words_of(data.residues, atoms)},
                   {"bonds", data.bonds}}};
    for (const auto element : data.elements) answer.block += static_cast<char>(element);
    return answer;
  }

  /// The cell, and in the block the positions.
  Answer frame() const {
    const auto* object = current();
    if (!object) return refusal("no model is loaded");
    Answer answer{{{"end", "done"}, {"cell", object->data.cell}, {"atoms", object->data.positions.size()}}};
    for (const auto& position : object->data.positions) append(answer.block, position);
    return answer;
  }

  /// A graph as SVG in the block.
  Answer picture(const std::string& name) const {
    const auto figures = figures_of(runner_.graphs());
    const auto* figure = find_figure(runner_.graphs(), figures, name);
    if (!figure) return refusal("there is no graph " + name);
    const auto problem = draw_pictures(std::span(figure, 1), {.svg = true, .png = false}, runner_.private_folder());
    if (!problem.empty()) return refusal(problem);
    Answer answer{{{"end", "done"}}};
    read_content(runner_.private_folder() / (figure->name + ".svg"), answer.block);
    return answer;
  }

  Answer report() {
    runner_.write_results();
    return {{{"end", "done"},
             {"told", std::exchange(told_, json::array())},
             {"folder", std::filesystem::absolute(runner_.output_folder()).string()}}};
  }

  void send(const Answer& answer) {
    auto body = answer.body;
    body["bytes"] = answer.block.size();
    const auto text = body.dump(-1, ' ', false, json::error_handler_t::replace) + '\n' + answer.block;
    for (std::size_t sent = 0; sent < text.size();) {
      const auto count = ::write(out_, text.data() + sent, text.size() - sent);
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) {
        ended_ = true;
        return;
      }
      sent += static_cast<std::size_t>(count);
    }
  }

  LineRunner& runner_;
  int out_;
  json told_ = json::array();
  std::map<std::int32_t, std::uint64_t> sent_;  ///< revisions of graphs
  int number_ = 0;
  int code_ = exit_code::success;
  bool ended_ = false;
};

}  // namespace

int run_converse(const RunOptions& options) {
  // What is told of the run as a whole must not stand among the answers.
  const FileDescriptor out(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  if (!out.is_open() || ::dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
    std::perror("pathdesk: standard output");
    return exit_code::not_run;
  }
  const LineSource source{
      .name = "conversation", .place = {}, .folder = std::filesystem::current_path(), .stop_on_error = false};
  return with_runner(options, source, [&](LineRunner& runner) { return Conversation(runner, out.get()).run(); });
}

}  // namespace pathstat::desk
