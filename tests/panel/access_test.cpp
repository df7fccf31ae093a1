#include "desk/panel/access.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

constexpr unsigned short port = 4711;
const std::string token(64, 'a');

struct Case {
  const char* what;
  RequestFacts facts;
  Access access;
};

const std::string first_page = "/?token=" + token, other_page = "/a.js?token=" + token;
const std::string own_cookie = "pathdesk_4711=" + token;
const std::string among_others = "other=1; pathdesk_4711=" + token + "; last=2";
const std::string of_other_port = "pathdesk_4712=" + token;
const std::string longer_name = "xpathdesk_4711=" + token;

RequestFacts get(const char* target, std::string_view cookie = own_cookie) {
  return {.method = "GET", .target = target, .host = "127.0.0.1:4711", .origin = {}, .cookie = cookie};
}

RequestFacts with_origin(RequestFacts facts, const char* host, const char* origin, bool upgrade) {
  facts.host = host;
  facts.origin = origin;
  facts.upgrade = upgrade;
  return facts;
}

RequestFacts with_method(RequestFacts facts, const char* method) {
  facts.method = method;
  return facts;
}

const Case cases[] = {
    {"cookie", get("/a.js"), Access::allowed},
    {"cookie among others", get("/", among_others), Access::allowed},
    {"head", with_method(get("/"), "HEAD"), Access::allowed},
    {"first page", get(first_page.c_str(), {}), Access::hands_over_token},
    {"token elsewhere", get(other_page.c_str(), {}), Access::wrong_token},
    {"no cookie", get("/", {}), Access::wrong_token},
    {"cookie of another port", get("/", of_other_port), Access::wrong_token},
    {"cookie of a longer name", get("/", longer_name), Access::wrong_token},
    {"token cut short", get("/", std::string_view(own_cookie).substr(0, 30)), Access::wrong_token},
    {"empty token", get("/?token=", {}), Access::wrong_token},
    {"post", with_method(get("/"), "POST"), Access::wrong_method},
    {"localhost", with_origin(get("/"), "localhost:4711", "", false), Access::allowed},
    {"foreign host", with_origin(get("/"), "example.org:4711", "", false), Access::wrong_host},
    {"no host", with_origin(get("/"), "", "", false), Access::wrong_host},
    {"host of another port", with_origin(get("/"), "127.0.0.1:80", "", false), Access::wrong_host},
    {"foreign origin", with_origin(get("/"), "127.0.0.1:4711", "http://example.org", false), Access::wrong_origin},
    {"opaque origin", with_origin(get("/"), "127.0.0.1:4711", "null", false), Access::wrong_origin},
    {"own origin", with_origin(get("/"), "127.0.0.1:4711", "http://127.0.0.1:4711", true), Access::allowed},
    {"origin by the other name", with_origin(get("/"), "127.0.0.1:4711", "http://localhost:4711", true),
     Access::wrong_origin},
    {"socket without origin", with_origin(get("/events"), "127.0.0.1:4711", "", true), Access::wrong_origin},
    {"socket with the token in its address",
     with_origin(get(first_page.c_str(), {}), "127.0.0.1:4711", "http://127.0.0.1:4711", true), Access::wrong_token}};

TEST(AccessOf, holds_method_host_origin_and_token_against_what_is_its_own) {
  for (const auto& row : cases) {
    EXPECT_EQ(access_of(row.facts, port, token), row.access) << row.what;
  }
}

TEST(QueryValue, is_found_by_its_whole_name_and_unescaped) {
  EXPECT_EQ(query_value("/files?folder=a%2Fb+c%20d&x=1", "folder"), "a/b c d");
  EXPECT_EQ(query_value("/files?subfolder=a", "folder"), "");
  EXPECT_EQ(query_value("/files?x&folder=%zz%4", "folder"), "%zz%4");
  EXPECT_EQ(query_value("/files", "folder"), "");
  EXPECT_EQ(path_of("/files?folder=/?"), "/files");
}

TEST(NewToken, is_long_and_never_the_same) {
  const auto first = new_token(), second = new_token();
  EXPECT_EQ(first.size(), 64U);
  EXPECT_NE(first, second);
}

}  // namespace
}  // namespace pathstat::desk
