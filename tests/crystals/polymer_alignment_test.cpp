#include "crystals/polymer_alignment.h"

#include "desk/small_models.h"
#include "in_process_core.h"
#include "testing.h"

namespace pathstat {
namespace {

struct Atom {
  const char* type;
  Vector3 position;
};

class PolymerAlignment : public testing::Test {
 protected:
  InProcessCore core;
  AlignedPolymer aligned;
  std::int32_t status = -7;

  /// A model of chains, each bonded from one atom to the next.
  std::int32_t chains(const std::vector<std::vector<Atom>>& all) {
    std::vector<Vector3> positions;
    for (const auto& chain : all) {
      for (const auto& atom : chain) positions.push_back(atom.position);
    }
    auto model = desk::carbon_model(positions);
    model.ff_types = {};
    for (const auto& chain : all) {
      for (std::size_t k = 0; k < chain.size(); ++k) {
        const auto place = static_cast<std::uint32_t>(model.ff_types.size());
        if (k > 0) model.bonds.emplace_back(place - 1, place);
        model.ff_types.push_back(chain[k].type);
      }
    }
    return core.model.add_model(std::move(model));
  }

  const desk::ModelObject& object(std::int32_t model) { return *core.model.model(model); }

  void expect_places(std::int32_t model, const std::vector<Vector3>& places) {
    const auto& found = object(model).data.positions;
    ASSERT_EQ(found.size(), places.size());
    for (std::size_t k = 0; k < places.size(); ++k) {
      for (std::size_t axis = 0; axis < 3; ++axis) EXPECT_NEAR(found[k][axis], places[k][axis], 1e-12) << k;
    }
  }
};

const std::vector<Atom> along_x{{"XX", {-1.5, 0, 0}}, {"J1", {0, 0, 0}}, {"J2", {1.5, 0, 0}}};
const std::vector<Atom> along_y{{"J1", {10, -1.5, 0}}, {"J2", {10, 0, 0}}, {"XX", {10, 1.5, 0}}};

TEST_F(PolymerAlignment, turns_each_segment_about_its_centre_and_drops_its_dummy) {
  const auto model = chains({along_x, {{"C", {5, 5, 5}}}, along_y});
  const auto id = [&](std::size_t place) { return object(model).atom_id(place); };
  const std::vector<CellBond> links{{id(2), id(1), {0, 0, 1}}, {id(5), id(4), {0, 0, 1}}};
  align_links_(model, {0, 0, 7}, aligned, status);
  EXPECT_EQ(status, 0);
  EXPECT_NEAR(aligned.length, 3, 1e-12);
  EXPECT_EQ(aligned.links, links);
  expect_places(model, {{0, 0, 0}, {0, 0, 1.5}, {5, 5, 5}, {10, 0, -1.5}, {10, 0, 0}});
}

TEST_F(PolymerAlignment, turns_a_monomer_between_its_two_dummies) {
  const auto model = chains({{{"XX", {0, 3, 0}}, {"C", {0, 2, 0}}, {"C", {0, 1, 0}}, {"XX", {0, 0, 0}}}});
  align_polymer_(model, object(model).atom_id(0), object(model).atom_id(3), {0, 0, 1}, aligned, status);
  EXPECT_EQ(status, 0);
  EXPECT_NEAR(aligned.length, 2, 1e-12);
  expect_places(model, {{0, 1.5, -0.5}, {0, 1.5, 0.5}});
}

TEST_F(PolymerAlignment, refuses_segments_that_do_not_fit) {
  auto longer = along_y, two_heads = along_y, loose = along_y;
  longer[2].position[1] = 1.6;
  two_heads.insert(two_heads.begin(), {"J1", {10, -3, 0}});
  loose[1].type = "C";
  for (const auto* second : {&longer, &two_heads, &loose}) {
    core.messages.clear();
    align_links_(chains({along_x, *second}), {0, 0, 1}, aligned, status);
    EXPECT_EQ(status, 1);
    if (second == &two_heads) {
      EXPECT_THAT(core.messages, ElementsAre("Crystal2J1 4 5", "CrystalBadPolAlign"));
    } else {
      EXPECT_THAT(core.messages, ElementsAre("CrystalBadPolAlign"));
    }
  }
}

TEST_F(PolymerAlignment, of_a_monomer_needs_a_neighbour_of_each_dummy) {
  const auto model = chains({{{"XX", {0, 0, 0}}}, {{"C", {1, 0, 0}}, {"XX", {2, 0, 0}}}});
  align_polymer_(model, object(model).atom_id(0), object(model).atom_id(2), {0, 0, 1}, aligned, status);
  EXPECT_EQ(status, 1);
  align_polymer_(model, 99999999, object(model).atom_id(2), {0, 0, 1}, aligned, status);
  EXPECT_EQ(status, 1);
}

}  // namespace
}  // namespace pathstat
