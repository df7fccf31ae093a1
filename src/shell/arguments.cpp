#include "shell/arguments.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "shell/argument_host.h"
#include "shell/argument_table.h"
#include "shell/return_list.h"

namespace pathstat {
namespace {

using namespace argument_status;

ArgumentTable table;

/// Nothing for the positional arguments.
using Keyword = std::optional<std::string_view>;

/// How a routine ended, and what its message is shown with.
struct Outcome {
  std::int32_t status = 0;
  std::vector<std::variant<std::int32_t, std::string>> shown{};
};

/// Hands an outcome to the error service; a positive one is preceded by the keyword that it is about.
std::int32_t reported(const Outcome& outcome, Keyword key = std::nullopt) {
  const ArgumentHost& host = argument_host();
  if (key && outcome.status > 0) {
    host.text_argument(*key);
    host.display(2, "KVZ_KWORD_HEAD");
  }
  for (const auto& value : outcome.shown) {
    if (const auto* number = std::get_if<std::int32_t>(&value)) {
      host.number_argument(*number);
    } else {
      host.text_argument(std::get<std::string>(value));
    }
  }
  host.report(outcome.status);
  return outcome.status;
}

/// Runs `use` on the group and gives what it returns, or keyword_absent.
template <class Use>
Outcome on_group(Keyword key, Use use) {
  if (!key) return use(table.positional());
  const auto group = table.keyword(*key);
  if (!group) return {keyword_absent, {std::string(*key)}};
  return use(*group);
}

Outcome absent(const ArgumentCounts& counts, std::int32_t index) {
  if (counts.min_count < 0 || index < 1) return {argument_missing, {index}};
  if (index > counts.min_count) return {optional_absent};
  return {too_few_arguments, {index - 1, counts.min_count}};
}

/// The one way to an argument: finds its token, and `convert` makes an outcome of it.
template <class Convert>
void read_argument(Keyword key, std::int32_t index, std::int32_t& status, Convert convert) {
  const Outcome outcome = on_group(key, [&](const ArgumentGroup& group) -> Outcome {
    if (index < 1 || index > group.counts.count) return absent(group.counts, index);
    return convert(group.arguments[static_cast<std::size_t>(index - 1)].token);
  });
  status = std::max(0, reported(outcome, key));
}

template <class Number>
Number number_in(std::string_view text) {
  const std::string copy(text);
  if constexpr (std::is_floating_point_v<Number>) {
    return static_cast<Number>(std::strtod(copy.c_str(), nullptr));
  } else {
    using Limits = std::numeric_limits<Number>;
    return static_cast<Number>(
        std::clamp<long long>(std::strtoll(copy.c_str(), nullptr, 10), Limits::min(), Limits::max()));
  }
}

template <class Number>
bool is_limit(Number bound) {
  if constexpr (std::is_floating_point_v<Number>) {
    return bound > static_cast<Number>(no_real_limit);
  } else {
    return bound != no_integer_limit;
  }
}

template <class Number>
std::string shown(Number value) {
  if constexpr (std::is_floating_point_v<Number>) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(value));
    return text;
  } else {
    return std::to_string(value);
  }
}

template <class Number>
void read_number(Keyword key, Number& target, std::int32_t index, Number min, Number max, std::int32_t& status) {
  read_argument(key, index, status, [&](std::string_view token) -> Outcome {
    const auto value = number_in<Number>(token);
    // Turned round so that what is no number lies in no range.
    if (is_limit(min) && !(value >= min)) return {below_range, {shown(value), shown(min)}};
    if (is_limit(max) && !(value <= max)) return {above_range, {shown(value), shown(max)}};
    target = value;
    return {};
  });
}

template <class Truth>
void read_logical(Keyword key, Truth& target, std::int32_t index, std::int32_t& status) {
  read_argument(key, index, status, [&](std::string_view token) -> Outcome {
    target = !token.empty() && std::string_view("YTyt123456789").find(token.front()) != std::string_view::npos;
    return {};
  });
}

std::string_view without_blanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  return trimmed(text);
}

/// Takes the first item off a list of allowed texts.
std::string next_item(std::string_view& list) {
  std::size_t end = 0;
  while (end < list.size() && list[end] != ',') end += list.substr(end).starts_with("\\,") ? 2 : 1;
  const std::string_view raw = without_blanks(list.substr(0, end));
  list.remove_prefix(std::min(end + 1, list.size()));
  std::string item;
  for (std::size_t k = 0; k < raw.size(); ++k) {
    if (!raw.substr(k).starts_with("\\,")) item += raw[k];
  }
  return item;
}

bool is_allowed(std::string_view text, AllowedTexts allowed) {
  if (!allowed) return true;
  for (std::string_view list = *allowed; !list.empty();) {
    if (next_item(list) == text) return true;
  }
  return false;
}

/// `take` gets a text that is allowed, and gives the outcome.
template <class Take>
void read_text(Keyword key, std::int32_t index, AllowedTexts allowed, std::int32_t& status, Take take) {
  read_argument(key, index, status, [&](std::string_view token) -> Outcome {
    if (!is_allowed(token, allowed)) return {not_allowed};
    return take(token);
  });
}

void read_string(Keyword key, const char*& target, std::int32_t index, AllowedTexts allowed, std::int32_t& status) {
  read_text(key, index, allowed, status, [&](std::string_view token) -> Outcome {
    target = table.terminated(token);
    return {};
  });
}

Outcome filled(TextTarget target, std::string_view text) { return {target.set(text) ? 0 : text_cut}; }

void fill_string(Keyword key, TextTarget target, std::int32_t index, AllowedTexts allowed, std::int32_t& status) {
  read_text(key, index, allowed, status, [&](std::string_view token) { return filled(target, token); });
}

void read_object(Keyword key, std::int32_t& target, std::int32_t index, std::int32_t type, std::int32_t& status) {
  read_argument(key, index, status, [&](std::string_view token) -> Outcome {
    const bool found = !token.empty() && argument_host().find_object(token, type, target);
    return found ? Outcome{} : Outcome{not_an_object, {std::string(token)}};
  });
}

void all_arguments(Keyword key, TextTarget target, std::int32_t& status) {
  status = reported(on_group(key,
                             [&](const ArgumentGroup& group) {
                               std::string joined;
                               for (const auto& argument : group.arguments) {
                                 if (&argument != group.arguments.data()) joined += ' ';
                                 joined += argument.token;
                               }
                               return filled(target, joined);
                             }),
                    key);
}

void define_min_count(Keyword key, std::int32_t count, std::int32_t& status) {
  status = reported(on_group(key,
                             [&](const ArgumentGroup& group) -> Outcome {
                               group.counts.min_count = count;
                               if (group.counts.count >= count) return {};
                               return {too_few_arguments, {group.counts.count, count}};
                             }),
                    key);
}

bool has_ink(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) > 0x20; });
}

template <class Number>
void read_range(std::string_view text, Number& low, Number& high, Number open, std::int32_t& status) {
  const auto colon = text.find(':');
  if (colon != text.npos) {
    const auto end = [&](std::string_view part) { return has_ink(part) ? number_in<Number>(part) : open; };
    low = end(text.substr(0, colon));
    high = end(text.substr(colon + 1));
  }
  status = reported({colon == text.npos ? no_range : 0});
}

}  // namespace

bool TextTarget::set(std::string_view text) const {
  if (text_ != nullptr) {
    *text_ = text;
    return true;
  }
  if (field_) {
    field_->set(text);
    return text.size() <= field_->width();
  }
  if (block_.empty()) return text.empty();
  const auto used = std::min(text.size(), block_.size() - 1);
  std::copy_n(text.begin(), used, block_.begin());
  block_[used] = '\0';
  return used == text.size();
}

ArgumentsAside::ArgumentsAside() : kept_(std::make_unique<ArgumentTable>(std::exchange(table, {}))) {}

ArgumentsAside::~ArgumentsAside() { table = std::move(*kept_); }

void sch_PrepareArguments(std::string_view text, std::int32_t& count) {
  table.prepare(text);
  count = kvZ_ArgumentTotal();
  sch_InitializeReturnList();
}

std::int32_t kvZ_ArgumentTotal() { return table.positional().counts.count; }

std::int32_t kvZ_KEY_ArgumentTotal(std::string_view key, std::int32_t& status) {
  std::int32_t count = -1;
  status = reported(on_group(key,
                             [&](const ArgumentGroup& group) -> Outcome {
                               count = group.counts.count;
                               return {};
                             }),
                    key);
  return count;
}

void kvZ_KEY_NoDetection() { table.undo_keywords(); }

std::int32_t kvZ_KEY_FlagValue(std::string_view key, std::int32_t& status) {
  const auto group = table.keyword(key);
  status = reported({group && group->counts.count > 0 ? flag_with_arguments : 0}, key);
  return group ? 1 : 0;
}

void kvZ_DefineMinArgCount(std::int32_t count, std::int32_t& status) { define_min_count(std::nullopt, count, status); }
void kvZ_KEY_DefineMinArgCount(std::string_view key, std::int32_t count, std::int32_t& status) {
  define_min_count(key, count, status);
}

void kvZ_ArgFloat(float& target, std::int32_t index, float min, float max, std::int32_t& status) {
  read_number(std::nullopt, target, index, min, max, status);
}
void kvZ_ArgDouble(double& target, std::int32_t index, double min, double max, std::int32_t& status) {
  read_number(std::nullopt, target, index, min, max, status);
}
void kvZ_ArgInt(std::int32_t& target, std::int32_t index, std::int32_t min, std::int32_t max, std::int32_t& status) {
  read_number(std::nullopt, target, index, min, max, status);
}
void kvZ_KEY_ArgFloat(std::string_view key, float& target, std::int32_t index, float min, float max,
                      std::int32_t& status) {
  read_number(key, target, index, min, max, status);
}
void kvZ_KEY_ArgDouble(std::string_view key, double& target, std::int32_t index, double min, double max,
                       std::int32_t& status) {
  read_number(key, target, index, min, max, status);
}
void kvZ_KEY_ArgInt(std::string_view key, std::int32_t& target, std::int32_t index, std::int32_t min, std::int32_t max,
                    std::int32_t& status) {
  read_number(key, target, index, min, max, status);
}

void kvZ_ArgLogical(bool& target, std::int32_t index, std::int32_t& status) {
  read_logical(std::nullopt, target, index, status);
}
void kvZ_KEY_ArgLogical(std::string_view key, bool& target, std::int32_t index, std::int32_t& status) {
  read_logical(key, target, index, status);
}

void kvZ_ArgString(const char*& target, std::int32_t index, AllowedTexts allowed, std::int32_t& status) {
  read_string(std::nullopt, target, index, allowed, status);
}
void kvZ_KEY_ArgString(std::string_view key, const char*& target, std::int32_t index, AllowedTexts allowed,
                       std::int32_t& status) {
  read_string(key, target, index, allowed, status);
}

void kvZ_ArgFillString(TextTarget target, std::int32_t index, AllowedTexts allowed, std::int32_t& status) {
  fill_string(std::nullopt, target, index, allowed, status);
}
void kvZ_KEY_ArgFillString(std::string_view key, TextTarget target, std::int32_t index, AllowedTexts allowed,
                           std::int32_t& status) {
  fill_string(key, target, index, allowed, status);
}

void kvZ_ArgObject(std::int32_t& target, std::int32_t index, std::int32_t type, std::int32_t& status) {
  read_object(std::nullopt, target, index, type, status);
}
void kvZ_KEY_ArgObject(std::string_view key, std::int32_t& target, std::int32_t index, std::int32_t type,
                       std::int32_t& status) {
  read_object(key, target, index, type, status);
}

void kvZ_AllArgs(TextTarget target, std::int32_t& status) { all_arguments(std::nullopt, target, status); }
void kvZ_KEY_AllArgs(std::string_view key, TextTarget target, std::int32_t& status) {
  all_arguments(key, target, status);
}

void kvZ_GetDoubleRange(std::string_view text, double& low, double& high, std::int32_t& status) {
  read_range(text, low, high, open_end, status);
}
void kvZ_GetFloatRange(std::string_view text, float& low, float& high, std::int32_t& status) {
  read_range(text, low, high, static_cast<float>(open_end), status);
}
void kvZ_GetIntRange(std::string_view text, std::int32_t& low, std::int32_t& high, std::int32_t& status) {
  read_range(text, low, high, open_integer_end, status);
}

const char* kvZ_AllOutputArgsP(const char* text) {
  const std::string_view all(text == nullptr ? "" : text);
  const auto first = std::min(all.find_first_not_of(' '), all.size());
  const auto blank = std::min(all.find(' ', first), all.size());
  const auto second = all.find_first_not_of(' ', blank);
  return second == all.npos ? nullptr : text + second;
}

void sch_preparearguments_(std::string_view text, std::int32_t& count) { sch_PrepareArguments(trimmed(text), count); }

void kvz_defineminargcount_(std::int32_t count, std::int32_t& status) { kvZ_DefineMinArgCount(count, status); }

void kvz_argint_(std::int32_t& target, std::int32_t index, std::int32_t min, std::int32_t max, std::int32_t& status) {
  kvZ_ArgInt(target, index, min, max, status);
}

void kvz_argdouble_(double& target, std::int32_t index, double min, double max, std::int32_t& status) {
  kvZ_ArgDouble(target, index, min, max, status);
}

void kvz_arglogical_(Logical& target, std::int32_t index, std::int32_t& status) {
  read_logical(std::nullopt, target, index, status);
}

void kvz_argfillstring_(TextField target, std::int32_t index, std::int32_t capacity, std::string_view allowed,
                        std::int32_t& status) {
  kvz_key_argfillstring_({}, target, index, capacity, allowed, status);
}

void kvz_key_argfillstring_(std::string_view key, TextField target, std::int32_t index, std::int32_t capacity,
                            std::string_view allowed, std::int32_t& status) {
  const std::string_view word = trimmed(key);
  const TextField field = capacity > 0 ? target.first(static_cast<std::size_t>(capacity)) : target;
  const bool any_text = !has_ink(allowed);
  fill_string(word.empty() ? Keyword() : Keyword(word), field, index, any_text ? AllowedTexts() : AllowedTexts(allowed),
              status);
}

}  // namespace pathstat
