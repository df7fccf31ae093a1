#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>
#include <vector>

namespace pathstat {

// The frames that stepping shows: a flat file of one record a frame, or a second handle on a binary trajectory.

inline std::int32_t TrjFormat = 0;  ///< reader code of the cached trajectory
constexpr std::string_view TrjCacheFileName = "./TrjCache";
inline std::FILE* TrjCacheFile = nullptr;  ///< none for a binary trajectory
inline std::int32_t XGrafTrjHandle = 0;    ///< of a binary trajectory; 0 when there is none
inline std::int32_t TrjCacheModel = 0;     ///< the model shown; 0 when there is no cache
inline std::int32_t TrjCacheModelPeriod = 0;
inline std::int32_t TrjCacheNAtoms = 0;          ///< movable atoms
inline std::int32_t TrjCacheNP1Atoms = 0;        ///< all atoms with images
inline std::vector<std::int32_t> TrjCacheAtIds;  ///< of the movable atoms
inline std::vector<std::int32_t> TrjCacheAtObjs;
inline std::vector<double> TrjCacheData;    ///< one record: cell matrix when periodic, positions, velocities
inline std::int64_t TrjCacheDataSize = 0;   ///< its bytes
inline std::int64_t TrjCacheFrameSize = 0;  ///< the stride of the file
inline double* TrjCacheL = nullptr;         ///< cell matrix in the record, by columns
inline double* TrjCacheXYZ = nullptr;       ///< positions in the record
inline double* TrjCacheVXYZ = nullptr;      ///< velocities in the record, of a history file only
inline std::int32_t TrjCacheNumFrames = 0;
inline std::int32_t FrameStart = 0;  ///< first frame of the trajectory that is cached
inline std::int32_t FrameStep = 0;   ///< frames of the trajectory between two entries

}  // namespace pathstat
