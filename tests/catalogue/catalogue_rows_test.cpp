#include "catalogue/catalogue_rows.h"

#include "catalogue/mask_rules.h"
#include "testing.h"

namespace pathstat {
namespace {

TEST(CatalogueRows, have_a_file_each_but_for_headers_and_shared_files) {
  std::set<std::string_view> extensions;
  for (const auto& row : property_rows) {
    if (row.is_header()) {
      EXPECT_EQ(row.extension, "NONE") << row.name;
      EXPECT_EQ(row.selectable, 0) << row.name;
    } else {
      EXPECT_TRUE(extensions.insert(row.extension).second) << row.extension;
    }
  }
  for (const auto& row : fluctuation_rows) {
    EXPECT_EQ(row.extension, row.is_header() ? "NONE" : row.id == 901 ? ".dip" : ".thrm") << row.name;
  }
}

TEST(MaskRules, name_each_row_once) {
  const auto check = [](std::span<const MaskRule> rules) {
    for (std::int32_t id = 1; id < 1000; ++id) {
      const auto named =
          std::ranges::count_if(rules, [id](const MaskRule& r) { return id >= r.first && id <= r.last; });
      EXPECT_LE(named, 1) << id;
    }
  };
  check(trajectory_rules);
  check(model_rules);
  check(fluctuation_rules);
}

}  // namespace
}  // namespace pathstat
