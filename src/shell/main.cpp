#include <cstdio>
#include <cstdlib>

#include "shell/analysis.h"
#include "shell/application_table.h"
#include "shell/fatal_signals.h"
#include "shell/input_loop.h"
#include "shell/program_arguments.h"

namespace {

void uf_LineBufferTextportOutput() {
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  std::setvbuf(stderr, nullptr, _IOLBF, BUFSIZ);
}

}  // namespace

int main(int argc, char** argv) {
  using namespace pathstat;
  main_argc = argc;
  main_argv = argv;
  install_signal_handlers();
  uf_LineBufferTextportOutput();
  register_application(
      {set_pathstat_, get_pathstat_, init_pathstat_, terminate_pathstat_, load_pathstat_, save_pathstat_});
  extappl();
  std::printf("Close external process: %s\n", argc < 1 ? "" : argv[0]);
  std::exit(0);
}
