#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "desk/import/trajectory_output.h"

namespace pathstat::desk {

/// What to bring in, and how. Texts that are empty are left to be found out.
struct ImportOptions {
  std::filesystem::path topology;
  std::vector<std::filesystem::path> trajectories;  ///< empty: the topology has coordinates too
  std::filesystem::path energies;
  std::filesystem::path output;  ///< without extension: .trj and .qfx come behind it
  std::string format;            ///< of the trajectories, in the words of MDAnalysis
  std::string topology_format;
  std::string selection;
  std::string energy_units;
  std::string lammps_units;
  std::optional<std::int64_t> first, last, step;
  std::optional<double> spacing_ps;  ///< between frames
  std::optional<double> timestep;    ///< of LAMMPS, in its unit of time
  std::int64_t constraints = 0;
  Ensemble ensemble = Ensemble::unknown;
  bool as_is = false;  ///< coordinates stay as they are in the file
  bool whole = false;  ///< molecules are whole, and stay where they are
};

/// Where an import tells how it goes.
struct ImportEvents {
  std::function<void(std::string_view)> tell;
  std::function<void(double)> progress;  ///< share of the frames
};

enum class ImportEnd { done, failed, interrupted };

struct ImportResult {
  ImportEnd end = ImportEnd::failed;
  std::string problem;  ///< of a failure
};

/// Brings a run of another program in: writes output.trj and output.qfx, both or neither. Files of these names are
/// replaced at the end only. Memory is that of a few frames.
ImportResult import_run(const ImportOptions& options, const ImportEvents& events);

}  // namespace pathstat::desk
