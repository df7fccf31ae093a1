#pragma once

#include <string>

#include "desk/model/data_model.h"
#include "desk/model/model_import.h"
#include "scratch_folder.h"

namespace pathstat::desk {

/// Two water molecules in a cube of 10 Å; the second lies on both sides of the face at z = 0.
inline const std::string water_pair = R"((1 Model pair
 (A I PeriodicType 100)
 (A V Cell ((10 0 0) (0 10 0) (0 0 10)))
 (A I AtomId (11 12 13 21 22 23))
 (A C Name (O1 H1 H2 O2 H3 H4))
 (A C Element (O H H O H H))
 (A C FFType (OW HW HW OX HW HW))
 (A D Charge (-0.8 0.4 0.4 -0.8 0.4 0.4))
 (A D Mass (16 1 1 16 1 1))
 (A D Occupancy (1 1 1 1 1 0.5))
 (A V XYZ ((1 1 1) (1 2 1) (2 1 1) (1 2 9.5) (1 2 0.5) (1 3 9.5)))
 (A I Movable (1 1 1 0 1 1))
 (A I Bond (1 2 1 3 4 5 4 6))
 (A C Residue (WAT WAT WAT WAT WAT WAT))
 (A I ResidueId (1 1 1 2 2 2))
 (2 Monitor
  (A I Type 60)
  (A I Atoms (1 4))
 )
 (3 Monitor
  (A I Type 54)
  (A I Atoms (2 1 3 4 5 6))
 )
 (4 Monitor
  (A I Type 61)
  (A I Atoms (2 1 3))
 )
 (5 Monitor
  (A I Type 50)
  (A I Atoms (3 1 2 4))
 )
 (6 Monitor
  (A I Type 59)
  (A I Atoms (1 2 3 4))
  (A I Convention 4)
 )
)
)";

/// The models of a text that stands for a file.
inline ImportedModels imported(const std::string& text) {
  const ScratchFolder folder;
  return read_model_file(folder.write("model.qfx", text));
}

/// A model of carbon atoms at places, numbered from 1.
inline MolecularModel carbon_model(std::vector<Vector3> positions) {
  MolecularModel model;
  const auto atoms = positions.size();
  for (std::size_t k = 1; k <= atoms; ++k) model.ids.push_back(static_cast<std::int32_t>(k));
  model.elements.assign(atoms, 6);
  for (auto* words : {&model.names, &model.ff_types, &model.residues}) words->assign(atoms, "C");
  model.residue_ids.assign(atoms, 1);
  model.charges.assign(atoms, 0);
  model.masses.assign(atoms, 12);
  model.occupancies.assign(atoms, 1);
  model.movable.assign(atoms, 1);
  model.positions = std::move(positions);
  return model;
}

}  // namespace pathstat::desk
