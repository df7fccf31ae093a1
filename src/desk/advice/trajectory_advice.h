#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace pathstat::desk {

/// The extensions of models, in the order in which one is looked for beside a trajectory.
inline constexpr std::array model_extensions{".qfx", ".car", ".cor"};

/// What a file is, by its extension or, without a known one, by how it begins.
enum class FileKind { missing, folder, trajectory, model, text, binary };
FileKind kind_of_file(const std::filesystem::path& path);

/// True for an extension that trajectories have.
bool is_trajectory_name(const std::filesystem::path& path);

/// Why the trajectory that is named so cannot be loaded, and what was probably meant. Empty if nothing is wrong with
/// the file.
///
/// @param path         the path, or its stem, as it was sent
/// @param model_atoms  atoms of the model that it has to fit; 0 if there is none
std::string why_not_loaded(const std::filesystem::path& path, std::size_t model_atoms);

}  // namespace pathstat::desk
