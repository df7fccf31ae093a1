#include "desk/export/structure_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "desk/export/text_formats.h"
#include "desk/model/cif_file.h"
#include "desk/model/coordinate_file.h"
#include "desk/model/model_export.h"
#include "desk/model/part_file.h"
#include "desk/model/xyz_file.h"
#include "support/record_file.h"

namespace pathstat::desk {
namespace {

struct FileType {
  std::int32_t type;
  ImportedModels (*read)(const std::string& path);
  std::string (*add)(const ExportedFrame& frame, std::string& text);  ///< null for a model file
};

constexpr std::array types{FileType{structured_model_file, read_model_file, nullptr},
                           FileType{coordinate_model_file, read_coordinate_file, add_car},
                           FileType{cif_model_file, read_cif_file, add_cif},
                           FileType{xyz_model_file, read_xyz_file, add_xyz}};

const FileType* type_of(std::int32_t type) {
  const auto* found =
      std::find_if(types.begin(), types.end(), [type](const FileType& row) { return row.type == type; });
  return found == types.end() ? nullptr : found;
}

}  // namespace

bool is_structure_file_type(std::int32_t type) { return type_of(type) != nullptr; }

ImportedModels read_structure_file(const std::string& path, std::int32_t type) {
  if (const auto why = why_unreadable(path); !why.empty()) return {{}, fmt::format("{} {}", path, why)};
  return type_of(type)->read(path);
}

std::string write_structure_file(const MolecularModel& model, const std::string& path, std::int32_t type) {
  const auto* row = type_of(type);
  if (!row->add) return write_model_file(model, path);
  std::string text;
  const ExportedFrame frame{.model = model, .time = {}, .number = 1, .of_several = false, .as_unit = true};
  if (auto problem = row->add(frame, text); !problem.empty()) return fmt::format("{}: {}", path, problem);
  const PartFile whole(path);
  if (auto problem = whole.make(); !problem.empty()) return problem;
  std::ofstream file(whole.part(), std::ios::binary);
  file << text << std::flush;
  file.close();
  return file ? whole.keep() : fmt::format("{} cannot be written: {}", path, std::strerror(errno));
}

}  // namespace pathstat::desk
