#include "desk/script/line_runner.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

#include "desk/advice/word_table.h"
#include "desk/graphs/figure.h"
#include "desk/graphs/overlay.h"
#include "desk/graphs/plot_operations.h"
#include "desk/import/import_line.h"
#include "desk/link/folder_content.h"
#include "desk/link/work_directory.h"
#include "desk/messages/visible_text.h"
#include "desk/ops/model_operations.h"
#include "desk/report/model_text.h"
#include "desk/report/printed_unit.h"
#include "desk/script/answer_text.h"
#include "desk/script/file_content.h"
#include "desk/script/interrupts.h"
#include "desk/summary/coordination_graph.h"
#include "desk/summary/diffusion_error.h"
#include "desk/summary/neighbour_density.h"
#include "structure/elements.h"
#include "support/memory_watch.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

/// How the words of the stepping panel begin, and the words that this panel shows.
constexpr std::string_view stepping_panel = "AnalAnim";
const std::array<std::string, 4> stepping_words{"CURRENT_FRAME_NUMBER", "CURRENT_FRAME_TIME", "FRAME_STEP_FORWARDS",
                                                "FRAME_STEP_BACKWARDS"};

/// The class of modal states that says what a click on a graph does, and its state while it shows a frame.
constexpr std::int32_t click_class = 9;
constexpr std::string_view click_shows_frame = "ANALYSIS_PICK";

/// Of a line in front of its progress.
constexpr const char* no_memory = "there is not enough memory for this line";
constexpr std::size_t most_shown = 60;

double seconds_since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

std::string indented(std::string_view text) {
  std::string all = "    ";
  for (const char c : text) all += c == '\n' ? std::string("\n    ") : std::string(1, c);
  return all;
}

/// What the process prints where it starts, ends, and leaves and takes up the connection.
constexpr std::array<std::string_view, 4> start_and_end_lines{
    "pathstat  :  revision", "Close external process: ", "Application (", "Caught SIGUSR1 signal"};

/// What the process says where the desk, which reads and writes the file, has told what is wrong with it.
bool says_file_failed(std::string_view key) {
  return key == "STRUCTURE_IMPORT_FAILED" || key == "STRUCTURE_EXPORT_FAILED";
}

/// Statuses of arguments that are beyond a range, no choice, or missing: all that is told of them is one trouble.
bool is_about_argument(std::int32_t status) { return status >= 1001 && status <= 1008; }

std::string first_value(const WordAnswer& answer) {
  return answer.values.empty() ? std::string{} : without_blanks(answer.values.front());
}

/// "Frame 12 of the range, 0.55 ps", from the answers of the stepping panel's words; empty where there is no frame.
std::string frame_text(const std::vector<WordAnswer>& answers) {
  const auto number = first_value(answers[0]), time = first_value(answers[1]);
  if (number.empty()) return {};
  auto text = fmt::format("Frame {} of the range", number);
  double picoseconds = 0;
  const auto [end, status] = std::from_chars(time.data(), time.data() + time.size(), picoseconds);
  if (status == std::errc{} && !time.empty()) text += fmt::format(", {:.6g} ps", picoseconds);
  if (first_value(answers[2]) == "Y") text += ", stepping forwards";
  if (first_value(answers[3]) == "Y") text += ", stepping backwards";
  return text;
}

/// True for an analysis that works on one frame after the other, so that its progress counts them.
bool works_by_frames(std::string_view word) {
  constexpr std::array<std::string_view, 8> words{"PROFILE",      "DISTRIBUTION", "RUNNING_AVERAGE", "BLOCK_AVERAGE",
                                                  "FIND_EXTREMA", "FIND_MAXIMA",  "FIND_MINIMA",     "RDF"};
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::string_view bare_trajectory_name(std::string_view name) {
  constexpr std::string_view extension = ".trj";
  if (name.ends_with(extension)) name.remove_suffix(extension.size());
  return name;
}

}  // namespace

LineRunner::LineRunner(LineSource source, const RunPlace& place)
    : source_(std::move(source)),
      place_(place),
      work_started_(fs::file_time_type::clock::now() - std::chrono::seconds(1)),
      interface_(events()),
      session_(
          server_, [this](std::string_view line) { take_line(line); }, [] { return interrupts() >= 2; },
          [this](const std::string& text) { console_.complain("pathdesk: " + text); }),
      output_({.folder = place.output, .formats = place.formats, .scratch = place.private_folder}),
      adviser_(state_sources()),
      atoms_(
          model_, [this](const std::string& text) { take_returned(text); },
          [this](std::string text) {
            take_message({MessageKind::warning, 1, {}, {}, std::move(text)});
          }),
      stop_on_error_(source_.stop_on_error) {
  record_.script = source_.name;
  record_.program = place.program;
  record_.started = fmt::format("{:%Y-%m-%d %H:%M:%S}", fmt::localtime(std::time(nullptr)));
  model_.set_folder(place.work);
  model_.set_problem_sink([this](const std::string& text) { take_message({MessageKind::error, 2, {}, {}, text}); });
  register_data_model_operations(server_, model_);
  register_analysis_operations(server_, model_);
  register_interface_operations(server_, interface_);
  register_plot_operations(server_, store_);
}

InterfaceEvents LineRunner::events() {
  return {.message = [this](const Message& message) { take_message(message); },
          .progress =
              [this](double fraction) {
                done_ = fraction;
                console_.show_progress(fraction);
                work_goes_on();
              },
          .status = [this](const std::string& text) { console_.show_status(text); },
          .returned = [this](const std::string& text) { take_returned(text); },
          .interrupted =
              [this] {
                work_goes_on();
                told_to_stop_ = is_interrupted();
                return told_to_stop_;
              },
          .repeats_end = [this] { repeats_ended_ = true; },
          .choose =
              [this](const Question& question) {
                console_.clear();
                return choose_ ? choose_(question) : std::nullopt;
              },
          .values_changed = [this](const std::string& words) { refresh_values(words); }};
}

std::string LineRunner::start() {
  return session_.start({place_.program, place_.work, place_.private_folder, place_.protocol});
}

void LineRunner::take_message(Message message) {
  if (asked_) return;
  const auto is_error = [](const Message& held) { return held.kind == MessageKind::error; };
  if (says_file_failed(message.key) && std::any_of(held_.begin(), held_.end(), is_error)) return;
  if (auto text = constant_in_words(message)) message.text = std::move(*text);
  record_.note(message);
  const bool held = message.kind == MessageKind::error || message.kind == MessageKind::warning;
  if (held)
    held_.push_back(message);
  else
    console_.print(message.text, message.kind == MessageKind::table ? Told::table : Told::result);
}

void LineRunner::work_goes_on() const {
  if (watcher_.working) watcher_.working();
}

void LineRunner::take_line(std::string_view line) {
  const auto begins = [&](std::string_view start) { return line.starts_with(start); };
  if (!place_.verbose && std::any_of(start_and_end_lines.begin(), start_and_end_lines.end(), begins)) return;
  const auto text = with_unit(line);
  record_.note(PrintedLine{text});
  console_.print(text);
}

void LineRunner::take_returned(const std::string& text) {
  if (asked_) {
    *asked_ = text;
    return;
  }
  record_.note(ReturnedText{text});
  console_.print(text);
}

/// Asks again for the values of a panel that the process has called out of date: nested, while its call waits.
void LineRunner::refresh_values(std::string_view words) {
  if (!words.starts_with(stepping_panel)) return;
  ask_frame();
  if (frame_) console_.show_status(*frame_);
  work_goes_on();
}

void LineRunner::ask_frame() {
  const auto answers = session_.request(stepping_words);
  frame_.reset();
  if (!answers) return;
  if (auto text = frame_text(*answers); !text.empty()) frame_ = std::move(text);
  if (frame_ && watcher_.frame) watcher_.frame(*frame_);
}

void LineRunner::write_pictures() {
  for (const auto& files : output_.write_graphs(store_)) console_.print("Wrote " + visible(files));
  for (const auto& files : output_.write_surfaces(model_.surfaces())) console_.print("Wrote " + visible(files));
  for (const auto& problem : output_.take_problems()) console_.complain("pathdesk: " + visible(problem));
}

LineEnd LineRunner::run(const ScriptLine& line) {
  record_.steps.push_back({.line = line.number,
                           .text = shortened(line.text, most_characters),
                           .status = {},
                           .notes = {},
                           .graphs = {},
                           .surfaces = {}});
  held_.clear();
  frame_.reset();
  done_ = 0;
  told_to_stop_ = false;
  console_.set_activity(shortened(line.text, most_shown));
  const auto start = Clock::now();
  const auto work_so_far = fs::file_time_type::clock::now();
  auto problem = within_memory_of_line([&] { return run_kind(line); });
  const auto account = within_memory_of_line([&] { return take_account(line, problem, seconds_since(start)); });
  if (problem.empty()) problem = account;
  auto& step = record_.steps.back();
  const bool cut_short = session_.lost() && !stopped_;
  if (problem.empty() && cut_short) problem = session_.loss();
  if (cut_short || (interrupts() == 0 && !problem.empty())) withdraw_graphs(step);
  if (cut_short) work_ended_ = work_so_far;
  step.failed = !problem.empty();
  if (step.failed) {
    report_failure(line, problem);
  } else {
    for (const auto& message : held_) {
      told_error_ = told_error_ || message.kind == MessageKind::error;
      const auto* kind = message.kind == MessageKind::error ? "error" : "warning";
      console_.complain(fmt::format("{}{}: {}", where(line), kind, message.text));
    }
  }
  if (step.failed || !held_.empty()) {
    if (const auto full = full_disk(place_.work); !full.empty()) console_.complain("pathdesk: " + full);
  }
  const bool failed = step.failed;
  record_.end_line();
  if (source_.pictures_at_once) write_pictures();
  if (interrupts() > 0) return LineEnd::interrupted;
  if (stopped_) return LineEnd::stopped;
  if (session_.lost()) return LineEnd::lost;
  return failed ? LineEnd::failed : LineEnd::done;
}

/// Runs a part of a line. @return what went wrong, which may be that memory was wanting where it could go on with less
template <class Part>
std::string LineRunner::within_memory_of_line(const Part& part) {
  std::string problem;
  try {
    problem = part();
  } catch (const std::bad_alloc&) {
    problem = no_memory;
  }
  if (!take_memory_shortage()) return problem;
  return problem.empty() ? no_memory : problem + '\n' + indented(no_memory);
}

/// Notes what a line has drawn, and what there is to know of it.
std::string LineRunner::take_account(const ScriptLine& line, const std::string& problem, double seconds) {
  auto& step = record_.steps.back();
  step.seconds = seconds;
  record_.seconds += seconds;
  for (const auto graph : store_.shown_graphs()) {
    if (!seen_graphs_.contains(graph)) note_graph(step, graph);
  }
  console_.clear();
  if (line.kind == LineKind::select_atoms && problem.empty())
    selection_ = fmt::format("{}", fmt::join(line.words, " "));
  if (frame_ && problem.empty()) take_returned(*frame_);
  tell_surfaces(step);
  const bool by_process = line.kind != LineKind::overlay;
  if (by_process && !step.graphs.empty() && !session_.lost()) {
    const auto facts = facts_of(line.kind == LineKind::attach ? resumed_ : line);
    for (const auto graph : step.graphs) store_.set_facts(graph, facts);
    for (std::size_t k = 0; k < step.graphs.size(); ++k) {
      const auto added = add_coordination_graph(store_, step.graphs[k]);
      if (added != 0 && !seen_graphs_.contains(added)) note_graph(step, added);
    }
  }
  if (by_process) tell_missing_numbers(step);
  if (interrupts() > 0) mark_interrupted(step, line);
  return {};
}

/// Positions or velocities of a frame that are no numbers make whole curves such. Of a profile, which may lack values
/// by right, the summary tells it.
void LineRunner::tell_missing_numbers(const StepRecord& step) {
  for (const auto graph : step.graphs) {
    std::size_t missing = 0, all = 0;
    for (const auto set : store_.graph(graph)->sets) {
      const auto& points = store_.data_set(set)->points;
      all += points.size();
      missing += static_cast<std::size_t>(
          std::ranges::count_if(points, [](const PlotPoint& point) { return !std::isfinite(point.y); }));
    }
    const auto name = without_blanks(store_.info(graph)->name);
    if (missing == 0 || name.starts_with("Profile of")) continue;
    take_message(
        {MessageKind::warning, 1, {}, {}, fmt::format("{}: {} of {} values are no numbers", name, missing, all)});
  }
}

/// A file that the process may have left; one that is there and cannot be read is told.
std::string LineRunner::left_file(const fs::path& path, std::string_view what) {
  std::string content;
  if (!read_content(path, content) && errno != ENOENT) {
    take_message({MessageKind::warning,
                  1,
                  {},
                  {},
                  fmt::format("{} is left out: cannot read {}: {}", what, path.string(), std::strerror(errno))});
    content.clear();
  }
  return content;
}

/// What there is to know of the graphs that a line has drawn.
GraphFacts LineRunner::facts_of(const ScriptLine& line) {
  GraphFacts facts{
      .of = adviser_.made_of(line.word), .command = line.text, .settings = {}, .trajectory = {}, .fitted = {}};
  if (const auto at = facts.of.find("selected atoms"); at != std::string::npos && !selection_.empty()) {
    facts.of.insert(facts.of.find(',', at), fmt::format(" ({})", selection_));
  }
  for (const auto& setting : settings_) {
    if (setting.word == "TRAJECTORY") {
      facts.trajectory = setting.arguments;
    } else {
      facts.settings += (facts.settings.empty() ? "" : "; ") + setting.text;
    }
  }
  if (line.word == "LINEAR_FIT") {
    const auto from = number_in(first_value(ask_word("MIN_FIT_TIME")));
    const auto to = number_in(first_value(ask_word("MAX_FIT_TIME")));
    if (from && to)
      facts.fitted = fitted_window(left_file(place_.private_folder / origin_blocks_file, "the error"), *from, *to);
  }
  const auto* model = model_.model(model_.current_model());
  if (line.word == "RDF" && model) {
    const auto file = left_file(place_.work / "PathStat.rdf", "the number of neighbours");
    facts.density = neighbour_density(file, model->data.positions.size(), rdf_centres(model->data));
  }
  return facts;
}

/// Atoms of a model around which RDF counts neighbours; 0 if it counts something else.
std::size_t LineRunner::rdf_centres(const MolecularModel& model) {
  if (first_value(ask_word("RDF_NORMALIZATION")) != "PARTIAL") return 0;
  const auto sets = first_value(ask_word("RDF_BETWEEN"));
  if (sets == "ALL ATOMS") return model.positions.size();
  if (sets == "SELECTED") return model_.selected_atoms();
  const auto first = first_value(ask_word("RDF_TYPE"));
  if (sets == "ELEMENTS") {
    return static_cast<std::size_t>(std::ranges::count(model.elements, element_of_symbol(first)));
  }
  std::size_t count = 0;
  for (std::size_t k = 0; k < model.ff_types.size(); ++k) count += model.ff_types[k] == first ? 1 : 0;
  return count;
}

/// What stands in front of a sentence about a line; nothing for a line that is typed.
std::string LineRunner::where(const ScriptLine& line) const {
  return source_.place.empty() ? std::string{} : fmt::format("{}:{}: ", source_.place, line.number);
}

/// A message as the list of a failed command's messages shows it.
std::string LineRunner::in_full(const Message& message) const {
  if (!place_.verbose) return message.text;
  std::string line = message.key.empty() ? message.text : fmt::format("{}: {}", message.key, message.text);
  std::string arguments;
  for (const auto& argument : message.arguments) arguments += (arguments.empty() ? "" : ", ") + shown(argument);
  return arguments.empty() ? line : fmt::format("{} ({})", line, arguments);
}

/// Notes that a line has drawn a graph: in its own list first, so that it is withdrawn where memory ends in between.
void LineRunner::note_graph(StepRecord& step, std::int32_t graph) {
  step.graphs.push_back(graph);
  seen_graphs_.insert(graph);
}

/// Leaves out what a line that failed may only have begun to draw: a part of a curve looks like a whole one. Also where
/// memory ended before the graph was noted.
void LineRunner::withdraw_graphs(StepRecord& step) {
  const auto graphs = std::exchange(step.graphs, {});
  store_.withdraw_if([&](std::int32_t graph) {
    return !seen_graphs_.contains(graph) || std::find(graphs.begin(), graphs.end(), graph) != graphs.end();
  });
  std::vector<std::string> names;
  names.reserve(graphs.size());
  for (const auto graph : graphs) names.push_back(without_blanks(store_.info(graph)->name));
  if (names.empty()) return;
  take_message({MessageKind::warning, 1, {}, {}, fmt::format("left out, as not complete: {}", fmt::join(names, ", "))});
}

/// Says in the titles of the graphs and in the report how far an interrupted analysis has come. One that did not ask
/// whether to stop has come to its end.
void LineRunner::mark_interrupted(StepRecord& step, const ScriptLine& line) {
  if (session_.lost() || !told_to_stop_) return;
  const auto frames = number_in(without_blanks(ask_returned("NUMBER_OF_FRAMES_SELECTED")));
  std::string text = "interrupted after a part of the work";
  if (done_ < 1) {
    text = works_by_frames(line.word) && frames
               ? fmt::format("interrupted after {:.0f} of {:.0f} frames", done_ * *frames, *frames)
               : fmt::format("interrupted after {:.0f} % of the work", 100 * done_);
  }
  for (const auto graph : step.graphs) store_.set_remark(graph, text);
  take_message({MessageKind::warning, 1, {}, {}, fmt::format("{}: {}", line.word, text)});
}

void LineRunner::report_failure(const ScriptLine& line, const std::string& problem) {
  console_.complain(where(line) + problem);
  std::vector<std::string> texts;
  bool told = false;
  for (const auto& note : record_.steps.back().notes) {
    const auto* message = std::get_if<Message>(&note);
    // Tables and notes have been shown as they came.
    if (!message || message->kind == MessageKind::table || message->kind == MessageKind::note) continue;
    told = told || message->kind == MessageKind::error;
    auto text = in_full(*message);
    // Routines that call each other may all tell of the same thing.
    if (texts.empty() || text != texts.back()) texts.push_back(std::move(text));
  }
  // 1 is what any failure may end with.
  const auto status = record_.steps.back().status.value_or(0);
  const auto* row = !told && status > 1 ? find_status(status) : nullptr;
  if (row) texts.emplace_back(row->text);
  if (is_about_argument(status) && !texts.empty()) texts = {fmt::format("{}", fmt::join(texts, "; "))};
  for (const auto& text : texts) console_.complain(indented(text));
}

bool LineRunner::finish() {
  console_.clear();
  bool written = false;
  try {
    written = write_results();
  } catch (const std::bad_alloc&) {
    console_.complain("pathdesk: there is not enough memory for all results");
  }
  session_.finish();
  if (!adopted_folder_.empty()) remove_tree(adopted_folder_);
  return written;
}

bool LineRunner::write_results() {
  output_.forget_failed();
  output_.write_graphs(store_);
  output_.write_surfaces(model_.surfaces());
  std::string unseen;
  const auto says =
      output_.write_report(record_, store_, result_files(place_.work, {work_started_, work_ended_}, tables_, unseen));
  if (!says.empty()) console_.print("\nWhat the run says:");
  for (const auto& line : says) console_.print(line);
  auto problems = output_.take_problems();
  if (!unseen.empty()) problems.push_back(std::move(unseen));
  if (take_memory_shortage()) problems.emplace_back("there was not enough memory for all of it");
  for (const auto& problem : problems) console_.complain("pathdesk: " + visible(problem));
  const auto folder = visible(place_.output.string());
  if (problems.empty()) {
    console_.print(fmt::format("Results are in {}", folder));
  } else {
    console_.complain(fmt::format("pathdesk: the results in {} are not complete", folder));
  }
  const auto unheard = console_.take_problem();
  if (!unheard.empty()) console_.complain("pathdesk: " + unheard);
  return problems.empty() && unheard.empty();
}

std::string LineRunner::run_kind(const ScriptLine& line) {
  switch (line.kind) {
    case LineKind::command:
      return run_command(line);
    case LineKind::import:
      return bring_in(line);
    case LineKind::select_atoms:
      return atoms_.select(line);
    case LineKind::group:
      return atoms_.name_group(line);
    case LineKind::select_models:
      return model_.select_models(line.words);
    case LineKind::answer:
      return settle_answer(line.words);
    case LineKind::request:
      return request(line.words);
    case LineKind::show_model:
      return show_model();
    case LineKind::step:
      return step(line.words);
    case LineKind::pick:
      return pick(line.words);
    case LineKind::overlay:
      return make_overlay(store_, line.words[0], std::span(line.words).subspan(1));
    case LineKind::measure:
      return atoms_.measure(line.words);
    case LineKind::list_measures:
      return atoms_.list_measures();
    case LineKind::remove_measures:
      return atoms_.remove_measures(line.words[0]);
    case LineKind::detach:
      return detach(line);
    case LineKind::attach:
      return attach(line.words);
    case LineKind::stop_on_error:
      stop_on_error_ = line.words[0] == "yes";
      return {};
  }
  return {};
}

std::string LineRunner::run_command(const ScriptLine& line) {
  const auto arguments = arguments_of(line);
  if (line.word.size() > longest_text || arguments.size() > longest_text) return "this line is too long";
  const auto blocks = place_.private_folder / origin_blocks_file;
  std::error_code none;
  if (line.word == "MSD") fs::remove(blocks, none);
  auto problem = send(line.word, arguments);
  if (line.word == "MSD" && interrupts() > 0) fs::remove(blocks, none);  // they are not complete
  if (session_.lost()) stopped_ = line.word == "STOP" && session_.ended_well();
  if (stopped_) return {};
  if (line.word == "STATISTICS_FILENAME" && problem.empty()) note_result_file(line.word);
  if (line.word == "DENSITY" && problem.empty()) note_result_file("DENSITY_FILE");
  if (!session_.lost()) {
    if (interrupts() == 0)
      advise(line.word, arguments);
    else
      adviser_.note_interrupted(line.word);
  }
  if (problem.empty()) keep_setting(line);
  return problem;
}

/// The arguments of a command, with its path resolved: a trajectory that was brought in goes by its name.
std::string LineRunner::arguments_of(const ScriptLine& line) const {
  if (line.word == "TRAJECTORY" && !imports_.empty()) {
    const auto words = words_of(line.arguments);
    const auto found = words.empty() ? imports_.end() : imports_.find(std::string(bare_trajectory_name(words[0])));
    if (found != imports_.end()) return in_quotes(found->second.string());
  }
  return with_resolved_path(line.word, line.arguments, source_.folder);
}

std::string LineRunner::bring_in(const ScriptLine& line) {
  auto [name, options, problem] = read_import_line(line.words, source_.folder);
  if (!problem.empty()) return problem;
  options.output = place_.imports / name;
  bool kept = false;
  const auto result = keep_import(options, line.words,
                                  {.tell = [this](std::string_view text) { take_returned(std::string(text)); },
                                   .progress =
                                       [this](double share) {
                                         console_.show_progress(share);
                                         work_goes_on();
                                       }},
                                  kept);
  if (result.end == ImportEnd::interrupted) return "the import was interrupted; nothing is written";
  if (result.end == ImportEnd::failed) return result.problem;
  const auto path = fs::path(options.output).concat(".trj");
  if (kept) take_returned(fmt::format("{} is newer than the files it was made of", path.string()));
  auto& known = imports_[name];
  // pathstat keeps the model of a path that it loads again; under another spelling of it the new one comes in.
  known = kept || known != path ? path : path.parent_path() / "." / path.filename();
  const auto quoted = in_quotes(name);
  const auto choose = std::exchange(choose_, [](const Question&) -> std::optional<std::int32_t> {
    constexpr std::int32_t import_the_model_file = 1;
    return import_the_model_file;
  });
  auto failure = run_command({line.number, LineKind::command, "TRAJECTORY " + quoted, "TRAJECTORY", quoted, {}, {}});
  choose_ = choose;
  return failure;
}

/// Sends one command; the step keeps the first status that is not 0.
std::string LineRunner::send(std::string_view word, std::string_view arguments) {
  const auto status = session_.command(word, arguments);
  if (!status) return fmt::format("{} did not end: {}", word, session_.loss());
  auto& kept = record_.steps.back().status;
  if (kept.value_or(0) == 0) kept = *status;
  return *status == 0 ? std::string{} : fmt::format("{} failed with status {}", word, *status);
}

void LineRunner::keep_setting(const ScriptLine& line) {
  const auto* row = find_command_help(line.word);
  if (line.word == "RESET") settings_.clear();
  if (!row || !is_setting(*row)) return;
  std::erase_if(settings_, [&](const ScriptLine& kept) { return kept.word == line.word; });
  settings_.push_back(line);
}

std::string LineRunner::start_again() {
  adviser_.forget_results();
  if (auto problem = start(); !problem.empty()) return problem;
  // The model is still there: the trajectory goes with it. It comes first, as what is set depends on it.
  const auto choose = std::exchange(choose_, [](const Question& question) -> std::optional<std::int32_t> {
    constexpr std::int32_t use_current_model = 2;
    return question.choices.size() > 2 ? use_current_model : question.unsettled;
  });
  auto lines = settings_;
  std::stable_partition(lines.begin(), lines.end(), [](const auto& line) { return line.word == "TRAJECTORY"; });
  std::string lost, nowhere;
  std::size_t repeated = 0;
  asked_ = &nowhere;
  for (const auto& line : lines) {
    const auto arguments = arguments_of(line);
    const auto status = session_.lost() ? std::nullopt : session_.command(line.word, arguments);
    if (status == 0) {
      ++repeated;
    } else {
      lost += fmt::format("\n    {}", line.text);
    }
  }
  asked_ = nullptr;
  choose_ = choose;
  if (session_.lost()) return session_.loss();
  console_.print(fmt::format("A new pathstat runs; {} line{} repeated. Results have to be calculated again.", repeated,
                             repeated == 1 ? " was" : "s were"));
  if (!lost.empty()) console_.complain("These did not come back:" + lost);
  return {};
}

/// Tells what there is to say of a command that has just ended.
void LineRunner::advise(std::string_view word, std::string_view arguments) {
  const auto status = record_.steps.back().status.value_or(0);
  auto advices = adviser_.about({word, arguments, status, held_});
  if (session_.lost()) return;  // with some of its questions unanswered
  for (auto& advice : advices) {
    take_message({advice.kind, 1, {}, {}, std::move(advice.text)});
  }
}

StateSources LineRunner::state_sources() {
  return {.answer = [this](const std::string& word) { return ask_word(word); },
          .returned = [this](const std::string& key) { return ask_returned(key); },
          .cell_width = [this] { return cell_width(); },
          .selected_atoms = [this] { return model_.selected_atoms(); },
          .model_atoms =
              [this] {
                const auto* model = model_.model(model_.current_model());
                return model ? model->data.positions.size() : 0;
              },
          .charged =
              [this] {
                const auto* model = model_.model(model_.current_model());
                return model && std::ranges::any_of(model->data.charges, [](double charge) { return charge != 0; });
              }};
}

std::optional<std::vector<WordAnswer>> LineRunner::values(std::span<const std::string> words) {
  std::string nowhere;
  asked_ = &nowhere;
  auto answers = session_.request(words);
  asked_ = nullptr;
  return answers;
}

WordAnswer LineRunner::ask_word(const std::string& word) {
  const auto answers = values(std::span(&word, 1));
  return answers ? answers->front() : WordAnswer{};
}

std::string LineRunner::ask_returned(const std::string& key) {
  std::string text;
  asked_ = &text;
  session_.command("GET", key);
  asked_ = nullptr;
  return text;
}

/// The smallest distance between the faces of the current model's cell, across directions that repeat; 0 without one.
double LineRunner::cell_width() const {
  const auto* model = model_.model(model_.current_model());
  if (!model || periodic_directions(model->data.periodic_type) != 3) return 0;
  const Lattice lattice(model->data.periodic_type, model->data.cell);
  return std::min({lattice.width(0), lattice.width(1), lattice.width(2)});
}

/// Notes the file that a word names, to be copied to the results. The process may complete a name; the file is to be
/// found under the name that it tells.
void LineRunner::note_result_file(const std::string& word) {
  if (const auto name = first_value(ask_word(word)); !name.empty()) tables_.insert(place_.work / name);
}

/// Tells of the surfaces that a line has made.
void LineRunner::tell_surfaces(StepRecord& step) {
  for (; surfaces_told_ < model_.surfaces().size(); ++surfaces_told_) {
    const auto& surface = model_.surfaces()[surfaces_told_];
    if (surface.triangles.empty()) continue;
    step.surfaces.push_back(surfaces_told_);
    take_message(
        {MessageKind::note, 1, {}, {}, fmt::format("{}: {}", surface_name(surfaces_told_), in_words(surface))});
  }
}

std::string LineRunner::settle_answer(const std::vector<std::string>& words) {
  const auto* row = find_message(words[0]);
  if (row && row->kind == MessageKind::dialog) {
    interface_.settle_answer(words[0], std::stoi(words[1]));
    return {};
  }
  std::string known;
  for (const auto& each : message_rows()) {
    const bool asks = each.kind == MessageKind::dialog && each.text.find('|') == std::string_view::npos;
    const std::vector<MessageArgument> names(each.arguments.size(), std::string("..."));
    if (asks) known += fmt::format("\n    {}: {}", each.key, filled(each.text, names));
  }
  return fmt::format("no dialog has the key {}; these have:{}", words[0], known);
}

std::string LineRunner::request(const std::vector<std::string>& words) {
  const auto answers = session_.request(words);
  if (!answers) return "the request was not answered: " + session_.loss();
  for (std::size_t k = 0; k < words.size(); ++k) {
    const auto& answer = (*answers)[k];
    const auto* help = find_command_help(words[k]);
    auto text = fmt::format("{} = {}", words[k], spelled(answer.values));
    if (!answer.ranges.empty()) {
      text += fmt::format("\n  of: {}", spelled_choices(answer.ranges));
    } else if (help && argument_shape(*help).form != ArgumentForm::none) {
      text += fmt::format("\n  takes: {}", help->arguments);
    }
    take_returned(text);
  }
  return {};
}

std::string LineRunner::show_model() {
  const auto* model = model_.model(model_.current_model());
  if (!model) return no_model;
  auto facts = model_facts(model->data);
  const auto centre = centre_of_mass(model->data);
  facts.push_back({"centre of mass", fmt::format("{:10.5f} {:10.5f} {:10.5f} Å", centre[0], centre[1], centre[2])});
  ask_frame();
  if (frame_) facts.push_back({"shown", *frame_});
  frame_.reset();
  take_returned(fmt::format("Model {}\n{}\n{}", visible(model->data.name), facts_text(facts), atoms_text(model->data)));
  return {};
}

std::string LineRunner::step(const std::vector<std::string>& words) {
  const auto* word = words[0] == "forwards" ? "FRAME_STEP_FORWARDS" : "FRAME_STEP_BACKWARDS";
  const int wanted = words.size() > 1 ? std::stoi(words[1]) : 1;
  steps_ = 0;
  repeats_ended_ = false;
  auto problem = send(word, "START");
  while (problem.empty() && !repeats_ended_ && ++steps_ < wanted && interrupts() == 0) problem = send(word, "HOLD");
  auto release_problem = session_.lost() ? std::string{} : send(word, "END");
  if (problem.empty()) problem = std::move(release_problem);
  if (!problem.empty()) return problem;
  if (repeats_ended_) take_returned(fmt::format("Stepping ended after {} of {} steps.", steps_, wanted));
  if (!frame_) ask_frame();
  return {};
}

std::string LineRunner::pick(const std::vector<std::string>& words) {
  const auto figures = figures_of(store_);
  const auto* figure = find_figure(store_, figures, words[0]);
  const auto* graph = figure ? store_.info(figure->graph) : nullptr;
  if (!graph) {
    const auto names = graph_names();
    if (names.empty()) return "no graph has been drawn yet";
    return fmt::format("there is no graph {}; there are: {}", words[0], fmt::join(names, ", "));
  }
  if (interface_.modal_state(click_class) != click_shows_frame)
    return "no trajectory is loaded whose frame could be shown";
  const auto* y = words.size() > 2 ? words[2].c_str() : "0";
  const auto place = fmt::format("{} {} {} {} ", in_quotes(graph->name), graph->version, words[1], y);
  for (const auto* event : {"START", "END"}) {
    auto problem = send("ANALYSIS_STRUCTURE_FROM_PLOT", place + event);
    if (!problem.empty()) return problem;
  }
  if (!frame_) ask_frame();
  return {};
}

std::vector<std::string> LineRunner::allowed_values(const std::string& word) {
  return choices_of(ask_word(word).ranges);
}

std::vector<std::string> LineRunner::graph_names() const {
  std::vector<std::string> names;
  for (const auto graph : store_.shown_graphs()) {
    auto name = without_blanks(store_.info(graph)->name);
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(std::move(name));
  }
  return names;
}

std::vector<std::string> LineRunner::model_names() const {
  std::vector<std::string> names;
  for (const auto* model : model_.models()) names.push_back(model->data.name);
  return names;
}

}  // namespace pathstat::desk
