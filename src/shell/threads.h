#pragma once

#include <cstdint>

namespace pathstat {

// The count of threads that share the work of an analysis, as it is told to the Core.

/// Takes over the starting count for the work that comes.
void start_threads();

/// The number of processors.
std::int32_t kvZ_COM_GetNProc();

/// The count of the pool: MP_SET_NUMTHREADS, else NPROC, else the number of processors, until it is set.
std::int32_t kvZ_COM_GetNThreads();

/// Sets the count; one below 1 stands for the starting one. @return the count
std::int32_t kvZ_COM_SetNThreadsF(std::int32_t count);

/// The same, but at most the number of processors; more is told on standard error.
std::int32_t kvZ_COM_SetNThreads(std::int32_t count);

inline std::int32_t kvz_com_getnproc_() { return kvZ_COM_GetNProc(); }
inline std::int32_t kvz_com_getnthreads_() { return kvZ_COM_GetNThreads(); }
inline std::int32_t kvz_com_setnthreadsf_(std::int32_t count) { return kvZ_COM_SetNThreadsF(count); }
inline std::int32_t kvz_com_setnthreads_(std::int32_t count) { return kvZ_COM_SetNThreads(count); }

}  // namespace pathstat
