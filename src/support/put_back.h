#pragma once

#include <exception>
#include <tuple>
#include <type_traits>
#include <utility>

namespace pathstat {

/// Puts values back as they were where an exception ends the scope: a change in several steps is made whole or not.
template <class... Values>
class PutBack {
 public:
  static_assert((std::is_nothrow_move_assignable_v<Values> && ...));

  explicit PutBack(Values&... values) : values_(values...), before_(values...) {}
  ~PutBack() {
    if (std::uncaught_exceptions() > exceptions_) values_ = std::move(before_);
  }
  PutBack(const PutBack&) = delete;
  PutBack& operator=(const PutBack&) = delete;

 private:
  std::tuple<Values&...> values_;
  std::tuple<Values...> before_;
  const int exceptions_ = std::uncaught_exceptions();
};

}  // namespace pathstat
