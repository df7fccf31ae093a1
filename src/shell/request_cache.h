#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "shell/text_pool.h"

namespace pathstat {

/// Stands between the keys of a request and between the answers of a reply.
constexpr char key_separator = 0x10;

/// Evaluates one key: writes the terminated value and range texts into the blocks as far as they fit, and tells the
/// lengths that the texts would need.
using RequestEvaluation =
    std::function<void(std::string_view application, std::string_view key, std::span<char> value, std::span<char> range,
                       std::int64_t& value_length, std::int64_t& range_length)>;

/// One data request of the Core.
struct DataRequest {
  std::string_view application;
  std::string_view keys;  ///< with key_separator between them
  std::int32_t key_count = 0;
  std::int32_t selector = 0;  ///< bits 0 to 3: 2 for the values, else the ranges; bits 8 to 23: the group
  std::int32_t capacity = 0;  ///< bytes that the reply may take, its terminator included
};

/// Evaluates requests and keeps the answers of the latest group, so that the Core can ask for the values and for the
/// ranges of the same keys with one evaluation.
class RequestCache {
 public:
  explicit RequestCache(RequestEvaluation evaluate) : evaluate_(std::move(evaluate)) {}

  /// Puts the answers into `reply`, with key_separator between them; a request without keys leaves it as it is.
  ///
  /// @param answer_count  answers that are whole in the reply
  /// @return 0, or the negative of the bytes that all answers need if they do not fit; 1 if memory is out
  std::int32_t answer(const DataRequest& request, std::string& reply, std::int32_t& answer_count);

 private:
  struct Answer {
    std::int32_t application_offset;
    std::int32_t key_offset;
    std::int32_t value_offset;
    std::int32_t range_offset;
  };

  void reset(const DataRequest& request, std::int32_t group, std::size_t key_count);
  std::int32_t application_offset(std::string_view application);
  std::int32_t find(std::int32_t application, std::string_view key) const;
  void evaluate(std::string_view application, std::string_view key, std::int32_t application_offset);
  std::int32_t build_reply(const DataRequest& request, std::string& reply, std::int32_t& answer_count) const;
  static void shrink(TextPool& pool, std::int32_t capacity);

  RequestEvaluation evaluate_;
  std::int32_t current_group_ = -1;
  std::vector<std::int32_t> key_index_;  ///< of the keys of the current request, into answers_
  std::vector<Answer> answers_;
  TextPool applications_;
  TextPool keys_;
  TextPool value_pool_;
  TextPool range_pool_;
};

}  // namespace pathstat
