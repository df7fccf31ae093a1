#include "crystals/model_contents.h"

#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "crystals/crystal_builder.h"

namespace pathstat {
namespace {

/// Bonds as the arrays in which they cross the wire.
struct BondColumns {
  std::vector<std::int32_t> first, second, shift;

  explicit BondColumns(std::size_t count) : first(count), second(count), shift(3 * count) {}
  explicit BondColumns(std::span<const CellBond> bonds) {
    first.reserve(bonds.size()), second.reserve(bonds.size()), shift.reserve(3 * bonds.size());
    for (const auto& bond : bonds) {
      first.push_back(bond.first), second.push_back(bond.second);
      shift.insert(shift.end(), bond.shift.begin(), bond.shift.end());
    }
  }
};

}  // namespace

std::vector<std::int32_t> atoms_of(std::int32_t model, AtomSelector which, std::int32_t& status) {
  const auto selector = static_cast<std::int32_t>(which);
  std::int32_t count = 0, told = 0;
  count_atoms(model, selector, count, status);
  if (status != 0 || count == 0) return {};
  std::vector<std::int32_t> atoms(static_cast<std::size_t>(count));
  kvd_mod_atomlist_(model, selector, atoms, told, status);
  if (status == 0 && told != count) status = atoms_do_not_match;
  return atoms;
}

std::vector<CellBond> bonds_of_model(std::int32_t model, std::int32_t& status) {
  std::int32_t count = 0;
  kvd_mod_numbonds_(model, count, status);
  if (status == 0 && !is_object_count(count)) status = impossible_count;
  if (status != 0 || count == 0) return {};
  BondColumns columns(static_cast<std::size_t>(count));
  std::int32_t told = 0;
  kvd_mod_bondlist_(model, columns.first, columns.second, columns.shift, told, status);
  if (status == 0 && told != count) status = impossible_count;
  if (status != 0) return {};
  std::vector<CellBond> bonds(static_cast<std::size_t>(count));
  for (std::size_t k = 0; k < bonds.size(); ++k) {
    bonds[k] = {columns.first[k],
                columns.second[k],
                {columns.shift[3 * k], columns.shift[3 * k + 1], columns.shift[3 * k + 2]}};
  }
  return bonds;
}

void make_bonds(std::span<const CellBond> bonds, std::int32_t& status) {
  if (bonds.empty()) return;
  const BondColumns columns(bonds);
  kva_makebond_(columns.first, columns.second, columns.shift, status);
}

void drop_existing_bonds(std::vector<CellBond>& bonds, std::int32_t& status) {
  if (bonds.empty()) return;
  const BondColumns columns(bonds);
  std::vector<std::int32_t> found(bonds.size());
  kvd_findbond_(columns.first, columns.second, columns.shift, found, status);
  if (status != 0) return;
  std::size_t kept = 0;
  for (std::size_t k = 0; k < bonds.size(); ++k) {
    if (found[k] == 0) bonds[kept++] = bonds[k];
  }
  bonds.resize(kept);
}

}  // namespace pathstat
