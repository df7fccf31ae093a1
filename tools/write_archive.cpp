// Writes frames of a binary trajectory as an archive:
//   write_archive RUN.trj MODEL.qfx OUT.arc text|records STEP FRAMES
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>

#include "archive_writer.h"

int main(int argc, char** argv) try {
  if (argc != 7) return std::fputs("write_archive RUN.trj MODEL.qfx OUT.arc text|records STEP FRAMES\n", stderr), 2;
  using pathstat::ArchiveForm;
  const ArchiveForm form = std::string_view(argv[4]) == "records" ? ArchiveForm::records : ArchiveForm::text;
  pathstat::write_archive_of_run(argv[1], argv[2], argv[3], form, std::atoi(argv[5]), std::atoi(argv[6]));
  return 0;
} catch (const std::exception& problem) {
  std::fprintf(stderr, "write_archive: %s\n", problem.what());
  return 1;
}
