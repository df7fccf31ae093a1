#include "building/file_actions.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <string_view>

#include "building/model_draft.h"
#include "coreapi/messages.h"
#include "shell/arguments.h"

namespace pathstat::file_actions {
namespace {

/// The file types of the Core by their extensions.
struct Format {
  std::string_view extension;
  std::int32_t type;
};
constexpr std::array formats{Format{".qfx", 1}, Format{".car", 14}, Format{".cif", 21}, Format{".xyz", 22}};

/// The file that the word names, and its type; a type of 0 is told.
struct NamedFile {
  std::string path;
  std::int32_t type = 0;
  std::int32_t status = 0;

  NamedFile() {
    kvZ_ArgFillString(path, 1, {}, status);
    if (status != 0) return;
    std::string name = path;
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const auto& format : formats) {
      if (name.ends_with(format.extension)) type = format.type;
    }
    if (type == 0) status = refuse("STRUCTURE_FILE_FORMAT", std::string_view(path));
  }
};

}  // namespace

std::int32_t import_structure() {
  const NamedFile file;
  if (file.status != 0) return file.status;
  std::int32_t model = 0, error = 0;
  kvd_fil_importmodel_(file.path, file.type, 1, 0, model, error);
  if (error != 0) return refuse("STRUCTURE_IMPORT_FAILED", std::string_view(file.path));
  std::int32_t atoms = 0;
  constexpr std::int32_t with_images = 3;
  kvd_mod_numatoms_(model, with_images, atoms, error);
  show_message("STRUCTURE_IMPORTED", std::string_view(name_of_model(model)), atoms);
  return 0;
}

std::int32_t export_structure() {
  const NamedFile file;
  if (file.status != 0) return file.status;
  const auto model = current_model();
  if (model == 0) return refuse("STRUCTURE_NO_MODEL");
  std::int32_t error = 0;
  kvd_fil_exportmodel_(file.path, model, file.type, error);
  return error == 0 ? 0 : refuse("STRUCTURE_EXPORT_FAILED", std::string_view(file.path));
}

}  // namespace pathstat::file_actions
