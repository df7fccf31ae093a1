#include "trajectory/model_frame.h"

#include <algorithm>
#include <new>

#include "coreapi/messages.h"
#include "coreapi/object_counts.h"
#include "coreapi/operations.h"
#include "support/identifier_index.h"
#include "trajectory/front_end.h"
#include "trajectory/trajectory_keys.h"

namespace pathstat {
namespace {

constexpr std::int32_t failed = 1;
constexpr std::int32_t no_memory = 1;

}  // namespace

void refuse_frame(std::string_view key, std::int32_t& status) {
  show_message(key);
  status = failed;
}

std::int32_t count_movable(const OpenTrajectory& trajectory, Misfit misfit, std::int64_t atoms, std::int32_t& status) {
  std::int32_t movable = 0;
  if (misfit == Misfit::none) trj_ivalue_(trajectory.handle(), trajectory_key::movable_atoms, movable, status);
  const bool too_many = status == 0 && (movable < 0 || movable > atoms);
  if (misfit == Misfit::periodicity) {
    refuse_frame("PATHSTAT_ERROR_103", status);
  } else if (misfit == Misfit::atoms || too_many) {
    refuse_frame("PATHSTAT_ERROR_104", status);
  }
  return movable;
}

void set_atom_vectors(std::int32_t model, std::span<const std::int32_t> atoms, std::string_view name,
                      std::span<const double> vectors, std::int32_t& error) {
  kvd_ud_setvector_(atoms, name, vectors, error);
  if (error == 0) kva_ud_doublevecsetmagnitude_(model, name, 1, error);
}

std::vector<std::int32_t> atoms_of_model(std::int32_t model, std::int32_t& error, ModelAtoms which) {
  const auto selector = static_cast<std::int32_t>(which);
  std::int32_t count = 0;
  count_atoms(model, selector, count, error);
  if (error != 0 || count < 1) return {};
  try {
    std::vector<std::int32_t> atoms(static_cast<std::size_t>(count));
    kvd_mod_atomlist_(model, selector, atoms, count, error);
    if (error != 0) return {};
    atoms.resize(static_cast<std::size_t>(std::clamp<std::int64_t>(count, 0, std::ssize(atoms))));
    return atoms;
  } catch (const std::bad_alloc&) {
    error = no_memory;
    return {};
  }
}

std::vector<std::int32_t> atoms_by_identifier(std::span<const std::int32_t> atoms,
                                              std::span<const std::int32_t> identifiers, std::int32_t& status) {
  std::vector<std::int32_t> ids(atoms.size());
  kvd_id_(atoms, ids, status);
  if (status != 0) status = 1;
  if (status != 0) return {};
  const IdentifierIndex index(ids, status);
  std::vector<std::int32_t> found(identifiers.size());
  std::vector<bool> taken(atoms.size());
  for (std::size_t k = 0; k < identifiers.size() && status == 0; ++k) {
    const auto at = static_cast<std::size_t>(index.find(identifiers[k]));
    if (at >= atoms.size() || taken[at]) {
      status = 1;
    } else {
      taken[at] = true;
      found[k] = atoms[at];
    }
  }
  return found;
}

}  // namespace pathstat
