#include "desk/panel/page_server.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <deque>
#include <map>
#include <thread>
#include <utility>

// Boost.Asio takes <utility> for granted, so these come behind it.
#include <boost/asio.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>

#include "desk/panel/access.h"
#include "desk/panel/embedded_page.h"

namespace pathstat::desk {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using tcp = asio::ip::tcp;
using boost::system::error_code;

using Request = http::request<http::string_body>;
using Response = http::response<http::string_body>;

constexpr std::uint32_t longest_header = 16 << 10;
constexpr std::uint64_t longest_body = 1 << 10;
constexpr auto request_limit = std::chrono::seconds(30);
/// Connections that speak HTTP: more would leave no descriptors for the run, and anybody on this machine may connect.
constexpr std::size_t most_visits = 64;
constexpr auto end_limit = std::chrono::milliseconds(500);
constexpr auto accept_pause = std::chrono::milliseconds(100);
constexpr std::string_view socket_path = "/events";

/// Nothing is loaded from elsewhere, no script and no style stands in the page itself, and no other page may frame it.
constexpr const char* content_policy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; connect-src 'self'; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

constexpr std::array<std::pair<std::string_view, std::string_view>, 5> types{{{".html", "text/html; charset=utf-8"},
                                                                              {".js", "text/javascript"},
                                                                              {".css", "text/css"},
                                                                              {".svg", "image/svg+xml"},
                                                                              {".png", "image/png"}}};

std::string_view type_of(std::string_view path) {
  const auto found =
      std::find_if(types.begin(), types.end(), [&](const auto& row) { return path.ends_with(row.first); });
  return found == types.end() ? "application/octet-stream" : found->second;
}

std::optional<PageDocument> page_file(std::string_view path) {
  const auto name = path == "/" ? std::string_view("/index.html") : path;
  for (const auto& file : embedded_page()) {
    if (file.path == name) return PageDocument{std::string(type_of(name)), std::string(file.bytes)};
  }
  return std::nullopt;
}

struct Refusal {
  Access access;
  http::status status;
  std::string_view text;
};
constexpr std::array refusals{
    Refusal{Access::wrong_method, http::status::method_not_allowed, "Only GET is served here.\n"},
    Refusal{Access::wrong_host, http::status::forbidden, "This server answers only as 127.0.0.1 or localhost.\n"},
    Refusal{Access::wrong_origin, http::status::forbidden, "Other pages have no access to the panel.\n"},
    Refusal{Access::wrong_token, http::status::forbidden,
            "Open the panel by the address that pathdesk panel has printed.\n"},
};

std::string_view view(beast::string_view text) { return {text.data(), text.size()}; }

}  // namespace

class PageServer::Impl {
 public:
  Impl(std::string token, Hooks hooks) : token_(std::move(token)), hooks_(std::move(hooks)) {}

  std::string start();
  void stop();
  unsigned short port() const { return port_; }
  const std::string& token() const { return token_; }
  void publish(std::string topic, Keep keep, SharedMessage message, std::size_t most);
  void send(PageId page, SharedMessage message);

 private:
  class Visit;
  class Page;

  void accept();
  void visit(tcp::socket socket);
  Response answer(const Request& request);
  bool has_room() const { return pages_.size() < most_pages; }

  const std::string token_;
  const Hooks hooks_;
  unsigned short port_ = 0;
  asio::io_context context_{1};
  tcp::acceptor acceptor_{context_};
  asio::steady_timer pause_{context_};
  std::thread thread_;
  // On the server's thread only:
  PageState state_;
  std::map<PageId, std::shared_ptr<Page>> pages_;
  std::deque<std::weak_ptr<Visit>> visits_;  ///< the oldest first
  PageId last_page_ = 0;
};

/// A web socket to a page.
class PageServer::Impl::Page : public std::enable_shared_from_this<Page> {
 public:
  Page(Impl& server, PageId id, beast::tcp_stream stream) : server_(server), id_(id), socket_(std::move(stream)) {}

  void open(const Request& request) {
    socket_.set_option(websocket::stream_base::timeout::suggested(beast::role_type::server));
    socket_.read_message_max(longest_message);
    socket_.async_accept(request, [self = shared_from_this()](error_code error) {
      if (error) return self->leave();
      for (auto& message : self->server_.state_.all()) self->queue_.push({}, Keep::behind, std::move(message));
      self->open_ = true;
      self->write();
      self->read();
    });
  }

  void push(const std::string& topic, Keep keep, const SharedMessage& message) {
    if (!open_) return;
    queue_.push(topic, keep, message);
    // It learns everything anew when it comes back.
    if (queue_.bytes() > most_waiting_bytes) return close();
    if (!writing_) write();
  }

  void close() {
    open_ = false;
    beast::get_lowest_layer(socket_).close();
  }

  void say_goodbye() {
    if (!open_ || writing_) return close();
    open_ = false;
    socket_.async_close(websocket::close_code::going_away, [self = shared_from_this()](error_code) {});
  }

 private:
  void read() {
    socket_.async_read(buffer_, [self = shared_from_this()](error_code error, std::size_t) {
      if (error) return self->leave();
      if (self->socket_.got_text()) {
        self->server_.hooks_.received(self->id_, beast::buffers_to_string(self->buffer_.data()));
      }
      self->buffer_.consume(self->buffer_.size());
      self->read();
    });
  }

  void write() {
    if (queue_.empty()) return;
    sent_ = queue_.pop();
    writing_ = true;
    socket_.binary(sent_->binary);
    socket_.async_write(asio::buffer(sent_->bytes), [self = shared_from_this()](error_code error, std::size_t) {
      self->writing_ = false;
      if (error) return self->leave();
      self->write();
    });
  }

  void leave() {
    open_ = false;
    server_.pages_.erase(id_);
  }

  Impl& server_;
  const PageId id_;
  websocket::stream<beast::tcp_stream> socket_;
  beast::flat_buffer buffer_;
  PageQueue queue_;
  SharedMessage sent_;
  bool writing_ = false;
  bool open_ = false;
};

/// A connection as long as it speaks HTTP.
class PageServer::Impl::Visit : public std::enable_shared_from_this<Visit> {
 public:
  Visit(Impl& server, tcp::socket socket) : server_(server), stream_(std::move(socket)) {}

  void read() {
    parser_.emplace();
    parser_->header_limit(longest_header);
    parser_->body_limit(longest_body);
    stream_.expires_after(request_limit);
    http::async_read(stream_, buffer_, *parser_, [self = shared_from_this()](error_code error, std::size_t) {
      if (!error) self->serve();
    });
  }

  void close() { stream_.close(); }

 private:
  void serve() {
    const auto& request = parser_->get();
    auto answer = server_.answer(request);
    if (answer.result() == http::status::switching_protocols) {
      stream_.expires_never();
      const auto page = std::make_shared<Page>(server_, ++server_.last_page_, std::move(stream_));
      server_.pages_.emplace(server_.last_page_, page);
      return page->open(request);
    }
    if (request.method() == http::verb::head) answer.body().clear();
    response_ = std::move(answer);
    http::async_write(stream_, response_, [self = shared_from_this()](error_code error, std::size_t) {
      if (!error && self->response_.keep_alive()) return self->read();
      self->stream_.socket().shutdown(tcp::socket::shutdown_send, error);
    });
  }

  Impl& server_;
  beast::tcp_stream stream_;
  beast::flat_buffer buffer_{longest_header + longest_body};
  std::optional<http::request_parser<http::string_body>> parser_;
  Response response_;
};

std::string PageServer::Impl::start() {
  error_code error;
  const tcp::endpoint loopback(asio::ip::address_v4::loopback(), 0);
  acceptor_.open(loopback.protocol(), error);
  if (!error) acceptor_.bind(loopback, error);
  if (!error) acceptor_.listen(asio::socket_base::max_listen_connections, error);
  if (error) return "no loopback port can be had: " + error.message();
  port_ = acceptor_.local_endpoint().port();
  accept();
  thread_ = std::thread([this] { context_.run(); });
  return {};
}

void PageServer::Impl::stop() {
  if (!thread_.joinable()) return;
  asio::post(context_, [this] {
    error_code error;
    acceptor_.close(error);
    for (const auto& [id, page] : pages_) page->say_goodbye();
    const auto timer = std::make_shared<asio::steady_timer>(context_, end_limit);
    timer->async_wait([this, timer](error_code) { context_.stop(); });
  });
  thread_.join();
}

void PageServer::Impl::accept() {
  acceptor_.async_accept([this](error_code error, tcp::socket socket) {
    if (!acceptor_.is_open()) return;
    if (error) {
      // What is wrong may last, as where no descriptor is free.
      pause_.expires_after(accept_pause);
      return pause_.async_wait([this](error_code) {
        if (acceptor_.is_open()) accept();
      });
    }
    visit(std::move(socket));
    accept();
  });
}

/// Where too many are there, the one that came first gives way.
void PageServer::Impl::visit(tcp::socket socket) {
  std::erase_if(visits_, [](const auto& each) { return each.expired(); });
  if (visits_.size() == most_visits) {
    if (const auto oldest = visits_.front().lock()) oldest->close();
    visits_.pop_front();
  }
  const auto visit = std::make_shared<Visit>(*this, std::move(socket));
  visits_.push_back(visit);
  visit->read();
}

void PageServer::Impl::publish(std::string topic, Keep keep, SharedMessage message, std::size_t most) {
  asio::post(context_, [this, topic = std::move(topic), keep, message = std::move(message), most] {
    state_.take(topic, keep, message, most);
    for (const auto& [id, page] : pages_) page->push(topic, keep, message);
  });
}

void PageServer::Impl::send(PageId page, SharedMessage message) {
  asio::post(context_, [this, page, message = std::move(message)] {
    const auto found = pages_.find(page);
    if (found != pages_.end()) found->second->push({}, Keep::behind, message);
  });
}

Response PageServer::Impl::answer(const Request& request) {
  const auto field = [&](http::field name) { return view(request[name]); };
  const auto target = view(request.target());
  const bool upgrade = websocket::is_upgrade(request);
  const auto access = access_of({.method = view(request.method_string()),
                                 .target = target,
                                 .host = field(http::field::host),
                                 .origin = field(http::field::origin),
                                 .cookie = field(http::field::cookie),
                                 .upgrade = upgrade},
                                port_, token_);
  Response response;
  response.version(request.version());
  response.keep_alive(request.keep_alive());
  response.set(http::field::cache_control, "no-store");
  response.set("Content-Security-Policy", content_policy);
  response.set("X-Content-Type-Options", "nosniff");
  response.set("Referrer-Policy", "no-referrer");
  response.set("Cross-Origin-Resource-Policy", "same-origin");
  response.set("Cross-Origin-Opener-Policy", "same-origin");
  const auto say = [&](http::status status, std::string_view text) {
    response.result(status);
    response.set(http::field::content_type, "text/plain; charset=utf-8");
    response.body() = text;
  };
  const auto refused =
      std::find_if(refusals.begin(), refusals.end(), [&](const auto& row) { return row.access == access; });
  if (refused != refusals.end()) {
    say(refused->status, refused->text);
  } else if (upgrade && path_of(target) == socket_path) {
    if (has_room())
      response.result(http::status::switching_protocols);
    else
      say(http::status::service_unavailable, "Too many pages are open.\n");
  } else {
    auto document = page_file(path_of(target));
    if (!document) document = hooks_.document(target);
    if (document) {
      response.set(http::field::content_type, document->type);
      if (!document->download_name.empty()) {
        response.set(http::field::content_disposition,
                     fmt::format("attachment; filename=\"{}\"", document->download_name));
      }
      response.body() = std::move(document->bytes);
    } else {
      say(http::status::not_found, "There is nothing here.\n");
    }
  }
  if (access == Access::hands_over_token) {
    response.set(http::field::set_cookie,
                 fmt::format("{}={}; Path=/; HttpOnly; SameSite=Strict", cookie_name(port_), token_));
  }
  response.prepare_payload();
  return response;
}

PageServer::PageServer(std::string token, Hooks hooks)
    : impl_(std::make_unique<Impl>(std::move(token), std::move(hooks))) {}

PageServer::~PageServer() { stop(); }

std::string PageServer::start() { return impl_->start(); }

void PageServer::stop() { impl_->stop(); }

std::string PageServer::address() const {
  return fmt::format("http://127.0.0.1:{}/?token={}", impl_->port(), impl_->token());
}

void PageServer::publish(std::string topic, Keep keep, PageMessage message, std::size_t most) {
  impl_->publish(std::move(topic), keep, std::make_shared<const PageMessage>(std::move(message)), most);
}

void PageServer::send(PageId page, PageMessage message) {
  impl_->send(page, std::make_shared<const PageMessage>(std::move(message)));
}

}  // namespace pathstat::desk
