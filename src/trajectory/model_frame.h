#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "trajectory/open_trajectory.h"

namespace pathstat {

/// Shows why a frame does not go onto a model. @param status  becomes 1
void refuse_frame(std::string_view key, std::int32_t& status);

/// The atoms that move in an open trajectory, for a model of so many atoms.
/// @param status  0; 1 after PATHSTAT_ERROR_103 or 104 for a misfit, or after 104 if they are more than the model has;
///                that of the reader
std::int32_t count_movable(const OpenTrajectory& trajectory, Misfit misfit, std::int64_t atoms, std::int32_t& status);

/// Gives atoms a vector each, as user data of this name, and the model the magnitude to show.
/// @param vectors  x, y, z of each atom
void set_atom_vectors(std::int32_t model, std::span<const std::int32_t> atoms, std::string_view name,
                      std::span<const double> vectors, std::int32_t& error);

/// Which atoms of a model are meant: as they are stored, or with their symmetry images.
enum class ModelAtoms : std::int32_t { stored = 1, with_images = 3 };

/// The atoms of a model, in the Core's order; empty on an error.
/// @param error  the Core's; 1 if there is no memory for as many as it counts
std::vector<std::int32_t> atoms_of_model(std::int32_t model, std::int32_t& error,
                                         ModelAtoms which = ModelAtoms::with_images);

/// For each identifier the first atom that bears it.
/// @param status  0; 1 if the Core does not answer, an identifier has no atom, or one stands twice
std::vector<std::int32_t> atoms_by_identifier(std::span<const std::int32_t> atoms,
                                              std::span<const std::int32_t> identifiers, std::int32_t& status);

}  // namespace pathstat
