#include "desk/cli/import_command.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "desk/import/import_line.h"
#include "desk/script/console.h"
#include "desk/script/interrupts.h"
#include "desk/script/script_run.h"

namespace pathstat::desk {
namespace {

constexpr const char* import_help =
    "Reads whatever MDAnalysis reads (package python3-mdanalysis): GROMACS tpr, gro, xtc, trr; LAMMPS data, dump;\n"
    "Amber prmtop, nc; CHARMM and NAMD psf, dcd; PDB, XYZ and the rest. Writes NAME.trj and NAME.qfx, both or "
    "neither.\n"
    "Molecules are made whole, and atoms are followed out of the cell that the run has wrapped them into.\n\n"
    "Exit code: 0 all went well, 1 it failed, 130 interrupted; then nothing is left behind.";

}  // namespace

CLI::App* add_import_command(CLI::App& app, ImportOptions& o) {
  auto* import = app.add_subcommand("import", "Makes a trajectory and a model of the files of another program");
  import->add_option("TOPOLOGY", o.topology, "Atoms, bonds and charges: tpr, data, prmtop, psf, gro, pdb, ...")
      ->required()
      ->option_text(" ");
  import
      ->add_option("TRAJECTORY", o.trajectories, "Coordinates, one file behind the other: xtc, trr, dump, nc, dcd, ...")
      ->option_text(" ");
  import
      ->add_option("-o,--output", o.output,
                   "Name of the files, without extension; that of the first trajectory without it")
      ->option_text("NAME");
  add_import_options(*import, o);
  import->footer(import_help);
  return import;
}

int run_import(ImportOptions options) {
  if (options.output.empty()) {
    const auto& named = options.trajectories.empty() ? options.topology : options.trajectories.front();
    options.output = named.stem();
  }
  watch_interrupts();
  Console console;
  console.set_activity(fmt::format("import {}", options.output.string()));
  const auto result = import_run(options, {.tell = [&](std::string_view text) { console.print(text); },
                                           .progress = [&](double share) { console.show_progress(share); }});
  console.clear();
  switch (result.end) {
    case ImportEnd::done:
      return exit_code::success;
    case ImportEnd::interrupted:
      console.complain("pathdesk: interrupted; nothing is written");
      return exit_code::interrupted;
    case ImportEnd::failed:
      break;
  }
  console.complain("pathdesk: " + result.problem);
  return exit_code::command_failed;
}

}  // namespace pathstat::desk
