#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "support/logical.h"
#include "support/text_field.h"

namespace pathstat {

class ArgumentTable;

/// Statuses of the argument routines. Each routine hands its status to the error service, which shows a positive one
/// to the user. The kvZ_Arg... and kvZ_KEY_Arg... routines then turn a negative one into 0.
namespace argument_status {
constexpr std::int32_t below_range = 1001;       ///< shown with the value and the bound
constexpr std::int32_t above_range = 1002;       ///< shown with the value and the bound
constexpr std::int32_t not_allowed = 1003;       ///< a text that is not in the list
constexpr std::int32_t no_range = 1004;          ///< a range text without ":"
constexpr std::int32_t argument_missing = 1005;  ///< no minimal count is defined; shown with the index
/// Shown with the index less one, or with the count, and the minimal count.
constexpr std::int32_t too_few_arguments = 1006;
constexpr std::int32_t flag_with_arguments = 1007;
constexpr std::int32_t not_an_object = 1008;  ///< shown with the argument
constexpr std::int32_t text_cut = -1000;
constexpr std::int32_t optional_absent = -1001;  ///< the target keeps its value
constexpr std::int32_t keyword_absent = -1002;
}  // namespace argument_status

/// Bounds that stand for none.
constexpr double no_real_limit = -3e+38;
constexpr std::int32_t no_integer_limit = -2147483647;
/// What the range texts give for an open end.
constexpr double open_end = -3.001e+38;
constexpr std::int32_t open_integer_end = -2147483647;

/// Items that a text may have, with "," between them; "\," stands for a comma in an item. Nothing: any text.
using AllowedTexts = std::optional<std::string_view>;

/// Where a text argument goes: a block, which takes one character less than its size and a terminator; a field, which
/// is padded with blanks; or a string, which takes any text.
class TextTarget {
 public:
  TextTarget(std::span<char> block) : block_(block) {}
  TextTarget(TextField field) : field_(field) {}
  TextTarget(std::string& text) : text_(&text) {}
  /// False if the text has been cut.
  bool set(std::string_view text) const;

 private:
  std::span<char> block_;
  std::optional<TextField> field_;
  std::string* text_ = nullptr;
};

/// Sets up the arguments of a command, which lie in `text` for as long as they are read, and empties the return list.
/// @param count  positional arguments, those ahead of the first keyword
void sch_PrepareArguments(std::string_view text, std::int32_t& count);

/// Puts the arguments of a command aside while it lives: a command that is served in the middle of another one sets up
/// arguments of its own, and the outer one then reads on in those that it had.
class ArgumentsAside {
 public:
  ArgumentsAside();
  ~ArgumentsAside();
  ArgumentsAside(const ArgumentsAside&) = delete;
  ArgumentsAside& operator=(const ArgumentsAside&) = delete;

 private:
  std::unique_ptr<ArgumentTable> kept_;
};

/// Number of positional arguments.
std::int32_t kvZ_ArgumentTotal();
/// Number of a keyword's arguments; -1 with keyword_absent if it is not there.
std::int32_t kvZ_KEY_ArgumentTotal(std::string_view key, std::int32_t& status);
/// Makes texts that begin with "-" positional arguments like any other.
void kvZ_KEY_NoDetection();
/// 1 if the keyword is there, else 0.
std::int32_t kvZ_KEY_FlagValue(std::string_view key, std::int32_t& status);

/// Says how many arguments there must be; those beyond are optional from here on.
void kvZ_DefineMinArgCount(std::int32_t count, std::int32_t& status);
void kvZ_KEY_DefineMinArgCount(std::string_view key, std::int32_t count, std::int32_t& status);

/// Numbers within limits, both included. Indices count from 1; the target is written on success only.
void kvZ_ArgFloat(float& target, std::int32_t index, float min, float max, std::int32_t& status);
void kvZ_ArgDouble(double& target, std::int32_t index, double min, double max, std::int32_t& status);
void kvZ_ArgInt(std::int32_t& target, std::int32_t index, std::int32_t min, std::int32_t max, std::int32_t& status);
void kvZ_KEY_ArgFloat(std::string_view key, float& target, std::int32_t index, float min, float max,
                      std::int32_t& status);
void kvZ_KEY_ArgDouble(std::string_view key, double& target, std::int32_t index, double min, double max,
                       std::int32_t& status);
void kvZ_KEY_ArgInt(std::string_view key, std::int32_t& target, std::int32_t index, std::int32_t min, std::int32_t max,
                    std::int32_t& status);

/// True for a text that begins with Y, T, y, t or a digit from 1 to 9.
void kvZ_ArgLogical(bool& target, std::int32_t index, std::int32_t& status);
void kvZ_KEY_ArgLogical(std::string_view key, bool& target, std::int32_t index, std::int32_t& status);

/// A text, terminated, which stands until the next command.
void kvZ_ArgString(const char*& target, std::int32_t index, AllowedTexts allowed, std::int32_t& status);
void kvZ_KEY_ArgString(std::string_view key, const char*& target, std::int32_t index, AllowedTexts allowed,
                       std::int32_t& status);

/// A text, copied.
void kvZ_ArgFillString(TextTarget target, std::int32_t index, AllowedTexts allowed, std::int32_t& status);
void kvZ_KEY_ArgFillString(std::string_view key, TextTarget target, std::int32_t index, AllowedTexts allowed,
                           std::int32_t& status);

/// The object that the argument names.
/// @param type  class that it must be of; 0 for any
void kvZ_ArgObject(std::int32_t& target, std::int32_t index, std::int32_t type, std::int32_t& status);
void kvZ_KEY_ArgObject(std::string_view key, std::int32_t& target, std::int32_t index, std::int32_t type,
                       std::int32_t& status);

/// All arguments, with one blank between them.
void kvZ_AllArgs(TextTarget target, std::int32_t& status);
void kvZ_KEY_AllArgs(std::string_view key, TextTarget target, std::int32_t& status);

/// Reads `low:high`; an end that is not given is open_end or open_integer_end.
void kvZ_GetFloatRange(std::string_view text, float& low, float& high, std::int32_t& status);
void kvZ_GetDoubleRange(std::string_view text, double& low, double& high, std::int32_t& status);
void kvZ_GetIntRange(std::string_view text, std::int32_t& low, std::int32_t& high, std::int32_t& status);

/// The text from its second blank-separated word on; null without one.
const char* kvZ_AllOutputArgsP(const char* text);

// The by-address twins.

void sch_preparearguments_(std::string_view text, std::int32_t& count);
void kvz_defineminargcount_(std::int32_t count, std::int32_t& status);
void kvz_argint_(std::int32_t& target, std::int32_t index, std::int32_t min, std::int32_t max, std::int32_t& status);
void kvz_argdouble_(double& target, std::int32_t index, double min, double max, std::int32_t& status);
void kvz_arglogical_(Logical& target, std::int32_t index, std::int32_t& status);

/// A text into a field, or into its first `capacity` characters if that is above 0 and less. A blank list of allowed
/// texts is none; a blank keyword means the positional arguments.
void kvz_argfillstring_(TextField target, std::int32_t index, std::int32_t capacity, std::string_view allowed,
                        std::int32_t& status);
void kvz_key_argfillstring_(std::string_view key, TextField target, std::int32_t index, std::int32_t capacity,
                            std::string_view allowed, std::int32_t& status);

}  // namespace pathstat
