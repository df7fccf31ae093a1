#include "desk/panel/access.h"

#include <fmt/format.h>
#include <sys/random.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace pathstat::desk {
namespace {

constexpr std::string_view token_name = "token";

/// Equality that takes as long wherever the first difference stands.
bool same_secret(std::string_view a, std::string_view b) {
  if (a.size() != b.size() || a.empty()) return false;
  unsigned different = 0;
  for (std::size_t k = 0; k < a.size(); ++k) {
    different |= static_cast<unsigned char>(a[k]) ^ static_cast<unsigned char>(b[k]);
  }
  return different == 0;
}

bool is_own_host(std::string_view host, unsigned short port) {
  return host == fmt::format("127.0.0.1:{}", port) || host == fmt::format("localhost:{}", port);
}

bool is_own_origin(const RequestFacts& facts) {
  if (facts.origin.empty()) return !facts.upgrade;
  return facts.origin == fmt::format("http://{}", facts.host);
}

std::string_view cookie_value(std::string_view cookies, std::string_view name) {
  while (!cookies.empty()) {
    const auto end = std::min(cookies.find(';'), cookies.size());
    auto cookie = cookies.substr(0, end);
    cookies.remove_prefix(std::min(end + 1, cookies.size()));
    while (cookie.starts_with(' ')) cookie.remove_prefix(1);
    if (cookie.starts_with(name) && cookie.substr(name.size()).starts_with('=')) return cookie.substr(name.size() + 1);
  }
  return {};
}

std::string unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t k = 0; k < text.size(); ++k) {
    unsigned char byte = 0;
    const auto* digits = text.data() + k + 1;
    if (text[k] == '%' && k + 2 < text.size() && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
      plain += static_cast<char>(byte);
      k += 2;
    } else {
      plain += text[k] == '+' ? ' ' : text[k];
    }
  }
  return plain;
}

}  // namespace

Access access_of(const RequestFacts& facts, unsigned short port, std::string_view token) {
  if (facts.method != "GET" && facts.method != "HEAD") return Access::wrong_method;
  if (!is_own_host(facts.host, port)) return Access::wrong_host;
  if (!is_own_origin(facts)) return Access::wrong_origin;
  if (same_secret(cookie_value(facts.cookie, cookie_name(port)), token)) return Access::allowed;
  const bool first_page = path_of(facts.target) == "/" && !facts.upgrade;
  return first_page && same_secret(query_value(facts.target, token_name), token) ? Access::hands_over_token
                                                                                 : Access::wrong_token;
}

std::string cookie_name(unsigned short port) { return fmt::format("pathdesk_{}", port); }

std::string_view path_of(std::string_view target) { return target.substr(0, target.find('?')); }

std::string query_value(std::string_view target, std::string_view name) {
  auto query = target.substr(std::min(path_of(target).size() + 1, target.size()));
  while (!query.empty()) {
    const auto end = std::min(query.find('&'), query.size());
    const auto pair = query.substr(0, end);
    query.remove_prefix(std::min(end + 1, query.size()));
    if (pair.starts_with(name) && pair.substr(name.size()).starts_with('=')) {
      return unescaped(pair.substr(name.size() + 1));
    }
  }
  return {};
}

std::string new_token() {
  std::array<unsigned char, 32> bytes{};
  if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) return {};
  std::string token;
  for (const auto byte : bytes) token += fmt::format("{:02x}", byte);
  return token;
}

}  // namespace pathstat::desk
