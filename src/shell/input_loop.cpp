#include "shell/input_loop.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <string>

#include "coreapi/error_reporting.h"
#include "corelink/core_connection.h"
#include "corelink/last_error.h"
#include "corelink/remote_call.h"
#include "corelink/typed_values.h"
#include "shell/application_table.h"
#include "shell/core_start.h"
#include "shell/threads.h"
#include "support/memory_watch.h"

namespace pathstat {
namespace {

void notify(std::int32_t code) {
  if (kvC_API_pnc != nullptr) PD_send_int(*kvC_API_pnc, code);
}

/// Detaches if the last exchange has asked for it, and then waits for the Core, from which all work comes here.
void keep_core() {
  if (core_absence.look != nullptr) core_absence.look();
  need_core();
}

void start_applications() {
  sch_InitApplications();
  applications_started = true;
}

void ensure_applications() {
  if (!applications_started) start_applications();
}

/// Reads the inputs of one exchange, each with the time limit of the connection; `good` ends at the first failure.
struct InputReader {
  Connection& core;
  bool good = true;

  std::int32_t integer() {
    std::int32_t value = 0;
    good = good && PD_receive_int(core, value, PNC_Timeout) == 0;
    return value;
  }
  std::string text() {
    std::string value;
    good = good && PD_receive_string(core, value, PNC_Timeout) == 0;
    return value;
  }
};

/// The number of threads that the application uses, as its row of the table and `pool_threads` say.
template <class PoolThreads>
std::int32_t thread_answer(const std::string& application, PoolThreads pool_threads) {
  if (!applications_started || sch_MultiThread(application) == 0) return 1;
  return pool_threads();
}

std::int32_t report_shortage(const std::string& command) {
  constexpr std::int32_t allocation_error = 1;
  kvU_ERR_SetCurrentAPIName(command);
  return kvU_ERR_Handler(allocation_error);
}

/// Runs a command. One that runs out of memory fails and says so, also where it could go on with less: what it took is
/// given back.
std::int32_t run_command(const std::string& application, const std::string& command, const std::string& arguments) try {
  take_memory_shortage();
  const auto status = sch_ParseApplicationCommand(application, command, arguments);
  if (!take_memory_shortage()) return status;
  const auto shortage = report_shortage(command);
  return status != 0 ? status : shortage;
} catch (const std::bad_alloc&) {
  return report_shortage(command);
}

std::int32_t serve_command(Connection& core) {
  InputReader in{core};
  const std::int32_t threads = in.integer();
  const std::string application = in.text();
  const std::string command = in.text();
  const std::string arguments = in.text();
  if (!in.good) return 1;
  PD_send_int(core, thread_answer(application, [&] { return kvZ_COM_SetNThreadsF(threads); }));
  ensure_applications();
  cmd_done(run_command(application, command, arguments));
  return 0;
}

std::int32_t serve_request(Connection& core) {
  InputReader in{core};
  in.integer();  // the thread request: a data request never changes the number of threads
  const std::string application = in.text();
  const std::string keys = in.text();
  const std::int32_t key_count = in.integer();
  const std::int32_t selector = in.integer();
  const std::int32_t capacity = in.integer();
  if (!in.good) return 1;
  PD_send_int(core, thread_answer(application, kvZ_COM_GetNThreads));
  ensure_applications();
  std::string reply;
  std::int32_t answers = 0;
  const std::int32_t status = sch_AppData({application, keys, key_count, selector, capacity}, reply, answers);
  request_done();
  PD_send0_longstring(core, reply);
  PD_send0_int(core, answers);
  if (answers < key_count) PD_send0_int(core, status);
  PNC_flush(core);
  return 0;
}

void serve_terminate() {
  if (applications_started) sch_TerminateApplications();
  applications_started = false;
  request_done();
  termination_requested = true;
}

/// Serves a notification that only started applications can take.
void serve_notification(void (*notification)()) {
  ensure_applications();
  notification();
  request_done();
}

}  // namespace

void cmd_done(std::int32_t status) {
  if (kvC_API_pnc == nullptr) return;
  need_core();
  PD_send0_int(*kvC_API_pnc, output_code::done);
  PD_send_int(*kvC_API_pnc, status);
}

void request_done() {
  need_core();
  notify(output_code::done);
}
void detach_notify() { notify(output_code::detached); }
void error_notify() { notify(output_code::fatal_error); }

std::int32_t process_input(std::int32_t code) {
  Connection& core = *kvC_API_pnc;
  if (PD_send_int(core, output_code::ack) != 0) {
    std::printf("Error in application while sending ack to the core:\n\t%s\n", PLE_get_error());
    return 1;
  }
  switch (code) {
    case input_code::command:
      return serve_command(core);
    case input_code::request:
      return serve_request(core);
    case input_code::initialize:
      start_applications();
      request_done();
      return 0;
    case input_code::terminate:
      serve_terminate();
      return 0;
    case input_code::load:
      serve_notification(sch_LoadApplications);
      return 0;
    case input_code::save:
      serve_notification(sch_SaveApplications);
      return 0;
    default:
      std::printf("Unknown input %d in application\n", code);
      return 0;
  }
}

std::int32_t get_command() {
  if (kvC_API_pnc == nullptr && !connect_to_core()) return 1;
  keep_core();
  if (!is_connected(*kvC_API_pnc)) kvC_Error_handler();
  std::int32_t code = 0;
  if (PD_receive_int(*kvC_API_pnc, code, no_time_limit) == 0) return process_input(code);
  if (!termination_requested) {
    std::printf("Error in application: command was not received:\n\t%s\n", PLE_get_error());
  }
  return 1;
}

void extappl() {
  set_nested_input_handler(process_input);
  if (!connect_to_core()) return;
  while (get_command() == 0) {
  }
}

}  // namespace pathstat
