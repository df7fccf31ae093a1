#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace pathstat {

/// The vectors of a cell.
struct CellVectors {
  std::array<double, 3> a{};
  std::array<double, 3> b{};
  std::array<double, 3> c{};
};

/// The vectors of the six-number cell of a trajectory: a = (c0, c5, c4), b = (0, c1, c3), c = (0, 0, c2).
CellVectors vectors_of_cell(std::span<const double, 6> cell);

/// Sets the cell of a model: three vectors of a three-dimensional one, b and c of a two-dimensional one.
/// @param error  the Core's; 0 for other periodic types, which have no cell to set
void set_model_cell(std::int32_t model, std::int32_t periodic_type, const CellVectors& cell, std::int32_t& error);

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
