#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pathstat {

/// How many arguments a group has and how many it must have at least (-1 until that is defined).
struct ArgumentCounts {
  std::int32_t count = 0;
  std::int32_t min_count = -1;
};

struct ArgumentRecord {
  std::string_view token;         ///< in the argument text, without its quoting marks
  ArgumentCounts counts{-1, -1};  ///< of a keyword's arguments; -1 for any other token
};

/// Arguments that belong together: those ahead of the first keyword, or those of one keyword.
struct ArgumentGroup {
  ArgumentCounts& counts;
  std::span<const ArgumentRecord> arguments;
};

/// The argument text of one command, cut into tokens. The text belongs to the caller and outlives the table's use.
///
/// Tokens are separated by bytes up to 0x20. One that begins with ", ' or { runs to the same mark, or to }; there is no
/// escape and no nesting. Any other token that begins with "-" and is no number is a keyword.
class ArgumentTable {
 public:
  /// Cuts a new text. Out of memory, what was cut stands.
  void prepare(std::string_view text);

  std::size_t size() const { return records_.size(); }
  /// Lets the keywords count as positional arguments.
  void undo_keywords() { positional_.count = static_cast<std::int32_t>(records_.size()); }

  ArgumentGroup positional();
  /// The first keyword of this name, given with or without its "-", in letters of either case.
  std::optional<ArgumentGroup> keyword(std::string_view name);

  /// The token as a terminated text in a copy of the argument text, which lives until the next prepare().
  const char* terminated(std::string_view token);

 private:
  void cut_tokens();
  void append(ArgumentRecord record);
  void count_groups();

  std::string_view text_;
  std::vector<ArgumentRecord> records_;
  ArgumentCounts positional_;
  std::string copy_;
};

}  // namespace pathstat
