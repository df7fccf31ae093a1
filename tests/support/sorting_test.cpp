#include "support/sorting.h"

#include "testing.h"

namespace pathstat {
namespace {

using Numbers = std::vector<std::int32_t>;

Numbers order_of(const Numbers& values) {
  Numbers index(values.size(), -1);
  isortidx_(values, index);
  return index;
}

// Orders followed by hand through the sift, one exchange at a time.
TEST(Sorting, equal_keys_stand_as_the_sift_leaves_them) {
  EXPECT_THAT(order_of({}), ElementsAre());
  EXPECT_THAT(order_of({5}), ElementsAre(1));
  EXPECT_THAT(order_of({5, 5}), ElementsAre(2, 1));
  EXPECT_THAT(order_of({5, 5, 5}), ElementsAre(2, 3, 1));
  EXPECT_THAT(order_of({5, 5, 5, 5}), ElementsAre(2, 3, 4, 1));
  EXPECT_THAT(order_of({2, 1, 2, 1}), ElementsAre(2, 4, 3, 1));
}

TEST(Sorting, agrees_with_the_library_on_random_input) {
  const auto seed = std::random_device{}();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int n = 0; n < 200; ++n) {
    std::uniform_int_distribution<std::int32_t> value(-n, n);
    Numbers values(static_cast<std::size_t>(n));
    for (auto& v : values) v = value(random);
    Numbers sorted = values, index = order_of(values), in_place = values, through_index;
    std::sort(sorted.begin(), sorted.end());
    for (const auto k : index) through_index.push_back(values[static_cast<std::size_t>(k) - 1]);
    EXPECT_EQ(through_index, sorted);
    std::sort(index.begin(), index.end());
    for (int k = 0; k < n; ++k) ASSERT_EQ(index[static_cast<std::size_t>(k)], k + 1);
    isort_(in_place);
    EXPECT_EQ(in_place, sorted);

    // The same keys in another type take the same way through the sift.
    const std::vector<double> doubles(values.begin(), values.end());
    const std::vector<float> floats(values.begin(), values.end());
    Numbers by_double(values.size()), by_float(values.size()), by_row(values.size());
    dsortidx_(doubles, by_double);
    rsortidx_(floats, by_float);
    inestsortidx_(values, 1, by_row);
    EXPECT_THAT(order_of(values), AllOf(by_double, by_float, by_row));
    std::vector<double> doubles_in_place = doubles;
    dsort_(doubles_in_place);
    EXPECT_THAT(doubles_in_place, ElementsAreArray(sorted));
  }
}

TEST(Sorting, texts_compare_as_if_padded_with_blanks) {
  const std::vector<std::string_view> texts{"b", "a\tx", "a", "ab", "\xC0", "", "B  "};
  Numbers index(texts.size());
  csortidx_(index, texts);
  EXPECT_THAT(index, ElementsAre(6, 7, 2, 3, 4, 1, 5));  // a tab stands below the blank, bytes have no sign
}

}  // namespace
}  // namespace pathstat
