#include "desk/cli/import_command.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <map>

#include "desk/messages/visible_text.h"
#include "desk/script/console.h"
#include "desk/script/interrupts.h"
#include "desk/script/script_run.h"

namespace pathstat::desk {
namespace {

const std::map<std::string, Ensemble> ensemble_words{
    {"nve", Ensemble::nve}, {"nvt", Ensemble::nvt}, {"nph", Ensemble::nph}, {"npt", Ensemble::npt}};

constexpr const char* import_help =
    "Reads whatever MDAnalysis reads (package python3-mdanalysis): GROMACS tpr, gro, xtc, trr; LAMMPS data, dump;\n"
    "Amber prmtop, nc; CHARMM and NAMD psf, dcd; PDB, XYZ and the rest. Writes NAME.trj and NAME.qfx, both or "
    "neither.\n"
    "Molecules are made whole, and atoms are followed out of the cell that the run has wrapped them into.\n\n"
    "Exit code: 0 all went well, 1 it failed, 130 interrupted; then nothing is left behind.";

}  // namespace

void add_import_options(CLI::App& app, ImportOptions& o) {
  app.add_option("--select", o.selection, "Atoms to take, in the selection language of MDAnalysis")
      ->option_text("\"name OW\"");
  app.add_option("--energies", o.energies,
                 "Energies, temperature and pressure by time: a LAMMPS log, .xvg, .edr (through gmx) or .csv")
      ->option_text("LOG");
  app.add_option("--energy-units", o.energy_units, "Unit of the energies; that of the program without it")
      ->check(CLI::IsMember({"kcal/mol", "kJ/mol", "eV"}))
      ->option_text("kcal/mol|kJ/mol|eV");
  app.add_option("--first", o.first, "First frame to take, from 1")->check(CLI::PositiveNumber)->option_text("N");
  app.add_option("--last", o.last, "Last frame to take")->check(CLI::PositiveNumber)->option_text("N");
  app.add_option("--step", o.step, "Takes one of so many frames")->check(CLI::PositiveNumber)->option_text("N");
  app.add_option("--dt", o.spacing_ps, "Time between frames in ps, where the files do not tell it")
      ->check(CLI::PositiveNumber)
      ->option_text("PS");
  app.add_option("--timestep", o.timestep, "Time step of LAMMPS in its own unit; from its log without it")
      ->check(CLI::PositiveNumber)
      ->option_text("T");
  app.add_option("--lammps-units", o.lammps_units, "Units of LAMMPS; from its files without it")
      ->check(CLI::IsMember({"real", "metal", "electron", "nano", "si", "cgs"}))
      ->option_text("real|metal|electron|nano|si|cgs");
  app.add_option("--constraints", o.constraints, "Constraints, which take degrees of freedom away from the temperature")
      ->check(CLI::NonNegativeNumber)
      ->option_text("N");
  app.add_flag("--as-is", o.as_is, "Leaves coordinates as they are in the file");
  app.add_option("--trajectory-format", o.format, "Format of the trajectories, in the words of MDAnalysis")
      ->option_text("XTC");
  app.add_option("--topology-format", o.topology_format, "Format of the topology")->option_text("TPR");
}

CLI::App* add_import_command(CLI::App& app, ImportWords& words) {
  auto& o = words.options;
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
  import->add_option("--ensemble", words.ensemble, "How the run was controlled, for heat capacities and the like")
      ->check(CLI::IsMember(ensemble_words))
      ->option_text("nve|nvt|nph|npt");
  import->footer(import_help);
  return import;
}

int run_import(ImportWords words) {
  auto& options = words.options;
  if (!words.ensemble.empty()) options.ensemble = ensemble_words.at(words.ensemble);
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
