// Writes the first frames of a binary run as a history trajectory: the way in which the example of one was made.
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "trajectory/history_of_run.h"

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("history_example RUN.trj FRAMES OUT.his\n", stderr);
    return 2;
  }
  pathstat::testing_bytes::HistoryOfRun run(argv[1], std::atoi(argv[2]));
  const auto bytes = run.example();
  std::ofstream file(argv[3], std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.all().data()), static_cast<std::streamsize>(bytes.size()));
  return run.whole() && file.flush() ? 0 : 1;
}
