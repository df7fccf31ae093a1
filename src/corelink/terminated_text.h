#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pathstat {

/// An allocated copy of a text, null for null or when memory is out (told on standard error).
std::unique_ptr<char[]> COM_strsave(const char* text);
/// The copy in lower or upper case.
std::unique_ptr<char[]> COM_strsave_lc(const char* text);
std::unique_ptr<char[]> COM_strsave_uc(const char* text);

/// Change the case of a text in place.
void COM_tolower(char* text);
void COM_toupper(char* text);

/// First and last place of a character, null if it is not there.
const char* COM_index(const char* text, char character);
const char* COM_rindex(const char* text, char character);

/// The place of `pattern` in `text`, from 1; 0 if it is not there.
std::int32_t COM_strindex(std::string_view pattern, std::string_view text);

/// Makes room for more than `needed` bytes in a block of std::malloc: a block that is not above `needed` grows to
/// needed + 256, rounded down to a multiple of 256. False if memory is out, with the block as it was.
bool COM_realloc(void*& block, std::int32_t& capacity, std::int32_t needed);

/// Copies source.size() bytes; the ranges may overlap.
void COM_bytecopy(std::byte* target, std::span<const std::byte> source);
inline void com_bytecopy_(std::byte* target, std::span<const std::byte> source) { COM_bytecopy(target, source); }

/// The arguments joined with blanks; one that holds a blank or a tab stands between single quotes.
std::string COM_args2parm(std::span<const char* const> arguments);

/// The words of a text. A word that begins with a double or single quote runs to the same mark.
std::vector<std::string> COM_parm2args(std::string_view text);

}  // namespace pathstat
