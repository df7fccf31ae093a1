#pragma once

namespace pathstat {

/// One more level of calls within each other, for as long as it lives.
class Level {
 public:
  explicit Level(int& depth) : depth_(depth) { ++depth_; }
  ~Level() { --depth_; }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;

 private:
  int& depth_;
};

}  // namespace pathstat
