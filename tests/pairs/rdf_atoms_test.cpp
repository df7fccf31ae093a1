#include "pairs/rdf_atoms.h"

#include "coreapi/object_counts.h"
#include "pairs/pair_histogram.h"
#include "recording_core.h"
#include "state/rdf_settings.h"
#include "testing.h"

namespace pathstat {
namespace {

using Answer = RecordingCore::Answer;
using Inputs = RecordingCore::Inputs;

struct Atom {
  std::int32_t id;
  std::int32_t parent;
  std::array<std::int32_t, 3> translation;
  std::int32_t element;
  const char* fftype;
};

/// A Core with the atoms 101 to 104, of which 204 is another image of the last and 303 one of the third.
class RdfAtoms : public testing::Test {
 protected:
  RdfAtoms() {
    gr_i_ = {};
    gr_i_.model_atoms = 4;
    each("kvD_Id", [](const Atom& atom, auto& out) { out.push_back(atom.id); });
    each("kvD_Type", [](const Atom& atom, auto& out) { out.push_back(atom.element); });
    each("kvD_PER_PeriodicParent", [](const Atom& atom, auto& out) { out.push_back(atom.parent); });
    each("kvD_PER_Translation",
         [](const Atom& atom, auto& out) { out.insert(out.end(), atom.translation.begin(), atom.translation.end()); });
    core.answers["kvD_ATM_FFType"] = [this](const Inputs& in) { return Answer{{}, {}, {atom(in[2]).fftype}}; };
    core.answers["kvD_ACL_FindSymbol"] = [](const Inputs& in) {
      const std::int32_t code = in[1] == "O" ? 8 : in[1] == "H" ? 1 : 0;
      return Answer{{code, code == 0 ? 7 : 0}, {}, {}};
    };
    core.answers["kvD_MOD_AtomList"] = [](const Inputs&) { return Answer{{101, 102, 103, 104, 4}, {}, {}}; };
    core.answers["kvD_MOD_Name"] = [](const Inputs&) { return Answer{{}, {}, {"ice"}}; };
  }

  const Atom& atom(const std::string& object) const { return atoms.at(std::stoi(object)); }

  template <class Take>
  void each(const std::string& operation, Take take) {
    core.answers[operation] = [this, take](const Inputs& in) {
      Answer answer;
      for (std::size_t k = 1; k < in.size(); ++k) take(atom(in[k]), answer.integers);
      return answer;
    };
  }

  void list(const RdfRequest& request, std::int32_t periodic_type, const RdfRefusals& refusals = trajectory_refusals) {
    gr_i_.periodic_type = periodic_type;
    list_rdf_atoms(request, 9, refusals, blocks, status);
  }

  RecordingCore core;
  std::map<std::int32_t, Atom> atoms{
      {101, {1, 101, {}, 8, "o*"}}, {102, {2, 102, {}, 1, "h*"}},         {103, {3, 103, {}, 1, "h*"}},
      {104, {4, 104, {}, 1, "hw"}}, {204, {4, 104, {1, -1, 0}, 1, "hw"}}, {303, {3, 103, {0, 1, 0}, 1, "h*"}},
  };
  RdfBlocks blocks;
  std::int32_t status = 0;
};

TEST_F(RdfAtoms, stand_by_set_and_molecule_with_the_cells_that_make_molecules_whole) {
  core.answers["kvA_CON_MolecularList"] = [](const Inputs&) {
    return Answer{{101, 204, 102, 103, 4, 1, 1, 2, 2, 2, 0}, {}, {}};
  };
  core.answers["kvA_CON_MolecularTagNetwork"] = [](const Inputs& in) {
    EXPECT_EQ(in[0], "1") << "the reply is as long as the room that is given";
    if (in[2] == "101") return Answer{{101, 2, 0, 1, 2, 0, 0, 0, 0, 0, 0, 1, 0}, {}, {}};
    return Answer{{102, 2}, {}, {}};
  };
  list({.set_type = rdf_between::elements, .name1 = "O", .name2 = "H", .components = true}, 101);
  ASSERT_EQ(status, 0);
  EXPECT_THAT(blocks.at_oids.span(), ElementsAre(101, 104, 102, 103));
  EXPECT_THAT(blocks.nxyz.span(), ElementsAre(1, 0, 1, 2));
  EXPECT_THAT(blocks.trans.span(), ElementsAre(0, 0, 0, 0, 1, -1, 0, 0, 0, 0, 0, 0));
  EXPECT_THAT(blocks.mol_period.span(), ElementsAre(102, 0));
  EXPECT_THAT(blocks.mol_basis.span().first(9), ElementsAre(0, 1, 2, 0, 0, 0, 0, 0, 0));
  EXPECT_EQ(gr_i_.set_mode, pair_sets::between_two);
  EXPECT_EQ(gr_i_.set1_count, 1);
  EXPECT_EQ(gr_i_.set2_count, 3);
  EXPECT_EQ(gr_i_.self_count, 0);
}

TEST_F(RdfAtoms, of_a_count_that_no_core_has_are_refused) {
  constexpr std::int32_t absurd = 2147483647;
  core.answers["kvD_SEL_NumSelected"] = core.answers["kvD_MOD_NumAtoms"] = [](const Inputs&) {
    return Answer{{absurd}, {}, {}};
  };
  list({.set_type = rdf_between::selected}, 0);
  EXPECT_EQ(status, 1);
  status = 0;
  core.answers["kvA_CON_MolecularList"] = [](const Inputs& in) {
    EXPECT_EQ(in[1], "4") << "the room is that of the model";
    return Answer{{101, 102, 103, 104, absurd, 1, 1, 1, 1, 1}, {}, {}};
  };
  list({.components = true}, 0);
  EXPECT_EQ(status, 1);
  std::int32_t error = 0, count = -1;
  count_atoms(9, with_images, count, error);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(error, impossible_count);
}

TEST_F(RdfAtoms, of_a_selection_are_parents_and_find_their_molecules_by_a_walk) {
  core.answers["kvD_SEL_NumSelected"] = [](const Inputs&) { return Answer{{4}, {}, {}}; };
  core.answers["kvD_SEL_FindSelected"] = [](const Inputs&) { return Answer{{204, 104, 102, 103, 4}, {}, {}}; };
  // More atoms than there is room for at first.
  core.answers["kvA_CON_Molecule"] = [](const Inputs& in) {
    Answer answer{std::deque<std::int32_t>(std::stoul(in[1]), 101), {}, {}};
    answer.integers[0] = std::stoi(in[0]);
    if (in[0] == "104" && in[1] == "70") answer.integers[69] = 303;
    answer.integers.push_back(in[0] == "104" ? 70 : 1);
    return answer;
  };
  list({.set_type = rdf_between::selected, .components = true}, 100);
  ASSERT_EQ(status, 0);
  EXPECT_THAT(blocks.at_oids.span(), ElementsAre(103, 104, 102));
  EXPECT_THAT(blocks.nxyz.span(), ElementsAre(2, 1, 0, 0));
  EXPECT_EQ(gr_i_.mol_count, 2);
  EXPECT_EQ(gr_i_.self_count, 3);
  EXPECT_EQ(gr_i_.set_mode, pair_sets::within_one);
}

TEST_F(RdfAtoms, like_names_make_one_set_and_count_all_listed_atoms) {
  list({.set_type = rdf_between::fftypes, .name1 = "h*", .name2 = "h*"}, 0);
  ASSERT_EQ(status, 0);
  EXPECT_THAT(blocks.at_oids.span(), ElementsAre(102, 103));
  EXPECT_EQ(gr_i_.self_count, 4);
  EXPECT_EQ(gr_i_.set_mode, pair_sets::within_one);
}

TEST_F(RdfAtoms, sets_that_make_no_pairs_are_refused) {
  struct Case {
    std::int32_t set_type;
    const char *name1, *name2;
    std::int32_t periodic_type;
    std::int32_t listed;
    const char* from_trajectory;
    const char* from_model;
  };
  const Case cases[]{
      {rdf_between::all_atoms, "", "", 0, 1, "PATHSTAT_ERROR_82", "ice PATHSTAT_ERROR_89"},
      {rdf_between::all_atoms, "", "", 100, 0, "PATHSTAT_ERROR_83", "ice PATHSTAT_ERROR_90"},
      {rdf_between::elements, "O", "C", 0, 4, "PATHSTAT_ERROR_84", "ice PATHSTAT_ERROR_91"},
      {rdf_between::elements, "C", "C", 0, 4, "PATHSTAT_ERROR_85", "ice PATHSTAT_ERROR_91"},
      {rdf_between::fftypes, "hw", "c", 0, 4, "PATHSTAT_ERROR_84", "ice PATHSTAT_ERROR_91"},
      {rdf_between::fftypes, "c", "c", 0, 4, "PATHSTAT_ERROR_85", "ice PATHSTAT_ERROR_91"},
      {rdf_between::all_atoms, "", "", 100, 1, "", ""},
      {rdf_between::elements, "O", "O", 0, 4, "", ""},
  };
  for (const auto& each : cases) {
    core.answers["kvD_MOD_AtomList"] = [&](const Inputs&) { return Answer{{101, 102, 103, 104, each.listed}, {}, {}}; };
    const RdfRequest request{.set_type = each.set_type, .name1 = each.name1, .name2 = each.name2};
    for (const bool model : {false, true}) {
      core.forget();
      status = 0;
      list(request, each.periodic_type, model ? model_refusals : trajectory_refusals);
      const std::string expected = model ? each.from_model : each.from_trajectory;
      EXPECT_EQ(status, expected.empty() ? 0 : 1);
      if (expected.empty()) {
        EXPECT_TRUE(core.messages().empty());
      } else {
        EXPECT_THAT(core.messages(), ElementsAre(expected));
      }
    }
  }
}

TEST_F(RdfAtoms, molecule_numbers_that_cannot_be_are_refused) {
  core.answers["kvA_CON_MolecularList"] = [](const Inputs&) {
    return Answer{{101, 102, 103, 104, 4, 1, 1, 2, 900000, 2, 0}, {}, {}};
  };
  list({.set_type = rdf_between::all_atoms, .components = true}, 0);
  EXPECT_EQ(status, 1);
}

}  // namespace
}  // namespace pathstat
