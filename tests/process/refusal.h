#pragma once

#include "process/desk_with_process.h"
#include "testing.h"

namespace pathstat::desk {

/// A command that is refused.
struct Refusal {
  const char* word;
  const char* arguments;
  std::int32_t status;
  const char* key;  ///< of the message that it gives; null where the status speaks for itself, empty for none
};

inline void expect_refused(DeskWithProcess& desk, const Refusal& refusal) {
  SCOPED_TRACE(std::string(refusal.word) + ' ' + refusal.arguments);
  desk.messages.clear();
  EXPECT_EQ(desk.run(refusal.word, refusal.arguments), refusal.status);
  if (refusal.key == nullptr) return;
  const std::vector<std::string> keys(*refusal.key == '\0' ? 0 : 1, refusal.key);
  EXPECT_EQ(desk.take_keys(), keys);
}

}  // namespace pathstat::desk
