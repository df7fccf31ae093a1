#pragma once

namespace pathstat {

/// An analysis is running while one of these lives.
class RunningAnalysis {
 public:
  RunningAnalysis() { ++running_; }
  ~RunningAnalysis() { --running_; }
  RunningAnalysis(const RunningAnalysis&) = delete;
  RunningAnalysis& operator=(const RunningAnalysis&) = delete;
  static bool any() { return running_ > 0; }

 private:
  static inline int running_ = 0;
};

}  // namespace pathstat
