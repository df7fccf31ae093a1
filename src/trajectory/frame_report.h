#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "support/text_field.h"

namespace pathstat {

/// What the report of a frame tells. Times in ps, energies in kcal/mol, pressure in GPa; 0 for what is not known.
struct FrameReport {
  std::int32_t frame = 0;
  std::int32_t atoms = 0;
  std::int32_t periodic_type = 0;
  double time = 0, time_step = 0, total_energy = 0, potential_energy = 0;
  double cell_size = 0;  ///< Å³ in three dimensions, Å² in two
  double pressure = 0;
  double bonds = 0, van_der_waals = 0, angles = 0, electrostatic = 0, torsions = 0, hydrogen_bonds = 0, inversions = 0,
         restraints = 0, cross_terms = 0, three_body = 0, user = 0;
};

/// The report in fixed columns, a newline behind each line; comment lines come first.
std::string frame_report_text(std::span<const Text<80>> comments, const FrameReport& report);

}  // namespace pathstat
