#include "desk/panel/requests.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "desk/script/interrupts.h"

namespace pathstat::desk {
namespace {

constexpr auto wait_limit = std::chrono::milliseconds(100);

bool runs_beside_line(const PageRequest& request) { return request.what == "complete" || request.what == "watch"; }

bool is_line(const PageRequest& request) { return request.what == "line"; }

}  // namespace

std::string PageRequest::text(const char* name) const {
  const auto found = body.find(name);
  return found != body.end() && found->is_string() ? found->get<std::string>() : std::string{};
}

std::int64_t PageRequest::number(const char* name) const {
  const auto found = body.find(name);
  return found != body.end() && found->is_number_integer() ? found->get<std::int64_t>() : 0;
}

bool PageRequests::take(PageId page, const std::string& message) {
  PageRequest request{page, {}, nlohmann::json::parse(message, nullptr, false)};
  if (!request.body.is_object()) return true;
  request.what = request.text("do");
  const std::lock_guard lock(mutex_);
  if (request.what == "stop") {
    stop_line();
  } else if (request.what == "answer") {
    if (request.number("question") == question_) answer_ = static_cast<std::int32_t>(request.number("choice"));
  } else {
    if (requests_.size() >= most_waiting) return false;
    if (is_line(request) && gives_way_) stop_line();
    requests_.push_back(std::move(request));
  }
  came_.notify_one();
  return true;
}

void PageRequests::stop_line() {
  if (!running_) return;
  ++stops_;
  gives_way_ = false;
  request_interrupt();
}

std::optional<PageRequest> PageRequests::next() {
  std::unique_lock lock(mutex_);
  came_.wait_for(lock, wait_limit, [&] { return !requests_.empty(); });
  if (requests_.empty()) return std::nullopt;
  auto request = std::move(requests_.front());
  requests_.pop_front();
  return request;
}

std::optional<PageRequest> PageRequests::next_beside_line() {
  const std::lock_guard lock(mutex_);
  const auto found = std::find_if(requests_.begin(), requests_.end(), runs_beside_line);
  if (found == requests_.end()) return std::nullopt;
  auto request = std::move(*found);
  requests_.erase(found);
  return request;
}

std::size_t PageRequests::waiting_lines() const {
  const std::lock_guard lock(mutex_);
  return static_cast<std::size_t>(std::count_if(requests_.begin(), requests_.end(), is_line));
}

void PageRequests::line_begins(bool gives_way) {
  const std::lock_guard lock(mutex_);
  running_ = true;
  gives_way_ = gives_way;
  stops_ = 0;
}

int PageRequests::line_ends() {
  const std::lock_guard lock(mutex_);
  running_ = gives_way_ = false;
  return std::exchange(stops_, 0);
}

std::int64_t PageRequests::new_question() {
  const std::lock_guard lock(mutex_);
  answer_.reset();
  return ++question_;
}

std::optional<std::int32_t> PageRequests::wait_for_answer() {
  std::unique_lock lock(mutex_);
  while (!answer_ && interrupts() == 0) came_.wait_for(lock, wait_limit);
  return answer_;
}

}  // namespace pathstat::desk
