#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "desk/model/molecular_model.h"

namespace pathstat::desk {

/// One line of a list: what it is about and what there is to say.
struct Fact {
  std::string name;
  std::string value;
};

/// What a model is made of: atoms by element, repeats, mass, charge, bonds, residues and monitors.
std::vector<Fact> model_facts(const MolecularModel& model);

/// The facts set under each other.
std::string facts_text(const std::vector<Fact>& facts);

/// The centre of mass in Å; that of equal masses where no atom has one.
Vector3 centre_of_mass(const MolecularModel& model);

/// Number, name, element, force-field type and position of the first atoms, with a line of headings.
std::string atoms_text(const MolecularModel& model);

}  // namespace pathstat::desk
