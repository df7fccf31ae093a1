#pragma once

#include <array>
#include <cstdint>
#include <string_view>

// Response properties from the fluctuations of a run. Which formula holds depends on what the run keeps constant.
// Energies are in kcal/mol, volumes in Å^3, pressures in Pa, temperatures in K; results in the units of the catalogue.

namespace pathstat {

/// What the formulas take from the run as a whole.
struct SimulatedSystem {
  std::int32_t ensemble = 0;  ///< of ensemble_code
  std::int32_t atoms = 0;
  double mass = 0.0;  ///< atomic mass units
  double degrees_of_freedom = 0.0;
  double first_volume = 0.0;  ///< of the first frame
};

/// A mean over frames: of a column of the scratch file, or of the product of two.
struct Moment {
  std::int32_t first = 0;
  std::int32_t second = 0;  ///< 0: of the one column
  bool of_vectors = false;  ///< mean scalar product of two vectors; of one: the square of the mean vector
};

constexpr std::size_t most_moments = 6;
/// The moments that the formulas of a row take in an ensemble, beside the means of the first three columns; those that
/// are not needed have column 0.
const std::array<Moment, most_moments>& moments_of(std::int32_t id, std::int32_t ensemble);

/// The means over the frames of one result.
struct EntryMeans {
  double pressure = 0.0;
  double volume = 0.0;
  double temperature = 0.0;
  std::array<double, most_moments> moments{};  ///< in the order of moments_of
};

/// The number of values of a row: 2 where an ensemble gives two ways to it.
std::int32_t response_count(std::int32_t id, std::int32_t ensemble);
/// What the values of a row with two are made from.
std::array<std::string_view, 2> response_labels(std::int32_t id, std::int32_t ensemble);

/// The values of a row of the fluctuation table. A denominator that vanishes gives what the floating point gives.
/// @return the first response_count values are set
std::array<double, 2> response(std::int32_t id, const SimulatedSystem& system, const EntryMeans& means);

/// The other properties from the heat capacity at constant pressure, the expansivity and one compressibility.
///
/// @param ensemble  3: Kt goes in and Ks comes out; 4: Ks goes in and Kt comes out
/// @param V,T,P     means: Å^3, K, Pa
/// @param mass      of all atoms, atomic mass units
/// @param atoms     not used
/// @param Cp,Cv     cal/(mol K) of the whole system
/// @param Ks,Kt     adiabatic and isothermal compressibility, 1/GPa
/// @param beta      expansivity, 1/K
/// @param gamma     thermal pressure coefficient, GPa/K
/// @param omega     velocity of sound; the absolute value under the root keeps it real
/// @param phi,mu    isothermal and isoenthalpic Joule-Thomson coefficient
/// @param status    0
void calctherm_(std::int32_t ensemble, double V, double T, double mass, double P, std::int32_t atoms, double Cp,
                double& Ks, double beta, double& Cv, double& Kt, double& gamma, double& omega, double& gruneisen,
                double& phi, double& mu, std::int32_t& status);

}  // namespace pathstat
