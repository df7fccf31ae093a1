#include "desk/panel/page_state.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

constexpr std::size_t any_number = 1000;

SharedMessage message(const char* text) { return std::make_shared<const PageMessage>(PageMessage{text, false}); }

std::string all_of(const PageState& state) {
  std::string all;
  for (const auto& each : state.all()) all += each->bytes + ' ';
  return all;
}

std::string drained(PageQueue& queue) {
  std::string all;
  while (!queue.empty()) all += queue.pop()->bytes + ' ';
  return all;
}

TEST(PageState, tells_a_new_page_what_still_holds_topics_in_the_order_in_which_they_came) {
  PageState state;
  state.take("model", Keep::only, message("m1"), any_number);
  state.take("points", Keep::only, message("p1"), any_number);
  state.take("points", Keep::behind, message("p2"), any_number);
  state.take("model", Keep::only, message("m2"), any_number);
  EXPECT_EQ(all_of(state), "m2 p1 p2 ");
  state.take("points", Keep::only, message("p3"), any_number);
  EXPECT_EQ(all_of(state), "m2 p3 ");
}

TEST(PageState, keeps_the_latest_of_a_topic_with_a_limit) {
  PageState state;
  for (const auto* text : {"1", "2", "3", "4"}) state.take("log", Keep::behind, message(text), 2);
  EXPECT_EQ(all_of(state), "3 4 ");
}

TEST(PageQueue, skips_only_what_a_later_message_replaces) {
  PageQueue queue;
  queue.push("log", Keep::behind, message("l1"));
  queue.push("positions", Keep::only, message("old"));
  queue.push("log", Keep::behind, message("l2"));
  queue.push("points", Keep::behind, message("p1"));
  queue.push("positions", Keep::only, message("new"));
  EXPECT_EQ(queue.bytes(), 9U);
  EXPECT_EQ(drained(queue), "l1 l2 p1 new ");
  EXPECT_EQ(queue.bytes(), 0U);
}

}  // namespace
}  // namespace pathstat::desk
