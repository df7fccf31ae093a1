#include "desk/report/model_text.h"

#include "structure/elements.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

/// Atoms of carbon on the x axis, one at each of these places.
MolecularModel carbons(const std::vector<double>& places, const std::vector<double>& masses) {
  MolecularModel model;
  model.masses = masses;
  for (std::size_t k = 0; k < places.size(); ++k) {
    model.ids.push_back(static_cast<std::int32_t>(k) + 1);
    model.elements.push_back(element_of_symbol("C"));
    model.names.push_back("C" + std::to_string(k + 1));
    model.ff_types.push_back("CT");
    model.positions.push_back({places[k], 0, 1});
  }
  return model;
}

TEST(ModelText, weighs_the_centre_by_mass_where_there_is_any) {
  EXPECT_EQ(centre_of_mass(carbons({0, 4}, {1, 3})), (Vector3{3, 0, 1}));
  EXPECT_EQ(centre_of_mass(carbons({0, 4}, {0, 0})), (Vector3{2, 0, 1}));
}

TEST(ModelText, lists_the_repeats_that_a_model_has) {
  auto model = carbons({0}, {12});
  EXPECT_THAT(facts_text(model_facts(model)), AllOf(HasSubstr("not periodic"), Not(HasSubstr("cell vector"))));
  model.periodic_type = periodic_2d;
  model.cell = {{{9, 0, 0}, {0, 7, 0}, {0, 0, 8}}};
  const auto text = facts_text(model_facts(model));
  EXPECT_THAT(text, AllOf(HasSubstr("2 dimensions"), HasSubstr("cell vector b       "), HasSubstr("cell vector c")));
  EXPECT_THAT(text, AllOf(Not(HasSubstr("cell vector a")), HasSubstr("   0.00000    7.00000    0.00000 Å")));
}

TEST(ModelText, shows_the_first_atoms_and_counts_the_others) {
  const auto text = atoms_text(carbons(std::vector<double>(25, 1.5), std::vector<double>(25, 12)));
  EXPECT_THAT(text, HasSubstr("     10  C10      C       CT          1.50000    0.00000    1.00000"));
  EXPECT_THAT(text, AllOf(Not(HasSubstr("C11")), HasSubstr("and 15 more")));
}

}  // namespace
}  // namespace pathstat::desk
