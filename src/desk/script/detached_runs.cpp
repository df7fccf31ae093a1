// The lines @detach and @attach.
#include <fmt/format.h>

#include <utility>

#include "desk/link/folder_content.h"
#include "desk/link/reconnection.h"
#include "desk/script/interrupts.h"
#include "desk/script/kept_graphs.h"
#include "desk/script/line_runner.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t seconds_of_a_week = 7 * 24 * 3600;

bool lies_in(const fs::path& path, const fs::path& folder) {
  const auto relative = path.lexically_relative(folder);
  return !relative.empty() && *relative.begin() != "..";
}

}  // namespace

/// The answer to the process that asks for an interrupt: a point where it can be told something.
bool LineRunner::is_interrupted() {
  if (std::exchange(detaches_, false)) session_.tell_to_detach(seconds_of_a_week);
  return interrupts() > 0;
}

KeptSession LineRunner::kept_session(const ScriptLine& command) const {
  KeptSession kept{.process = session_.process_id(),
                   .started = start_of_process(session_.process_id()),
                   .work = place_.work,
                   .shown = session_.shown_output(),
                   .drawn = seen_graphs_,
                   .selection = selection_,
                   .running = command.text,
                   .settings = {},
                   .tables = {}};
  for (const auto& line : settings_) {
    auto text = line;
    text.arguments = with_resolved_path(line.word, line.arguments, source_.folder);
    kept.settings.push_back(text.word + " " + text.arguments);
  }
  for (const auto& table : tables_) kept.tables.push_back(table.filename());
  return kept;
}

std::string LineRunner::detach(const ScriptLine& line) {
  constexpr std::string_view name = "@detach";
  const auto script = read_script(std::string_view(line.text).substr(name.size()), line.number);
  const auto command = script.lines.empty() ? ScriptLine{} : script.lines.front();
  if (!script.problems.empty()) return script.problems.front();
  const auto process = session_.process_id();
  const auto folder = kept_folder(process);
  const bool again = folder == adopted_folder_;
  if (!again) {
    if (auto problem = make_kept_folder(process); !problem.empty()) return problem;
  }
  // Before anything is asked of the process: what can't be kept is not left behind.
  auto problem = keep_models(model_, folder);
  if (problem.empty()) problem = leave(command, folder);
  if (!problem.empty() && !again) remove_tree(folder);
  return problem;
}

std::string LineRunner::leave(const ScriptLine& command, const fs::path& folder) {
  auto running = command;
  if (!command.word.empty()) {
    detaches_ = true;
    auto problem = send(command.word, with_resolved_path(command.word, command.arguments, source_.folder));
    if (!session_.detached()) {
      if (session_.lost()) return problem;
      running = {};
      if (!problem.empty()) take_message({MessageKind::warning, 1, {}, {}, problem});
    }
  }
  if (command.word.empty() || std::exchange(detaches_, false)) session_.tell_to_detach(seconds_of_a_week);
  if (!session_.part()) return session_.loss();

  const auto process = session_.process_id();
  std::error_code failure;
  if (lies_in(place_.work, place_.private_folder)) {
    fs::rename(place_.work, folder / "work", failure);
    if (failure) return fmt::format("the work folder of process {} can't be kept: {}", process, failure.message());
    place_.work = folder / "work";
  }
  auto problem = keep_models(model_, folder);
  if (problem.empty()) problem = keep_graphs(store_, folder);
  if (problem.empty()) problem = keep_session(kept_session(running), folder);
  if (!problem.empty()) return problem;
  adopted_folder_.clear();
  stopped_ = true;
  take_returned(fmt::format("pathstat {} as process {}; @attach {} in another run takes it over",
                            running.word.empty() ? "waits" : "works on", process, process));
  return {};
}

std::string LineRunner::attach(const std::vector<std::string>& words) {
  if (!model_.models().empty() || store_.info(1)) {
    return "this run has models or graphs of its own: @attach comes ahead of them";
  }
  KeptSession kept;
  if (auto problem = claim_session(words.empty() ? 0 : std::stoi(words[0]), kept); !problem.empty()) return problem;
  session_.finish();
  console_.show_status(fmt::format("Waiting for process {}", kept.process));
  if (auto problem = session_.attach(kept.process, kept.work / "pathstat.out", kept.shown); !problem.empty()) {
    give_back_session(kept.process);
    return problem;
  }
  return take_over(kept);
}

std::string LineRunner::take_over(const KeptSession& kept) {
  adopted_folder_ = kept_folder(kept.process);
  place_.work = kept.work;
  work_started_ = fs::file_time_type::min();
  model_.set_folder(kept.work);
  selection_ = kept.selection;
  if (auto problem = read_kept_graphs(adopted_folder_, store_); !problem.empty()) return problem;
  seen_graphs_ = kept.drawn;
  if (auto problem = read_kept_models(adopted_folder_, model_); !problem.empty()) return problem;
  for (const auto& text : kept.settings) {
    for (auto& line : read_script(text).lines) settings_.push_back(std::move(line));
  }
  for (const auto& table : kept.tables) tables_.insert(place_.work / table);
  take_returned(fmt::format("pathstat is process {}{}", kept.process,
                            kept.running.empty() ? "" : ", which works on " + kept.running));
  const auto lines = read_script(kept.running).lines;
  if (lines.empty()) return {};
  resumed_ = lines.front();
  const auto& line = resumed_;
  const auto status = session_.resume();
  if (!status) return fmt::format("{} did not end: {}", line.word, session_.loss());
  record_.steps.back().status = *status;
  if (*status != 0) return fmt::format("{} failed with status {}", line.word, *status);
  advise(line.word, line.arguments);
  keep_setting(line);
  return {};
}

}  // namespace pathstat::desk
