#include "desk/model/model_import.h"

#include "desk/model/model_export.h"
#include "small_models.h"
#include "support/parallel.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const auto at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

TEST(ModelImport, reads_every_attribute_of_a_model) {
  const auto result = imported(replaced(water_pair, " (A I Bond",
                                        " (A V Velocity ((1 0 0) (0 1 0) (0 0 1) (0 0 0) (0 0 "
                                        "0) (0 0 -2)))\n (A I Bond"));
  ASSERT_THAT(result.problem, IsEmpty());
  ASSERT_THAT(result.models, SizeIs(1));
  const auto& model = result.models.front();
  EXPECT_EQ(model.name, "pair");
  EXPECT_EQ(model.periodic_type, 100);
  EXPECT_EQ(model.cell, (Cell{{{10, 0, 0}, {0, 10, 0}, {0, 0, 10}}}));
  EXPECT_THAT(model.ids, ElementsAre(11, 12, 13, 21, 22, 23));
  EXPECT_THAT(model.elements, ElementsAre(8, 1, 1, 8, 1, 1));
  EXPECT_EQ(model.names[4], "H3");
  EXPECT_EQ(model.ff_types[3], "OX");
  EXPECT_EQ(model.residues[5], "WAT");
  EXPECT_THAT(model.residue_ids, ElementsAre(1, 1, 1, 2, 2, 2));
  EXPECT_THAT(model.charges, ElementsAre(-0.8, 0.4, 0.4, -0.8, 0.4, 0.4));
  EXPECT_THAT(model.masses, ElementsAre(16, 1, 1, 16, 1, 1));
  EXPECT_THAT(model.occupancies, ElementsAre(1, 1, 1, 1, 1, 0.5));
  EXPECT_EQ(model.positions[3], (Vector3{1, 2, 9.5}));
  EXPECT_EQ(model.vectors.at("Velocity")[5], (Vector3{0, 0, -2}));
  EXPECT_THAT(model.movable, ElementsAre(1, 1, 1, 0, 1, 1));
  EXPECT_THAT(model.bonds, ElementsAre(Pair(0u, 1u), Pair(0u, 2u), Pair(3u, 4u), Pair(3u, 5u)));
  ASSERT_THAT(model.monitors, SizeIs(5));
  EXPECT_EQ(model.monitors[1].type, plane_monitor);
  EXPECT_THAT(model.monitors[1].atoms, ElementsAre(1, 0, 2, 3, 4, 5));
  EXPECT_EQ(model.monitors[4].convention, 4);
}

TEST(ModelImport, fills_in_what_may_be_missing) {
  const auto result = imported(
      "(1 Model\n (A I PeriodicType 0)\n (A I AtomId (5 0))\n (A C Element (cl X))\n (A V XYZ ((0 0 0) (1 1 1)))\n)\n");
  ASSERT_THAT(result.problem, IsEmpty());
  const auto& model = result.models.front();
  EXPECT_EQ(model.name, "model");
  EXPECT_EQ(model.names[0], "Cl5");
  EXPECT_EQ(model.ff_types[1], "");
  EXPECT_THAT(model.masses, ElementsAre(35.453, 0));
  EXPECT_THAT(model.charges, ElementsAre(0, 0));
  EXPECT_THAT(model.occupancies, ElementsAre(1, 1));
  EXPECT_THAT(model.movable, ElementsAre(1, 1));
}

TEST(ModelImport, takes_all_models_and_passes_over_what_means_nothing_here) {
  const std::string model =
      "(7 Model m\n (A I PeriodicType 0)\n (A I AtomId 1)\n (A C Element He)\n (A V XYZ (0 0 1))\n"
      " (A C Colour red)\n (8 Style\n  (A I AtomId (1 1))\n )\n (9 Note n)\n)\n";
  const auto result = imported("(1 Header\n)\n" + model + model);
  ASSERT_THAT(result.problem, IsEmpty());
  ASSERT_THAT(result.models, SizeIs(2));
  EXPECT_EQ(result.models[1].positions[0], (Vector3{0, 0, 1}));
}

struct FaultCase {
  const char* from;
  const char* to;
  int line;
  const char* attribute;
  const char* text;
};
#define INVERTED " (A D Rotation (1 0 0 0 1 0 0 0 1 -1 0 0 0 -1 0 0 0 -1))\n (A D Translation (0 0 0 0 0 0))\n"

const FaultCase cases[] = {
    {" (A I PeriodicType 100)\n", "", 1, "PeriodicType", "missing"},
    {"PeriodicType 100", "PeriodicType 103", 2, "PeriodicType", "103"},
    {"PeriodicType 100", "PeriodicType (0 0)", 2, "PeriodicType", "2 values"},
    {" (A V Cell ((10 0 0) (0 10 0) (0 0 10)))\n", "", 1, "Cell", "missing"},
    {"Cell ((10 0 0) (0 10 0) (0 0 10))", "Cell ((10 0 0) (0 10 0))", 3, "Cell", "2 vectors"},
    {"(0 0 10)))", "(0 20 0)))", 3, "Cell", "spans no space"},
    {" (A I AtomId (11 12 13 21 22 23))\n", "", 1, "AtomId", "missing"},
    {"21 22 23", "21 22 12", 4, "AtomId", "identifier 12 more than once"},
    {"21 22 23", "21 22 -3", 4, "AtomId", "-3"},
    {"21 22 23", "21 22 99999999999", 4, "AtomId", "integers"},
    {"(A I AtomId", "(A D AtomId", 4, "AtomId", "another type"},
    {"(O1 H1 H2 O2 H3 H4)", "(O1 H1 H2)", 5, "Name", "3 values, but the model has 6"},
    {"(O H H O H H)", "(O H H O H Hx)", 6, "Element", "Hx for atom 6"},
    {"-0.8 0.4 0.4 -0.8 0.4 0.4", "-0.8 0.4 0.4 -0.8 0.4 0.4 0", 8, "Charge", "7 values"},
    {"-0.8 0.4 0.4 -0.8 0.4 0.4", "nan 0.4 0.4 -0.8 0.4 0.4", 8, "Charge", "not finite"},
    {"(A D Mass (16", "(A D Mass (-16", 9, "Mass", "negative"},
    {"(1 3 9.5)))", "(1 3)))", 11, "XYZ", "three numbers"},
    {"(1 2 9.5) ", "", 11, "XYZ", "5 values"},
    {" (A I Movable", " (A I AtomId (1 2 3 4 5 6))\n (A I Movable", 12, "AtomId", "line 10"},
    {"(1 2 1 3 4 5 4 6)", "(1 2 1 3 4 5 4)", 13, "Bond", "partner"},
    {"(1 2 1 3 4 5 4 6)", "(1 2 1 3 4 5 4 7)", 13, "Bond", "position 7"},
    {"(1 2 1 3 4 5 4 6)", "(1 2 1 3 4 5 0 6)", 13, "Bond", "position 0"},
    {"(1 2 1 3 4 5 4 6)", "(1 2 1 3 4 5 6 6)", 13, "Bond", "with itself"},
    {" (A I ResidueId", " (A D Rotation (1 0 0 0 1 0 0 0 1))\n (A I ResidueId", 1, "Translation", "0 values"},
    {" (A I ResidueId", " (A D Rotation (1 0 0 0 1 0 0 0))\n (A I ResidueId", 15, "Rotation", "nine"},
    {" (A I ResidueId", " (A D Rotation (-1 0 0 0 1 0 0 0 1))\n (A D Translation (0 0 0))\n (A I ResidueId", 15,
     "Rotation", "identity"},
    {" (A I ResidueId", " (A I BondCell (0 0 0))\n (A I ResidueId", 15, "BondCell", "3 values for 4 bonds"},
    {" (A I ResidueId", " (A I ImageOf 1)\n (A I ResidueId", 15, "ImageOf", "with symmetry"},
    {" (A I ResidueId", INVERTED " (A I ImageOf (1 1 1 1 1 1))\n (A I ResidueId", 17, "ImageOf", "more images"},
    {" (A I ResidueId", INVERTED " (A I ImageOf (1 2))\n (A I ImageOperator 2)\n (A I ResidueId", 18, "ImageOperator",
     "1 values for 2 images"},
    {" (A I ResidueId", INVERTED " (A I ImageOf 1)\n (A I ImageOperator 2)\n (A I ImageCell (0 0))\n (A I ResidueId",
     19, "ImageCell", "2 values for 1 images"},
    {" (A I ResidueId", INVERTED " (A I ImageOf 6)\n (A I ImageOperator 2)\n (A I ImageCell (0 0 0))\n (A I ResidueId",
     17, "ImageOf", "position 6"},
    {" (A I ResidueId", INVERTED " (A I ImageOf 1)\n (A I ImageOperator 3)\n (A I ImageCell (0 0 0))\n (A I ResidueId",
     18, "ImageOperator", "number 3"},
    {"(A I Type 60)", "(A I Type 62)", 17, "Type", "62"},
    {"  (A I Type 60)\n", "", 16, "Type", "missing"},
    {"(A I Atoms (1 4))", "(A I Atoms (1 4 2))", 18, "Atoms", "3 positions instead of 2"},
    {"(A I Atoms (1 4))", "(A I Atoms (1 40))", 18, "Atoms", "position 40"},
    {"(A I Convention 4)", "(A I Convention 3)", 35, "Convention", "3 instead of 1, 2 or 4"},
    {"  (A I Convention 4)\n", "", 32, "Convention", "0 instead of 1, 2 or 4"},
    {" (A C Name", " A C Name", 5, "", "neither an object nor an attribute"},
    {"  (A I Convention 4)\n )\n)\n", "  (A I Convention 4)\n )\n", 37, "", "ends inside an object"}};

TEST(ModelFault, names_file_line_and_attribute_and_gives_no_model) {
  for (const auto& fault : cases) {
    SCOPED_TRACE(fault.to);
    // A good model in front must not come in either.
    const std::string good =
        "(1 Model g\n (A I PeriodicType 0)\n (A I AtomId 1)\n (A C Element He)\n (A V XYZ (0 0 0))\n)\n";
    const auto result = imported(good + replaced(water_pair, fault.from, fault.to));
    EXPECT_THAT(result.models, IsEmpty());
    EXPECT_THAT(result.problem, AllOf(HasSubstr("model.qfx, line " + std::to_string(fault.line + 6) + ":"),
                                      HasSubstr(fault.attribute), HasSubstr(fault.text)));
  }
}

TEST(ModelImport, tells_a_missing_file_and_one_without_a_model) {
  EXPECT_THAT(read_model_file("/nowhere/x.qfx").problem, HasSubstr("/nowhere/x.qfx cannot be opened: No such file"));
  EXPECT_THAT(imported("(1 Frame 1\n)\n").problem, HasSubstr("holds no model"));
}

TEST(ModelExport, writes_what_the_import_reads_back_to_the_same_file) {
  const ScratchFolder folder;
  const auto text =
      replaced(replaced(water_pair, "0.5) (1 3 9.5)", "0.50000000000000011) (1 3 -1E-300)"), " (A I Bond",
               " (A D Rotation (1 0 0 0 1 0 0 0 1 -1 0 0 0 -1 0 0 0 -1))\n (A D Translation (0 0 0 0.5 0 0.25))\n (A V "
               "Velocity ((1 0 0) (0 1 0) (0 0 1) (0 0 0) (0 0 0) (0 0 -2)))\n (A I Bond");
  DataModel data;
  auto first = imported(text);
  ASSERT_THAT(first.problem, IsEmpty());
  const auto id = data.add_model(std::move(first.models.front()));
  ASSERT_EQ(data.model(id)->data.atoms(), 12u);
  ASSERT_THAT(write_model_file(data.model(id)->data, folder.file("once.qfx")), IsEmpty());

  auto second = read_model_file(folder.file("once.qfx"));
  ASSERT_THAT(second.problem, IsEmpty());
  const auto& model = second.models.front();
  const auto again = imported(text);
  const auto& original = again.models.front();
  EXPECT_EQ(model.positions, original.positions);
  EXPECT_EQ(model.symmetry, original.symmetry);
  EXPECT_EQ(model.vectors, original.vectors);
  EXPECT_EQ(model.bonds, original.bonds);
  EXPECT_EQ(model.charges, original.charges);
  EXPECT_EQ(model.occupancies, original.occupancies);
  EXPECT_EQ(model.movable, original.movable);
  EXPECT_EQ(model.residue_ids, original.residue_ids);
  EXPECT_EQ(model.names[3], "O2");
  EXPECT_EQ(model.ff_types[3], "OX");

  const auto copy = data.add_model(std::move(second.models.front()));
  ASSERT_THAT(write_model_file(data.model(copy)->data, folder.file("twice.qfx")), IsEmpty());
  EXPECT_EQ(folder.read("once.qfx"), folder.read("twice.qfx"));
}

TEST(ModelImport, reads_long_values_alike_on_any_number_of_threads) {
  constexpr std::size_t atoms = 100'000;  // names and elements of several hundred thousand letters
  std::string ids, names, elements, places;
  for (std::size_t k = 0; k < atoms; ++k) {
    const auto number = std::to_string(k + 1);
    ids += ' ' + number;
    names += (k % 3 == 0 ? " W" : " atom_") + std::to_string(k % 70'001);
    elements += k % 2 == 0 ? " Cl" : " H";
    places += '(' + number + " 0 0)";
  }
  const auto file = [&](const std::string& symbols) {
    return "(1 Model\n (A I PeriodicType 0)\n (A I AtomId (" + ids + "))\n (A C Name (" + names +
           "))\n (A C Element (" + symbols + "))\n (A V XYZ (" + places + "))\n)\n";
  };
  const auto usual = thread_count();
  for (const int threads : {1, 2, 3, 8}) {
    set_thread_count(threads);
    const auto result = imported(file(elements));
    ASSERT_THAT(result.problem, IsEmpty());
    const auto& model = result.models.front();
    ASSERT_EQ(model.names.size(), atoms);
    for (std::size_t k = 0; k < atoms; ++k) {
      ASSERT_EQ(model.names[k], (k % 3 == 0 ? "W" : "atom_") + std::to_string(k % 70'001));
      ASSERT_EQ(model.names.find(model.names[k]), model.names.key(k));
      ASSERT_EQ(model.elements[k], k % 2 == 0 ? 17 : 1);
    }
    EXPECT_EQ(model.names.find("atom_"), std::nullopt);
    auto wrong = elements;
    wrong.replace(wrong.size() - 4, 2, "Qq");
    EXPECT_THAT(imported(file(wrong)).problem, HasSubstr("has Qq for atom 99999"));
  }
  set_thread_count(static_cast<std::int64_t>(usual));
}

TEST(ModelExport, reads_back_a_model_of_one_atom) {
  const ScratchFolder folder;
  DataModel data;
  auto model = carbon_model({{1, 2, 3}});
  model.name = "one (1)";
  const auto id = data.add_model(std::move(model));
  ASSERT_THAT(write_model_file(data.model(id)->data, folder.file("one.qfx")), IsEmpty());
  const auto result = read_model_file(folder.file("one.qfx"));
  ASSERT_THAT(result.problem, IsEmpty());
  EXPECT_EQ(result.models.front().name, "one__1_");
  EXPECT_EQ(result.models.front().positions.front(), (Vector3{1, 2, 3}));
}

TEST(ModelExport, lets_no_line_end_of_a_name_break_its_lines) {
  const ScratchFolder folder;
  DataModel data;
  auto model = carbon_model({{0, 0, 0}, {1, 0, 0}});
  model.name = "one\ntwo\r";
  const auto id = data.add_model(std::move(model));
  ASSERT_THAT(write_model_file(data.model(id)->data, folder.file("name.qfx")), IsEmpty());
  const auto result = read_model_file(folder.file("name.qfx"));
  ASSERT_THAT(result.problem, IsEmpty());
  EXPECT_EQ(result.models.front().name, "one_two_");

  auto& names = data.model(id)->data.names;
  names = {};
  names.assign(2, "C\n1");
  EXPECT_THAT(write_model_file(data.model(id)->data, folder.file("word.qfx")), HasSubstr("can't be stored"));
}

TEST(ModelExport, leaves_the_old_file_alone_when_it_fails) {
  const ScratchFolder folder;
  folder.write("kept.qfx", "old");
  DataModel data;
  auto model = carbon_model({{0, 0, 0}, {1, 0, 0}});
  model.names = {};
  model.names.assign(2, "C(1");
  const auto id = data.add_model(std::move(model));
  EXPECT_THAT(write_model_file(data.model(id)->data, folder.file("kept.qfx")), HasSubstr("C(1"));
  EXPECT_EQ(folder.read("kept.qfx"), "old");
  EXPECT_FALSE(std::filesystem::exists(folder.file("kept.qfx.part")));
  EXPECT_THAT(write_model_file(data.model(id)->data, "/nowhere/x.qfx"), HasSubstr("/nowhere/x.qfx"));
}

}  // namespace
}  // namespace pathstat::desk
