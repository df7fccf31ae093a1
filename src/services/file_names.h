#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

#include "support/text_field.h"

namespace pathstat {

namespace removal_error {
constexpr std::int32_t failed = -21001;
constexpr std::int32_t refused = -21002;
}  // namespace removal_error

/// The name with its prefix replaced, for as long as nothing has been written:
///   "." alone or before "/"    the current directory
///   "~" alone or before "/"    the value of HOME
///   ~name                      the home directory of a user
///   $NAME:rest                 the first item of the Core's path variable NAME under which rest exists
///   $NAME                      the value in the environment
/// A prefix that is unknown writes nothing. All else is copied.
std::string expanded_name(std::string_view source);

/// The name with the part behind its last "." replaced; a "." in a directory name counts for nothing. The extension
/// may be given with or without its "."; an empty one only cuts.
std::string with_extension(std::string_view path, std::string_view extension);

/// expanded_name into a text of target.size() - 1 characters at most, terminated.
void kvS_FIL_ExpandName(std::string_view source, std::span<char> target);
void kvs_fil_expandname_(std::string_view source, TextField target);

/// True if the file of the expanded name exists.
bool kvS_FIL_Exists(std::string_view name);
bool kvs_fil_exists_(std::string_view name);

/// Removes the file of the expanded name and hands the error to the error service.
/// @param error  0, removal_error::refused if permission lacks, failed otherwise
void kvS_FIL_Delete(std::string_view name, std::int32_t& error);
void kvs_fil_delete_(std::string_view name, std::int32_t& error);

/// Drops everything up to the last "/".
void kvS_FIL_ExtractName(std::string& text);
void kvs_fil_extractname_(TextField text);

/// with_extension into a text of target.size() - 1 characters at most, terminated. A null path or extension (a view
/// without an address) leaves the target as it is.
void kvS_FIL_ReplaceExt(std::string_view path, std::string_view extension, std::span<char> target);
void kvs_fil_replaceext_(std::string_view path, std::string_view extension, TextField target);

/// Opens a file that is named as it stands or as `VARIABLE:rest`, where VARIABLE of the environment holds directories
/// with ":" between them; behind these stand the resource directories res/VARIABLE and Varlane-Resources/VARIABLE
/// under those of VLDIR.
/// @param mode  of fopen
/// @param path  takes the full path on success, cut to its size less one and terminated
/// @return the stream, which the caller closes; null if there is no such file
std::FILE* kvS_FIL_OpenSearch(std::string_view name, const char* mode, std::span<char> path);
std::FILE* kvs_fil_opensearch_(std::string_view name, std::string_view mode, TextField path);

}  // namespace pathstat
