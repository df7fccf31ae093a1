#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "desk/advice/present.h"
#include "desk/messages/message.h"

namespace pathstat::desk {

/// One sentence for the user beside what the process says: a warning of what is likely a mistake, or a note of what
/// numbers are of.
struct Advice {
  MessageKind kind = MessageKind::warning;
  std::string text;
};

/// A command and how it ended.
struct EndedCommand {
  std::string_view word;
  std::string_view arguments;
  std::int32_t status = 0;
  std::span<const Message> messages = {};  ///< errors and warnings that the process gave
};

/// Judges commands by the table of words and by the present settings and limits of the process: tells mistakes that
/// pass in silence, why a command failed where the process does not say, what was probably meant, and what numbers are
/// of.
class Adviser {
 public:
  explicit Adviser(StateSources sources) : sources_(std::move(sources)) {}

  /// What there is to say of a command that has ended, well or not.
  std::vector<Advice> about(const EndedCommand& command);

  /// Notes of what an analysis was that ended by an interruption, which leaves it with a part of its result.
  void note_interrupted(std::string_view word);

  /// Of what an analysis was, or that which its result goes back to: "all atoms, frames 1 to 200"; empty for others.
  std::string made_of(std::string_view word) const;

  /// The process is a new one: nothing stands any more that was calculated.
  void forget_results() { results_ = {}; }

 private:
  static constexpr std::size_t result_kinds = 3;

  void keep_result(std::string_view word, Present& present);

  StateSources sources_;
  std::array<std::string, result_kinds> results_;  ///< what each of the kept results was calculated of
  double told_cutoff_ = 0;                         ///< the cut-off that RDF was last warned of
};

/// Statistics whose spread is nothing but rounding, a standard deviation below 1e-12 of the mean, told as those of a
/// constant; none for other messages.
std::optional<std::string> constant_in_words(const Message& message);

/// What is odd about the arguments of a word as they are written, whatever the state.
std::vector<std::string> oddities(std::string_view word, std::string_view arguments);

}  // namespace pathstat::desk
