#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>

namespace pathstat {

/// Terminated texts back to back, told apart by their byte offsets. Offsets stay valid when the pool grows.
class TextPool {
 public:
  std::int64_t used() const { return used_; }
  std::int64_t capacity() const { return capacity_; }

  /// Brings the capacity to at least `size` bytes. A failed growth keeps the old size.
  void reserve(std::int64_t size);

  /// Makes sure that `size` bytes are free. A pool that has to grow takes twice its capacity, or the capacity plus the
  /// shortfall plus `extra`, whichever is more. @return true if it has grown
  bool make_room(std::int64_t size, std::int64_t extra);

  void clear() { used_ = 0; }
  void shrink(std::int64_t size) { resize(size); }

  /// Where the next text may be written.
  std::span<char> free_space() { return {block_.get() + used_, static_cast<std::size_t>(capacity_ - used_)}; }

  /// Keeps the text of `length` bytes that stands at the start of the free space, cut to what fits, and terminates it.
  /// @return its offset
  std::int32_t keep(std::int64_t length);

  /// Copies a text, cut to what fits. @return its offset
  std::int32_t append(std::string_view text);

  /// The text at an offset; empty for one that found no room at all.
  std::string_view at(std::int32_t offset) const;

 private:
  struct Free {
    void operator()(char* block) const { std::free(block); }
  };

  bool resize(std::int64_t size);

  std::unique_ptr<char[], Free> block_;
  std::int64_t used_ = 0;
  std::int64_t capacity_ = 0;
};

}  // namespace pathstat
