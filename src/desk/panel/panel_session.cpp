#include "desk/panel/panel_session.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>
#include <utility>

#include "desk/advice/word_table.h"
#include "desk/cli/completion.h"
#include "desk/cli/typed_line.h"
#include "desk/graphs/pictures.h"
#include "desk/panel/panel_messages.h"
#include "desk/report/result_folder.h"
#include "desk/script/file_content.h"
#include "desk/script/interrupts.h"
#include "desk/script/script_run.h"
#include "desk/script/words_body.h"
#include "desk/summary/figure_notes.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using nlohmann::json;

constexpr std::size_t most_log_lines = 5000;
// Frames that step by faster than a browser shows them would only take its time.
constexpr auto between_frames = std::chrono::milliseconds(25);

constexpr std::array told_names{"result", "table", "complaint"};

struct ExportFormat {
  std::string_view name;
  std::string_view type;
  bool PictureKinds::*picture;  ///< null for the table of points
};
constexpr std::array export_formats{ExportFormat{"svg", "image/svg+xml", &PictureKinds::svg},
                                    ExportFormat{"png", "image/png", &PictureKinds::png},
                                    ExportFormat{"tsv", "text/tab-separated-values; charset=utf-8", nullptr}};

}  // namespace

PanelSession::PanelSession(LineRunner& runner, PageServer& server, PageRequests& requests, Downloads& downloads,
                           const StartFolder& folder, fs::path scratch)
    : runner_(runner),
      server_(server),
      requests_(requests),
      downloads_(downloads),
      folder_(folder),
      scratch_(std::move(scratch)),
      view_(runner, server) {
  runner_.console().lead_to(
      {.told = [this](Told kind,
                      std::string_view text) { tell_log(told_names.at(static_cast<std::size_t>(kind)), text); },
       .progress =
           [this](double fraction) {
             progress_ = fraction;
             if (fraction >= 1) tell_progress();
           },
       .status =
           [this](std::string_view text) {
             tell("status", {{"type", "status"}, {"text", text}});
           }});
  runner_.answer_with([this](const Question& question) { return ask(question); });
  runner_.watch_with({.working =
                          [this] {
                            if (view_.look_now_and_then()) tell_progress();
                            serve_beside_line();
                          },
                      .frame =
                          [this, last = Clock::time_point{}](const std::string& text) mutable {
                            tell("frame", {{"type", "frame"}, {"text", text}});
                            std::this_thread::sleep_until(last + between_frames);
                            last = Clock::now();
                          }});
}

PanelSession::~PanelSession() { runner_.forget_owner(); }

int PanelSession::run(const std::vector<ScriptLine>& first_lines) {
  static const auto words = text_message(words_body());  // the same for every session, and long to make
  server_.publish("words", Keep::only, words);
  tell("folder", {{"type", "folder"}, {"path", folder_.path().string()}});
  tell("question", {{"type", "question"}, {"id", 0}});
  for (const auto& line : first_lines) {
    if (ended_) break;
    number_ = std::max(number_, line.number);
    run_line(line);
  }
  while (!ended_ && interrupts() == 0) {
    if (const auto request = requests_.next()) serve(*request);
  }
  tell("ended", {{"type", "ended"}});
  return code_;
}

void PanelSession::serve(const PageRequest& request) {
  if (request.what == "line") return take_line(request.text("text"));
  if (request.what == "watch") {
    watch(request);
    return refresh_values();
  }
  if (request.what == "complete") return complete(request, false);
  if (request.what == "script") return take_script(request);
  if (request.what == "export") return export_graph(request);
  if (request.what == "save") return save_history(request);
}

void PanelSession::serve_beside_line() {
  while (const auto request = requests_.next_beside_line()) {
    if (request->what == "complete")
      complete(*request, true);
    else
      watch(*request);  // the values follow when the line has ended
  }
}

void PanelSession::take_line(const std::string& text) {
  const auto typed = read_typed_line(text, ++number_, runner_.groups());
  if (typed.ends) return end(code_);
  if (!typed.help.empty()) {
    tell_log("entry", text);
    return tell_log("help", typed.help);
  }
  auto problem = typed.problem;
  if (typed.line && problem.empty()) problem = folder_.refusal(*typed.line);
  if (!problem.empty()) {
    tell_log("entry", text);
    return tell_log("complaint", problem);
  }
  if (typed.line) run_line(*typed.line);
}

/// Runs the lines of a script below the start folder, up to the first one that fails or is stopped. Paths in it count
/// from the start folder.
void PanelSession::take_script(const PageRequest& request) {
  const auto name = request.text("path");
  const auto path = folder_.inside(name);
  std::error_code error;
  if (name.empty() || !path || !fs::is_regular_file(*path, error)) {
    return tell_log("complaint", fmt::format("\"{}\" is no script below {}", name, folder_.path().string()));
  }
  std::string text;
  if (const auto why = read_script_text(*path, text); !why.empty())
    return tell_log("complaint", fmt::format("{} cannot be read: {}", name, why));
  const auto script = read_script(text, number_ + 1, runner_.groups());
  for (const auto& problem : script.problems) tell_log("complaint", fmt::format("{}: {}", name, problem));
  if (!script.problems.empty()) return;
  for (const auto& line : script.lines) {
    number_ = std::max(number_, line.number);
    if (const auto problem = folder_.refusal(line); !problem.empty()) return tell_log("complaint", problem);
    run_line(line);
    if (ended_ || !history_.back().done) return;
  }
}

void PanelSession::run_line(const ScriptLine& line) {
  const bool steps = line.kind == LineKind::step;
  history_.push_back({.text = line.text, .answers = {}});
  tell_log("entry", line.text);
  tell_line(line, "runs", line.text, 0);
  requests_.line_begins(steps);
  const auto start = Clock::now();
  const auto end = runner_.run(line);
  const std::chrono::duration<double> seconds = Clock::now() - start;
  const bool by_page = requests_.line_ends() >= interrupts();
  auto& past = history_.back();
  if (steps) {
    past.text = fmt::format("@step {} {}", line.words[0], std::max(runner_.steps(), 1));
  }
  past.done = end == LineEnd::done || (steps && end == LineEnd::interrupted);
  constexpr std::array states{"done", "failed", "interrupted", "done", "lost"};
  tell_line(line, past.done ? "done" : states.at(static_cast<std::size_t>(end)), past.text, seconds.count());
  tell("status", {{"type", "status"}, {"text", ""}});
  if (end == LineEnd::interrupted && !by_page) return this->end(exit_code::interrupted);
  follow(end, steps);
  if (ended_) return;
  view_.look();
  refresh_values();
}

void PanelSession::follow(LineEnd end, bool only_steps) {
  if (end == LineEnd::interrupted) {
    forget_interrupts();
    if (!only_steps) tell_log("complaint", "interrupted; what is done is kept");
  }
  if (end == LineEnd::stopped) return this->end(exit_code::success);
  if (runner_.lost()) return start_again();
  if (end == LineEnd::failed && runner_.stops_on_error()) this->end(exit_code::command_failed);
}

void PanelSession::start_again() {
  tell_log("complaint", "pathstat was lost: another one is started");
  const auto problem = runner_.start_again();
  if (problem.empty()) return;
  tell_log("complaint", "no other pathstat: " + problem);
  runner_.end_with(runner_.loss());
  end(exit_code::process_lost);
}

void PanelSession::end(int code) {
  ended_ = true;
  code_ = code;
}

/// Asks the pages. When the line is stopped instead, the last choice is taken, which changes the least.
std::optional<std::int32_t> PanelSession::ask(const Question& question) {
  const auto count = static_cast<std::int32_t>(question.choices.size());
  if (count == 0) return std::nullopt;
  view_.look();
  const auto usual = question.unsettled < 1 ? count : question.unsettled;
  tell("question", {{"type", "question"},
                    {"id", requests_.new_question()},
                    {"text", question.text},
                    {"choices", question.choices},
                    {"usual", usual}});
  const auto answer = requests_.wait_for_answer();
  tell("question", {{"type", "question"}, {"id", 0}});
  const auto choice = std::clamp(answer.value_or(count), 1, count);
  history_.back().answers.push_back(fmt::format("@answer {} {}", question.key, choice));
  return choice;
}

void PanelSession::watch(const PageRequest& request) {
  const auto words = request.body.find("words");
  if (words == request.body.end() || !words->is_array()) return;
  for (const auto& word : *words) {
    if (word.is_string() && find_command_help(word.get<std::string>())) watched_.insert(word.get<std::string>());
  }
}

/// Tells the values and ranges of the watched words where they are not as they were.
void PanelSession::refresh_values() {
  if (watched_.empty() || runner_.lost()) return;
  const std::vector<std::string> words(watched_.begin(), watched_.end());
  const auto answers = runner_.values(words);
  if (!answers) return;
  for (std::size_t k = 0; k < words.size(); ++k) {
    auto message = text_message(values_body(words[k], (*answers)[k]));
    auto& told = told_values_[words[k]];
    if (told == message.bytes) continue;
    told = message.bytes;
    server_.publish("values " + words[k], Keep::only, std::move(message));
  }
}

void PanelSession::complete(const PageRequest& request, bool line_runs) {
  const auto [before, begun, from, mark] = last_word(request.text("before"));
  const auto completion =
      completion_of(before, begun,
                    {.allowed_values =
                         [&](const std::string& word) {
                           return line_runs ? std::vector<std::string>{} : runner_.allowed_values(word);
                         },
                     .graphs = [&] { return runner_.graph_names(); },
                     .models = [&] { return runner_.model_names(); },
                     .groups = [&] { return group_names(runner_.groups()); }});
  auto candidates = completion.candidates;
  if (completion.files) {
    const auto folder = fs::path(begun).parent_path();
    for (const auto& entry : folder_.list(folder.string()).value_or(std::vector<StartFolder::Entry>{})) {
      auto name = (folder / entry.name).string() + (entry.kind == "folder" ? "/" : "");
      if ((entry.kind == "folder" || entry.kind == "trajectory") && name.starts_with(begun)) {
        candidates.push_back(std::move(name));
      }
    }
  }
  reply(request.page, {{"type", "completion"},
                       {"tag", request.number("tag")},
                       {"begun", begun},
                       {"from", from},
                       {"candidates", candidates}});
}

/// What a page shows in one plot: a graph, the curves of others laid over it, and the range of x if it is zoomed.
std::optional<Figure> PanelSession::figure_for(const PageRequest& request) const {
  std::optional<Figure> whole;
  auto figures = figures_of(runner_.graphs());
  const auto wanted = request.body.value("graphs", std::vector<std::int32_t>{});
  for (const auto graph : wanted) {
    const auto found =
        std::find_if(figures.begin(), figures.end(), [&](const auto& each) { return each.graph == graph; });
    if (found == figures.end()) continue;
    if (!whole) {
      annotate({&*found, 1});
      whole = *found;
      continue;
    }
    for (auto curve : found->curves) {
      curve.label = fmt::format("{} {}", found->heading, curve.label);
      whole->curves.push_back(std::move(curve));
    }
  }
  const auto range = request.body.value("range", std::vector<float>{});
  if (whole && range.size() == 2 && range[0] < range[1]) whole->x_range = PlotPoint{range[0], range[1]};
  return whole;
}

void PanelSession::export_graph(const PageRequest& request) {
  const auto wanted = request.text("format");
  const auto* format =
      std::find_if(export_formats.begin(), export_formats.end(), [&](const auto& row) { return row.name == wanted; });
  std::optional<Figure> figure;
  try {
    figure = figure_for(request);
  } catch (const json::exception&) {
    return;  // no request of our page
  }
  if (format == export_formats.end() || !figure) return;
  const auto file = fmt::format("{}.{}", figure->name, format->name);
  std::string bytes, problem;
  if (format->picture) {
    PictureKinds kinds;
    kinds.*(format->picture) = true;
    problem = draw_pictures(std::span(&*figure, 1), kinds, scratch_);
    if (problem.empty()) read_content(scratch_ / file, bytes);
  } else {
    bytes = points_table(*figure);
  }
  if (problem.empty() && bytes.empty()) problem = "there is nothing to draw in " + figure->heading;
  if (!problem.empty()) return tell_log("complaint", problem);
  const auto path = downloads_.add({std::string(format->type), std::move(bytes), file});
  reply(request.page, {{"type", "download"}, {"path", path}, {"name", file}});
}

/// Writes the lines that went well as a script into the start folder, with the answers that were given to dialogs.
void PanelSession::save_history(const PageRequest& request) {
  const auto name = request.text("name");
  const auto path = folder_.inside(name);
  std::string problem;
  std::error_code error;
  if (name.empty() || !path || fs::is_directory(*path, error)) {
    problem = fmt::format("\"{}\" is not the name of a file below {}", name, folder_.path().string());
  } else if (fs::exists(*path, error) && request.text("replace") != "yes") {
    problem = "exists";
  } else {
    std::string script;
    for (const auto& line : history_) {
      if (!line.done) continue;
      for (const auto& answer : line.answers) script += answer + '\n';
      script += line.text + '\n';
    }
    ResultFolder place(path->parent_path());
    if (!place.write(path->filename(), script)) problem = fmt::format("{}", fmt::join(place.take_problems(), "\n"));
  }
  reply(request.page, {{"type", "saved"}, {"name", name}, {"problem", problem}});
}

void PanelSession::tell(const char* topic, const json& body) { server_.publish(topic, Keep::only, text_message(body)); }

void PanelSession::tell_log(std::string_view kind, std::string_view text) {
  server_.publish("log", Keep::behind, text_message({{"type", "log"}, {"kind", kind}, {"text", text}}), most_log_lines);
}

void PanelSession::tell_line(const ScriptLine& line, std::string_view state, const std::string& text, double seconds) {
  const auto count = history_.size();
  server_.publish(
      fmt::format("line {}", count), Keep::only,
      text_message({{"type", "line"}, {"number", count}, {"text", text}, {"state", state}, {"seconds", seconds}}));
  const bool runs = state == "runs";
  tell("busy", {{"type", "busy"}, {"text", runs ? line.text : ""}, {"waiting", requests_.waiting_lines()}});
  if (!runs) return;
  progress_ = 0;
  tell_progress();
}

void PanelSession::tell_progress() { tell("progress", {{"type", "progress"}, {"fraction", progress_}}); }

void PanelSession::reply(PageId page, const json& body) { server_.send(page, text_message(body)); }

}  // namespace pathstat::desk
