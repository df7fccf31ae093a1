#include "building/element_symbols.h"

#include <gtest/gtest.h>

#include "desk/model/elements.h"

namespace pathstat {
namespace {

TEST(ElementSymbols, are_numbered_as_in_the_core) {
  for (std::int32_t number = 1; number <= 120; ++number) {
    const auto symbol = desk::elements()[static_cast<std::size_t>(number)].symbol;
    EXPECT_EQ(element_symbol(number), symbol);
    EXPECT_EQ(number_of_element(symbol), number);
  }
  for (const auto* unknown : {"", "x", "he", "HE", "Xy", "H1"}) EXPECT_EQ(number_of_element(unknown), 0) << unknown;
  for (const auto none : {-1, 0, 121, 1 << 30}) EXPECT_EQ(element_symbol(none), "") << none;
}

}  // namespace
}  // namespace pathstat
