#pragma once

#include <cstddef>
#include <deque>
#include <list>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace pathstat::desk {

/// A message for pages: a text of JSON, or bytes.
struct PageMessage {
  std::string bytes;
  bool binary = false;
};
using SharedMessage = std::shared_ptr<const PageMessage>;

/// What a message means for a page that opens later.
enum class Keep {
  only,    ///< it takes the place of all messages of its topic
  behind,  ///< it stands behind those of its topic
};

/// The messages from which a page that opens now learns all that the others have been told. Topics stand in the order
/// in which they first came.
class PageState {
 public:
  /// @param most  messages of the topic that are kept, the latest ones
  void take(const std::string& topic, Keep keep, SharedMessage message, std::size_t most);
  std::vector<SharedMessage> all() const;

 private:
  using Messages = std::deque<SharedMessage>;
  std::list<Messages> topics_;
  std::unordered_map<std::string, Messages*> by_name_;
};

/// The messages that wait for one page to take them. One that replaces its topic does away with those of its topic that
/// still wait: a slow page skips what is out of date and loses nothing else.
class PageQueue {
 public:
  struct Waiting {
    std::string topic;
    SharedMessage message;
  };

  void push(const std::string& topic, Keep keep, SharedMessage message);
  bool empty() const { return waiting_.empty(); }
  std::size_t bytes() const { return bytes_; }
  /// The oldest message, which waits no more.
  SharedMessage pop();

 private:
  std::deque<Waiting> waiting_;
  std::size_t bytes_ = 0;
};

}  // namespace pathstat::desk
