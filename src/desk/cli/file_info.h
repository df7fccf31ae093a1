#pragma once

#include <string>

namespace pathstat::desk {

/// Prints what a trajectory (.trj, .qtrj, .atrj, .his, .fhis, .arc), a model file (.qfx) or a coordinate file (.car,
/// .cor) holds.
/// @return an exit code of the program
int print_file_info(const std::string& path);

}  // namespace pathstat::desk
