#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace pathstat::desk {

/// All bytes of a file. @return false if it cannot be read to its end; errno tells why
bool read_content(const std::filesystem::path& path, std::string& content);

/// The text of a script, which may come through a pipe. @return empty, or why there is none
std::string read_script_text(const std::filesystem::path& path, std::string& text);
/// The same from a descriptor that is open.
std::string read_script_text(int descriptor, std::string& text);

}  // namespace pathstat::desk
