#include "shell/threads.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "corelink/environment.h"
#include "corelink/host_name.h"
#include "support/parallel.h"

namespace pathstat {
namespace {

struct ThreadPool {
  bool trace;
  std::int32_t processors;
  std::int32_t preset;
  std::int32_t threads;
};

ThreadPool first_pool() {
  const bool trace = std::getenv("NCPU_DEBUG") != nullptr;
  const auto processors = static_cast<std::int32_t>(std::max(1L, ::sysconf(_SC_NPROCESSORS_ONLN)));
  if (trace) {
    const char* host = COM_gethostname();
    std::printf("COM_ncpu_init: processors on %s: %d\n", host != nullptr ? host : "localhost", processors);
  }
  const char* variable = std::getenv("MP_SET_NUMTHREADS") != nullptr ? "MP_SET_NUMTHREADS" : "NPROC";
  const std::int32_t preset = COM_getnumenv(variable, processors);
  return {trace, processors, preset, preset};
}

ThreadPool& pool() {
  static ThreadPool instance = first_pool();
  return instance;
}

}  // namespace

void start_threads() { set_thread_count(pool().threads); }

std::int32_t kvZ_COM_GetNProc() { return pool().processors; }

std::int32_t kvZ_COM_GetNThreads() {
  if (pool().trace) std::printf("kvZ_COM_GetNThreads: nthread=%d\n", pool().threads);
  return pool().threads;
}

std::int32_t kvZ_COM_SetNThreadsF(std::int32_t count) {
  auto& [trace, processors, preset, threads] = pool();
  if (trace) std::printf("kvZ_COM_SetNThreads: Currently %d threads\n", threads);
  if (count < 1) {
    if (trace) std::printf("-- create preset %d thread(s), or %d (number of CPUs)\n", preset, processors);
    count = preset;
  }
  if (count != threads) {
    if (trace) std::printf("kvZ_COM_SetNThreads: creating %d threads\n", count);
    threads = count;
    set_thread_count(count);
  }
  return count;
}

std::int32_t kvZ_COM_SetNThreads(std::int32_t count) {
  const std::int32_t processors = kvZ_COM_GetNProc();
  if (count > processors) {
    std::fprintf(stderr, "You have asked for more threads (%d) than available processors (%d)\n", count, processors);
    count = processors;
  }
  return kvZ_COM_SetNThreadsF(count);
}

}  // namespace pathstat
