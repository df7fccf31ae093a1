#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "desk/panel/page_server.h"
#include "desk/script/line_runner.h"

namespace pathstat::desk {

/// Tells the pages what has changed in the models and graphs of a run, and only that. Lives on the run's thread.
class PanelView {
 public:
  PanelView(const LineRunner& runner, PageServer& server) : runner_(runner), server_(server) {}

  /// For a line that runs: looks no more often than a page can show.
  /// @return true if it has looked at the graphs, so that whatever else a page shows may change with them
  bool look_now_and_then();
  void look();

 private:
  using Clock = std::chrono::steady_clock;

  /// What pages have of a data set.
  struct SentSet {
    std::uint64_t rewritten = 0;
    std::size_t points = 0;
  };

  void look_at_models();
  void look_at_graphs();
  void send_points(std::int32_t set, const DataSet& data);

  const LineRunner& runner_;
  PageServer& server_;
  Clock::time_point models_seen_{}, graphs_seen_{};
  std::int32_t model_ = -1;
  std::uint64_t geometry_ = 0;
  std::size_t bonds_ = 0;
  std::string cell_, selection_, measures_;  ///< as last sent
  std::map<std::int32_t, std::uint64_t> graphs_;
  std::map<std::int32_t, SentSet> sets_;
};

}  // namespace pathstat::desk
