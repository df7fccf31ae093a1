#include "trajectory/archive_file.h"

#include <vector>

#include "fuzz_input.h"

using namespace pathstat;

/// Any bytes, as an archive of the form that their first line tells: each operation ends, with a status, and the atoms
/// fit into what the file can hold.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(data, size);
  std::int32_t status = 0;
  ArchiveFile archive(file.descriptor(), status);
  if (status == 0) {
    const auto atoms = static_cast<std::size_t>(archive.header().atoms);
    if (8 * atoms > size) __builtin_trap();
    std::vector<double> positions(3 * atoms), charges(atoms);
    ArchiveFrame values;
    for (const std::int32_t frame : {1, 2, 5, 3, 1, 2147483647, 0}) {
      archive.read(frame, values, positions, charges, status);
      archive.goes_on();
    }
  }
  return 0;
}
