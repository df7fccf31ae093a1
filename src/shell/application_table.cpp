#include "shell/application_table.h"

#include <cstdio>

#include "shell/messages.h"
#include "shell/output_texts.h"
#include "shell/program_arguments.h"

namespace pathstat {
namespace {

constexpr const char* VERSION = "99";
constexpr const char* REVISION = "0102";

struct Application {
  const char* version;
  std::string_view key;
  std::int32_t multi_thread;
  ApplicationEntries entries;
};

Application application{nullptr, "", 0, {}};

/// The application that serves a key: only the first letter counts.
bool serves(std::string_view key) { return key.starts_with('M'); }

}  // namespace

void register_application(const ApplicationEntries& entries) { application.entries = entries; }

void sch_InitApplications() {
  application.key = "MD_ANALYSIS";
  application.multi_thread = 0;
  application.entries.initialize();
  sch_DisplayRevision();
}

void sch_TerminateApplications() { application.entries.terminate(); }
void sch_LoadApplications() { application.entries.load(); }
void sch_SaveApplications() { application.entries.save(); }

void sch_DisplayRevision() {
  if (application.version != nullptr) {
    std::printf("%s version %s", program_name(), application.version);
  } else {
    std::printf("%s", program_name());
  }
  std::printf("  :  revision %.2s.%.4s\n", VERSION, REVISION);
}

std::int32_t sch_ParseApplicationCommand(std::string_view application_key, std::string_view command,
                                         std::string_view arguments) {
  if (!serves(application_key)) return refuse("KVZ_APP_UNDEF", application_key);
  return application.entries.command(command, arguments);
}

void sch_ParseApplicationRequest(std::string_view application_key, std::string_view key, std::span<char> value,
                                 std::span<char> range, std::int64_t& value_length, std::int64_t& range_length) {
  const OutputTextsAside outer;
  sch_RegisterOutputStrings(value, range);
  if (serves(application_key)) {
    application.entries.request(key);
  } else {
    refuse("KVZ_APP_UNDEF", application_key);
  }
  sch_GetFillLengths(value_length, range_length);
}

std::int32_t sch_AppData(const DataRequest& request, std::string& reply, std::int32_t& answer_count) {
  static RequestCache cache(sch_ParseApplicationRequest);
  static bool evaluating = false;
  if (evaluating) return RequestCache(sch_ParseApplicationRequest).answer(request, reply, answer_count);
  evaluating = true;
  const std::int32_t status = cache.answer(request, reply, answer_count);
  evaluating = false;
  return status;
}

std::int32_t sch_MultiThread(std::string_view key) { return key == application.key ? application.multi_thread : -1; }

}  // namespace pathstat
