#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "desk/model/data_model.h"

namespace pathstat::desk {

/// What a later run needs to take over a process that has detached, beside the models.
struct KeptSession {
  pid_t process = 0;
  std::uint64_t started = 0;          ///< as start_of_process tells it
  std::filesystem::path work;         ///< the folder in which the process works
  std::uintmax_t shown = 0;           ///< bytes of its printed output that were shown
  std::set<std::int32_t> drawn;       ///< handles of the graphs that earlier lines have drawn
  std::string selection;              ///< the words that selected atoms last
  std::string running;                ///< the line of the command that it works on; empty if it waits for one
  std::vector<std::string> settings;  ///< lines
  std::vector<std::string> tables;    ///< paths
};

/// The folder in which the session of a detached process is kept, which only this user can read.
std::filesystem::path kept_folder(pid_t process);
/// Makes it anew. @return empty, or what went wrong
std::string make_kept_folder(pid_t process);

/// Writes the models into the folder and makes sure that read_kept_models brings back the same, identifiers included.
/// @return empty, or why they can't be kept
std::string keep_models(const DataModel& model, const std::filesystem::path& folder);
/// Brings the models back into a data model without any.
std::string read_kept_models(const std::filesystem::path& folder, DataModel& model);

std::string keep_session(const KeptSession& session, const std::filesystem::path& folder);
/// Reads the session of a process that still runs, and claims it, so that no other run takes it too.
/// @param process  0 for the only one that there is
/// @return empty, or what went wrong
std::string claim_session(pid_t process, KeptSession& session);
/// Gives a claimed session back.
void give_back_session(pid_t process);

/// The detached processes of this user that still run. What others left behind is removed.
std::vector<pid_t> detached_processes();

}  // namespace pathstat::desk
