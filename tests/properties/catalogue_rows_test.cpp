#include "properties/catalogue_rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "properties/mask_rules.h"

namespace pathstat {
namespace {

TEST(CatalogueRows, are_numbered_once_and_have_names_that_fit) {
  EXPECT_EQ(property_rows.size(), 77u);
  EXPECT_EQ(fluctuation_rows.size(), 13u);
  std::set<std::int32_t> ids;
  for (const auto& row : property_rows) {
    EXPECT_TRUE(ids.insert(row.id).second) << row.id;
    EXPECT_LE(row.name.size(), 40u);
    EXPECT_LE(row.short_name.size(), 40u);
    EXPECT_LE(row.units.size(), 20u);
    EXPECT_LE(row.extension.size(), 10u);
  }
}

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

TEST(CatalogueRows, put_the_headers_in_front_of_their_groups) {
  std::vector<std::string> headers;
  for (std::size_t k = 0; k < property_rows.size(); ++k) {
    if (property_rows[k].is_header())
      headers.push_back(std::to_string(k + 1) + " " + std::string(property_rows[k].name));
  }
  EXPECT_THAT(headers,
              testing::ElementsAre("1 ENERGY TOTALS", "9 ENERGY COMPONENTS", "34 ENERGY PER MOLECULE", "56 BULK",
                                   "63 ELECTROSTATIC", "66 FREE VOLUME", "69 STRUCTURE", "71 MEASUREMENTS"));
  EXPECT_TRUE(fluctuation_rows[0].is_header());
  EXPECT_TRUE(fluctuation_rows[11].is_header());
}

TEST(CatalogueRows, start_with_the_total_energy_selected_alone) {
  std::vector<std::int32_t> selected;
  for (const auto& row : property_rows) {
    if (row.selected != 0) selected.push_back(row.id);
  }
  EXPECT_THAT(selected, testing::ElementsAre(1));
}

/// Rows with a rule, so that a forgotten one does not vanish from the lists.
TEST(MaskRules, leave_out_only_rows_that_no_source_has) {
  std::vector<std::int32_t> without_rule;
  for (const auto& row : property_rows) {
    const MaskRule rule = mask_rule(trajectory_rules, row.id);
    if (rule.selectable == Fact::never && rule.can_be_used == Fact::never) without_rule.push_back(row.id);
    EXPECT_TRUE(!row.is_header() || rule.selectable == Fact::never) << row.name;
  }
  EXPECT_THAT(without_rule, testing::UnorderedElementsAre(608, 901, 903, 605, 401, 402));
  for (const auto& row : fluctuation_rows) {
    const MaskRule rule = mask_rule(fluctuation_rules, row.id);
    EXPECT_NE(rule.can_be_used, Fact::never) << row.name;
    EXPECT_EQ(rule.selectable == Fact::never, row.is_header()) << row.name;
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
