#include <deque>

#include "extraction/dipole_charges.h"
#include "extraction/dipole_moment.h"
#include "recording_core.h"
#include "state/analysis_settings.h"
#include "testing.h"

namespace pathstat {
namespace {

/// Charged atoms of one sign with storage of their own.
struct Charges {
  std::vector<std::int32_t> tags, atoms, images;
  std::vector<double> charges;
  ChargeList list() const { return {tags, atoms, images, charges}; }
};

// Four atoms on the corners of a box, in a cell whose vectors are far from right angles.
const std::vector<double> xyz{0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3};
constexpr Matrix3 cell{10, 1, 0, 0, 20, 2, 3, 0, 30};

DipoleMoment moment_of(std::int32_t type, std::int32_t molecule, const Charges& positive, const Charges& negative,
                       std::int32_t wanted_status = 0) {
  DipoleMoment moment;
  EXPECT_EQ(status_of(calcdipole_, xyz, type, cell, molecule, positive.list(), negative.list(), moment), wanted_status);
  return moment;
}

TEST(CalcDipole, moves_atoms_by_their_images_in_a_cell_only) {
  const Charges positive{{1}, {2}, {1, -1, 2}, {1}};
  const Charges negative{{1}, {1}, {0, 0, 0}, {-1}};
  EXPECT_THAT(moment_of(100, 1, positive, negative).positive_centre, ElementsAre(1 + 10 + 6, 1 - 20, -2 + 60));
  EXPECT_THAT(moment_of(0, 1, positive, negative).positive_centre, ElementsAre(1, 0, 0));
}

TEST(CalcDipole, passes_over_atoms_of_other_molecules) {
  const Charges positive{{1, 2}, {2, 3}, {0, 0, 0, 0, 0, 0}, {1, 5}};
  const Charges negative{{1, 3}, {1, 4}, {0, 0, 0, 0, 0, 0}, {-1, -7}};
  EXPECT_THAT(moment_of(0, 1, positive, negative).dipole, ElementsAre(4.802, 0, 0));
  const auto ion = moment_of(0, 2, positive, negative);
  EXPECT_THAT(ion.dipole, ElementsAre(0, 0, 0)) << "of one sign";
  EXPECT_EQ(ion.net_charge, 5);
  EXPECT_EQ(moment_of(0, 4, positive, negative).net_charge, 0) << "of no atom";
}

TEST(CalcDipole, refuses_a_place_outside_the_coordinates) {
  const Charges negative{{1}, {1}, {0, 0, 0}, {-1}};
  for (const std::int32_t place : {0, 5, -3}) moment_of(0, 1, {{1}, {place}, {0, 0, 0}, {1}}, negative, 1);
}

/// A Core whose model has these atoms selected, of molecules that it numbers in its own way.
class SelectedAtoms : public testing::Test {
 protected:
  void select(std::deque<std::int32_t> atoms, std::deque<std::int32_t> tags) {
    const auto count = static_cast<std::int32_t>(atoms.size());
    core_.answers["kvD_SEL_NumSelected"] = [=](const auto&) { return RecordingCore::Answer{{count}, {}, {}}; };
    atoms.push_back(count);
    core_.answers["kvD_SEL_FindSelected"] = [=](const auto&) { return RecordingCore::Answer{atoms, {}, {}}; };
    tags.push_back(3);
    core_.answers["kvA_CON_MolecularTag"] = [=](const auto&) { return RecordingCore::Answer{tags, {}, {}}; };
  }
  RecordingCore core_;
};

TEST_F(SelectedAtoms, are_grouped_by_molecules_in_the_order_of_their_first_atoms) {
  select({21, 22, 23, 24, 25}, {7, 3, 7, 9, 3});
  std::int32_t status = -1;
  const DipoleAtoms found(5, periodic_type::none, {"SELECTED", "MOLECULES"}, status);
  ASSERT_EQ(status, 0);
  EXPECT_THAT(found.atoms(), ElementsAre(21, 23, 22, 25, 24));
  EXPECT_THAT(found.tags(), ElementsAre(1, 1, 2, 2, 3));
  EXPECT_EQ(found.molecules(), 3);
}

TEST_F(SelectedAtoms, are_asked_about_once_however_many_there_are) {
  std::deque<std::int32_t> atoms, tags;
  for (std::int32_t k = 0; k < 10000; ++k) atoms.push_back(k + 1), tags.push_back(k % 2500);
  select(atoms, tags);
  std::int32_t status = -1;
  const DipoleAtoms found(5, periodic_type::none, {"SELECTED", "MOLECULES"}, status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(found.molecules(), 2500);
  EXPECT_THAT(core_.calls("kvA_CON"), SizeIs(1));
}

TEST_F(SelectedAtoms, as_one_group_need_no_molecules) {
  select({21, 22}, {});
  std::int32_t status = -1;
  const DipoleAtoms found(5, periodic_type::none, {"SELECTED", "ATOMS"}, status);
  ASSERT_EQ(status, 0);
  EXPECT_THAT(found.tags(), ElementsAre(1, 1));
  EXPECT_THAT(core_.calls("kvA_CON"), SizeIs(0));
}

TEST(ListedMolecules, that_do_not_fit_together_are_refused) {
  // Two atoms, their number, their tags, the number of molecules.
  for (const auto& reply : std::vector<std::deque<std::int32_t>>{
           {11, 12, 2, 1, 3, 2}, {11, 12, 2, 0, 1, 1}, {11, 12, 2, 1, 1, -1}, {11, 12, 2, 1, 1, 1000000}}) {
    RecordingCore core;
    core.answers["kvD_MOD_NumAtoms"] = [](const auto&) { return RecordingCore::Answer{{2}, {}, {}}; };
    core.answers["kvA_CON_MolecularList"] = [&](const auto&) { return RecordingCore::Answer{reply, {}, {}}; };
    std::int32_t status = -1;
    const DipoleAtoms found(5, periodic_type::none, {"ALL", "MOLECULES"}, status);
    EXPECT_EQ(status, 1);
  }
}

}  // namespace
}  // namespace pathstat
