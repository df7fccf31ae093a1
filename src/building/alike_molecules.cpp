#include "building/alike_molecules.h"

#include <algorithm>
#include <map>

#include "coreapi/operations.h"

namespace pathstat {

void find_alike(std::span<const std::int32_t> all, const std::array<std::size_t, 3>& three, AlikeMolecules& found,
                std::int32_t& error) {
  found = {};
  std::vector<std::int32_t> types(all.size());
  std::int32_t count = 0;
  found.numbers.resize(all.size());
  kva_con_moleculartag_(all, found.numbers, count, error);
  if (error == 0) kvd_type_(all, types, error);
  if (error != 0) return;

  std::map<std::int32_t, std::vector<std::size_t>> members;
  for (std::size_t atom = 0; atom < all.size(); ++atom) members[found.numbers[atom]].push_back(atom);
  const auto& model = members[found.numbers[three[0]]];
  std::array<std::size_t, 3> rank{};
  for (std::size_t k = 0; k < 3; ++k) {
    const auto place = std::ranges::find(model, three[k]);
    if (place == model.end()) return;
    rank[k] = static_cast<std::size_t>(place - model.begin());
  }
  if (rank[0] == rank[1] || rank[0] == rank[2] || rank[1] == rank[2]) return;
  for (const auto& [number, atoms] : members) {
    const bool is_alike = std::ranges::equal(
        atoms, model, [&](std::size_t one, std::size_t other) { return types[one] == types[other]; });
    if (!is_alike) continue;
    found.alike.push_back(number);
    found.atoms.push_back({all[atoms[rank[0]]], all[atoms[rank[1]]], all[atoms[rank[2]]]});
  }
}

}  // namespace pathstat
