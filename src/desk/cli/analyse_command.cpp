#include "desk/cli/analyse_command.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <optional>
#include <string_view>

#include "desk/advice/trajectory_advice.h"
#include "desk/cli/import_command.h"
#include "desk/import/import_line.h"
#include "desk/messages/visible_text.h"
#include "desk/model/model_import.h"
#include "desk/report/result_folder.h"
#include "desk/script/script.h"
#include "structure/elements.h"
#include "trajectory/binary_keys.h"
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

constexpr std::int32_t key_of_varying_cell = 3003;
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
  bool cell_varies = false;
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
  found.cell_varies = trajectory.header.flags[flag_word(key_of_varying_cell)] != 0;
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
  if (status != binary_status::end_of_file)
    return fmt::format("frame {} of {} cannot be read (status {})", found.frames + 1, path.string(), status);
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

std::string properties_text(const Holdings& found, const MolecularModel& model) {
  if (found.properties.empty()) return {};
  const bool has_mass = std::ranges::any_of(model.masses, [](double mass) { return mass > 0; });
  std::string line = "SELECT_PROPERTIES";
  for (const auto name : found.properties) {
    if (has_mass || name != "Density") line += fmt::format(" {}", name);
  }
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

/// @param load  the line that loads the trajectory to do it with; empty for the one that is there
std::string pairs_text(const MolecularModel& model, std::string_view load) {
  double cutoff = longest_cutoff;
  if (model.periodic_type == periodic_3d) {
    const Lattice lattice(model.periodic_type, model.cell);
    // Cells of changing size get smaller than that of the model.
    for (std::size_t axis = 0; axis < 3; ++axis) cutoff = std::min(cutoff, 0.48 * lattice.width(axis));
  }
  auto text = fmt::format(
      "\n# Which atoms stand around which{}.\n{}RDF_INTERVAL 0.05\nRDF_CUTOFF {:.2f}\n{}RDF_BETWEEN ELEMENTS\n",
      load.empty() ? "" : ": where the run has them in its cells", load, std::floor(cutoff * 10) / 10,
      model.bonds.empty() ? "" : "RDF_COMPONENTS yes\n");
  const auto symbols = frequent_elements(model);
  for (std::size_t one = 0; one < symbols.size(); ++one) {
    for (std::size_t other = one; other < symbols.size(); ++other)
      text += fmt::format("RDF_TYPE {} {}\nRDF\n", symbols[one], symbols[other]);
  }
  return text;
}

/// What is wrong with the files and options together.
std::string about_files(const AnalyseWords& words, bool own) {
  const auto& first = words.files.front();
  if (own && !words.import_words.empty()) {
    return fmt::format("{}: only for files of other programs, and {} is a trajectory of this one",
                       fmt::join(words.import_words, ", "), first.string());
  }
  if (own) {
    const auto why = why_not_loaded(first, 0);
    return why.empty() ? why : fmt::format("{} cannot be loaded: {}", first.string(), why);
  }
  if (first.extension() == ".qfx" || first.extension() == ".trj") {
    return fmt::format("{} is of this program, and analysed alone: name the .trj, beside which its .qfx lies",
                       first.string());
  }
  return {};
}

/// A name with what a line of a script cannot hold between quotes made plain.
std::string name_for_scripts(std::string name) {
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c == '"' || c == '\'' || static_cast<unsigned char>(c) < ' '; },
      '_');
  return name;
}

/// The line of a script in this folder that loads the trajectory. One whose path no quotes can hold gets a link of a
/// plain name beside the script.
///
/// @return empty, or why there is no such line
std::string name_line(const fs::path& folder, const fs::path& trajectory, std::string& line) {
  const auto plain = [](const fs::path& path) {
    const auto text = path.string();
    const auto unfit = [](unsigned char c) { return c < ' '; };
    return std::ranges::none_of(text, unfit) && (text.find('"') == text.npos || text.find('\'') == text.npos);
  };
  const auto home = fs::absolute(folder).lexically_normal();
  auto path = fs::absolute(trajectory).lexically_normal();
  if (!plain(home)) return fmt::format("no script can name the folder {}; give another one (--out)", folder.string());
  if (!plain(path)) {
    const auto link = home / name_for_scripts(path.stem().string());
    for (const auto* extension : {".trj", ".qfx"}) {
      std::error_code error;
      const auto name = fs::path(link).concat(extension);
      if (fs::is_symlink(name, error)) fs::remove(name, error);  // of an earlier analysis
      fs::create_symlink(fs::path(path).replace_extension(extension), name, error);
      if (error) return fmt::format("{} cannot be made: {}", name.string(), error.message());
    }
    path = fs::path(link).concat(".trj");
  }
  line = fmt::format("TRAJECTORY {}\n", in_quotes(path.string()));
  return {};
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
  const auto others = analyse->get_options().size();
  add_import_options(*analyse, words.import);
  const auto all = analyse->get_options();
  analyse->parse_complete_callback(
      [&words, options = std::vector(all.begin() + static_cast<std::ptrdiff_t>(others), all.end())] {
        for (const auto* option : options) {
          if (option->count() > 0) words.import_words.push_back(option->get_name());
        }
      });
  return analyse;
}

int run_analyse(const RunOptions& options, AnalyseWords words) {
  auto trajectory = words.files.back();
  const bool own = words.files.size() == 1 && trajectory.extension() == ".trj";
  if (const auto problem = about_files(words, own); !problem.empty()) return complain(problem);
  std::error_code error;
  const bool made = fs::create_directories(options.output, error);
  if (error) return complain(fmt::format("the folder {} cannot be made: {}", options.output.string(), error.message()));
  if (!own) {
    auto& import = words.import;
    import.topology = words.files.front();
    import.trajectories.assign(words.files.begin() + 1, words.files.end());
    import.output = options.output / name_for_scripts(trajectory.stem().string());
    trajectory = fs::path(import.output).concat(".trj");
    if (const int code = run_import(import); code != exit_code::success) {
      if (made) fs::remove(options.output, error);
      return code;
    }
  }
  Holdings found;
  if (const auto problem = look_into(trajectory, found); !problem.empty()) return complain(problem);
  const auto imported = read_model_file(fs::path(trajectory).replace_extension(".qfx").string());
  if (!imported.problem.empty()) return complain(imported.problem);
  const auto& model = imported.models.front();
  std::string line, line_for_pairs;
  if (const auto problem = name_line(options.output, trajectory, line); !problem.empty()) return complain(problem);
  if (!own && found.cell_varies && !words.import.as_is && !words.import.whole) {
    // Molecules that were followed through such a cell do not stand where the run has them.
    words.import.whole = true;
    words.import.output += "-whole";
    if (const int code = run_import(words.import); code != exit_code::success) return code;
    const auto whole = fs::path(words.import.output).concat(".trj");
    if (const auto problem = name_line(options.output, whole, line_for_pairs); !problem.empty())
      return complain(problem);
    line_for_pairs.insert(0, "@answer PATHSTAT_DLG_1 1\n");  // its own model goes with it
  }
  constexpr const char* script = "analyse.script";
  ResultFolder results(options.output);
  if (!results.write(script,
                     "# What pathdesk analyse did; change it, and pathdesk run analyse.script does it again.\n" + line +
                         "@stop-on-error no\n" + properties_text(found, model) + motion_text(found) +
                         pairs_text(model, line_for_pairs))) {
    return complain(results.take_problems().front());
  }
  return run_script(options, options.output / script);
}

}  // namespace pathstat::desk
