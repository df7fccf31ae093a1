#pragma once

#include <string>

#include "desk/import/import_run.h"

namespace pathstat::desk {

/// What is wrong with the files that an import is to read before any of them is opened: one that does not exist, with
/// the name that was probably meant, or a folder. Empty if they are all there.
std::string about_inputs(const ImportOptions& options);

}  // namespace pathstat::desk
