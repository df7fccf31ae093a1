#pragma once

#include <cstdint>
#include <string_view>

namespace pathstat {

/// Starts a program in a process of its own.
///
/// The executable is looked for by FILE_path. EXEC_TYPE "MANUAL" prints what would run and starts nothing; EXEC_DEBUG
/// has the process and its open descriptors 0 to 9 traced; with COM_PARENT_IN set the child closes its standard input,
/// and with COM_CloseMe the descriptors that this names, with blanks between.
///
/// @param argv, envp  end with null behind argc and envc texts
/// @return the process number; 1 where nothing was to be started; 0 on failure, with the error text set
std::int32_t COM_exec0(const char* executable, std::int32_t argc, const char* const* argv, std::int32_t envc,
                       const char* const* envp);

/// The same with this process's environment.
std::int32_t COM_exec1(const char* executable, std::int32_t argc, const char* const* argv);

/// COM_exec0 with its number as a text, in one static block; null on failure.
const char* COM_exec(const char* executable, std::int32_t argc, const char* const* argv, std::int32_t envc,
                     const char* const* envp);

/// By address: starts the executable of a field with the arguments of another, which have blanks between, and this
/// process's environment. Arguments beyond 255 are told on standard error, and nothing starts.
/// @param process  the number of COM_exec0
void com_exec_fortran_(std::string_view executable, std::string_view arguments, std::int32_t& process);

}  // namespace pathstat
