#include "desk/messages/message.h"

#include <fmt/args.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <unordered_map>

#include "desk/messages/label_units.h"
#include "desk/messages/visible_text.h"

namespace pathstat::desk {
namespace {

/// The number of places in a text: one more than the highest number in braces.
std::size_t places(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t k = 0; k + 1 < text.size(); ++k) {
    if (text[k] != '{' || text[k + 1] < '0' || text[k + 1] > '9') continue;
    count = std::max(count, static_cast<std::size_t>(text[k + 1] - '0') + 1);
  }
  return count;
}

std::string bracketed(const std::vector<MessageArgument>& arguments, std::size_t from) {
  std::string list;
  for (std::size_t k = from; k < arguments.size(); ++k) list += (list.empty() ? " [" : ", ") + shown(arguments[k]);
  return list.empty() ? list : list + "]";
}

/// Without the sign that some ways to no number have.
double plain(double value) { return std::isnan(value) ? std::abs(value) : value; }

constexpr std::string_view headings_of_one_column[] = {"PATHSTAT_MSG_7", "PATHSTAT_MSG_57"};

/// The arguments of a heading, with its unit behind each label that has one.
std::vector<MessageArgument> with_units(std::string_view key, std::vector<MessageArgument> arguments) {
  if (std::ranges::find(headings_of_one_column, key) == std::end(headings_of_one_column)) return arguments;
  for (auto& argument : arguments) {
    auto* label = std::get_if<std::string>(&argument);
    const auto unit = label == nullptr ? std::string_view{} : unit_of_label(*label);
    if (unit.empty()) continue;
    label->erase(label->find_last_not_of(' ') + 1);
    *label += fmt::format(" [{}]", unit);
  }
  return arguments;
}

/// The text for these counts: "{0} atoms" of 1 is "{0} atom".
std::string in_number(std::string_view text, const std::vector<MessageArgument>& arguments) {
  constexpr std::array counted{"atoms", "bonds", "frames", "points"};
  std::string result(text);
  for (std::size_t k = 0; k < arguments.size(); ++k) {
    const auto* count = std::get_if<std::int32_t>(&arguments[k]);
    if (count == nullptr || *count != 1) continue;
    for (const auto* noun : counted) {
      const auto plural = fmt::format("{{{}}} {}", k, noun);
      if (const auto at = result.find(plural); at != std::string::npos) result.erase(at + plural.size() - 1, 1);
    }
  }
  return result;
}

}  // namespace

std::string shown(const MessageArgument& argument) {
  if (const auto* text = std::get_if<std::string>(&argument)) return fmt::format("\"{}\"", visible(*text));
  if (const auto* number = std::get_if<double>(&argument)) return fmt::format("{:.9g}", plain(*number));
  return fmt::format("{}", std::get<std::int32_t>(argument));
}

std::string filled(std::string_view text, const std::vector<MessageArgument>& arguments) {
  fmt::dynamic_format_arg_store<fmt::format_context> store;
  for (const auto& argument : arguments) {
    if (const auto* number = std::get_if<double>(&argument)) {
      store.push_back(plain(*number));
    } else if (const auto* words = std::get_if<std::string>(&argument)) {
      store.push_back(visible(*words));
    } else {
      std::visit([&](const auto& value) { store.push_back(value); }, argument);
    }
  }
  try {
    return fmt::vformat(in_number(text, arguments), store) + bracketed(arguments, places(text));
  } catch (const fmt::format_error&) {
    return std::string(text) + bracketed(arguments, 0);
  }
}

const MessageRow* find_message(std::string_view key) {
  static const auto by_key = [] {
    std::unordered_map<std::string_view, const MessageRow*> map;
    for (const auto& row : message_rows()) map.emplace(row.key, &row);
    return map;
  }();
  const auto found = by_key.find(key);
  return found == by_key.end() ? nullptr : found->second;
}

const StatusRow* find_status(std::int32_t code) {
  for (const auto& row : status_rows()) {
    if (row.code == code) return &row;
  }
  return nullptr;
}

Message message_of(std::int32_t severity, std::string_view key, std::vector<MessageArgument> arguments) {
  const auto* row = find_message(key);
  Message message{row ? row->kind : MessageKind::note, severity, std::string(key), std::move(arguments), {}};
  message.text = filled(row ? row->text : key, with_units(key, message.arguments));
  return message;
}

Message message_of_status(std::int32_t code, std::string_view routine, std::vector<MessageArgument> arguments) {
  const auto* row = find_status(code);
  Message message{code > 0 ? MessageKind::error : MessageKind::warning, code > 0 ? 2 : 1, {}, std::move(arguments), {}};
  if (row && row->text.empty()) return message;
  const auto where = routine.empty() ? std::string{} : fmt::format(" (status {} of {})", code, routine);
  message.text = row ? filled(row->text, message.arguments) : filled("An unnamed failure", message.arguments);
  message.text += routine.empty() ? fmt::format(" (status {})", code) : where;
  return message;
}

}  // namespace pathstat::desk
