#include "desk/ops/user_interface.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace pathstat::desk {
namespace {

/// More arguments than any message takes: what comes beyond is not kept.
constexpr std::size_t most_arguments = 64;

constexpr std::int32_t not_available = 1;

/// The pieces of a text between marks, but for empty ones.
std::vector<std::string> pieces_of(std::string_view text, char mark) {
  std::vector<std::string> pieces;
  while (!text.empty()) {
    const auto end = std::min(text.find(mark), text.size());
    if (end > 0) pieces.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return pieces;
}

std::string answer_in_words(const Question& question, std::int32_t choice) {
  if (choice < 1) return "(not asked)";
  const auto place = static_cast<std::size_t>(choice) - 1;
  return place < question.choices.size() ? fmt::format("Answer {}: {}", choice, question.choices[place])
                                         : fmt::format("Answer {}", choice);
}

/// Nobody has answered: how a script does.
std::string how_to_answer(std::string_view key, const Question& question) {
  std::string others;
  for (std::size_t k = 0; k < question.choices.size(); ++k) {
    if (static_cast<std::int32_t>(k) + 1 == question.unsettled) continue;
    others += fmt::format("{}{} for \"{}\"", others.empty() ? "" : ", ", k + 1, question.choices[k]);
  }
  if (others.empty()) return {};
  return fmt::format(" (the default; @answer {} takes another: {})", key, others);
}

/// The items of a path variable of this process's environment.
std::vector<std::string> environment_items(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  return pieces_of(value ? value : "", ':');
}

void do_nothing(const OperationCall&, OperationReply&) {}

}  // namespace

void UserInterface::queue_argument(MessageArgument argument) {
  if (queued_.size() < most_arguments) queued_.push_back(std::move(argument));
}

std::vector<MessageArgument> UserInterface::take_arguments() { return std::exchange(queued_, {}); }

void UserInterface::show(const Message& message) {
  if (events_.message && !message.text.empty()) events_.message(message);
}

void UserInterface::display(std::int32_t severity, std::string_view key) {
  show(message_of(severity, key, take_arguments()));
}

void UserInterface::display_text(std::int32_t severity, std::string text) {
  std::replace(text.begin(), text.end(), '|', '\n');
  take_arguments();
  show({MessageKind::error, severity, {}, {}, std::move(text)});
}

std::int32_t UserInterface::display_status(std::int32_t code, std::string_view routine) {
  const auto message = message_of_status(code, routine, take_arguments());
  show(message);
  return message.severity;
}

std::int32_t UserInterface::ask(const std::string& key, std::string_view options, std::int32_t unsettled) {
  auto message = message_of(2, key, take_arguments());
  const auto* row = find_message(options);
  const Question question{key, message.text, pieces_of(row ? row->text : std::string_view{}, '|'), unsettled};
  const auto settled = answers_.find(key);
  std::optional<std::int32_t> chosen;
  if (settled != answers_.end()) {
    chosen = settled->second;
  } else if (events_.choose) {
    chosen = events_.choose(question);
  }
  const auto choice = chosen.value_or(unsettled);
  message.kind = MessageKind::note;
  message.text += " " + answer_in_words(question, choice);
  if (!chosen) message.text += how_to_answer(key, question);
  show(message);
  return choice;
}

void UserInterface::report_status(std::string_view key) {
  auto arguments = take_arguments();
  if (!events_.status) return;
  const auto* row = find_message(key);
  events_.status(key.empty() ? std::string{} : filled(row ? row->text : key, arguments));
}

void UserInterface::report_progress(double fraction) {
  if (events_.progress) events_.progress(std::clamp(fraction, 0.0, 1.0));
}

void UserInterface::return_list(const std::string& text) {
  if (events_.returned) events_.returned(text);
}

void UserInterface::end_repeats() {
  if (events_.repeats_end) events_.repeats_end();
}

void UserInterface::change_values(const std::string& words) {
  if (events_.values_changed) events_.values_changed(words);
}

const std::string& UserInterface::modal_state(std::int32_t modal_class) {
  return modal_.try_emplace(modal_class, "DEFAULT").first->second;
}

namespace {

void register_messages(OperationServer& server, UserInterface& ui) {
  server.on("kvU_MSG_ArgD", [&ui](const auto& call, auto&) { ui.queue_argument(call.number(0)); });
  server.on("kvU_MSG_ArgF", [&ui](const auto& call, auto&) { ui.queue_argument(call.number(0)); });
  server.on("kvU_MSG_ArgI", [&ui](const auto& call, auto&) { ui.queue_argument(call.integer(0)); });
  server.on("kvU_MSG_ArgS", [&ui](const auto& call, auto&) { ui.queue_argument(call.text(0)); });
  server.on("kvU_MSG_Display", [&ui](const auto& call, auto&) { ui.display(call.integer(0), call.text(1)); });
  server.on("kvU_MSG_DisplayError", [&ui](const auto& call, auto& reply) {
    reply.put(ui.display_status(call.integer(1), call.text(2)));
    reply.put(std::int32_t{0});
  });
  server.on("cmd_error", [&ui](const auto& call, auto&) { ui.display_text(call.integer(0), call.text(1)); });
}

void register_dialogs(OperationServer& server, UserInterface& ui) {
  server.on("kvU_DLG_GetOption", [&ui](const auto& call, auto& reply) {
    reply.put(ui.ask(call.text(0), call.text(1), std::max(call.integer(2), 1)));
  });
  // Without a default of its own, a question that nobody answers has choice 0.
  server.on("kvU_MOD_GetOption",
            [&ui](const auto& call, auto& reply) { reply.put(ui.ask(call.text(0), call.text(1), 0)); });
  server.on("kvU_TLS_GetModalState",
            [&ui](const auto& call, auto& reply) { reply.put(ui.modal_state(call.integer(0))); });
  server.on("kvU_TLS_SetModalState",
            [&ui](const auto& call, auto&) { ui.set_modal_state(call.integer(0), call.text(1)); });
}

void register_progress(OperationServer& server, UserInterface& ui) {
  server.on("kvU_INT_ReportProgress", [&ui](const auto& call, auto&) { ui.report_progress(call.number(0)); });
  server.on("kvU_INT_ReportStatus", [&ui](const auto& call, auto&) { ui.report_status(call.text(0)); });
  server.on("kvU_INT_RequestCoreInterrupt", [&ui](const auto&, auto& reply) { reply.result = ui.interrupted(); });
}

void register_system(OperationServer& server) {
  server.on("kvS_GetenvPathItemTotal", [](const auto& call, auto& reply) {
    reply.result = static_cast<std::int32_t>(environment_items(call.text(0)).size());
  });
  server.on("kvS_GetenvPathItem", [](const auto& call, auto& reply) {
    const auto items = environment_items(call.text(0));
    const auto place = static_cast<std::size_t>(call.integer(1)) - 1;
    reply.put(place < items.size() ? items[place] : std::string{});
  });
}

}  // namespace

void register_interface_operations(OperationServer& server, UserInterface& ui) {
  register_messages(server, ui);
  register_dialogs(server, ui);
  register_progress(server, ui);
  register_system(server);
  server.on("kvZ_SetCharacterReturn", [&ui](const auto& call, auto&) { ui.return_list(call.text(0)); });
  server.on("kvZ_GetApplProcessName", [](const auto&, auto& reply) { reply.put(std::string("pathstat")); });
  // There is no port where a detached process could ask to come back.
  server.on("kvZ_PublicPort", [](const auto&, auto& reply) { reply.error = reply.result = not_available; });

  server.on("kvU_GUI_SupressRepeats", [&ui](const auto&, auto&) { ui.end_repeats(); });
  server.on("kvU_GUI_UpdateValues", [&ui](const auto& call, auto&) { ui.change_values(call.text(0)); });

  // There is no bell, no text window, no panel of other words and no picture of the models to bring up to date.
  for (const auto* name : {"kvU_GUI_UpdateAll", "kvU_BEL_Ring", "kvS_TXP_Expose", "kvG_RedisplayModels"}) {
    server.on(name, do_nothing);
  }
}

}  // namespace pathstat::desk
