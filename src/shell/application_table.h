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

/// Names the entries of the one application, before anything else here is called.
void register_application(const ApplicationEntries& entries);

/// Sets the table, starts the application and prints the revision line.
void sch_InitApplications();
inline void sch_initcommands_() { sch_InitApplications(); }
void sch_TerminateApplications();
void sch_LoadApplications();
void sch_SaveApplications();

/// Prints the program's name and revision.
void sch_DisplayRevision();

/// Runs a command of the application whose key has this first letter. @return its status; 1 with a message if none has
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
