#pragma once

#include <filesystem>
#include <string>

namespace pathstat::desk {

/// All bytes of a file. @return false if it cannot be read to its end; errno tells why
bool read_content(const std::filesystem::path& path, std::string& content);

}  // namespace pathstat::desk
