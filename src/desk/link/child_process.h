#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace pathstat::desk {

/// One child process, ended and reaped with its owner.
class ChildProcess {
 public:
  struct Start {
    std::filesystem::path program;
    std::filesystem::path directory;                               ///< where it works
    std::filesystem::path output;                                  ///< file that takes both its output streams
    std::vector<std::pair<std::string, std::string>> environment;  ///< set beside what this process has
  };

  ChildProcess() = default;
  ~ChildProcess() { end(0); }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Starts the program with no arguments and no input. It ignores the interrupt key, which is for this process.
  /// @return empty, or why it could not be started
  std::string start(const Start& how);

  /// Takes over a process that another one started: it is ended with this owner, but how it ended is not known.
  void adopt(pid_t process);
  /// Leaves the process alone from here on.
  void release();

  pid_t id() const { return id_; }
  /// True until the process has ended.
  bool runs();
  /// Waits for the end at most so many milliseconds. @return true if the process has ended
  bool wait(int milliseconds);
  /// Gives the process so many milliseconds to end by itself, then ends it.
  void end(int milliseconds);
  /// How it ended: "exit status 1", "signal 11 (Segmentation fault)", "a status that is not known".
  std::string ending() const;
  bool ended_well() const;

 private:
  pid_t id_ = 0;
  bool ended_ = true;
  bool adopted_ = false;
  int wait_status_ = 0;
};

}  // namespace pathstat::desk
