#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "desk/messages/message.h"
#include "desk/ops/operation_server.h"

namespace pathstat::desk {

/// A dialog of the process that waits for an answer.
struct Question {
  std::string key;
  std::string text;
  std::vector<std::string> choices;
  std::int32_t unsettled = 1;  ///< the choice without an answer; below 1: none of them
};

/// Where the operations of the interface families lead: what the process shows, asks and reports. Every member may be
/// left empty.
struct InterfaceEvents {
  std::function<void(const Message& message)> message;
  std::function<void(double fraction)> progress;          ///< share of the work that is done, 0 to 1
  std::function<void(const std::string& text)> status;    ///< what is going on; empty when it is over
  std::function<void(const std::string& text)> returned;  ///< the return list of a command
  std::function<bool()> interrupted;                      ///< true: the process should stop what it does
  std::function<void()> repeats_end{};                    ///< a held button is to do nothing more
  /// Asks the user a question. @return the choice from 1, or none if it is not answered
  std::function<std::optional<std::int32_t>(const Question& question)> choose{};
  /// Values are out of date: those of one word, or of all that begin as the text does in front of its "*".
  std::function<void(const std::string& words)> values_changed{};
};

/// The user's side of the Core: queued message arguments, dialogs with answers that are settled beforehand or asked
/// for, and the modal states.
class UserInterface {
 public:
  explicit UserInterface(InterfaceEvents events) : events_(std::move(events)) {}

  /// Settles the answer of a dialog, by the key of its question; choices count from 1.
  void settle_answer(std::string key, std::int32_t choice) { answers_[std::move(key)] = choice; }

  void queue_argument(MessageArgument argument);
  void display(std::int32_t severity, std::string_view key);
  void display_text(std::int32_t severity, std::string text);
  /// Shows a status of the process's routines. @return the severity it was shown with, 1 to 3
  std::int32_t display_status(std::int32_t code, std::string_view routine);
  /// The choice that is settled for the question, else the one that the user makes, else `unsettled`, which is told
  /// then. The queued arguments are those of the question.
  std::int32_t ask(const std::string& key, std::string_view options, std::int32_t unsettled);
  void report_status(std::string_view key);
  void report_progress(double fraction);
  void return_list(const std::string& text);
  void end_repeats();
  void change_values(const std::string& words);
  bool interrupted() const { return events_.interrupted && events_.interrupted(); }

  const std::string& modal_state(std::int32_t modal_class);
  void set_modal_state(std::int32_t modal_class, std::string state) { modal_[modal_class] = std::move(state); }

 private:
  std::vector<MessageArgument> take_arguments();
  void show(const Message& message);

  InterfaceEvents events_;
  std::vector<MessageArgument> queued_;
  std::map<std::string, std::int32_t> answers_;
  std::map<std::int32_t, std::string> modal_;
};

/// Has the families of messages, dialogs, panels, system, models' graphics and control served.
void register_interface_operations(OperationServer& server, UserInterface& ui);

}  // namespace pathstat::desk
