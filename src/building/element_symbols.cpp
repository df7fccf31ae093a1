#include "building/element_symbols.h"

#include <algorithm>
#include <array>

namespace pathstat {
namespace {

constexpr std::array<std::string_view, 120> symbols{
    "H",  "He", "Li", "Be", "B",  "C",  "N",  "O",  "F",  "Ne", "Na", "Mg", "Al", "Si", "P",  "S",  "Cl", "Ar",
    "K",  "Ca", "Sc", "Ti", "V",  "Cr", "Mn", "Fe", "Co", "Ni", "Cu", "Zn", "Ga", "Ge", "As", "Se", "Br", "Kr",
    "Rb", "Sr", "Y",  "Zr", "Nb", "Mo", "Tc", "Ru", "Rh", "Pd", "Ag", "Cd", "In", "Sn", "Sb", "Te", "I",  "Xe",
    "Cs", "Ba", "La", "Ce", "Pr", "Nd", "Pm", "Sm", "Eu", "Gd", "Tb", "Dy", "Ho", "Er", "Tm", "Yb", "Lu", "Hf",
    "Ta", "W",  "Re", "Os", "Ir", "Pt", "Au", "Hg", "Tl", "Pb", "Bi", "Po", "At", "Rn", "Fr", "Ra", "Ac", "Th",
    "Pa", "U",  "Np", "Pu", "Am", "Cm", "Bk", "Cf", "Es", "Fm", "Md", "No", "Lr", "Rf", "Db", "Sg", "Bh", "Hs",
    "Mt", "Ds", "Rg", "Cn", "Nh", "Fl", "Mc", "Lv", "Ts", "Og", "D",  "T"};

}  // namespace

std::int32_t number_of_element(std::string_view symbol) {
  const auto found = std::ranges::find(symbols, symbol);
  return found == symbols.end() ? 0 : static_cast<std::int32_t>(found - symbols.begin()) + 1;
}

std::string_view element_symbol(std::int32_t number) {
  return number < 1 || static_cast<std::size_t>(number) > symbols.size()
             ? std::string_view{}
             : symbols[static_cast<std::size_t>(number) - 1];
}

}  // namespace pathstat
