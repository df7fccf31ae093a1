#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "desk/advice/advice.h"
#include "desk/graphs/graph_store.h"
#include "desk/link/core_session.h"
#include "desk/model/data_model.h"
#include "desk/ops/operation_server.h"
#include "desk/ops/user_interface.h"
#include "desk/report/run_output.h"
#include "desk/script/atom_lines.h"
#include "desk/script/console.h"
#include "desk/script/kept_session.h"
#include "desk/script/script.h"

namespace pathstat::desk {

/// Where lines come from.
struct LineSource {
  std::string name;   ///< in the report
  std::string place;  ///< stands with the line number in front of what is wrong; empty for lines that are typed
  std::filesystem::path folder;  ///< where relative paths begin
  bool stop_on_error = true;
  bool pictures_at_once = false;  ///< graphs are drawn behind each line, not at the end
};

/// Folders and program of one run; all exist.
struct RunPlace {
  std::filesystem::path program;
  std::filesystem::path work;
  std::filesystem::path private_folder;
  std::filesystem::path output;
  std::filesystem::path imports;  ///< for what lines bring in from other programs
  OutputFormats formats;
  Protocol protocol = Protocol::unix_socket;
  bool verbose = false;  ///< shows what is of use to find faults: keys of messages, where the process starts and ends
};

/// How a line ended.
enum class LineEnd {
  done,
  failed,
  interrupted,  ///< by the user
  stopped,      ///< it told the process to stop
  lost,         ///< the process was lost
};

/// What goes on while a line runs, for whoever shows it as it goes. Every member may be left empty.
struct RunWatcher {
  std::function<void()> working;                       ///< the stores may have changed; called often
  std::function<void(const std::string& text)> frame;  ///< another frame is shown
};

/// The desk's parts, wired together, with a process under them: runs one line after the other, tells the user what
/// comes of it and keeps it for the report.
class LineRunner {
 public:
  LineRunner(LineSource source, const RunPlace& place);

  /// Starts the process. @return empty, or what went wrong
  std::string start();
  /// Starts another process in the place of one that was lost, loads the trajectory into it and gives it the settings
  /// that were made so far. What does not come back is told. @return empty, or what went wrong
  std::string start_again();
  /// Has dialogs of the process answered; without it, and where it has no answer, they take their default.
  void answer_with(std::function<std::optional<std::int32_t>(const Question&)> choose) { choose_ = std::move(choose); }
  void watch_with(RunWatcher watcher) { watcher_ = std::move(watcher); }
  /// Whoever has answered, watched and been told ends ahead of the run.
  void forget_owner() {
    console_.lead_to({});
    choose_ = {};
    watcher_ = {};
  }
  LineEnd run(const ScriptLine& line);
  bool stops_on_error() const { return stop_on_error_; }
  /// Why the run ends ahead of its lines, for the report.
  void end_with(std::string why) { record_.ending = std::move(why); }
  /// True if a line that went well all the same told of an error: something that it should have made is missing.
  bool told_error() const { return told_error_; }
  bool lost() const { return session_.lost(); }
  /// How the process was lost.
  const std::string& loss() const { return session_.loss(); }
  /// Writes what came of the lines so far, and tells what the run says.
  /// @return false if something could not be written
  bool write_results();
  /// Writes what came of the lines and ends the process. @return false if something could not be written
  bool finish();

  Console& console() { return console_; }
  const GraphStore& graphs() const { return store_; }
  const DataModel& models() const { return model_; }
  const std::filesystem::path& folder() const { return source_.folder; }
  const std::filesystem::path& output_folder() const { return place_.output; }
  const std::filesystem::path& private_folder() const { return place_.private_folder; }
  /// Steps that the last @step has made.
  int steps() const { return steps_; }
  /// The values and ranges of words, none if the process is lost. Nothing of it is told.
  std::optional<std::vector<WordAnswer>> values(std::span<const std::string> words);

  // What is there to choose from, for whoever types lines.

  /// What the first value of a word may be; empty for a word that takes anything.
  std::vector<std::string> allowed_values(const std::string& word);
  std::vector<std::string> graph_names() const;
  std::vector<std::string> model_names() const;
  const AtomGroups& groups() const { return atoms_.groups(); }

 private:
  InterfaceEvents events();
  void take_message(Message message);
  void take_line(std::string_view line);
  void take_returned(const std::string& text);
  void refresh_values(std::string_view words);
  void ask_frame();
  void tell_missing_numbers(const StepRecord& step);
  void write_pictures();
  void work_goes_on() const;
  GraphFacts facts_of(const ScriptLine& line);
  std::size_t rdf_centres(const MolecularModel& model);
  void report_failure(const ScriptLine& line, const std::string& problem);

  // Each returns what went wrong, or nothing.
  template <class Part>
  std::string within_memory_of_line(const Part& part);
  std::string take_account(const ScriptLine& line, const std::string& problem, double seconds);
  std::string left_file(const std::filesystem::path& path, std::string_view what);
  std::string run_kind(const ScriptLine& line);
  std::string run_command(const ScriptLine& line);
  std::string bring_in(const ScriptLine& line);
  std::string arguments_of(const ScriptLine& line) const;
  std::string send(std::string_view word, std::string_view arguments);
  void advise(std::string_view word, std::string_view arguments);
  void keep_setting(const ScriptLine& line);
  void note_graph(StepRecord& step, std::int32_t graph);
  void withdraw_graphs(StepRecord& step);
  void mark_interrupted(StepRecord& step, const ScriptLine& line);
  StateSources state_sources();
  WordAnswer ask_word(const std::string& word);
  std::string ask_returned(const std::string& key);
  double cell_width() const;
  std::string where(const ScriptLine& line) const;
  std::string in_full(const Message& message) const;
  std::string settle_answer(const std::vector<std::string>& words);
  std::string request(const std::vector<std::string>& words);
  std::string show_model();
  std::string step(const std::vector<std::string>& words);
  std::string pick(const std::vector<std::string>& words);
  std::string detach(const ScriptLine& line);
  std::string leave(const ScriptLine& command, const std::filesystem::path& folder);
  std::string attach(const std::vector<std::string>& words);
  std::string take_over(const KeptSession& kept);
  bool is_interrupted();
  KeptSession kept_session(const ScriptLine& command) const;
  void note_result_file(const std::string& word);
  void tell_surfaces(StepRecord& step);

  const LineSource source_;
  RunPlace place_;
  std::filesystem::file_time_type work_started_;
  Console console_;
  RunRecord record_;
  DataModel model_;
  GraphStore store_;
  OperationServer server_;
  UserInterface interface_;
  CoreSession session_;
  RunOutput output_;
  Adviser adviser_;
  AtomLines atoms_;
  std::function<std::optional<std::int32_t>(const Question&)> choose_;
  RunWatcher watcher_;
  int steps_ = 0;
  std::vector<ScriptLine> settings_;  ///< the last line that went well of each word that sets something, in order
  double done_ = 0;                   ///< share of the work of the line that runs, as last reported
  bool told_to_stop_ = false;         ///< the process, in this line
  std::vector<Message> held_;         ///< errors and warnings of the line that runs
  std::optional<std::string> frame_;  ///< the shown frame, if it may have changed in the line that runs
  std::string selection_;             ///< of the last line that selected atoms, as it stands
  std::set<std::int32_t> seen_graphs_;
  std::size_t surfaces_told_ = 0;
  std::set<std::filesystem::path> tables_;
  std::map<std::string, std::filesystem::path> imports_;  ///< trajectories that lines have brought in, by their names
  std::string* asked_ = nullptr;  ///< takes what a command returns that is sent to learn about the state
  bool repeats_ended_ = false;
  bool detaches_ = false;                 ///< the process is to detach at the next point where it asks for an interrupt
  ScriptLine resumed_;                    ///< the command that an attached process was working on
  std::filesystem::path adopted_folder_;  ///< in which the session of an attached process was kept
  bool stop_on_error_;
  bool stopped_ = false;
  bool told_error_ = false;
  /// What a process wrote from here on is left out: it was lost in the middle of it.
  std::filesystem::file_time_type work_ended_ = std::filesystem::file_time_type::max();
};

}  // namespace pathstat::desk
