#include "desk/model/data_model.h"

#include "small_models.h"
#include "structure/elements.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

std::int32_t add_pair(DataModel& data, const std::string& name = "pair") {
  auto result = imported(water_pair);
  result.models.front().name = name;
  return data.add_model(std::move(result.models.front()));
}

TEST(DataModel, never_gives_an_identifier_twice) {
  DataModel data;
  const auto first = add_pair(data);
  const auto atom = data.model(first)->first_atom;
  const auto image = data.atom_image(*data.model(first), 2, {0, 1, 0});
  data.set_current_model(first);
  data.remove_model(first);
  for (const auto id : {first, atom, image}) EXPECT_FALSE(data.exists(id));
  EXPECT_EQ(data.current_model(), 0);
  EXPECT_FALSE(data.set_current_model(first));

  const auto second = add_pair(data);
  EXPECT_GT(second, image);
  EXPECT_FALSE(data.atom(image));
  EXPECT_EQ(data.model(second)->number, 2);
}

TEST(DataModel, makes_one_image_of_an_atom_and_cell_and_finds_it_again) {
  DataModel data;
  auto& model = *data.model(add_pair(data));
  auto& other = *data.model(add_pair(data, "other"));
  const auto image = data.atom_image(model, 4, {0, 0, 1});
  EXPECT_NE(data.atom_image(other, 4, {0, 0, 1}), image);
  EXPECT_NE(data.atom_image(model, 4, {0, 0, -1}), image);
  EXPECT_EQ(data.atom_image(model, 4, {0, 0, 1}), image);
  EXPECT_EQ(data.atom_image(model, 4, {0, 0, 0}), model.first_atom + 4);
  const auto found = data.atom(image);
  EXPECT_EQ(found.model, &model);
  EXPECT_EQ(found.position(), (Vector3{1, 2, 10.5}));
}

TEST(DataModel, sees_molecules_anew_when_coordinates_change) {
  DataModel data;
  auto& model = *data.model(add_pair(data));
  EXPECT_EQ(data.connectivity(model).image[4], (Translation{0, 0, 1}));
  const auto version = data.version();
  model.data.positions[4][2] += 10;
  data.geometry_changed(model);
  EXPECT_EQ(data.connectivity(model).image[4], Translation{});
  EXPECT_GT(data.version(), version);
}

TEST(DataModel, has_one_group_for_models_of_the_same_operators) {
  DataModel data;
  const auto symmetric = [&] {
    auto model = carbon_model({{1, 2, 3}});
    model.periodic_type = periodic_3d;
    model.cell = {{{9, 0, 0}, {0, 9, 0}, {0, 0, 9}}};
    model.symmetry = {{identity_rotation, {-1, 0, 0, 0, -1, 0, 0, 0, -1}}, {Vector3{}, Vector3{}}};
    return data.model(data.add_model(std::move(model)))->space_group;
  };
  const auto group = symmetric();
  EXPECT_EQ(symmetric(), group);
  EXPECT_EQ(data.space_group(group)->number, 2);
  EXPECT_EQ(data.space_group(group)->operators.size(), 2u);
  EXPECT_EQ(data.space_group(data.model(add_pair(data))->space_group)->name, "P 1");
}

TEST(DataModel, finds_objects_by_what_a_user_calls_them) {
  DataModel data;
  add_pair(data);
  const auto later = add_pair(data);
  EXPECT_EQ(data.object_named("pair"), later);
  EXPECT_EQ(data.object_named(std::to_string(later)), later);
  EXPECT_EQ(data.object_named("MD_ANALYSIS"), data.application("MD_ANALYSIS"));
  EXPECT_EQ(data.object_named("99999999"), 0);
  EXPECT_EQ(data.object_named("nobody"), 0);
}

TEST(DataModel, drops_what_was_attached_to_a_model_that_is_removed) {
  DataModel data;
  const auto model = add_pair(data);
  data.set_user_value(model, "n", {UserValue::Kind::int_array, {1, 2}});
  data.set_user_value(data.root(), "n", {UserValue::Kind::int_array, {3}});
  EXPECT_FALSE(data.user_value(model, "n", UserValue::Kind::object_array));
  data.remove_model(model);
  EXPECT_FALSE(data.user_value(model, "n", UserValue::Kind::int_array));
  EXPECT_TRUE(data.user_value(data.root(), "n", UserValue::Kind::int_array));
}

TEST(Selection, of_models_says_what_it_can_not_do_and_changes_nothing) {
  DataModel data;
  add_pair(data);
  using Words = std::vector<std::string>;
  data.set_selected_atoms(*data.models()[0], {1, 0, 0, 0, 0, 0});
  data.select_models(Words{"pair"});
  EXPECT_THAT(data.select_models(Words{"pair", "nobody"}), HasSubstr("nobody"));
  EXPECT_EQ(data.selected_atoms(), 1u);
  EXPECT_EQ(data.selected_models(), 1u);
  EXPECT_THAT(data.select_models(Words{"none"}), IsEmpty());
  EXPECT_EQ(data.selected_models(), 0u);
  EXPECT_THAT(data.select_models(Words{"all"}), IsEmpty());
  EXPECT_EQ(data.selected_models(), 1u);
}

TEST(Elements, are_found_by_symbol_in_any_case) {
  EXPECT_EQ(element_of_symbol("H"), 1);
  EXPECT_EQ(element_of_symbol("cO"), 27);
  EXPECT_EQ(element_of_symbol("OG"), 118);
  EXPECT_EQ(elements()[element_of_symbol("D")].mass, 2.014102);
  for (const auto* wrong : {"", "Q", "H1", "Xx", "C ", "Uuo"}) EXPECT_EQ(element_of_symbol(wrong), 0) << wrong;
  for (std::size_t k = 1; k < elements().size(); ++k) EXPECT_EQ(element_of_symbol(elements()[k].symbol), k);
  EXPECT_EQ(element_of_atom_name("Cl12"), 17);
  EXPECT_EQ(element_of_atom_name("OW1"), 8);
  EXPECT_EQ(element_of_atom_name("1H"), 0);
}

}  // namespace
}  // namespace pathstat::desk
