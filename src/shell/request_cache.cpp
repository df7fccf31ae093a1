#include "shell/request_cache.h"

#include <algorithm>
#include <limits>
#include <new>

namespace pathstat {
namespace {

constexpr std::int32_t no_group = -1;
constexpr std::int32_t not_found = -1;
constexpr std::int32_t value_selector = 2;
constexpr std::size_t fewest_answers = 12;
constexpr std::int64_t answer_extra = 500;
constexpr std::int64_t key_extra = 100;
constexpr std::int64_t application_extra = 61;
constexpr std::int32_t largest_start = 1 << 24;  // a pool that needs more grows by what its answers take

constexpr std::int32_t group_of(std::int32_t selector) { return selector >> 8 & 0xFFFF; }
constexpr bool asks_values(std::int32_t selector) { return (selector & 0xF) == value_selector; }

/// The keys of a request: as many as its text holds, whatever count comes with it.
std::vector<std::string_view> cut_keys(std::string_view text, std::int32_t count) {
  std::vector<std::string_view> keys;
  while (keys.size() < static_cast<std::size_t>(count)) {
    const auto end = text.find(key_separator);
    keys.push_back(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return keys;
}

}  // namespace

std::int32_t RequestCache::answer(const DataRequest& request, std::string& reply, std::int32_t& answer_count) try {
  answer_count = 0;
  if (request.key_count < 1) return 0;
  const auto keys = cut_keys(request.keys, request.key_count);
  const std::int32_t group = group_of(request.selector);
  const bool cached = group != 0 && group == current_group_;
  if (!cached) reset(request, group, keys.size());
  const std::int32_t application = application_offset(request.application);
  key_index_.clear();
  key_index_.reserve(keys.size());
  for (const auto key : keys) {
    std::int32_t index = cached ? find(application, key) : not_found;
    if (index == not_found) {
      evaluate(request.application, key, application);
      index = static_cast<std::int32_t>(answers_.size()) - 1;
    }
    key_index_.push_back(index);
  }
  const std::int32_t status = build_reply(request, reply, answer_count);
  shrink(value_pool_, request.capacity);
  shrink(range_pool_, request.capacity);
  return status;
} catch (const std::bad_alloc&) {
  current_group_ = no_group;
  reply.clear();
  answer_count = 0;
  return 1;
}

void RequestCache::reset(const DataRequest& request, std::int32_t group, std::size_t key_count) {
  for (TextPool* pool : {&value_pool_, &range_pool_}) {
    pool->reserve(std::clamp(request.capacity, 1, largest_start));
    pool->clear();
  }
  keys_.reserve(static_cast<std::int64_t>(request.keys.size()) + 1);
  keys_.clear();
  answers_.clear();
  answers_.reserve(std::max(key_count, fewest_answers));
  current_group_ = group != 0 ? group : no_group;
}

std::int32_t RequestCache::application_offset(std::string_view application) {
  for (std::int32_t offset = 0; offset < applications_.used();) {
    const auto known = applications_.at(offset);
    if (known == application) return offset;
    offset += static_cast<std::int32_t>(known.size()) + 1;
  }
  const auto length = static_cast<std::int64_t>(application.size());
  if (applications_.capacity() - applications_.used() <= length) {
    applications_.reserve(applications_.capacity() + length + application_extra);
  }
  return applications_.append(application);
}

std::int32_t RequestCache::find(std::int32_t application, std::string_view key) const {
  const auto hit = std::ranges::find_if(answers_, [&](const Answer& answer) {
    return answer.application_offset == application && keys_.at(answer.key_offset) == key;
  });
  return hit == answers_.end() ? not_found : static_cast<std::int32_t>(hit - answers_.begin());
}

void RequestCache::evaluate(std::string_view application, std::string_view key, std::int32_t application_offset) {
  std::int64_t value_length = 0;
  std::int64_t range_length = 0;
  bool grown = false;
  do {
    evaluate_(application, key, value_pool_.free_space(), range_pool_.free_space(), value_length, range_length);
    grown = value_pool_.make_room(value_length + 1, answer_extra);
    if (range_pool_.make_room(range_length + 1, answer_extra)) grown = true;
  } while (grown);
  keys_.make_room(static_cast<std::int64_t>(key.size()) + 1, key_extra);
  const std::int32_t key_offset = keys_.append(key);
  const std::int32_t value_offset = value_pool_.keep(value_length);
  answers_.push_back({application_offset, key_offset, value_offset, range_pool_.keep(range_length)});
}

std::int32_t RequestCache::build_reply(const DataRequest& request, std::string& reply,
                                       std::int32_t& answer_count) const {
  const bool values = asks_values(request.selector);
  const std::int64_t capacity = std::max(request.capacity, 0);
  std::int64_t bytes = 0;
  bool full = false;
  reply.clear();
  for (std::size_t k = 0; k < key_index_.size(); ++k) {
    const Answer& answer = answers_[static_cast<std::size_t>(key_index_[k])];
    const auto text = values ? value_pool_.at(answer.value_offset) : range_pool_.at(answer.range_offset);
    const auto length = static_cast<std::int64_t>(text.size());
    if (!full && bytes + length < capacity) {
      reply += text;
      reply += key_separator;
      ++answer_count;
      full = k + 1 < key_index_.size() && bytes + length + 1 == capacity - 1;
    } else {
      if (!full) reply += text.substr(0, static_cast<std::size_t>(capacity - bytes));
      full = true;
    }
    bytes += length + 1;
  }
  if (!full) {
    reply.pop_back();
    return 0;
  }
  // The last byte of the block is the terminator.
  reply.resize(std::min(reply.size(), static_cast<std::size_t>(std::max<std::int64_t>(capacity - 1, 0))));
  return static_cast<std::int32_t>(-std::min<std::int64_t>(bytes, std::numeric_limits<std::int32_t>::max()));
}

void RequestCache::shrink(TextPool& pool, std::int32_t capacity) {
  constexpr std::int64_t slack = 1024;
  constexpr std::int64_t spare = 256;
  if (pool.used() > capacity && pool.capacity() > pool.used() + slack) pool.shrink(pool.used() + spare);
}

}  // namespace pathstat
