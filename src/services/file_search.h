#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>

namespace pathstat {

// Files by their paths as they stand, and paths by directories of the environment. A null path counts as an empty one.
// A routine that fails answers 0, -1 or null and sets the error text.

/// 1 if something stands at the path, else 0 with no error text.
std::int32_t FILE_exists(const char* path);

/// Bytes of a file; -1 if there is none, with no error text.
std::int64_t FILE_size(const char* path);

/// @return 1, or 0 on failure
std::int32_t FILE_rename(const char* old_path, const char* new_path);

/// @return 1 if it removed the file; 0 for an empty path, no file, or a failed removal, with no error text
std::int32_t FILE_delete(const char* path);

/// The first path of a file under the directories of an environment variable, with ":" between them; in "." if it is
/// unset or empty. The name goes through FILNAM_xlate; one that begins with "/" stands for itself. An empty name looks
/// for the directories' own entries that are no directories. FILE_DEBUG traces the search.
/// @return one static block
const char* FILE_dirpath_search(const char* variable, const char* name);

/// The same along PATH, for a file that its owner may execute.
const char* FILE_path(const char* name);

/// A name with its variables ($NAME, of letters, digits and _) and "~" (before "/" or the end) replaced by their
/// values, and ":" by "/". FN_XLATE_DEBUG set to "ON" traces it.
/// @return one static block of at most 1023 characters; null if a variable is unset or the result is longer
const char* FILNAM_xlate(const char* name);

/// The same between fields; blanks on failure. A result that the field has no room for is told on standard error.
/// EXPNAM_DEBUG traces it.
void filnam_xlate_f_(std::string_view name, std::span<char> result);

/// The part of a path behind its last "/".
const char* FILNAM_strip_directory(const char* path);

struct FreeBlock {
  void operator()(char* block) const { std::free(block); }
};
/// "DIRECTORY/FILE" in a block of its own; null if memory is out.
std::unique_ptr<char[], FreeBlock> FILNAM_append_file_to_dir(const char* directory, const char* file);

}  // namespace pathstat
