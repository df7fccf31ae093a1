#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace pathstat {

/// A kind of atom. Elements are numbered by their atomic number, 1 to 118; behind them stand D and T, and X for a
/// particle that is no element, such as a bead, whose mass the model has to state.
struct Element {
  std::string_view symbol;
  double mass;         ///< standard atomic mass in atomic mass units (IUPAC 2007; of the longest-lived isotope where
                       ///< there is no standard one)
  double bond_radius;  ///< covalent radius, Å (Cordero et al., Dalton Trans. 2008, 2832; Pyykkö and Atsumi,
                       ///< Chem. Eur. J. 2009, 186, from Bk on)
};

/// All elements by their number; the element of number 0 is none.
std::span<const Element> elements();

/// The symbol of a number that came from elsewhere; empty for one that nothing has.
std::string_view symbol_of_element(std::int32_t number);

/// The number of the element with this symbol in upper or lower case, or 0.
std::uint8_t element_of_symbol(std::string_view symbol);

/// The element that an atom's name begins with ("Cl12", "OW1"), or 0: the letters in front of the number are a symbol,
/// or else the first letter alone is.
std::uint8_t element_of_atom_name(std::string_view name);

}  // namespace pathstat
