#pragma once

#include <string>
#include <vector>

#include "desk/model/molecular_model.h"

namespace pathstat::desk {

/// What a file of models holds, or why it can't be used.
struct ImportedModels {
  std::vector<MolecularModel> models;
  std::string problem;  ///< names the file, and the line and the attribute at fault; empty if all is well
};

/// Reads a structured model file (.qfx). Either all its models are good or none is given. Objects and attributes that
/// mean nothing here are passed over.
ImportedModels read_model_file(const std::string& path);

}  // namespace pathstat::desk
