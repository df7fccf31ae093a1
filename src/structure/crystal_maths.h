#pragma once

#include "structure/crystal_cell.h"
#include "structure/crystal_coordinates.h"
#include "structure/crystal_lattice.h"
#include "structure/crystal_orientation.h"
#include "structure/crystal_planes.h"

/// The geometry of periodic cells, and the second name of each routine. Numbers pass by value in both.
namespace pathstat {

inline constexpr auto& kvA_CRY_3DFracToCartMatrix = kva_cry_3dfractocartmatrix_;
inline constexpr auto& kvA_CRY_3DCartToFracMatrix = kva_cry_3dcarttofracmatrix_;
inline constexpr auto& kvA_CRY_2DFracToCartMatrix = kva_cry_2dfractocartmatrix_;
inline constexpr auto& kvA_CRY_2DCartToFracMatrix = kva_cry_2dcarttofracmatrix_;
inline constexpr auto& kvA_CRY_TransformCoordinates = kva_cry_transformcoordinates_;
inline constexpr auto& kvA_CRY_3DCellToParam = kva_cry_3dcelltoparam_;
inline constexpr auto& kvA_CRY_2DCellToParam = kva_cry_2dcelltoparam_;
inline constexpr auto& kvA_CRY_3DParamToCell = kva_cry_3dparamtocell_;
inline constexpr auto& kvA_CRY_2DParamToCell = kva_cry_2dparamtocell_;
inline constexpr auto& kvA_CRY_3DMetricToParam = kva_cry_3dmetrictoparam_;
inline constexpr auto& kvA_CRY_2DMetricToParam = kva_cry_2dmetrictoparam_;
inline constexpr auto& kvA_CRY_3DParamToMetric = kva_cry_3dparamtometric_;
inline constexpr auto& kvA_CRY_2DParamToMetric = kva_cry_2dparamtometric_;
inline constexpr auto& kvA_CRY_MillerSpacing = kva_cry_millerspacing_;
inline constexpr auto& kvA_CRY_MillerNormal = kva_cry_millernormal_;
inline constexpr auto& kvA_CRY_3DReciprocalVectors = kva_cry_3dreciprocalvectors_;
inline constexpr auto& kvA_CRY_2DReciprocalVectors = kva_cry_2dreciprocalvectors_;
inline constexpr auto& kvA_CRY_3DAlignmentMatrix = kva_cry_3dalignmentmatrix_;
inline constexpr auto& kvA_CRY_2DAlignmentMatrix = kva_cry_2dalignmentmatrix_;
inline constexpr auto& kvA_CRY_3DParamToCellVolume = kva_cry_3dparamtocellvolume_;
inline constexpr auto& kvA_CRY_3DABCToCellVolume = kva_cry_3dabctocellvolume_;
inline constexpr auto& kvA_CRY_2DParamToCellArea = kva_cry_2dparamtocellarea_;
inline constexpr auto& kvA_CRY_2DUVToCellArea = kva_cry_2duvtocellarea_;
inline constexpr auto& kvA_CRY_FracOperatorToCart = kva_cry_fracoperatortocart_;
inline constexpr auto& kvA_CRY_ZonePlanes = kva_cry_zoneplanes_;
inline constexpr auto& kvA_CRY_CheckLattice = kva_cry_checklattice_;
inline constexpr auto& kvA_CRY_GetPrimitive = kva_cry_getprimitive_;
inline constexpr auto& kvA_CRY_ToInCell = kva_cry_toincell_;
inline constexpr auto& kvA_CRY_Density = kva_cry_density_;

}  // namespace pathstat
