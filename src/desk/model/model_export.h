#pragma once

#include <string>

#include "desk/model/molecular_model.h"

namespace pathstat::desk {

/// Writes a model as a structured model file (.qfx) that read_model_file reads back the same. Symmetry images are left
/// out where they follow from the operators; those of a crystal that was built are written, with the cells of bonds. A
/// file of that name is replaced only when the new one is complete.
///
/// @return empty, or what went wrong
std::string write_model_file(const MolecularModel& model, const std::string& path);

}  // namespace pathstat::desk
