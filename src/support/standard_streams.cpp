#include "support/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

namespace pathstat {

void open_standard_streams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    // The lowest descriptor that is free is this one.
    if (::fcntl(stream, F_GETFD) < 0) ::open("/dev/null", O_RDWR);
  }
}

}  // namespace pathstat
