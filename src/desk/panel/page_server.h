#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "desk/panel/page_state.h"

namespace pathstat::desk {

/// What is sent for an address.
struct PageDocument {
  std::string type;  ///< as Content-Type has it
  std::string bytes;
  std::string download_name{};  ///< of the file that it is to be saved as; empty for one to show
};

/// A page with an open web socket; never given out twice.
using PageId = std::uint64_t;

/// Serves the pages of the panel on a free loopback port, on a thread of its own: documents by HTTP, messages by web
/// socket. Every request is held against access_of.
class PageServer {
 public:
  /// Called on the server's thread; both return at once.
  struct Hooks {
    std::function<void(PageId page, std::string text)> received;
    /// The document of a target that is not part of the page itself.
    std::function<std::optional<PageDocument>(std::string_view target)> document;
  };

  PageServer(std::string token, Hooks hooks);
  ~PageServer();
  PageServer(const PageServer&) = delete;
  PageServer& operator=(const PageServer&) = delete;

  /// Begins to listen. @return empty, or what went wrong
  std::string start();
  /// Closes what is open and ends the thread.
  void stop();
  /// The address that hands over the token.
  std::string address() const;

  // From any thread.

  void publish(std::string topic, Keep keep, PageMessage message,
               std::size_t most = std::numeric_limits<std::size_t>::max());
  /// To one page, if it is still there.
  void send(PageId page, PageMessage message);

  static constexpr std::size_t longest_message = 64 << 10;      ///< that a page may send
  static constexpr std::size_t most_waiting_bytes = 512 << 20;  ///< for a page that takes none
  static constexpr std::size_t most_pages = 32;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace pathstat::desk
