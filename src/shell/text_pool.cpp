#include "shell/text_pool.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace pathstat {
namespace {

constexpr std::int64_t most_bytes = std::numeric_limits<std::int32_t>::max();  // offsets have 32 bits
constexpr std::int32_t no_text = -1;

}  // namespace

bool TextPool::resize(std::int64_t size) {
  if (size < 1 || size > most_bytes) return false;
  void* moved = std::realloc(block_.get(), static_cast<std::size_t>(size));
  if (moved == nullptr) return false;
  static_cast<void>(block_.release());
  block_.reset(static_cast<char*>(moved));
  capacity_ = size;
  return true;
}

void TextPool::reserve(std::int64_t size) {
  if (size > capacity_) resize(size);
}

bool TextPool::make_room(std::int64_t size, std::int64_t extra) {
  const std::int64_t shortfall = size - (capacity_ - used_);
  return shortfall > 0 && resize(std::max(2 * capacity_, capacity_ + shortfall + extra));
}

std::int32_t TextPool::keep(std::int64_t length) {
  const std::int64_t free = capacity_ - used_;
  if (free < 1) return no_text;
  const std::int64_t fitting = std::min(length, free - 1);
  const auto offset = static_cast<std::int32_t>(used_);
  block_[static_cast<std::size_t>(used_ + fitting)] = '\0';
  used_ += fitting + 1;
  return offset;
}

std::int32_t TextPool::append(std::string_view text) {
  const auto free = free_space();
  if (!free.empty()) text.copy(free.data(), free.size() - 1);
  return keep(static_cast<std::int64_t>(text.size()));
}

std::string_view TextPool::at(std::int32_t offset) const {
  return offset == no_text ? std::string_view() : std::string_view(block_.get() + offset);
}

}  // namespace pathstat
