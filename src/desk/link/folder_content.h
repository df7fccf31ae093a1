#pragma once

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace pathstat::desk {

/// The names in a folder, without order; an empty list and the reason where it cannot be read. Unlike the iterators of
/// the standard library, which end the process in functions that may not throw, this comes back without memory.
std::vector<std::string> names_in(const std::filesystem::path& folder, std::error_code& failure);

/// Removes a file, or a folder with all it holds; links are not followed. Takes memory only from the system's calls,
/// and tells where they have none.
/// @return false if something of it is still there
bool remove_tree(const std::filesystem::path& path) noexcept;

}  // namespace pathstat::desk
