#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "support/text_field.h"
#include "support/vectors.h"

/// The kinds of crystal lattice and what each demands of a cell.
///
/// Lattice types: -1 unset, 0 triclinic, 1 to 3 monoclinic with the unique axis a to c, 4 orthorhombic, 5 trigonal on
/// hexagonal axes, 6 trigonal on rhombohedral ones, 7 tetragonal, 8 hexagonal, 9 cubic, 10 to 16 the primitive settings
/// of centred lattices. Centring types: 0 primitive, 1 body, 2 face, 3 to 5 A to C, 6 rhombohedral.
namespace pathstat {

/// What ties a, b, c, alpha, beta and gamma: k from 1 to 6 the parameter takes the value of parameter k, and is free if
/// k is its own number; 0 fixed by the lattice; -1 from cos alpha + cos beta + cos gamma = -1; -2 by the triangle rule
/// of the three lengths.
using LatticeConstraints = std::array<std::int32_t, 6>;

/// @param status  0; 1 unknown type, with "UNSET"
void kva_sgr_latticestringfromtype_(std::int32_t type, TextField text, std::int32_t& status);
/// @param status  0; 1 unknown text, with -1
void kva_sgr_latticetypefromstring_(std::string_view text, std::int32_t& type, std::int32_t& status);
/// @param status  0; 1 unknown type, with "UNKNOWN"
void kva_sgr_centeringstringfromtype_(std::int32_t type, TextField text, std::int32_t& status);
/// @param status  0; 1 unknown text, with -1
void kva_sgr_centeringtypefromstring_(std::string_view text, std::int32_t& type, std::int32_t& status);

/// Gives the constraints of a lattice type.
/// @param status  0; 1 a type beyond 16 or without constraints of its own, which is told to the user; `constraints` is
///                then left alone
void kva_sgr_latticeconstraints_(std::int32_t type, LatticeConstraints& constraints, std::int32_t& status);

/// Brings edited constraints into line with a lattice type: where the type wants parameters alike, all take the entry
/// that was edited.
/// @param before, edited  the constraints before and after the edit
/// @param result          the edited ones, in line
/// @param changed         1 if the result is not `edited`
/// @param status          0; 1 an unknown type, which is told to the user; `result` is then `edited`
void kva_sgr_validatelatticecons_(std::int32_t type, const LatticeConstraints& before, const LatticeConstraints& edited,
                                  LatticeConstraints& result, std::int32_t& changed, std::int32_t& status);

/// Sets the lengths and the angles (radians) that constraints tie to others or derive from them.
/// @param status  0; 1 an angle cannot be derived, and stays as it was
void kva_sgr_derivelatticeparams_(Vector3& lengths, Vector3& angles, const LatticeConstraints& constraints,
                                  std::int32_t& status);

/// Gives the primitive cell of a centred lattice: each of its vectors in fractions of the conventional cell.
/// @param primitive_type  the lattice type of the primitive setting
/// @param status          0; 1 no lattice has this centring: then the identity and the type as it is
void kva_sgr_primitivelattice_(std::int32_t type, std::int32_t centring, Vector3& column_1, Vector3& column_2,
                               Vector3& column_3, std::int32_t& primitive_type, std::int32_t& status);

inline constexpr auto& kvA_SGR_LatticeStringFromType = kva_sgr_latticestringfromtype_;
inline constexpr auto& kvA_SGR_LatticeTypeFromString = kva_sgr_latticetypefromstring_;
inline constexpr auto& kvA_SGR_CenteringStringFromType = kva_sgr_centeringstringfromtype_;
inline constexpr auto& kvA_SGR_CenteringTypeFromString = kva_sgr_centeringtypefromstring_;
inline constexpr auto& kvA_SGR_LatticeConstraints = kva_sgr_latticeconstraints_;
inline constexpr auto& kvA_SGR_ValidateLatticeCons = kva_sgr_validatelatticecons_;
inline constexpr auto& kvA_SGR_DeriveLatticeParams = kva_sgr_derivelatticeparams_;
inline constexpr auto& kvA_SGR_PrimitiveLattice = kva_sgr_primitivelattice_;

}  // namespace pathstat
