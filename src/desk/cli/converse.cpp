#include "desk/cli/converse.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "desk/advice/word_groups.h"
#include "desk/advice/word_table.h"
#include "desk/cli/typed_line.h"
#include "desk/graphs/figure.h"
#include "desk/script/answer_text.h"
#include "desk/script/interrupts.h"

namespace pathstat::desk {
namespace {

using nlohmann::json;

constexpr std::array told_names{"result", "table", "complaint"};
constexpr std::array end_names{"done", "failed", "interrupted", "stopped", "lost"};
constexpr std::size_t longest_request = 1 << 20;

json words_of_program() {
  auto list = json::array();
  for (const auto& group : word_groups()) {
    for (const auto* row : group.words) {
      list.push_back({{"word", row->word},
                      {"group", group.name},
                      {"arguments", row->arguments},
                      {"meaning", row->meaning},
                      {"needs", row->needs},
                      {"setting", is_setting(*row)}});
    }
  }
  return list;
}

json curve_of(const Curve& curve) {
  auto x = json::array(), y = json::array();
  for (const auto& point : *curve.points) {
    x.push_back(point.x);
    y.push_back(point.y);
  }
  return {{"label", curve.label}, {"x", std::move(x)}, {"y", std::move(y)}};
}

json figure_of(const Figure& figure) {
  auto curves = json::array();
  for (const auto& curve : figure.curves) curves.push_back(curve_of(curve));
  return {{"name", figure.title},     {"heading", figure.heading}, {"file", figure.name},
          {"x_label", figure.x_text}, {"y_label", figure.y_text},  {"curves", std::move(curves)}};
}

class Conversation {
 public:
  Conversation(LineRunner& runner, std::FILE* out) : runner_(runner), out_(out) {
    runner_.console().lead_to(
        {.told =
             [this](Told kind, std::string_view text) {
               told_.push_back({{"kind", told_names.at(static_cast<std::size_t>(kind))}, {"text", text}});
             },
         .progress = [](double) {},
         .status = [](std::string_view) {}});
  }

  int run() {
    std::string text;
    while (!ended_ && interrupts() < 2 && std::getline(std::cin, text)) {
      forget_interrupts();
      send(answer_to(text));
    }
    runner_.console().lead_to({});
    return code_;
  }

 private:
  json answer_to(const std::string& text) {
    const auto request = text.size() <= longest_request ? json::parse(text, nullptr, false) : json();
    const auto line = request.is_object() ? request.find("line") : request.end();
    if (request.is_object() && request.contains("words")) return {{"end", "done"}, {"words", words_of_program()}};
    if (request.is_object() && request.contains("frame")) return frame();
    if (request.is_object() && request.contains("values")) return values(request["values"]);
    if (!request.is_object() || line == request.end() || !line->is_string()) {
      return {{"end", "refused"}, {"problem", "a request is an object with line, values, words or frame"}};
    }
    return run_line(line->get<std::string>());
  }

  json run_line(const std::string& text) {
    const auto typed = read_typed_line(text, ++number_, runner_.groups());
    if (!typed.problem.empty()) return {{"end", "refused"}, {"problem", typed.problem}};
    ended_ = typed.ends;
    json body{{"end", "done"}};
    if (!typed.help.empty()) told_.push_back({{"kind", "result"}, {"text", typed.help}});
    if (typed.line) {
      const auto end = runner_.run(*typed.line);
      body["end"] = end_names.at(static_cast<std::size_t>(end));
      if (end == LineEnd::stopped) ended_ = true;
      if (runner_.lost()) {
        code_ = exit_code::process_lost;
        ended_ = true;
        runner_.end_with(runner_.loss());
        body["end"] = "lost";
        body["problem"] = runner_.loss();
      }
    }
    body["told"] = std::exchange(told_, json::array());
    body["graphs"] = changed_graphs();
    return body;
  }

  json changed_graphs() {
    auto list = json::array();
    for (const auto& figure : figures_of(runner_.graphs())) {
      const auto revision = runner_.graphs().revision(figure.graph);
      auto& sent = sent_[figure.graph];
      if (sent == revision) continue;
      sent = revision;
      list.push_back(figure_of(figure));
    }
    return list;
  }

  json values(const json& words) {
    std::vector<std::string> names;
    for (const auto& word : words) {
      if (word.is_string() && find_command_help(word.get<std::string>())) names.push_back(word.get<std::string>());
    }
    const auto answers = runner_.values(names);
    if (!answers) return {{"end", "lost"}, {"problem", runner_.loss()}};
    auto body = json::object();
    for (std::size_t k = 0; k < names.size(); ++k) {
      body[names[k]] = {{"values", items_of((*answers)[k].values)}, {"ranges", items_of((*answers)[k].ranges)}};
    }
    return {{"end", "done"}, {"values", std::move(body)}};
  }

  /// The current model: positions, names and cell.
  json frame() {
    const auto* model = runner_.models().find_model(runner_.models().current_model());
    if (model == nullptr) return {{"end", "refused"}, {"problem", "no model is loaded"}};
    const auto& data = model->data;
    auto names = json::array(), elements = json::array();
    for (std::size_t k = 0; k < data.positions.size(); ++k) {
      names.push_back(k < data.names.size() ? data.names[k] : std::string_view());
      elements.push_back(data.elements[k]);
    }
    return {{"end", "done"},
            {"positions", data.positions},
            {"cell", data.cell},
            {"names", std::move(names)},
            {"elements", std::move(elements)}};
  }

  void send(const json& body) {
    const auto text = body.dump(-1, ' ', false, json::error_handler_t::replace) + '\n';
    if (std::fwrite(text.data(), 1, text.size(), out_) != text.size() || std::fflush(out_) != 0) ended_ = true;
  }

  LineRunner& runner_;
  std::FILE* out_;
  json told_ = json::array();
  std::map<std::int32_t, std::uint64_t> sent_;  ///< revisions of graphs
  int number_ = 0;
  int code_ = exit_code::success;
  bool ended_ = false;
};

}  // namespace

int run_converse(const RunOptions& options) {
  // What is told of the run as a whole must not stand among the answers.
  const int own = ::dup(STDOUT_FILENO);
  std::FILE* out = own < 0 ? nullptr : ::fdopen(own, "w");
  if (out == nullptr || ::dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
    std::perror("pathdesk: standard output");
    return exit_code::not_run;
  }
  const LineSource source{
      .name = "conversation", .place = {}, .folder = std::filesystem::current_path(), .stop_on_error = false};
  const int code = with_runner(options, source, [&](LineRunner& runner) { return Conversation(runner, out).run(); });
  std::fclose(out);
  return code;
}

}  // namespace pathstat::desk
