#pragma once

#include <cstdint>

#include "support/text_field.h"
#include "support/vectors.h"

/// The space groups of the Core's library, and the two settings of a centred lattice.
///
/// A model whose cell is held in a primitive setting tells its conventional one by user data: an integer array
/// "CRY/CONVENTIONAL_SGSYMMETRY" of the group's number in the International Tables and its option, or else an object
/// "CRY/CONVENTIONAL_GPSYMMETRY", the group itself.
namespace pathstat {

inline constexpr std::int32_t to_primitive = 1, to_conventional = 2;

/// Finds a group in the library.
///
/// @param name    searched for if `number` is below 1; otherwise the group's name on return
/// @param number  in the International Tables, or below 1
/// @param option  the setting of the group; 0 takes the lowest of a name, or 1 of a number, and is replaced by it
/// @param group   its identifier, 0 without one
/// @param status  0; 1 no such group, or more than one of that number and option
void kva_sgr_getspaceid_(TextField name, std::int32_t number, std::int32_t& option, std::int32_t& group,
                         std::int32_t& status);

/// Tells whether a model's lattice, of the type of a group, is held in a primitive setting.
/// @param primitive_form  1 or 0
/// @param status          that of the Core
void kva_sgr_islatticebravais_(std::int32_t model, std::int32_t group, std::int32_t& primitive_form,
                               std::int32_t& status);

/// Gives the change of a model's cell between settings: the new cell vectors are the columns of (A B C) m.
/// @param direction  to_primitive or to_conventional
/// @param m          the identity where there is nothing to change
/// @param lattice    the lattice type of the new setting; 0 where there is none
/// @param centring   its centring type; 0 for a primitive setting
/// @param status     0; 1 another direction, a centring that the lattice does not have, or a conventional group that
///                   the library does not have; that of the Core
void kva_sgr_latticetransform_(std::int32_t model, std::int32_t direction, Matrix3& m, std::int32_t& lattice,
                               std::int32_t& centring, std::int32_t& status);

inline constexpr auto& kvA_SGR_GetSpaceId = kva_sgr_getspaceid_;
inline constexpr auto& kvA_SGR_IsLatticeBravais = kva_sgr_islatticebravais_;
inline constexpr auto& kvA_SGR_LatticeTransform = kva_sgr_latticetransform_;

}  // namespace pathstat
