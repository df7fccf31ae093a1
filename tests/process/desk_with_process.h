#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "desk/graphs/graph_store.h"
#include "desk/graphs/plot_operations.h"
#include "desk/link/core_session.h"
#include "desk/link/work_directory.h"
#include "desk/model/data_model.h"
#include "desk/ops/model_operations.h"
#include "desk/ops/user_interface.h"
#include "desk/selection/selection.h"

namespace pathstat::desk {

/// A Core without a user, with the real analysis process running under it in a directory of its own.
class DeskWithProcess {
 public:
  explicit DeskWithProcess(Protocol protocol = Protocol::tcp);
  /// With a run of the examples loaded.
  explicit DeskWithProcess(const char* example);
  ~DeskWithProcess() { session.finish(); }

  /// Runs one command. @return its status; -9999 if the process is lost
  std::int32_t run(std::string_view word, std::string_view arguments = "");
  /// Runs lines such as "LAST_FRAME_NO 5" up to one that fails. @return the status of the last one that ran
  std::int32_t run_lines(const std::vector<std::string_view>& lines);
  /// Runs one command. @return its status, and the keys of the messages since they were last taken
  std::pair<std::int32_t, std::vector<std::string>> told(std::string_view word, std::string_view arguments = "");
  /// The value texts of one word, without their padding.
  std::vector<std::string> values(const std::string& word);
  /// The first value of a word, or nothing.
  std::string value(const std::string& word);
  std::string range(const std::string& word);
  /// Keys of the messages since the last call.
  std::vector<std::string> take_keys();

  /// Loads examples/NAME/NAME.trj. @return the status of the command
  std::int32_t load_example(const std::string& name);

  /// Selects atoms by a selection that can be read.
  void select(std::string_view selection) { select_atoms(model, *read_selection(selection).selection); }

  /// The points of the data sets that a command left in the viewer, by the name of the graph.
  std::vector<std::string> graph_titles() const;
  const DataSet& data_set(std::size_t graph, std::size_t set = 0) const;

  /// Where the atoms of the current model are, one axis behind the other.
  std::vector<double> shown_positions() const;

  std::filesystem::path work() const { return directory_.path() / "work"; }

  std::vector<Message> messages;
  std::vector<std::string> output;  ///< lines that the process printed
  std::vector<std::string> returned;
  bool interrupt = false;
  DataModel model;
  GraphStore graphs;
  UserInterface ui;
  OperationServer server;

 private:
  std::string problem_;
  PrivateDirectory directory_{problem_};

 public:
  CoreSession session;
};

/// A frame of a run of the examples, read from the file itself.
struct ExampleFrame {
  ExampleFrame(const std::string& example, std::int32_t number);

  std::vector<double> xyz;
  double edge = 0;  ///< of a cubic cell
};

/// One column of an engine log, by its heading.
std::vector<double> log_column(const std::string& example, std::string_view heading);

/// A scratch file as it stands: the head's five integers, then for each point its number, x and values.
struct ScratchSeries {
  std::int32_t points = 0, values_per_point = 0, mark = 0, kind = 0, extras = 0;
  std::vector<std::int32_t> numbers;
  std::vector<double> x;
  std::vector<std::vector<double>> values;
};
ScratchSeries read_scratch(const std::filesystem::path& path);

}  // namespace pathstat::desk
