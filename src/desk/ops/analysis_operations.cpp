#include <algorithm>
#include <array>
#include <cstdint>
#include <unordered_map>

#include "desk/ops/object_values.h"

namespace pathstat::desk {
namespace {

/// Bonds are those of the model's file; which cell each leads to follows from the coordinates, when somebody asks for
/// molecules. So there is nothing to be done here but to say whether the models exist.
void recalculate_bonds(DataModel& data, const OperationCall& call, OperationReply& reply) {
  for (const auto id : call.integers(2)) {
    if (!data.model(id)) reply.error = unknown_object;
  }
}

void may_recalculate_bonds(DataModel&, const OperationCall&, OperationReply& reply) { reply.result = 1; }

/// The mass of a model, each atom by its occupancy, or of an atom.
void masses(DataModel& data, const OperationCall& call, OperationReply& reply) {
  put_each<double>(call.integers(1), reply, [&](std::int32_t id, double& mass) {
    if (const auto atom = data.atom(id)) {
      mass = atom.model->data.masses[atom.place];
      return true;
    }
    const auto* model = data.model(id);
    if (!model) return false;
    for (std::size_t k = 0; k < model->data.atoms(); ++k) mass += model->data.masses[k] * model->data.occupancies[k];
    return true;
  });
}

std::uint32_t molecule_of(DataModel& data, const AtomRef& atom) {
  return data.connectivity(*atom.model).molecule[atom.place];
}

void are_of_one_molecule(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto atoms = call.integers(1);
  if (atoms.empty()) return void(reply.error = bad_value);
  const auto first = data.atom(atoms.front());
  reply.result = 1;
  for (const auto id : atoms) {
    const auto atom = data.atom(id);
    if (!first || !atom) reply.error = unknown_object;
    if (reply.error != 0 || atom.model != first.model || molecule_of(data, atom) != molecule_of(data, first)) {
      reply.result = 0;
    }
  }
}

/// The atoms of a molecule as one whole: those that its file has on another side of the cell come as images.
void append_whole(DataModel& data, ModelObject& model, std::uint32_t number, std::vector<std::int32_t>& list) {
  const auto& found = data.connectivity(model);
  for (const auto place : found.atoms_of(number)) list.push_back(data.atom_image(model, place, found.image[place]));
}

void molecular_list(DataModel& data, const OperationCall& call, OperationReply& reply) {
  auto* model = data.model(call.integer(0));
  if (!model) return void(reply.error = unknown_object);
  const auto& found = data.connectivity(*model);
  std::vector<std::int32_t> atoms, numbers;
  for (std::uint32_t number = 0; number < found.molecules(); ++number) {
    append_whole(data, *model, number, atoms);
    numbers.resize(atoms.size(), static_cast<std::int32_t>(number + 1));
  }
  numbers.resize(std::min(numbers.size(), static_cast<std::size_t>(call.integer(1))));
  put_list(std::move(atoms), call.integer(1), reply);
  reply.put(std::move(numbers));
  reply.put(static_cast<std::int32_t>(found.molecules()));
}

/// Numbers the molecules of the atoms from 1, in the order in which they appear.
void molecule_numbers(DataModel& data, const OperationCall& call, OperationReply& reply) {
  std::unordered_map<std::uint64_t, std::int32_t> known;
  put_each<std::int32_t>(call.integers(1), reply, [&](std::int32_t id, std::int32_t& number) {
    const auto atom = data.atom(id);
    if (!atom) return false;
    const auto model = static_cast<std::uint64_t>(static_cast<std::uint32_t>(atom.model->id));
    const auto next = static_cast<std::int32_t>(known.size() + 1);
    number = known.try_emplace(model << 32 | molecule_of(data, atom), next).first->second;
    return true;
  });
  reply.put(static_cast<std::int32_t>(known.size()));
}

void molecule_atoms(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto atom = data.atom(call.integer(0));
  if (!atom) return void(reply.error = unknown_object);
  std::vector<std::int32_t> list;
  append_whole(data, *atom.model, molecule_of(data, atom), list);
  put_list(std::move(list), call.integer(1), reply);
}

/// A molecule's atoms with the translations, multiples of a, b and c, under which its bonded network repeats.
void molecule_network(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto ids = call.integers(2);
  const auto atom = data.atom(ids.empty() ? 0 : ids.front());
  if (!atom) return void(reply.error = unknown_object);
  const auto number = molecule_of(data, atom);
  std::vector<std::int32_t> list;
  append_whole(data, *atom.model, number, list);
  put_list(std::move(list), call.integer(0), reply);

  const auto& networks = data.connectivity(*atom.model).networks;
  const auto network = networks.find(number);
  const auto basis = network == networks.end() ? NetworkBasis{} : network->second;
  std::vector<std::int32_t> vectors;
  for (const auto& vector : basis.vectors()) vectors.insert(vectors.end(), vector.begin(), vector.end());
  reply.put(std::move(vectors));
  reply.put(std::int32_t{basis.periodicity()});
}

void object_by_name(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto id = data.object_named(call.text(0));
  if (id == 0) reply.error = not_there;
  reply.put(id);
}

constexpr std::array served{
    ServedOperation{"kvA_BND_Recalculate", recalculate_bonds},
    ServedOperation{"kvA_BND_RecalculationPermitted", may_recalculate_bonds},
    ServedOperation{"kvA_CMP_Mass", masses},
    ServedOperation{"kvA_CON_IsSameMolecule", are_of_one_molecule},
    ServedOperation{"kvA_CON_MolecularList", molecular_list},
    ServedOperation{"kvA_CON_MolecularTag", molecule_numbers},
    ServedOperation{"kvA_CON_MolecularTagNetwork", molecule_network},
    ServedOperation{"kvA_CON_Molecule", molecule_atoms},
    ServedOperation{"kvA_REF_DereferenceObject", object_by_name},
};

}  // namespace

void register_analysis_operations(OperationServer& server, DataModel& model) { serve_all(server, model, served); }

}  // namespace pathstat::desk
