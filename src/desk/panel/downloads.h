#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "desk/panel/page_server.h"

namespace pathstat::desk {

/// Files that were made for a page to save: the latest ones, each under a path of its own.
class Downloads {
 public:
  static constexpr std::size_t most_kept = 8;

  /// @return the path under which it can be had
  std::string add(PageDocument document) {
    const std::lock_guard lock(mutex_);
    kept_.emplace_back("/download/" + std::to_string(++count_), std::move(document));
    if (kept_.size() > most_kept) kept_.pop_front();
    return kept_.back().first;
  }

  std::optional<PageDocument> find(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    for (const auto& [name, document] : kept_) {
      if (name == path) return document;
    }
    return std::nullopt;
  }

 private:
  mutable std::mutex mutex_;
  std::deque<std::pair<std::string, PageDocument>> kept_;
  std::size_t count_ = 0;
};

}  // namespace pathstat::desk
