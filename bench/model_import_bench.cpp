#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cmath>
#include <filesystem>
#include <string>

#include "desk/model/bond_search.h"
#include "desk/model/connectivity.h"
#include "desk/model/data_model.h"
#include "desk/model/model_edit.h"
#include "desk/model/model_export.h"
#include "desk/model/model_import.h"
#include "structure/elements.h"

namespace {

using namespace pathstat::desk;

/// Water molecules on a lattice of 3.1 Å: names that differ from atom to atom, coordinates of full precision.
MolecularModel water_box(std::size_t atoms) {
  MolecularModel model;
  const auto edge = std::ceil(std::cbrt(static_cast<double>(atoms) / 3));
  model.name = "water";
  model.periodic_type = periodic_3d;
  for (std::size_t k = 0; k < 3; ++k) model.cell[k][k] = 3.1 * edge;
  const pathstat::Vector3 shape[] = {{0, 0, 0}, {0.81649, 0.57736, 0}, {-0.81649, 0.57736, 0}};
  for (std::size_t k = 0; k < atoms; ++k) {
    const auto molecule = static_cast<double>(k / 3);
    const auto& offset = shape[k % 3];
    const auto oxygen = k % 3 == 0;
    const auto name = (oxygen ? "O" : "H") + std::to_string(k + 1);
    append_atom(model, static_cast<std::int32_t>(k + 1),
                {.element = pathstat::element_of_symbol(oxygen ? "O" : "H"),
                 .position = {3.1 * std::fmod(molecule, edge) + offset[0] + 1.0 / 7,
                              3.1 * std::fmod(std::floor(molecule / edge), edge) + offset[1] + 1.0 / 3,
                              3.1 * std::floor(molecule / (edge * edge)) + offset[2] + 1.0 / 11},
                 .name = name,
                 .ff_type = oxygen ? "OW" : "HW",
                 .residue = "WAT",
                 .residue_id = static_cast<std::int32_t>(k / 3 + 1),
                 .charge = oxygen ? -0.8476 : 0.4238});
    if (k % 3 != 0) model.bonds.emplace_back(k - k % 3, k);
  }
  model.file_atoms = model.atoms();
  model.file_bonds = model.bonds.size();
  return model;
}

void report_memory(benchmark::State& state) {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  state.counters["peak MiB"] = static_cast<double>(usage.ru_maxrss) / 1024;
  state.SetComplexityN(state.range(0));
}

std::string box_file(std::size_t atoms) {
  const auto path = std::filesystem::temp_directory_path() / ("water_box_" + std::to_string(atoms) + ".qfx");
  if (!std::filesystem::exists(path)) write_model_file(water_box(atoms), path.string());
  return path.string();
}

void import_model(benchmark::State& state) {
  const auto path = box_file(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    DataModel data;
    auto result = read_model_file(path);
    benchmark::DoNotOptimize(data.add_model(std::move(result.models.at(0))));
  }
  report_memory(state);
  std::filesystem::remove(path);
}

void export_model(benchmark::State& state) {
  const auto model = water_box(static_cast<std::size_t>(state.range(0)));
  const auto path = (std::filesystem::temp_directory_path() / "water_box_out.qfx").string();
  for (auto _ : state) benchmark::DoNotOptimize(write_model_file(model, path));
  report_memory(state);
  std::filesystem::remove(path);
}

void molecules(benchmark::State& state) {
  const auto model = water_box(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(find_molecules(model));
  report_memory(state);
}

void bonds(benchmark::State& state) {
  auto model = water_box(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) find_bonds(model);
  report_memory(state);
}

#define SIZES RangeMultiplier(2)->Range(250'000, 1'000'000)->Unit(benchmark::kMillisecond)->Complexity()
BENCHMARK(import_model)->SIZES;
BENCHMARK(export_model)->SIZES;
BENCHMARK(molecules)->SIZES;
BENCHMARK(bonds)->SIZES;

}  // namespace
