#pragma once

#include <cstdint>

namespace pathstat::file_actions {

/// Has the Core read a structure file; its first model becomes current. The extension tells the format.
std::int32_t import_structure();
/// Has the Core write the current model in the format of the file's extension.
std::int32_t export_structure();

}  // namespace pathstat::file_actions
