#pragma once

#include <cstdint>

#include "support/text_field.h"
#include "volumes/volume_file.h"

namespace pathstat {

/// What command words have set for densities and surfaces.
struct FieldSettings {
  Text<8> density_atoms{"ALL"};
  std::int32_t density_centre = 0;                   ///< number of an atom; 0 for none
  std::int32_t density_axis = 0, density_plane = 0;  ///< numbers of atoms; 0 for none
  double density_spacing = 0.5;                      ///< Å
  std::int32_t density_type = 4;
  Text<1024> density_file{"density.mbk"};
  Text<8> normals{"OUTWARDS"};
};
inline FieldSettings field_settings;

/// The volume that words work on; `unit` is 0 without one.
struct CurrentVolume {
  Text<1024> path;
  std::int32_t unit = 0, type = 0, kind = 0;
  std::int32_t nx = 0, ny = 0, nz = 0;
  float min = 0, max = 0;
  FloatVector origin{}, spacing{};

  bool is_open() const { return unit > 0; }
};
inline CurrentVolume current_volume;

/// The file of the table whose columns words draw; blank without one.
inline Text<1024> current_table;

}  // namespace pathstat
