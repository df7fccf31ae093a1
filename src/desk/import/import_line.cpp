#include "desk/import/import_line.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <system_error>

#include "desk/advice/nearest.h"
#include "desk/model/part_file.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

const std::map<std::string, Ensemble> ensemble_words{
    {"nve", Ensemble::nve}, {"nvt", Ensemble::nvt}, {"nph", Ensemble::nph}, {"npt", Ensemble::npt}};

std::optional<double> number_in_full(const std::string& word) {
  double number = 0;
  const auto [end, status] = std::from_chars(word.data(), word.data() + word.size(), number);
  const bool right = status == std::errc{} && end == word.data() + word.size() && std::isfinite(number);
  return right ? std::optional(number) : std::nullopt;
}

// What CLI11 says itself of a word that is no such number names the limits of its type.
std::string above_zero(const std::string& word) {
  return number_in_full(word).value_or(0) > 0 ? std::string{} : fmt::format("{} is no number above 0", word);
}
std::string not_negative(const std::string& word) {
  return number_in_full(word).value_or(-1) >= 0 ? std::string{} : fmt::format("{} is no number from 0 on", word);
}

/// What was probably meant by an option that is not known; empty if nothing comes near.
std::string meant_option(const CLI::App& app, const std::vector<std::string>& words) {
  std::vector<std::string> known;
  for (const auto* option : app.get_options()) {
    for (const auto& name : option->get_lnames()) known.push_back("--" + name);
  }
  for (const auto& word : words) {
    const auto name = word.substr(0, word.find('='));
    if (!name.starts_with("--") || std::ranges::find(known, name) != known.end()) continue;
    const auto meant = did_you_mean(name, known);
    return fmt::format("there is no option {}{}{}", name, meant.empty() ? "" : "; ", meant);
  }
  return {};
}

bool is_plain_name(const std::string& name) {
  return !name.empty() && name.front() != '.' && name.front() != '-' && name.front() != '$' && name.front() != '~' &&
         name.find_first_of("/\"'") == std::string::npos;
}

std::string content(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The files of an import and its words, beside them.
struct Files {
  explicit Files(const fs::path& output)
      : made{fs::path(output).concat(".trj"), fs::path(output).concat(".qfx")},
        note(fs::path(output).concat(".import")) {}

  std::array<fs::path, 2> made;
  fs::path note;
};

bool is_up_to_date(const Files& files, const ImportOptions& options, const std::string& words) {
  std::error_code error;
  const auto begun = fs::last_write_time(files.note, error);
  if (error || content(files.note) != words) return false;
  auto inputs = options.trajectories;
  inputs.push_back(options.topology);
  if (!options.energies.empty()) inputs.push_back(options.energies);
  return std::ranges::all_of(files.made,
                             [](const fs::path& path) {
                               std::error_code missing;
                               return fs::is_regular_file(path, missing);
                             }) &&
         std::ranges::all_of(inputs, [&](const fs::path& path) {
           std::error_code missing;
           const auto written = fs::last_write_time(path, missing);
           return !missing && written <= begun;
         });
}

}  // namespace

void add_import_options(CLI::App& app, ImportOptions& o) {
  app.add_option("--select", o.selection, "Atoms to take, in the selection language of MDAnalysis")
      ->option_text("\"name OW\"");
  app.add_option("--energies", o.energies,
                 "Energies, temperature and pressure by time: a LAMMPS log, .xvg, .edr (through gmx) or .csv")
      ->option_text("LOG");
  app.add_option("--energy-units", o.energy_units, "Unit of the energies; that of the program without it")
      ->check(CLI::IsMember({"kcal/mol", "kJ/mol", "eV"}, CLI::ignore_case))
      ->option_text("kcal/mol|kJ/mol|eV");
  app.add_option("--first", o.first, "First frame to take, from 1")->check(above_zero)->option_text("N");
  app.add_option("--last", o.last, "Last frame to take")->check(above_zero)->option_text("N");
  app.add_option("--step", o.step, "Takes one of so many frames")->check(above_zero)->option_text("N");
  app.add_option("--dt", o.spacing_ps, "Time between frames in ps, where the files do not tell it")
      ->check(above_zero)
      ->option_text("PS");
  app.add_option("--timestep", o.timestep, "Time step of LAMMPS in its own unit; from its log without it")
      ->check(above_zero)
      ->option_text("T");
  app.add_option("--lammps-units", o.lammps_units, "Units of LAMMPS; from its files without it")
      ->check(CLI::IsMember({"real", "metal", "electron", "nano", "si", "cgs"}))
      ->option_text("real|metal|electron|nano|si|cgs");
  app.add_option("--constraints", o.constraints, "Constraints, which take degrees of freedom away from the temperature")
      ->check(not_negative)
      ->option_text("N");
  auto* as_is = app.add_flag("--as-is", o.as_is, "Leaves coordinates as they are in the file");
  app.add_flag("--whole", o.whole, "Makes molecules whole and follows none: for g(r) and densities in cells that vary")
      ->excludes(as_is);
  app.add_option("--trajectory-format", o.format, "Format of the trajectories, in the words of MDAnalysis")
      ->option_text("XTC");
  app.add_option("--topology-format", o.topology_format, "Format of the topology")->option_text("TPR");
  app.add_option_function<std::string>(
         "--ensemble", [&o](const std::string& word) { o.ensemble = ensemble_words.at(word); },
         "How the run was controlled, for heat capacities and the like")
      ->check(CLI::IsMember(ensemble_words))
      ->option_text("nve|nvt|nph|npt");
}

ImportLine read_import_line(const std::vector<std::string>& words, const fs::path& folder) {
  ImportLine line;
  auto& o = line.options;
  CLI::App app;
  app.set_help_flag("");
  app.add_option("NAME", line.name)->required();
  app.add_option("TOPOLOGY", o.topology)->required();
  app.add_option("TRAJECTORY", o.trajectories);
  add_import_options(app, o);
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::ParseError& error) {
    line.problem = meant_option(app, words);
    if (line.problem.empty()) line.problem = error.what();
    return line;
  }
  if (!is_plain_name(line.name)) {
    line.problem = fmt::format("{} is no name for the files: no folder, no quotes, no mark in front", line.name);
  }
  o.topology = folder / o.topology;
  for (auto& path : o.trajectories) path = folder / path;
  if (!o.energies.empty()) o.energies = folder / o.energies;
  return line;
}

ImportResult keep_import(const ImportOptions& options, const std::vector<std::string>& words,
                         const ImportEvents& events, bool& kept) {
  const Files files(options.output);
  const auto note = fmt::format("{}\n{}\n", options.topology.parent_path().string(), fmt::join(words, "\n"));
  kept = is_up_to_date(files, options, note);
  if (kept) return {ImportEnd::done, {}};
  std::error_code error;
  fs::remove(files.note, error);
  const auto begun = fs::file_time_type::clock::now();
  auto result = import_run(options, events);
  if (result.end != ImportEnd::done) return result;
  const PartFile part(files.note);
  if (!part.make().empty()) return result;  // without a note the import is done again next time
  std::ofstream(part.part()) << note;
  fs::last_write_time(part.part(), begun, error);
  if (!error) part.keep();
  return result;
}

}  // namespace pathstat::desk
