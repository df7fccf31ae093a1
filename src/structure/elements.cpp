#include "structure/elements.h"

#include <array>

namespace pathstat {
namespace {

constexpr std::array<Element, 122> table{{
    {"", 0, 0},
    {"H", 1.00794, 0.31},
    {"He", 4.002602, 0.28},
    {"Li", 6.941, 1.28},
    {"Be", 9.012182, 0.96},
    {"B", 10.811, 0.84},
    {"C", 12.0107, 0.76},
    {"N", 14.0067, 0.71},
    {"O", 15.9994, 0.66},
    {"F", 18.9984032, 0.57},
    {"Ne", 20.1797, 0.58},
    {"Na", 22.98976928, 1.66},
    {"Mg", 24.305, 1.41},
    {"Al", 26.9815386, 1.21},
    {"Si", 28.0855, 1.11},
    {"P", 30.973762, 1.07},
    {"S", 32.065, 1.05},
    {"Cl", 35.453, 1.02},
    {"Ar", 39.948, 1.06},
    {"K", 39.0983, 2.03},
    {"Ca", 40.078, 1.76},
    {"Sc", 44.955912, 1.70},
    {"Ti", 47.867, 1.60},
    {"V", 50.9415, 1.53},
    {"Cr", 51.9961, 1.39},
    {"Mn", 54.938045, 1.39},
    {"Fe", 55.845, 1.32},
    {"Co", 58.933195, 1.26},
    {"Ni", 58.6934, 1.24},
    {"Cu", 63.546, 1.32},
    {"Zn", 65.38, 1.22},
    {"Ga", 69.723, 1.22},
    {"Ge", 72.64, 1.20},
    {"As", 74.9216, 1.19},
    {"Se", 78.96, 1.20},
    {"Br", 79.904, 1.20},
    {"Kr", 83.798, 1.16},
    {"Rb", 85.4678, 2.20},
    {"Sr", 87.62, 1.95},
    {"Y", 88.90585, 1.90},
    {"Zr", 91.224, 1.75},
    {"Nb", 92.90638, 1.64},
    {"Mo", 95.96, 1.54},
    {"Tc", 98, 1.47},
    {"Ru", 101.07, 1.46},
    {"Rh", 102.9055, 1.42},
    {"Pd", 106.42, 1.39},
    {"Ag", 107.8682, 1.45},
    {"Cd", 112.411, 1.44},
    {"In", 114.818, 1.42},
    {"Sn", 118.71, 1.39},
    {"Sb", 121.76, 1.39},
    {"Te", 127.6, 1.38},
    {"I", 126.90447, 1.39},
    {"Xe", 131.293, 1.40},
    {"Cs", 132.9054519, 2.44},
    {"Ba", 137.327, 2.15},
    {"La", 138.90547, 2.07},
    {"Ce", 140.116, 2.04},
    {"Pr", 140.90765, 2.03},
    {"Nd", 144.242, 2.01},
    {"Pm", 145, 1.99},
    {"Sm", 150.36, 1.98},
    {"Eu", 151.964, 1.98},
    {"Gd", 157.25, 1.96},
    {"Tb", 158.92535, 1.94},
    {"Dy", 162.5, 1.92},
    {"Ho", 164.93032, 1.92},
    {"Er", 167.259, 1.89},
    {"Tm", 168.93421, 1.90},
    {"Yb", 173.054, 1.87},
    {"Lu", 174.9668, 1.87},
    {"Hf", 178.49, 1.75},
    {"Ta", 180.94788, 1.70},
    {"W", 183.84, 1.62},
    {"Re", 186.207, 1.51},
    {"Os", 190.23, 1.44},
    {"Ir", 192.217, 1.41},
    {"Pt", 195.084, 1.36},
    {"Au", 196.966569, 1.36},
    {"Hg", 200.59, 1.32},
    {"Tl", 204.3833, 1.45},
    {"Pb", 207.2, 1.46},
    {"Bi", 208.9804, 1.48},
    {"Po", 209, 1.40},
    {"At", 210, 1.50},
    {"Rn", 222, 1.50},
    {"Fr", 223, 2.60},
    {"Ra", 226, 2.21},
    {"Ac", 227, 2.15},
    {"Th", 232.03806, 2.06},
    {"Pa", 231.03588, 2.00},
    {"U", 238.02891, 1.96},
    {"Np", 237, 1.90},
    {"Pu", 244, 1.87},
    {"Am", 243, 1.80},
    {"Cm", 247, 1.69},
    {"Bk", 247, 1.68},
    {"Cf", 251, 1.68},
    {"Es", 252, 1.65},
    {"Fm", 257, 1.67},
    {"Md", 258, 1.73},
    {"No", 259, 1.76},
    {"Lr", 262, 1.61},
    {"Rf", 265, 1.57},
    {"Db", 268, 1.49},
    {"Sg", 271, 1.43},
    {"Bh", 272, 1.41},
    {"Hs", 270, 1.34},
    {"Mt", 276, 1.29},
    {"Ds", 281, 1.28},
    {"Rg", 280, 1.21},
    {"Cn", 285, 1.22},
    {"Nh", 284, 1.36},
    {"Fl", 289, 1.43},
    {"Mc", 288, 1.62},
    {"Lv", 293, 1.75},
    {"Ts", 292, 1.65},
    {"Og", 294, 1.57},
    {"D", 2.014102, 0.31},
    {"T", 3.016049, 0.31},
    {"X", 0, 0.00},
}};

constexpr char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

constexpr bool is_letter(char c) { return upper(c) >= 'A' && upper(c) <= 'Z'; }

/// Place of a symbol of one or two letters in a square of 27 x 27; the case does not matter.
constexpr std::size_t square_place(std::string_view symbol) {
  const auto letter = [&](std::size_t k) {
    return k < symbol.size() ? static_cast<std::size_t>(upper(symbol[k]) - 'A' + 1) : std::size_t{0};
  };
  return 27 * letter(0) + letter(1);
}

constexpr auto by_symbol = [] {
  std::array<std::uint8_t, std::size_t{27} * 27> places{};
  for (std::size_t k = 1; k < table.size(); ++k) places[square_place(table[k].symbol)] = static_cast<std::uint8_t>(k);
  return places;
}();

}  // namespace

std::span<const Element> elements() { return table; }

std::string_view symbol_of_element(std::int32_t number) {
  return number > 0 && static_cast<std::size_t>(number) < table.size() ? table[static_cast<std::size_t>(number)].symbol
                                                                       : std::string_view{};
}

std::uint8_t element_of_symbol(std::string_view symbol) {
  if (symbol.empty() || symbol.size() > 2 || !is_letter(symbol[0]) || !is_letter(symbol.back())) return 0;
  return by_symbol[square_place(symbol)];
}

std::uint8_t element_of_atom_name(std::string_view name) {
  std::size_t letters = 0;
  while (letters < name.size() && is_letter(name[letters])) ++letters;
  const auto whole = element_of_symbol(name.substr(0, letters));
  return whole != 0 ? whole : element_of_symbol(name.substr(0, letters > 0 ? 1 : 0));
}

}  // namespace pathstat
