#include "shell/core_start.h"

#include <cstdio>
#include <cstdlib>
#include <new>

#include "corelink/core_connection.h"
#include "corelink/last_error.h"
#include "corelink/typed_values.h"

namespace pathstat {
namespace {

constexpr const char* greeting = "remote process success IEEE";

}  // namespace

const char* RJ_execed(Connection& record) {
  record = {};
  const char* machine = std::getenv("RJMACHINE");
  const char* protocol = std::getenv("RJPROTOCOL");
  const char* server = std::getenv("RJSERVER");
  if (machine == nullptr || protocol == nullptr || server == nullptr) {
    PLE_error("Job creation failed: environment variables not set");
    return nullptr;
  }
  PNC_create_client(record, machine, server, protocol);
  if (record.state != connection_state::client) {
    PLE_error("Could not contact local process.\n\t%s", PLE_get_error());
    return nullptr;
  }
  if (PD_send_string(record, greeting) != 0) {
    PLE_error("Protocol error with local process.\n\t%s", PLE_get_error());
    PNC_close(record);
    return nullptr;
  }
  return "somejob";
}

bool connect_to_core() {
  if (kvC_API_pnc == nullptr) kvC_API_pnc = new (std::nothrow) Connection;
  if (kvC_API_pnc == nullptr) {
    std::fputs("extappl: Cannot allocate memory for PNC\n", stderr);
    return false;
  }
  if (RJ_execed(*kvC_API_pnc) == nullptr) {
    std::printf("Error in application: Cannot connect to the Core:\n\t%s\n", PLE_get_error());
    return false;
  }
  if (!is_connected(*kvC_API_pnc)) kvC_Error_handler();
  PNC_init_write_buffer(*kvC_API_pnc, call_buffer_bytes);
  return true;
}

}  // namespace pathstat
