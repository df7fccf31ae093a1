#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace pathstat {

/// Stands in for the Core: this program's call frames lead here. Every call is kept as "name|input|input ...", and
/// answered with zeros and empty texts, or with what a test lays ready for the operation.
class RecordingCore {
 public:
  struct Answer {
    std::deque<std::int32_t> integers;
    std::deque<double> doubles;
    std::deque<std::string> texts;
  };
  using Inputs = std::vector<std::string>;

  RecordingCore();
  ~RecordingCore();
  RecordingCore(const RecordingCore&) = delete;
  RecordingCore& operator=(const RecordingCore&) = delete;

  /// The calls of operations whose name starts so.
  std::vector<std::string> calls(const std::string& start = "") const;
  /// Messages shown, each with its arguments in front: "text 3 PATHSTAT_ERROR_1".
  std::vector<std::string> messages() const;
  void forget() { log_.clear(); }

  /// Answers by operation. Plot handles are given out from 1 by name and kind, unless a test says otherwise.
  std::map<std::string, std::function<Answer(const Inputs&)>> answers;

 private:
  friend class RemoteCall;
  void call(const std::string& name, const Inputs& inputs);

  std::vector<Inputs> log_;
  std::vector<Inputs> handles_;  // name, kind
  Answer answer_;
};

}  // namespace pathstat
