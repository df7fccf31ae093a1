#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "desk/model/molecular_model.h"

namespace pathstat::desk {

/// A monitor made from the words of a user, or what is wrong with them.
struct MarkedMeasure {
  Monitor monitor;
  std::string problem;
};

/// True if the words are a kind of measure, for an inversion its convention, and as many atoms as it takes: distance 2,
/// angle 3, torsion 4, plane 6, inversion ijkl, jilk or umbrella 4.
bool is_measure(std::span<const std::string> words);

/// The words of a measure in front of its atoms: its kind, and of an inversion its convention; 0 if it is none.
std::size_t words_before_atoms(std::span<const std::string> words);

/// True if the words are a measure as they stand, or may be one once names of groups have given way to their atoms.
bool may_be_measure(std::span<const std::string> words);

/// True for a word that can only be the name of a group of atoms.
bool names_group(std::string_view word);

/// Marks a measure between atoms of a model.
///
/// An atom is named by its number or by NAME:RESIDUE, its name and the number of its residue. It stands in the cell in
/// which it is nearest to the atom in front of it, that of an inversion nearest to its central atom; +2a-b behind it
/// moves it by whole cell vectors instead, and +0 leaves it where the model has it.
///
/// @param words  with is_measure
MarkedMeasure marked_measure(const MolecularModel& model, std::span<const std::string> words);

/// The words that mark the measure, the names of its atoms and its present value:
/// "torsion 1 2 3 4 (C1 C2 C3 C4): -179.784 degrees".
std::string measure_text(const MolecularModel& model, const Monitor& monitor);

}  // namespace pathstat::desk
