#pragma once

#include <cstdint>
#include <string>

#include "desk/model/model_import.h"

namespace pathstat::desk {

/// Codes of the kinds of structure files, as the operations have them.
enum StructureFileType : std::int32_t {
  structured_model_file = 1,   ///< .qfx
  coordinate_model_file = 14,  ///< .car, .cor
  cif_model_file = 21,         ///< .cif
  xyz_model_file = 22,         ///< .xyz
};

/// True for a code that is one.
bool is_structure_file_type(std::int32_t type);

/// Reads a file of a type.
ImportedModels read_structure_file(const std::string& path, std::int32_t type);

/// Writes a model as a file of a type; one of that name is replaced only when the new one is complete.
/// @return what went wrong, or nothing
std::string write_structure_file(const MolecularModel& model, const std::string& path, std::int32_t type);

}  // namespace pathstat::desk
