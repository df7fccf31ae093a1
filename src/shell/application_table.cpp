#include "shell/application_table.h"

#include <algorithm>
#include <cstdio>

#include "shell/messages.h"
#include "shell/output_texts.h"
#include "shell/program_arguments.h"

namespace pathstat {
namespace {

constexpr const char* VERSION = "99";
constexpr const char* REVISION = "0102";

std::span<const Application> applications;

bool serves(const Application& row, std::string_view key) {
  return row.whole_key ? key == row.key : key.starts_with(row.key.front());
}

/// The application that serves a key; shows a message if none does.
const Application* application_of(std::string_view key) {
  const Application* found = nullptr;
  for (const auto& row : applications) {
    if (serves(row, key) && (found == nullptr || row.whole_key)) found = &row;
  }
  if (found == nullptr) refuse("KVZ_APP_UNDEF", key);
  return found;
}

}  // namespace

void register_applications(std::span<const Application> table) { applications = table; }

void sch_InitApplications() {
  for (const auto& row : applications) row.entries.initialize();
  sch_DisplayRevision();
}

void sch_TerminateApplications() {
  for (const auto& row : applications) row.entries.terminate();
}

void sch_LoadApplications() {
  for (const auto& row : applications) row.entries.load();
}

void sch_SaveApplications() {
  for (const auto& row : applications) row.entries.save();
}

void sch_DisplayRevision() { std::printf("%s  :  revision %.2s.%.4s\n", program_name(), VERSION, REVISION); }

std::int32_t sch_ParseApplicationCommand(std::string_view application_key, std::string_view command,
                                         std::string_view arguments) {
  const auto* application = application_of(application_key);
  return application == nullptr ? 1 : application->entries.command(command, arguments);
}

void sch_ParseApplicationRequest(std::string_view application_key, std::string_view key, std::span<char> value,
                                 std::span<char> range, std::int64_t& value_length, std::int64_t& range_length) {
  const OutputTextsAside outer;
  sch_RegisterOutputStrings(value, range);
  const auto* application = application_of(application_key);
  if (application != nullptr) application->entries.request(key);
  sch_GetFillLengths(value_length, range_length);
}

std::int32_t sch_AppData(const DataRequest& request, std::string& reply, std::int32_t& answer_count) {
  static RequestCache cache(sch_ParseApplicationRequest);
  static bool evaluating = false;
  if (evaluating) return RequestCache(sch_ParseApplicationRequest).answer(request, reply, answer_count);
  struct Evaluation {
    Evaluation() { evaluating = true; }
    ~Evaluation() { evaluating = false; }
  } evaluation;
  return cache.answer(request, reply, answer_count);
}

std::int32_t sch_MultiThread(std::string_view key) {
  const auto row = std::ranges::find(applications, key, &Application::key);
  return row == applications.end() ? -1 : row->multi_thread;
}

}  // namespace pathstat
