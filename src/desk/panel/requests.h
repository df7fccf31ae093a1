#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "desk/panel/page_server.h"

namespace pathstat::desk {

/// What a page asks for.
struct PageRequest {
  PageId page = 0;
  std::string what;
  nlohmann::json body;

  std::string text(const char* name) const;
  /// @return 0 for one that is not there
  std::int64_t number(const char* name) const;
};

/// What pages ask for, on its way from the server's thread to that of the run. Requests are taken in order; those to
/// stop, and answers to a question, reach a line that runs.
class PageRequests {
 public:
  static constexpr std::size_t most_waiting = 256;

  /// Takes a message of a page. What cannot be read is dropped. @return false if too many wait
  bool take(PageId page, const std::string& message);

  /// The next request; waits for a short while. None if there is none.
  std::optional<PageRequest> next();
  /// The next request that is served while a line runs.
  std::optional<PageRequest> next_beside_line();
  std::size_t waiting_lines() const;

  /// A line begins. @param gives_way  to the next one that comes
  void line_begins(bool gives_way);
  /// A line has ended. @return the interrupts that were asked for by pages
  int line_ends();

  /// A question is asked. @return its number
  std::int64_t new_question();
  /// Waits for the answer to the latest question, or for an interrupt. @return none if it is interrupted
  std::optional<std::int32_t> wait_for_answer();

 private:
  void stop_line();

  mutable std::mutex mutex_;
  std::condition_variable came_;
  std::deque<PageRequest> requests_;
  std::int64_t question_ = 0;
  std::optional<std::int32_t> answer_;  ///< to that question
  bool running_ = false;
  bool gives_way_ = false;
  int stops_ = 0;
};

}  // namespace pathstat::desk
