#pragma once

#include <cstdint>
#include <string_view>

#include "support/logical.h"
#include "support/text_field.h"

namespace pathstat {

/// How crystals and slabs are to be built, as command words set it.
struct BuildSettings {
  Text<8> bonding = "ALL";                    ///< one of bonding_names
  Text<16> cell_display = "WHOLE_MOLECULES";  ///< one of display_names
  Logical special_positions = true;
  Logical face_display = true;
  Logical align_polymer = false;
  double tolerance = 0.05;  ///< Å
};
inline BuildSettings build_settings;

inline constexpr std::string_view bonding_names = "NONE,FACES,ALL";
inline constexpr std::string_view display_names = "STORED,ATOMS,MOLECULES,WHOLE_MOLECULES";

/// Makes the settings the preferences by which the Core's crystals and slabs are built, in a few calls.
/// @param status  0; that of the Core
void put_build_preferences(std::int32_t& status);

}  // namespace pathstat
