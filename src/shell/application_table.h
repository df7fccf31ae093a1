#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "shell/request_cache.h"

namespace pathstat {

/// What an application does for the shell.
struct ApplicationEntries {
  std::int32_t (*command)(std::string_view command, std::string_view arguments);
  void (*request)(std::string_view key);
  void (*initialize)();
  void (*terminate)();
  void (*load)();
  void (*save)();
};

/// A row of the table of applications.
struct Application {
  std::string_view key;
  bool whole_key;  ///< serves exactly its key; without it, every key that begins as its own does
  std::int32_t multi_thread;
  ApplicationEntries entries;
};

/// Sets the table, which stays where it is, before anything else here is called. A key that is matched whole comes
/// ahead of one that is matched by its first letter, wherever the rows stand.
void register_applications(std::span<const Application> table);

/// Starts the applications in the order of the table and prints the revision line.
void sch_InitApplications();
inline void sch_initcommands_() { sch_InitApplications(); }
void sch_TerminateApplications();
void sch_LoadApplications();
void sch_SaveApplications();

/// Prints the program's name and revision.
void sch_DisplayRevision();

/// Runs a command of the application that serves this key. @return its status; 1 with a message if none does
std::int32_t sch_ParseApplicationCommand(std::string_view application, std::string_view command,
                                         std::string_view arguments);

/// Has one key evaluated into the two blocks; see RequestEvaluation.
void sch_ParseApplicationRequest(std::string_view application, std::string_view key, std::span<char> value,
                                 std::span<char> range, std::int64_t& value_length, std::int64_t& range_length);

/// Answers a data request; see RequestCache. A request that comes while another one is being evaluated has a cache of
/// its own and leaves the outer one's as it is.
std::int32_t sch_AppData(const DataRequest& request, std::string& reply, std::int32_t& answer_count);

/// 1 if the application of exactly this key runs on several threads, 0 if not, -1 if there is none.
std::int32_t sch_MultiThread(std::string_view application);

}  // namespace pathstat
