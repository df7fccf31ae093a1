#include "desk/panel/page_state.h"

#include <utility>

namespace pathstat::desk {

void PageState::take(const std::string& topic, Keep keep, SharedMessage message, std::size_t most) {
  auto& messages = by_name_[topic];
  if (!messages) messages = &topics_.emplace_back();
  if (keep == Keep::only) messages->clear();
  messages->push_back(std::move(message));
  if (messages->size() > most) messages->pop_front();
}

std::vector<SharedMessage> PageState::all() const {
  std::vector<SharedMessage> all;
  for (const auto& messages : topics_) all.insert(all.end(), messages.begin(), messages.end());
  return all;
}

void PageQueue::push(const std::string& topic, Keep keep, SharedMessage message) {
  if (keep == Keep::only) {
    std::erase_if(waiting_, [&](const Waiting& each) {
      if (each.topic != topic) return false;
      bytes_ -= each.message->bytes.size();
      return true;
    });
  }
  bytes_ += message->bytes.size();
  waiting_.push_back({topic, std::move(message)});
}

SharedMessage PageQueue::pop() {
  auto message = std::move(waiting_.front().message);
  waiting_.pop_front();
  bytes_ -= message->bytes.size();
  return message;
}

}  // namespace pathstat::desk
