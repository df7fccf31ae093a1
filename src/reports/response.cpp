#include "reports/response.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "state/analysis_settings.h"

namespace pathstat {
namespace {

constexpr double gas_constant = 0.00198717;  // kcal/(mol K)
constexpr double dielectric_factor = 10113.008096539035;
/// Pa Å^3 in one kcal/mol, and in one cal/mol.
constexpr double pa_a3_per_kcal = 6.9478e9;
constexpr double pa_a3_per_cal = 6947800;
constexpr double kcal_per_pa_a3 = 1.4393045280520453e-10;
/// (2/3) 6.9478e-3: an energy per degree of freedom and volume as a pressure in GPa.
constexpr double gpa_of_energy_density = 0.004631866666666666;
/// Atomic mass units per Å^3 to a density: one over this, times 1000.
constexpr double density_factor = 0.6022;

namespace row {
constexpr std::int32_t adiabatic_compressibility = 801;
constexpr std::int32_t isothermal_compressibility = 802;
constexpr std::int32_t thermal_pressure = 803;
constexpr std::int32_t gruneisen = 804;
constexpr std::int32_t isobaric_heat_capacity = 805;
constexpr std::int32_t isometric_heat_capacity = 806;
constexpr std::int32_t expansivity = 807;
constexpr std::int32_t isoenthalpic_joule_thomson = 808;
constexpr std::int32_t isothermal_joule_thomson = 809;
constexpr std::int32_t velocity_of_sound = 810;
constexpr std::int32_t dielectric_constant = 901;
}  // namespace row

using Values = std::array<double, 2>;

/// Columns 4 and 5 are energies, 1 is the pressure.
constexpr std::array<Moment, most_moments> fixed_volume_moments{{{4}, {4, 4}, {5}, {5, 5}, {1, 4}, {1, 5}}};
/// Column 4 is an energy, 2 is the volume.
constexpr std::array<Moment, most_moments> fixed_pressure_moments{{{4}, {4, 4}, {2, 2}, {2, 4}}};
/// The dipole vector is columns 4 to 6.
constexpr std::array<Moment, most_moments> dipole_moments{{{4, 4, true}, {4, 0, true}}};

Values dielectric(const EntryMeans& means) {
  const double fluctuation = means.moments[0] - means.moments[1];
  return {1.0 + 3.0 * dielectric_factor * fluctuation / (means.temperature * means.volume)};
}

/// Nf R / 2 over one less the share that the fluctuation of the energy has of it, in cal/(mol K).
double microcanonical_heat_capacity(double variance, double half_freedom, double temperature) {
  const double rt = gas_constant * temperature;
  return half_freedom * gas_constant * 1000.0 / (1.0 - variance / (half_freedom * rt * rt));
}

Values constant_energy(std::int32_t id, const SimulatedSystem& system, const EntryMeans& means) {
  const auto [c4, c44, c5, c55, pc4, pc5] = means.moments;
  const double half_freedom = system.degrees_of_freedom * 0.5;
  const Values cv{microcanonical_heat_capacity(c44 - c4 * c4, half_freedom, means.temperature),
                  microcanonical_heat_capacity(c55 - c5 * c5, half_freedom, means.temperature)};
  if (id == row::isometric_heat_capacity) return cv;
  const double rt = gas_constant * means.temperature;
  const double per_covariance = system.first_volume * kcal_per_pa_a3 / (system.atoms * rt * rt);
  const double per_heat_capacity = gpa_of_energy_density / system.first_volume;
  return {((pc4 - means.pressure * c4) * per_covariance + 1.0) * cv[0] * per_heat_capacity,
          (1.0 - (pc5 - means.pressure * c5) * per_covariance) * cv[1] * per_heat_capacity};
}

Values constant_temperature(std::int32_t id, const SimulatedSystem& system, const EntryMeans& means) {
  const auto [c4, c44, c5, c55, pc4, pc5] = means.moments;
  const double rt2 = means.temperature * means.temperature * gas_constant;
  if (id == row::isometric_heat_capacity) {
    return {(c44 - c4 * c4) * 1000.0 / rt2,
            (system.degrees_of_freedom * 0.5 * gas_constant + (c55 - c5 * c5) / rt2) * 1000.0};
  }
  return {((pc5 - means.pressure * c5) / rt2 + system.atoms * gas_constant * pa_a3_per_kcal / system.first_volume) *
          1e-9};
}

/// What a run at constant pressure gives.
struct PressureResponse {
  double Ks = 0, Kt = 0, gamma = 0, gruneisen = 0, Cp = 0, Cv = 0, beta = 0, mu = 0, phi = 0, omega = 0;
};

struct PressureRow {
  std::int32_t id;
  double PressureResponse::*value;
};
constexpr std::array<PressureRow, 10> pressure_rows{{
    {row::adiabatic_compressibility, &PressureResponse::Ks},
    {row::isothermal_compressibility, &PressureResponse::Kt},
    {row::thermal_pressure, &PressureResponse::gamma},
    {row::gruneisen, &PressureResponse::gruneisen},
    {row::isobaric_heat_capacity, &PressureResponse::Cp},
    {row::isometric_heat_capacity, &PressureResponse::Cv},
    {row::expansivity, &PressureResponse::beta},
    {row::isoenthalpic_joule_thomson, &PressureResponse::mu},
    {row::isothermal_joule_thomson, &PressureResponse::phi},
    {row::velocity_of_sound, &PressureResponse::omega},
}};

PressureResponse constant_pressure(const SimulatedSystem& system, const EntryMeans& means) {
  const double P = means.pressure, V = means.volume, T = means.temperature, R = gas_constant;
  const auto [c4, c44, vv, vc4, unused_5, unused_6] = means.moments;
  const double variance = c44 - c4 * c4, covariance = vc4 - V * c4;
  const double compressibility = (vv - V * V) * 1e9 / (T * R * V * pa_a3_per_kcal);
  const bool has_thermostat = system.ensemble == ensemble_code::constant_temperature_and_pressure;
  PressureResponse of;
  if (has_thermostat) {
    of.Cp = variance * 1000.0 / (T * R * T);
    of.beta = covariance / (T * R * T * V);
    of.Kt = compressibility;
  } else {
    const double freedom = system.degrees_of_freedom;
    of.Cp = freedom * 500.0 * R / (1.0 - variance / (freedom * 0.5 * T * T * R * R));
    of.beta = -(of.Cp * covariance * 0.001) / (freedom * 0.5 * R * R * T * T * V);
    of.Ks = compressibility;
  }
  std::int32_t status = 0;
  calctherm_(system.ensemble, V, T, system.mass, P, system.atoms, of.Cp, of.Ks, of.beta, of.Cv, of.Kt, of.gamma,
             of.omega, of.gruneisen, of.phi, of.mu, status);
  return of;
}

}  // namespace

const std::array<Moment, most_moments>& moments_of(std::int32_t id, std::int32_t ensemble) {
  if (id == row::dielectric_constant) return dipole_moments;
  return ensemble_code::keeps_volume(ensemble) ? fixed_volume_moments : fixed_pressure_moments;
}

std::int32_t response_count(std::int32_t id, std::int32_t ensemble) {
  if (ensemble == ensemble_code::constant_energy && id == row::thermal_pressure) return 2;
  return ensemble_code::keeps_volume(ensemble) && id == row::isometric_heat_capacity ? 2 : 1;
}

std::array<std::string_view, 2> response_labels(std::int32_t id, std::int32_t ensemble) {
  if (id == row::thermal_pressure) return {"Potential Energy - Pressure", "Kinetic Energy - Pressure"};
  if (ensemble == ensemble_code::constant_temperature) return {"Total Energy", "Potential Energy"};
  return {"Potential Energy", "Kinetic Energy"};
}

std::array<double, 2> response(std::int32_t id, const SimulatedSystem& system, const EntryMeans& means) {
  if (id == row::dielectric_constant) return dielectric(means);
  if (system.ensemble == ensemble_code::constant_energy) return constant_energy(id, system, means);
  if (system.ensemble == ensemble_code::constant_temperature) return constant_temperature(id, system, means);
  const auto found = std::ranges::find(pressure_rows, id, &PressureRow::id);
  if (found == pressure_rows.end()) return {};
  return {constant_pressure(system, means).*found->value};
}

void calctherm_(std::int32_t ensemble, double V, double T, double mass, double P, std::int32_t /*atoms*/, double Cp,
                double& Ks, double beta, double& Cv, double& Kt, double& gamma, double& omega, double& gruneisen,
                double& phi, double& mu, std::int32_t& status) {
  status = 0;
  const double cp_in_pa_a3 = Cp * pa_a3_per_cal;
  if (ensemble == ensemble_code::constant_pressure) {
    Cv = cp_in_pa_a3 * Cp * Ks * 1e-9 / (V * T * beta * beta + cp_in_pa_a3 * Ks * 1e-9);
    Kt = Cp * Ks / Cv;
    gamma = beta / Kt;
  } else {
    gamma = beta / Kt;
    Ks = (1.0 - T * Kt * 1e9 * gamma * gamma * V / cp_in_pa_a3) * Kt;
    Cv = Ks * Cp / Kt;
  }
  gruneisen = gamma * V * 1e9 / (Cv * pa_a3_per_cal);
  phi = (1.0 - T * beta) * V;
  mu = -(phi * 1e9) / cp_in_pa_a3;
  omega = std::sqrt(std::abs(P * Cp / (((mass / V) * 1000.0 / density_factor) * Cv)));
}

}  // namespace pathstat
