#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "desk/graphs/figure.h"
#include "desk/panel/downloads.h"
#include "desk/panel/page_server.h"
#include "desk/panel/panel_view.h"
#include "desk/panel/requests.h"
#include "desk/panel/start_folder.h"
#include "desk/script/line_runner.h"

namespace pathstat::desk {

/// Lines that come from pages, one after the other, and what pages are told of them. Lives on the run's thread.
class PanelSession {
 public:
  PanelSession(LineRunner& runner, PageServer& server, PageRequests& requests, Downloads& downloads,
               const StartFolder& folder, std::filesystem::path scratch);
  ~PanelSession();
  PanelSession(const PanelSession&) = delete;
  PanelSession& operator=(const PanelSession&) = delete;

  /// Runs the first lines and then what pages send, until somebody ends it.
  /// @return an exit code
  int run(const std::vector<ScriptLine>& first_lines);

 private:
  struct PastLine {
    std::string text;
    std::vector<std::string> answers;  ///< lines that answer its dialogs
    bool done = false;
  };

  void serve(const PageRequest& request);
  void serve_beside_line();
  void take_line(const std::string& text);
  void take_script(const PageRequest& request);
  void run_line(const ScriptLine& line);
  void follow(LineEnd end, bool only_steps);
  void start_again();
  std::optional<std::int32_t> ask(const Question& question);
  void watch(const PageRequest& request);
  void complete(const PageRequest& request, bool line_runs);
  std::optional<Figure> figure_for(const PageRequest& request) const;
  void export_graph(const PageRequest& request);
  void save_history(const PageRequest& request);
  void refresh_values();
  void end(int code);

  void tell(const char* topic, const nlohmann::json& body);
  void tell_log(std::string_view kind, std::string_view text);
  void tell_line(const ScriptLine& line, std::string_view state, const std::string& text, double seconds);
  void tell_progress();
  void reply(PageId page, const nlohmann::json& body);

  LineRunner& runner_;
  PageServer& server_;
  PageRequests& requests_;
  Downloads& downloads_;
  const StartFolder& folder_;
  const std::filesystem::path scratch_;
  PanelView view_;
  std::vector<PastLine> history_;
  std::set<std::string> watched_;
  std::map<std::string, std::string> told_values_;  ///< the messages that pages have, by word
  double progress_ = 0;                             ///< of the line that runs, as a share
  int number_ = 0;
  bool ended_ = false;
  int code_ = 0;
};

}  // namespace pathstat::desk
