#include "desk/cli/analyse_command.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <map>
#include <optional>
#include <string_view>

#include "desk/cli/import_command.h"
#include "desk/import/import_line.h"
#include "desk/messages/visible_text.h"
#include "desk/model/elements.h"
#include "desk/model/model_import.h"
#include "trajectory/binary_trajectory.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

/// Properties by the value of frames that they need.
struct PropertyRow {
  std::string_view name;
  std::int32_t key;
  bool needs_cell;
};
constexpr auto properties = std::to_array<PropertyRow>({
    {"\"Total Energy\"", 1032, false},
    {"\"Potential Energy\"", 1006, false},
    {"\"Kinetic Energy\"", 1034, false},
    {"Temperature", 1001, false},
    {"Pressure", 1042, true},
    {"Volume", 1043, true},
    {"Density", 1043, true},
    {"\"Cell Parameters\"", 1058, true},
});

constexpr double longest_cutoff = 10;      ///< of g(r), Å
constexpr std::size_t most_elements = 4;   ///< whose pairs are looked at, the most frequent first
constexpr std::int32_t fewest_frames = 8;  ///< for what is correlated

/// What a trajectory holds.
struct Holdings {
  std::int32_t frames = 0;
  double first_time = 0;
  double last_time = 0;
  bool velocities = false;
  bool periodic = false;
  std::vector<std::string_view> properties;

  double spacing() const { return frames > 1 ? (last_time - first_time) / (frames - 1) : 0; }
};

std::optional<double> value(std::int32_t handle, std::int32_t key) {
  std::array<double, 6> values{};
  std::int32_t count = 0, status = 0;
  kvA_TRJ_ValueDouble(handle, key, values, count, status);
  if (status != 0 || count < 1 || !std::isfinite(values[0])) return std::nullopt;
  return values[0];
}

std::string look_into(const fs::path& path, Holdings& found) {
  std::int32_t handle = 0, status = 0;
  kvA_TRJ_OpenRead(path.string(), binary_mode::read, handle, status);
  if (status != 0) return fmt::format("{} cannot be read as a trajectory", path.string());
  const auto& trajectory = *binary_trajectory(handle);
  found.periodic = trajectory.header.flags[0] > 0;
  for (kvA_TRJ_ReadFrame(handle, 1, status); status == 0; kvA_TRJ_ReadFrame(handle, found.frames + 1, status)) {
    found.last_time = value(handle, 1000).value_or(0);
    if (++found.frames > 1) continue;
    found.first_time = found.last_time;
    found.velocities = trajectory.frame.has(AtomGroup::velocities);
    for (const auto& row : properties) {
      if ((found.periodic || !row.needs_cell) && value(handle, row.key)) found.properties.push_back(row.name);
    }
  }
  std::int32_t closed = 0;
  kvA_TRJ_Close(handle, closed);
  return found.frames > 0 ? std::string{} : fmt::format("{} holds no frame", path.string());
}

/// The elements of a model, the most frequent first.
std::vector<std::string_view> frequent_elements(const MolecularModel& model) {
  std::map<std::uint8_t, std::size_t> counts;
  for (const auto element : model.elements) ++counts[element];
  std::vector<std::pair<std::uint8_t, std::size_t>> order(counts.begin(), counts.end());
  std::ranges::stable_sort(order, std::greater{}, [](const auto& entry) { return entry.second; });
  std::vector<std::string_view> symbols;
  symbols.reserve(order.size());
  for (const auto& [element, count] : order) symbols.push_back(elements()[element].symbol);
  symbols.resize(std::min(symbols.size(), most_elements));
  return symbols;
}

std::string properties_text(const Holdings& found) {
  if (found.properties.empty()) return {};
  std::string line = "SELECT_PROPERTIES";
  for (const auto name : found.properties) line += fmt::format(" {}", name);
  return fmt::format("\n# The course of the run.\n{}\nPROFILE\n", line);
}

std::string motion_text(const Holdings& found) {
  const double spacing = found.spacing();
  if (found.frames < fewest_frames || !(spacing > 0)) return {};
  const auto lags = found.frames / 2;
  const double longest = lags * spacing;
  auto text = fmt::format(
      "\n# How far atoms get, and the diffusion coefficient from the middle of it.\n"
      "MSD_MAX_INTERVAL_NO {}\nMSD\nMIN_FIT_TIME {:.6g}\nMAX_FIT_TIME {:.6g}\nLINEAR_FIT\n",
      lags, 0.2 * longest, 0.8 * longest);
  if (found.velocities) {
    text += fmt::format(
        "\n# How velocities forget themselves, and the spectrum of that.\nVAC_MAX_INTERVAL_NO "
        "{}\nVAC\nPOWER_SPECTRUM\n",
        lags);
  }
  return text;
}

std::string pairs_text(const MolecularModel& model) {
  double cutoff = longest_cutoff;
  if (model.periodic_type == periodic_3d) {
    const Lattice lattice(model.periodic_type, model.cell);
    // Cells of changing size get smaller than that of the model.
    for (std::size_t axis = 0; axis < 3; ++axis) cutoff = std::min(cutoff, 0.48 * lattice.width(axis));
  }
  auto text =
      fmt::format("\n# Which atoms stand around which.\nRDF_INTERVAL 0.05\nRDF_CUTOFF {:.2f}\n{}RDF_BETWEEN ELEMENTS\n",
                  std::floor(cutoff * 10) / 10, model.bonds.empty() ? "" : "RDF_COMPONENTS yes\n");
  const auto symbols = frequent_elements(model);
  for (std::size_t one = 0; one < symbols.size(); ++one) {
    for (std::size_t other = one; other < symbols.size(); ++other)
      text += fmt::format("RDF_TYPE {} {}\nRDF\n", symbols[one], symbols[other]);
  }
  return text;
}

int complain(std::string_view problem) {
  fmt::print(stderr, "pathdesk: {}\n", visible(problem));
  return exit_code::not_run;
}

}  // namespace

CLI::App* add_analyse_command(CLI::App& app, AnalyseWords& words) {
  auto* analyse = app.add_subcommand("analyse", "Analyses a run, of this or another program, as far as its files go");
  analyse->add_option("FILES", words.files, "A .trj with its .qfx beside it, or a topology and its trajectories")
      ->required()
      ->option_text(" ");
  add_import_options(*analyse, words.import);
  return analyse;
}

int run_analyse(const RunOptions& options, AnalyseWords words) {
  std::error_code error;
  fs::create_directories(options.output, error);
  if (error) return complain(fmt::format("the folder {} cannot be made: {}", options.output.string(), error.message()));
  auto trajectory = words.files.back();
  if (words.files.size() > 1 || trajectory.extension() != ".trj") {
    auto& import = words.import;
    import.topology = words.files.front();
    import.trajectories.assign(words.files.begin() + 1, words.files.end());
    import.output = options.output / trajectory.stem();
    trajectory = fs::path(import.output).concat(".trj");
    if (const int code = run_import(std::move(words.import)); code != exit_code::success) return code;
  }
  Holdings found;
  if (const auto problem = look_into(trajectory, found); !problem.empty()) return complain(problem);
  const auto imported = read_model_file(fs::path(trajectory).replace_extension(".qfx").string());
  if (!imported.problem.empty()) return complain(imported.problem);
  const auto& model = imported.models.front();
  const auto script = options.output / "analyse.script";
  std::ofstream file(script);
  file << fmt::format(
              "# What pathdesk analyse did; change it, and pathdesk run {} does it again.\nTRAJECTORY "
              "{}\n@stop-on-error no\n",
              script.string(), fs::absolute(trajectory).string())
       << properties_text(found) << motion_text(found) << pairs_text(model);
  file.close();
  if (!file) return complain(fmt::format("{} cannot be written", script.string()));
  return run_script(options, script);
}

}  // namespace pathstat::desk
