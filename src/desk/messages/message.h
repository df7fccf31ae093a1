#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace pathstat::desk {

/// One argument of a message, as it was queued.
using MessageArgument = std::variant<std::int32_t, double, std::string>;

/// How a message is shown.
enum class MessageKind {
  error,    ///< something could not be done
  warning,  ///< it was done, but the reader should know something
  note,     ///< plain information
  table,    ///< a line of a table: shown as it stands, in a fixed-width face
  dialog,   ///< a question or its answers; the answers stand between bars
};

/// One message as it is shown.
struct Message {
  MessageKind kind = MessageKind::note;
  std::int32_t severity = 2;  ///< as the call gave it
  std::string key;            ///< empty for a message that came as a text
  std::vector<MessageArgument> arguments;
  std::string text;
};

/// One key of the catalogue.
struct MessageRow {
  std::string_view key;
  MessageKind kind;
  std::string_view arguments;  ///< types of the arguments in the order queued: s text, i integer, d or f number
  std::string_view text;       ///< with places {0}, {1} ... for the arguments; the first argument is 0
};

/// The words for one status of the process's own routines.
struct StatusRow {
  std::int32_t code;
  std::string_view arguments;
  std::string_view text;  ///< empty: nothing to show
};

/// All rows, for checks; no key and no code stands twice.
const std::vector<MessageRow>& message_rows();
const std::vector<StatusRow>& status_rows();

/// Null if no row has this key or code.
const MessageRow* find_message(std::string_view key);
const StatusRow* find_status(std::int32_t code);

/// The text with the arguments in their places. Arguments that the text has no place for, or that do not fit, stand
/// behind it in brackets, so that nothing is lost.
std::string filled(std::string_view text, const std::vector<MessageArgument>& arguments);

/// The message of a key; one without a row shows its key and arguments.
Message message_of(std::int32_t severity, std::string_view key, std::vector<MessageArgument> arguments);

/// The message of a status that a routine reported. Its text is empty if the status has nothing to tell.
Message message_of_status(std::int32_t code, std::string_view routine, std::vector<MessageArgument> arguments);

/// An argument as a list of arguments shows it: a text in quotes, a number with up to 9 digits.
std::string shown(const MessageArgument& argument);

}  // namespace pathstat::desk
