#include <cstdio>
#include <cstdlib>
#include <new>

#include "coreapi/error_reporting.h"
#include "coreapi/operations.h"
#include "main/applications.h"
#include "measures/measures.h"
#include "plots/labels.h"
#include "shell/application_table.h"
#include "shell/detaching.h"
#include "shell/fatal_signals.h"
#include "shell/input_loop.h"
#include "shell/program_arguments.h"
#include "shell/threads.h"
#include "support/memory_watch.h"
#include "support/named_memory.h"
#include "support/standard_streams.h"

namespace {

void uf_LineBufferTextportOutput() {
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  std::setvbuf(stderr, nullptr, _IOLBF, BUFSIZ);
}

void show_memory_error(std::int32_t severity, std::string_view text) {
  std::int32_t error = 0;
  pathstat::cmd_error_(severity, text, error);
}

void report_allocation_failure(std::string_view routine, std::string_view) {
  constexpr std::int32_t allocation_error = 1;
  pathstat::kvU_ERR_SetCurrentAPIName(routine);
  pathstat::kvU_ERR_Handler(allocation_error);
}

void run_applications() {
  using namespace pathstat;
  start_threads();
  set_memory_error_sink(show_memory_error);
  set_memory_failure_hook(report_allocation_failure);
  register_measure_labels(measure_label);
  watch_core();
  register_applications(applications_of_process());
  extappl();
}

}  // namespace

int main(int argc, char** argv) {
  using namespace pathstat;
  open_standard_streams();
  main_argc = argc;
  main_argv = argv;
  install_signal_handlers();
  watch_memory();
  uf_LineBufferTextportOutput();
  try {
    run_applications();
  } catch (const std::bad_alloc&) {
    std::puts("Not enough memory, must exit.");
    std::exit(1);
  }
  std::printf("Close external process: %s\n", argc < 1 ? "" : argv[0]);
  std::exit(0);
}
