#include "shell/detaching.h"

#ifdef __linux__
#include <sys/prctl.h>
#endif
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "coreapi/operations.h"
#include "corelink/core_connection.h"
#include "corelink/host_name.h"
#include "corelink/last_error.h"
#include "corelink/typed_values.h"
#include "services/detaching.h"
#include "shell/core_start.h"
#include "shell/input_loop.h"
#include "shell/threads.h"
#include "support/text_field.h"

namespace pathstat {
namespace {

struct CoreAddress {
  Text<64> machine;
  Text<10> public_port;
  Text<64> process_name;

  bool is_known() const { return !process_name.view().empty() && !public_port.view().empty(); }
};
CoreAddress core_address;

constexpr std::int32_t called_seconds = 60;  ///< that a Core has which says that it is there

std::int32_t seconds_to_wait = 0;  ///< for the Core, once it is needed
bool detach_asked = false;
volatile std::sig_atomic_t core_calls = 0;

const char* host() {
  const char* name = COM_gethostname();
  return name != nullptr ? name : "localhost";
}

/// One thread for as long as it lives, as nothing but the wait for the Core may run.
class OneThread {
 public:
  OneThread() : kept_(kvZ_COM_GetNThreads()) {
    if (kept_ > 1) kvZ_COM_SetNThreadsF(1);
  }
  ~OneThread() {
    if (kept_ > 1) kvZ_COM_SetNThreadsF(kept_);
  }
  OneThread(const OneThread&) = delete;
  OneThread& operator=(const OneThread&) = delete;

 private:
  const std::int32_t kept_;
};

void take_up_connection() {
  PNC_init_write_buffer(*kvC_API_pnc, call_buffer_bytes);
  PD_send_int(*kvC_API_pnc, kvZ_COM_GetNThreads());
}

void detach() {
  detach_asked = false;
  // What started the process, and its terminal, may end as soon as the connection is closed.
  ::setsid();
#ifdef __linux__
  ::prctl(PR_SET_PDEATHSIG, 0);
#endif
  detach_notify();
  std::int32_t status = 0;
  kvZ_DetachApplication(status);
  core_absence.away = true;
  core_calls = 0;
}

void come_back() {
  std::int32_t status = 0;
  kvZ_ReattachApplication(seconds_to_wait, status);
  core_absence.away = false;
}

/// Lets a Core in that has called. One that does not come leaves everything as it was.
void answer_call() {
  core_calls = 0;
  {
    const OneThread alone;
    if (RJ_detached(*kvC_API_pnc, called_seconds) != 0) return;
  }
  take_up_connection();
  core_absence.away = false;
}

void look() {
  if (detach_asked && !core_absence.away) detach();
  if (core_absence.away && core_calls != 0) answer_call();
}

}  // namespace

void kvZ_DetachApplication(std::int32_t& status) {
  status = 0;
  const OneThread alone;
  std::int32_t error = 0;
  core_address = {};
  core_address.machine = kvC_API_pnc->peer;
  kvz_getapplprocessname_(core_address.process_name, error);
  if (error != 0) std::fputs("kvZ_DetachApplication: Cannot determine the process name\n", stderr);
  kvz_publicport_(0, core_address.public_port, error);
  PNC_close(*kvC_API_pnc);
  std::printf("Application (%d@%s) detached\n", ::getpid(), host());
}

void kvZ_ReattachApplication(std::int32_t seconds, std::int32_t& status) {
  status = 0;
  if (is_connected(*kvC_API_pnc)) {
    std::printf("kvZ_ReattachApplication: looks like there is a connection with Core!\n");
    return;
  }
  {
    const OneThread alone;
    std::int32_t failure = 0;
    if (core_address.is_known()) {
      std::printf("%d@%s: Sending message to the Core to reconnect within %d seconds\n", ::getpid(), host(), seconds);
      failure = RJ_detachedX(*kvC_API_pnc, seconds, [](const ListeningServer& server) {
        send_attach(core_address.machine.str(), core_address.public_port.str(), core_address.process_name.str(),
                    server);
      });
    } else {
      std::printf("%d@%s: Waiting %d seconds for reconnection...\n", ::getpid(), host(), seconds);
      failure = RJ_detached(*kvC_API_pnc, seconds);
    }
    if (failure != 0) {
      std::printf("Error: Cannot reconnect to the core:\n\t%s\n", PLE_get_error());
      std::exit(1);
    }
  }
  if (!is_connected(*kvC_API_pnc)) {
    std::printf("Error: Lost connection to the core\n");
    std::exit(2);
  }
  take_up_connection();
}

void detach_soon(std::int32_t seconds) {
  seconds_to_wait = seconds;
  detach_asked = true;
}

void watch_core() { core_absence = {.away = false, .look = look, .come_back = come_back}; }

void note_call_of_core() { core_calls = 1; }

}  // namespace pathstat
