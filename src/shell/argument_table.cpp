#include "shell/argument_table.h"

#include <algorithm>
#include <cstdio>
#include <new>

#include "services/text_operations.h"

namespace pathstat {
namespace {

constexpr std::size_t growth = 32;

bool is_separator(char letter) { return static_cast<unsigned char>(letter) <= 0x20; }

/// The mark that ends a token begun with this one; NUL if it is no quoting mark.
char closing_mark(char opening) {
  switch (opening) {
    case '"':
    case '\'':
      return opening;
    case '{':
      return '}';
    default:
      return '\0';
  }
}

/// True for digits, points and signs with at most one letter of an exponent.
bool looks_like_number(std::string_view text) {
  constexpr std::string_view exponents = "eEdD";
  const auto letters = std::count_if(text.begin(), text.end(), [&](char c) { return exponents.find(c) != text.npos; });
  return letters <= 1 && text.find_first_not_of("0123456789.-+eEdD") == text.npos;
}

bool is_keyword(std::string_view token) {
  return token.size() > 1 && token[0] == '-' && !looks_like_number(token.substr(1));
}

std::string_view without_dash(std::string_view name) { return name.starts_with('-') ? name.substr(1) : name; }

}  // namespace

void ArgumentTable::prepare(std::string_view text) {
  text_ = text;
  records_.clear();
  copy_ = {};
  try {
    cut_tokens();
  } catch (const std::bad_alloc&) {
    std::printf("sch_PrepareArguments:Out of memory on %s\n", records_.empty() ? "malloc" : "realloc");
  }
  count_groups();
}

void ArgumentTable::cut_tokens() {
  for (std::size_t at = 0; at < text_.size();) {
    if (is_separator(text_[at])) {
      ++at;
    } else if (const char mark = closing_mark(text_[at]); mark != '\0') {
      const std::size_t start = at + 1;
      if (start == text_.size()) return;
      const std::size_t end = std::min(text_.find(mark, start), text_.size());
      append({.token = text_.substr(start, end - start)});
      at = end + 1;
    } else {
      const auto end = std::find_if(text_.begin() + static_cast<std::ptrdiff_t>(at), text_.end(), is_separator);
      const std::string_view token(text_.data() + at, static_cast<std::size_t>(end - text_.begin()) - at);
      append({token, {is_keyword(token) ? 0 : -1, -1}});
      at += token.size();
    }
  }
}

void ArgumentTable::append(ArgumentRecord record) {
  if (records_.size() == records_.capacity()) records_.reserve(records_.size() + std::max(growth, records_.size()));
  records_.push_back(record);
}

void ArgumentTable::count_groups() {
  positional_ = {};
  std::int32_t* count = &positional_.count;
  for (auto& record : records_) {
    if (record.counts.count < 0) {
      ++*count;
    } else {
      count = &record.counts.count;
    }
  }
}

ArgumentGroup ArgumentTable::positional() {
  return {positional_, std::span(records_).first(static_cast<std::size_t>(positional_.count))};
}

std::optional<ArgumentGroup> ArgumentTable::keyword(std::string_view name) {
  const std::string_view wanted = without_dash(name);
  for (auto at = static_cast<std::size_t>(positional_.count); at < records_.size();) {
    ArgumentRecord& record = records_[at];
    const auto count = static_cast<std::size_t>(record.counts.count);
    if (STR_CaseCmp(without_dash(record.token), wanted) == 0) {
      return ArgumentGroup{record.counts, std::span(records_).subspan(at + 1, count)};
    }
    at += 1 + count;
  }
  return std::nullopt;
}

const char* ArgumentTable::terminated(std::string_view token) {
  if (copy_.empty()) copy_ = text_;
  const auto start = static_cast<std::size_t>(token.data() - text_.data());
  copy_[start + token.size()] = '\0';
  return copy_.data() + start;
}

}  // namespace pathstat
