#pragma once

#include <gmock/gmock.h>

#include <string>

#include "process/desk_with_process.h"

namespace pathstat::desk {

/// A command that is refused.
struct Refusal {
  const char* word;
  const char* arguments;
  std::int32_t status;
  const char* key;  ///< of a message that it gives; null where the status speaks for itself, empty for none
};

inline void expect_refused(DeskWithProcess& desk, const Refusal& refusal) {
  SCOPED_TRACE(std::string(refusal.word) + ' ' + refusal.arguments);
  desk.messages.clear();
  EXPECT_EQ(desk.run(refusal.word, refusal.arguments), refusal.status);
  if (refusal.key == nullptr) return;
  if (*refusal.key == '\0') {
    EXPECT_THAT(desk.take_keys(), testing::IsEmpty());
  } else {
    EXPECT_THAT(desk.take_keys(), testing::Contains(refusal.key));
  }
}

}  // namespace pathstat::desk
