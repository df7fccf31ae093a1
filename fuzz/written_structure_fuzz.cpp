// A model of any atoms, written as each kind of structure file and read again: the same atoms, as far as the kind tells
// of them.
#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <string>

#include "desk/export/structure_files.h"
#include "fuzz_input.h"
#include "scratch_folder.h"
#include "structure/elements.h"

namespace {

using namespace pathstat;
using namespace pathstat::desk;

/// In memory, where that can be had.
std::filesystem::path fast_folder() {
  const std::filesystem::path memory = "/dev/shm";
  return std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
}

struct Kind {
  std::int32_t type;
  const char* extension;
  double step;  ///< of coordinates, Å
};
constexpr std::array kinds{Kind{structured_model_file, ".qfx", 1e-5}, Kind{coordinate_model_file, ".car", 1e-4},
                           Kind{cif_model_file, ".cif", 1e-4}, Kind{xyz_model_file, ".xyz", 1e-7}};

std::string any_word(fuzz::Numbers& numbers) {
  std::string word(numbers.byte() % 6, '\0');
  for (char& c : word) c = static_cast<char>(numbers.byte());
  return word;
}

MolecularModel any_model(fuzz::Numbers& numbers) {
  MolecularModel model;
  model.name = any_word(numbers);
  if (numbers.byte() % 2 != 0) {
    model.periodic_type = periodic_3d;
    for (std::size_t k = 0; k < 3; ++k) {
      for (double& x : model.cell[k]) x = numbers.fraction();
      model.cell[k][k] += 5 + numbers.byte() / 10.0;
    }
  }
  const int atoms = 1 + numbers.byte() % 12;
  for (int k = 0; k < atoms; ++k) {
    model.ids.push_back(k + 1);
    model.elements.push_back(static_cast<std::uint8_t>(1 + numbers.byte() % (elements().size() - 1)));
    model.names.push_back(any_word(numbers));
    model.ff_types.push_back(any_word(numbers));
    model.residues.push_back(any_word(numbers));
    model.residue_ids.push_back(numbers.byte() % 4);
    model.charges.push_back(numbers.fraction());
    model.masses.push_back(1 + numbers.byte());
    model.occupancies.push_back(1);
    model.movable.push_back(1);
    model.positions.push_back({30 * numbers.fraction(), 30 * numbers.fraction(), 30 * numbers.fraction()});
    if (k > 0 && numbers.byte() % 2 != 0) model.bonds.emplace_back(numbers.byte() % k, k);
  }
  model.file_atoms = model.atoms();
  model.file_bonds = model.bonds.size();
  return model;
}

double distance(const MolecularModel& model, std::size_t k) {
  double sum = 0;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    sum += std::pow(model.positions[k][axis] - model.positions[0][axis], 2);
  }
  return std::sqrt(sum);
}

void compare(const MolecularModel& model, const ImportedModels& read, const Kind& kind) {
  if (read.models.size() != 1) __builtin_trap();
  const auto& again = read.models[0];
  if (!std::ranges::equal(again.elements, model.elements)) __builtin_trap();
  // What a CIF tells is a unit that a crystal may be built of.
  if (kind.type != cif_model_file && again.periodic_type != model.periodic_type) __builtin_trap();
  for (std::size_t k = 1; k < model.atoms(); ++k) {
    if (std::abs(distance(again, k) - distance(model, k)) > kind.step) __builtin_trap();
  }
  if (kind.type != structured_model_file) return;
  if (again.bonds != model.bonds) __builtin_trap();
  bool all_named = true;  // a column that lacks a word is left out
  for (std::size_t k = 0; k < model.atoms(); ++k) all_named = all_named && !model.names[k].empty();
  for (std::size_t k = 0; k < model.atoms() && all_named; ++k) {
    if (again.names[k] != model.names[k]) __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFolder folder(fast_folder());
  fuzz::Numbers numbers(std::span(data, size));
  const auto& kind = kinds.at(numbers.byte() % kinds.size());
  const auto model = any_model(numbers);
  const auto path = folder.file(std::string("model") + kind.extension);
  // A structured model file can't hold every word, and says so.
  if (!write_structure_file(model, path, kind.type).empty()) {
    if (kind.type != structured_model_file) __builtin_trap();
    return 0;
  }
  compare(model, read_structure_file(path, kind.type), kind);
  return 0;
}
