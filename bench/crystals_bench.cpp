// Crystals of 100,000 atoms and more, built by the real process over the wire, with the number of calls that it takes.
// The atoms under 192 operators stand on a jittered grid, so that they are as far apart as those of real crystals.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "process/desk_with_process.h"

namespace {

using pathstat::desk::DeskWithProcess;

constexpr double spacing = 2.2;  // Å

/// Writes so many sites in a cubic cell, as if it were filled by that many times the operators.
std::string crystal_file(const char* group, std::size_t sites, std::size_t operators) {
  const auto path = std::filesystem::temp_directory_path() / ("crystal_" + std::to_string(sites) + ".cif");
  const double edge = spacing * std::cbrt(static_cast<double>(sites * operators));
  std::ofstream file(path);
  file << "data_crystal\n";
  for (const char axis : {'a', 'b', 'c'}) file << "_cell_length_" << axis << ' ' << edge << '\n';
  for (const auto* angle : {"alpha", "beta", "gamma"}) file << "_cell_angle_" << angle << " 90\n";
  file << "_symmetry_space_group_name_H-M '" << group << "'\nloop_\n_atom_site_label\n";
  for (const char axis : {'x', 'y', 'z'}) file << "_atom_site_fract_" << axis << '\n';
  const auto across = static_cast<std::size_t>(std::ceil(std::cbrt(static_cast<double>(sites))));
  // The asymmetric unit of F m -3 m lies in this part of the cell, and P 1 takes all of it.
  const double part = operators == 1 ? 1.0 : 0.25;
  std::mt19937 random(1);
  std::uniform_real_distribution<double> jitter(0.3, 0.7);
  for (std::size_t k = 0; k < sites; ++k) {
    file << 'C' << k;
    for (const auto cell : {k % across, k / across % across, k / across / across}) {
      file << ' ' << part * (static_cast<double>(cell) + jitter(random)) / static_cast<double>(across);
    }
    file << '\n';
  }
  return path.string();
}

void build_crystal(benchmark::State& state, const char* group, std::size_t operators) {
  const auto path = crystal_file(group, static_cast<std::size_t>(state.range(0)), operators);
  double calls = 0, atoms = 0;
  for (auto _ : state) {
    state.PauseTiming();
    {
      DeskWithProcess desk;
      desk.run("IMPORT_STRUCTURE", path);
      const auto before = desk.server.served();
      state.ResumeTiming();
      const auto status = desk.run("BUILD_CRYSTAL");
      state.PauseTiming();
      if (status != 0) state.SkipWithError("the crystal is not built");
      calls = static_cast<double>(desk.server.served() - before);
      atoms = static_cast<double>(desk.model.model(desk.model.current_model())->data.atoms());
    }
    state.ResumeTiming();
  }
  std::filesystem::remove(path);
  state.counters["calls"] = calls;
  state.counters["atoms"] = atoms;
}

void crystal_in_p1(benchmark::State& state) { build_crystal(state, "P 1", 1); }
void crystal_under_192_operators(benchmark::State& state) { build_crystal(state, "F m -3 m", 192); }

BENCHMARK(crystal_in_p1)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(crystal_under_192_operators)->Arg(10)->Arg(1000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
