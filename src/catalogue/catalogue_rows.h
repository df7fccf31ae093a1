#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace pathstat {

/// One series per frame or per model. Flags are 0 or 1 and hold at the build of the tables.
struct PropertyRow {
  std::int32_t id;
  std::string_view name;
  std::string_view short_name;  ///< empty: as the name
  std::string_view units;
  std::string_view extension;  ///< of the scratch file; "NONE" for a header
  std::int32_t colour;         ///< index in the Core's palette; -1: none fixed
  std::int8_t selected;
  std::int8_t selectable;
  std::int8_t can_be_used;
  std::int8_t calculated;  ///< or by_source

  constexpr bool is_header() const { return id > 600 && id < 700; }
};

/// Calculated of a row whose data are at hand only where the input is a trajectory.
constexpr std::int8_t by_source = 2;

/// One number reduced from several series.
struct FluctuationRow {
  std::int32_t id;
  std::string_view name;
  std::string_view symbol;
  std::string_view units;
  std::string_view extension;
  std::int32_t colour;

  constexpr bool is_header() const { return id > 700 && id < 800; }
};

namespace catalogue_text {
constexpr std::string_view none = "NONE";
constexpr std::string_view same = "";
constexpr std::string_view kcal = "Energy/kcal";
constexpr std::string_view kelvin = "Temperature/K";
constexpr std::string_view gpa = "Pressure/GPa";
constexpr std::string_view volume = "Volume/A^3";
constexpr std::string_view area = "Area/A^2";
constexpr std::string_view density = "Density/(g/cm^3)";
constexpr std::string_view cell = "Cell Parameters";
constexpr std::string_view debye = "Debyes";
constexpr std::string_view gyration = "Radius of Gyration/A";
constexpr std::string_view distance = "Distance/A";
constexpr std::string_view angle = "Angle/Degrees";
constexpr std::string_view torsion = "Torsion/Degrees";

// clang-format off
// id, name, short name, units, extension, colour, selected, selectable, can be used, calculated
constexpr auto property_rows = std::to_array<PropertyRow>({
    {601, "ENERGY TOTALS",                           same,                        none,     none,       -1, 0, 0, 1, 1},
    {  1, "Total Energy",                            same,                        kcal,     ".te",       3, 1, 1, 1, by_source},
    {  2, "Potential Energy",                        same,                        kcal,     ".pe",       4, 0, 1, 1, 1},
    {  3, "Kinetic Energy",                          same,                        kcal,     ".ke",       5, 0, 1, 1, 1},
    {201, "Temperature",                             same,                        kelvin,   ".temp",     3, 0, 1, 1, 1},
    {  4, "Non Bond Energy",                         same,                        kcal,     ".nb_e",    13, 0, 1, 1, 1},
    {  5, "Valence Energy",                          same,                        kcal,     ".val_e",    6, 0, 1, 1, 1},
    {  6, "Hamiltonian",                             same,                        kcal,     ".ham",      3, 0, 1, 1, 1},
    {602, "ENERGY COMPONENTS",                       same,                        none,     none,       -1, 0, 0, 1, 1},
    {101, "Bond Energy",                             same,                        kcal,     ".bnd_e",    3, 0, 1, 1, 1},
    {102, "Angle Energy",                            same,                        kcal,     ".ang_e",    6, 0, 1, 1, 1},
    {103, "Torsion Energy",                          same,                        kcal,     ".tor_e",   12, 0, 1, 1, 1},
    {104, "Inversion Energy",                        same,                        kcal,     ".inv_e",   13, 0, 1, 1, 1},
    {105, "Urey Bradley Energy",                     same,                        kcal,     ".ubr_e",    7, 0, 1, 1, 1},
    {107, "van der Waals Energy",                    "vdW Energy",                kcal,     ".vdw_e",    8, 0, 1, 1, 1},
    {120, "van der Waals Attractive Energy",         "vdW Attractive Energy",     kcal,     ".vdwa_e",  12, 0, 1, 1, 1},
    {119, "van der Waals Repulsive Energy",          "vdW Repulsive Energy",      kcal,     ".vdwr_e",  13, 0, 1, 1, 1},
    {106, "Coulomb Energy",                          same,                        kcal,     ".coul_e",  14, 0, 1, 1, 1},
    {108, "Hbond Energy",                            same,                        kcal,     ".hb_e",     9, 0, 1, 1, 1},
    {109, "Restraint Energy",                        same,                        kcal,     ".res_e",    2, 0, 1, 1, 1},
    {122, "Three Body Energy",                       same,                        kcal,     ".3bdy_e",   5, 0, 1, 1, 1},
    {123, "Total Cross Term Energy",                 "Total Cross Term E",        kcal,     ".tc_e",     5, 0, 1, 1, 1},
    {111, "Stretch-Stretch Energy",                  "Stret-Stret E",             kcal,     ".bb_e",     5, 0, 1, 1, 1},
    {112, "Stretch-Bend-Stretch Energy",             "Stret-Bend-Stret E",        kcal,     ".ba_e",     4, 0, 1, 1, 1},
    {113, "Bend-Bend Energy",                        "Bend-Bend E",               kcal,     ".aa_e",     3, 0, 1, 1, 1},
    {114, "Torsion-Stretch Energy",                  "Tors-Stret E",              kcal,     ".bt_e",     6, 0, 1, 1, 1},
    {124, "Stretch-Torsion-Stretch Energy",          "Stret-Tors-Stret E",        kcal,     ".btb_e",    6, 0, 1, 1, 1},
    {121, "Bend-Torsion-Bend Energy",                "Bend-Tors-Bend E",          kcal,     ".at_e",     7, 0, 1, 1, 1},
    {115, "Torsion-Bend-Bend Energy",                "Tors-Bend-Bend E",          kcal,     ".aat_e",    8, 0, 1, 1, 1},
    {116, "Seperated Stretch-Stretch Energy",        "Sep Stret-Stret E",         kcal,     ".13bb_e",  13, 0, 1, 1, 1},
    {117, "Inversion-Inversion Energy",              "Inv-Inv E",                 kcal,     ".ii_e",    12, 0, 1, 1, 1},
    {118, "Torsion-Torsion Energy",                  "Tors-Tors E",               kcal,     ".tt_e",     9, 0, 1, 1, 1},
    {110, "User Energy",                             same,                        kcal,     ".usr_e",   12, 0, 1, 1, 1},
    {608, "ENERGY PER MOLECULE",                     same,                        kcal,     none,       -1, 0, 0, 0, 1},
    {901, "Total Energy / Molecule",                 "Total E/Molecule",          kcal,     ".mte",     -1, 0, 1, 1, 1},
    {902, "Potential Energy / Molecule",             "Potential E/Molecule",      kcal,     ".mpe",     -1, 0, 1, 0, 1},
    {903, "Kinetic Energy / Molecule",               "Kinetic E/Molecule",        kcal,     ".mke",     -1, 0, 1, 0, 1},
    {904, "Bond Energy / Molecule",                  "Bond E/Molecule",           kcal,     ".mbnd_e",  -1, 0, 1, 0, 1},
    {905, "Angle Energy / Molecule",                 "Angle E/Molecule",          kcal,     ".mang_e",  -1, 0, 1, 0, 1},
    {906, "Torsion Energy / Molecule",               "Torsion E/Molecule",        kcal,     ".mtor_e",  -1, 0, 1, 0, 1},
    {907, "Inversion Energy / Molecule",             "Inversion E/Molecule",      kcal,     ".minv_e",  -1, 0, 1, 0, 1},
    {910, "vdW Energy / Molecule",                   "vdW E/Molecule",            kcal,     ".mvdw_e",  -1, 0, 1, 0, 1},
    {923, "vdW Attractive Energy / Molecule",        "vdW Attractive E/Molecule", kcal,     ".mvdwa_e", -1, 0, 1, 0, 1},
    {922, "vdW Repulsive Energy / Molecule",         "vdW Repulsive E/Molecule",  kcal,     ".mvdwr_e", -1, 0, 1, 0, 1},
    {909, "Coulomb Energy / Molecule",               "Coulomb E/Molecule",        kcal,     ".mcoul_e", -1, 0, 1, 0, 1},
    {911, "Hbond Energy / Molecule",                 "Hbond E/Molecule",          kcal,     ".mhb_e",   -1, 0, 1, 0, 1},
    {914, "Stretch-Stretch Energy / Molecule",       "Stret-Stret E/Mol",         kcal,     ".mbb_e",   -1, 0, 1, 0, 1},
    {915, "Stretch-Bend-Stretch Energy / Molecule",  "Stret-Bend_Stret E/Mol",    kcal,     ".mba_e",   -1, 0, 1, 0, 1},
    {916, "Bend-Bend Energy / Molecule",             "Bend-Bend E/Mol",           kcal,     ".maa_e",   -1, 0, 1, 0, 1},
    {917, "Torsion-Stretch Energy / Molecule",       "Tors-Stret E/Mol",          kcal,     ".mbt_e",   -1, 0, 1, 0, 1},
    {924, "Bend-Torsion-Bend Energy / Molecule",     "Bend-Tors-Bend E/Mol",      kcal,     ".mat_e",   -1, 0, 1, 0, 1},
    {918, "Torsion-Bend-Bend Energy / Molecule",     "Tors-Bend-Bend E/Mol",      kcal,     ".maat_e",  -1, 0, 1, 0, 1},
    {919, "Seperated Stret-Stret Energy / Molecule", "Sep Stret-Stret E/Mol",     kcal,     ".m13bb_e", -1, 0, 1, 0, 1},
    {920, "Inversion-Inversion Energy / Molecule",   "Inv-Inv E/Mol",             kcal,     ".mii_e",   -1, 0, 1, 0, 1},
    {921, "Torsion-Torsion Energy / Molecule",       "Tors-Tors E/Mol",           kcal,     ".mtt_e",   -1, 0, 1, 0, 1},
    {603, "BULK",                                    same,                        none,     none,       -1, 0, 0, 1, 1},
    {203, "Pressure",                                same,                        gpa,      ".pres",     4, 0, 1, 1, 1},
    {205, "Stress",                                  same,                        gpa,      ".strs",    -1, 0, 1, 1, 1},
    {204, "Volume",                                  same,                        volume,   ".vol",      4, 0, 1, 1, 1},
    {208, "Area",                                    same,                        area,     ".area",     4, 0, 1, 1, 1},
    {207, "Density",                                 same,                        density,  ".dens",     5, 0, 1, 1, 1},
    {206, "Cell Parameters",                         same,                        cell,     ".cell",    -1, 0, 1, 1, 1},
    {604, "ELECTROSTATIC",                           same,                        none,     none,       -1, 0, 0, 1, 1},
    {301, "Dipole Magnitude",                        same,                        debye,    ".dip",      6, 0, 1, 1, 0},
    {302, "Dipole Vector",                           same,                        debye,    ".dip_v",   -1, 0, 1, 1, 0},
    {605, "FREE VOLUME",                             same,                        none,     none,       -1, 0, 0, 0, 0},
    {401, "Free Volume",                             same,                        volume,   ".fvol",     3, 0, 0, 0, 0},
    {402, "Fractional Free Volume",                  same,                        none,     ".ffvol",   13, 0, 0, 0, 0},
    {606, "STRUCTURE",                               same,                        none,     none,       -1, 0, 0, 1, 1},
    {202, "Radius of Gyration",                      same,                        gyration, ".rgyr",     5, 0, 1, 1, 1},
    {607, "MEASUREMENTS",                            same,                        none,     none,       -1, 0, 0, 1, 1},
    {501, "Distance",                                same,                        distance, ".dst",     -1, 0, 1, 1, 1},
    {502, "Angle",                                   same,                        angle,    ".ang",     -1, 0, 1, 1, 1},
    {503, "Torsion",                                 same,                        torsion,  ".tors",    -1, 0, 1, 1, 1},
    {504, "Plane",                                   same,                        angle,    ".plan",    -1, 0, 1, 1, 1},
    {505, "Inversion",                               same,                        angle,    ".inv",     -1, 0, 1, 1, 1},
    {506, "Distance Vector",                         same,                        distance, ".dst_v",   -1, 0, 1, 1, 1},
});

// id, name, symbol, units, extension, colour
constexpr auto fluctuation_rows = std::to_array<FluctuationRow>({
    {701, "THERMODYNAMIC PROPERTIES",               "",                    none,          none,    -1},
    {801, "Adiabatic Compressibility",              "Ks",                  "1/GPa",       ".thrm",  3},
    {802, "Isothermal Compressibility",             "Kt",                  "1/GPa",       ".thrm",  4},
    {803, "Thermal Pressure Coefficient",           "Gammav",              "GPa/K",       ".thrm",  5},
    {804, "Gruneisen Parameter",                    "Gruneisen Parameter", "",            ".thrm",  3},
    {805, "Isobaric Heat Capacity (Cp)",            "Cp",                  "Cal/(Mol K)", ".thrm",  6},
    {806, "Isometric Heat Capacity (Cv)",           "Cv",                  "Cal/(Mol K)", ".thrm", 13},
    {807, "Volume Expansivity",                     "beta",                "1/K",         ".thrm",  7},
    {808, "Isoenthalpic Joule-Thomson Coefficient", "mu",                  "K/GPa",       ".thrm",  3},
    {809, "Isothermal Joule-Thomson Coefficient",   "phi",                 "Angstrom^3",  ".thrm",  6},
    {810, "Velocity of Sound",                      "omega",               "m/s",         ".thrm", 12},
    {702, "ELECTROSTATIC",                          "",                    none,          none,    -1},
    {901, "Dielectric Constant",                    "Dielectric Constant", "",            ".dip",   6},
});
// clang-format on
}  // namespace catalogue_text

using catalogue_text::fluctuation_rows;
using catalogue_text::property_rows;

/// The place of the property row with this identifier, from 0; property_rows.size() if there is none.
constexpr std::size_t property_row_of(std::int32_t id) {
  return static_cast<std::size_t>(std::ranges::find(property_rows, id, &PropertyRow::id) - property_rows.begin());
}

/// The place of the fluctuation row with this identifier, from 0; fluctuation_rows.size() if there is none.
constexpr std::size_t fluctuation_row_of(std::int32_t id) {
  return static_cast<std::size_t>(std::ranges::find(fluctuation_rows, id, &FluctuationRow::id) -
                                  fluctuation_rows.begin());
}

}  // namespace pathstat
