#include <algorithm>
#include <array>
#include <string>

#include "desk/ops/object_values.h"

namespace pathstat::desk {
namespace {

/// Sets the vectors of a name ("Velocity", "Force") of atoms; atoms that never got one have zero.
void set_vectors(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto& name = call.text(1);
  const auto atoms = call.integers(2);
  const auto vectors = call.doubles(3);
  for (const auto id : atoms) {
    if (data.find(id).kind != ObjectClass::atom) return void(reply.error = unknown_object);
  }
  ModelObject* model = nullptr;
  std::vector<Vector3>* column = nullptr;
  for (std::size_t k = 0; k < atoms.size(); ++k) {
    const auto atom = data.atom(atoms[k]);
    if (atom.model != model) {
      model = atom.model;
      // Whole from the start: a column without memory for all atoms must not stay.
      auto& columns = model->data.vectors;
      auto found = columns.find(name);
      if (found == columns.end()) found = columns.emplace(name, std::vector<Vector3>(model->data.atoms())).first;
      column = &found->second;
      column->resize(model->data.atoms());
    }
    std::copy_n(vectors.begin() + static_cast<std::ptrdiff_t>(3 * k), 3, (*column)[atom.place].begin());
  }
}

/// Sets the factor by which a model's vectors of a name are shown.
void set_magnitude(DataModel& data, const OperationCall& call, OperationReply& reply) {
  const auto& name = call.text(3);
  for (const auto id : call.integers(2)) {
    auto* model = data.model(id);
    if (!model) {
      reply.error = unknown_object;
    } else if (!model->data.vectors.contains(name)) {
      reply.error = not_there;
    } else {
      model->vector_magnitudes[name] = call.integer(0);
    }
  }
}

constexpr std::array served{
    ServedOperation{"kvD_UD_SetVector", set_vectors},
    ServedOperation{"kvA_UD_SetDoubleVec", set_vectors},
    ServedOperation{"kvA_UD_DoubleVecSetMagnitude", set_magnitude},
};

}  // namespace

void serve_vector_operations(OperationServer& server, DataModel& model) { serve_all(server, model, served); }

}  // namespace pathstat::desk
