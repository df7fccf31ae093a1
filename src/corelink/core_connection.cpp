#include "corelink/core_connection.h"

#include <cstdio>
#include <cstdlib>

namespace pathstat {

void kvC_Error_handler(int) {
  std::fputs("Communications with Varlane Core has been lost, must exit.\n", stdout);
  std::exit(1);
}

}  // namespace pathstat
