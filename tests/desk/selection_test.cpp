#include "desk/selection/selection.h"

#include <tuple>

#include "desk/script/script.h"
#include "desk/selection/near_atoms.h"
#include "desk/selection/selection_words.h"
#include "small_models.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

/// The pair of water molecules, as two models: the second model of another name.
class TwoPairs {
 public:
  TwoPairs() {
    for (const auto* name : {"pair", "other"}) {
      auto result = imported(water_pair);
      result.models.front().name = name;
      data.add_model(std::move(result.models.front()));
    }
  }

  ChosenAtoms choose(std::string_view text, const AtomGroups& groups = {}) {
    const auto read = read_selection(text, groups);
    EXPECT_THAT(read.problem, IsEmpty()) << text;
    const auto models = data.models();
    return read.selection ? chosen_atoms(data, models, *read.selection) : ChosenAtoms{};
  }

  DataModel data;
};

struct Case {
  const char* text;
  AtomFlags flags;
};

TEST(Selection, chooses_by_each_word) {
  TwoPairs pairs;
  for (const auto& [text, flags] : {
           Case{"all", {1, 1, 1, 1, 1, 1}},
           Case{"none", {0, 0, 0, 0, 0, 0}},
           Case{"element o", {1, 0, 0, 1, 0, 0}},
           Case{"element Fe H", {0, 1, 1, 0, 1, 1}},
           Case{"fftype OX nobody", {0, 0, 0, 1, 0, 0}},
           Case{"type HW", {0, 1, 1, 0, 1, 1}},
           Case{"name H4,O1", {1, 0, 0, 0, 0, 1}},
           Case{"name \"H4\" 'O1' {O2}", {1, 0, 0, 1, 0, 1}},
           Case{"name H*", {0, 1, 1, 0, 1, 1}},
           Case{"name ?1", {1, 1, 0, 0, 0, 0}},
           Case{"name \"H*\"", {0, 0, 0, 0, 0, 0}},
           Case{"residue WAT", {1, 1, 1, 1, 1, 1}},
           Case{"resname W*", {1, 1, 1, 1, 1, 1}},
           Case{"ids 22-30,12-13 21", {0, 1, 1, 1, 1, 1}},
           Case{"id 1-30 12", {1, 1, 1, 1, 1, 1}},
           Case{"id 12:21", {0, 1, 1, 1, 0, 0}},
           Case{"index 2-3 6", {0, 1, 1, 0, 0, 1}},
           Case{"resid 2", {0, 0, 0, 1, 1, 1}},
           Case{"resid >= 2", {0, 0, 0, 1, 1, 1}},
           Case{"molecule 1", {1, 1, 1, 0, 0, 0}},
           Case{"mass > 2", {1, 0, 0, 1, 0, 0}},
           Case{"mass<=1", {0, 1, 1, 0, 1, 1}},
           Case{"charge < 0", {1, 0, 0, 1, 0, 0}},
           Case{"charge !=-0.8", {0, 1, 1, 0, 1, 1}},
           Case{"z = 0.5", {0, 0, 0, 0, 1, 0}},
           // The oxygen at z = 9.5 is 1.5 from z = 1 and 1 from z = 0.5 by the face of the cell.
           Case{"within 1 of name O1", {1, 1, 1, 0, 0, 0}},
           Case{"within 1.2 of name O2", {0, 0, 0, 1, 1, 1}},
           Case{"within 1.6 of name H1", {1, 1, 1, 1, 1, 0}},
           Case{"within 0 of index 1", {1, 0, 0, 0, 0, 0}},
           Case{"within 3 of none", {0, 0, 0, 0, 0, 0}},
           Case{"same residue as name H2", {1, 1, 1, 0, 0, 0}},
           Case{"same molecule as (name H2 or name O1)", {1, 1, 1, 0, 0, 0}},
           Case{"same element as index 2", {0, 1, 1, 0, 1, 1}},
           Case{"same fftype as index 4", {0, 0, 0, 1, 0, 0}},
           Case{"bonded to element O", {0, 1, 1, 0, 1, 1}},
           Case{"bonded to name H1", {1, 0, 0, 0, 0, 0}},
           Case{"element O and name O2", {0, 0, 0, 1, 0, 0}},
           // And holds closer than or, and what takes a selection closer than both.
           Case{"name O1 or element H and resid 2", {1, 0, 0, 0, 1, 1}},
           Case{"(name O1 or element H) and resid 2", {0, 0, 0, 0, 1, 1}},
           Case{"not element O and resid 1", {0, 1, 1, 0, 0, 0}},
           Case{"not(element O and resid 1)", {0, 1, 1, 1, 1, 1}},
           Case{"not not not element O", {0, 1, 1, 0, 1, 1}},
           Case{"bonded to name O1 and name H2", {0, 0, 1, 0, 0, 0}},
           Case{"within 1 of(name O1)and(element H)", {0, 1, 1, 0, 0, 0}},
       }) {
    const auto chosen = pairs.choose(text);
    EXPECT_THAT(chosen.flags, ElementsAre(flags, flags)) << text;
    EXPECT_EQ(chosen.count, 2U * static_cast<std::size_t>(std::count(flags.begin(), flags.end(), 1))) << text;
  }
}

TEST(Selection, tells_what_no_atom_fits) {
  TwoPairs pairs;
  EXPECT_THAT(pairs.choose("resname WTA and element Fe O").notes,
              ElementsAre("no atom has the residue name WTA; did you mean WAT?", "no atom is Fe"));
  EXPECT_THAT(pairs.choose("name X*").notes, ElementsAre("no atom has the name X*"));
  // A word that fits an atom of another model is no mistake.
  auto carbon = carbon_model({{0, 0, 0}});
  pairs.data.add_model(std::move(carbon));
  EXPECT_THAT(pairs.choose("element C O").notes, IsEmpty());
}

struct ProblemCase {
  const char* text;
  const char* sentence;
  std::string mark;  ///< the last line, behind its indentation
};

TEST(Selection, points_at_the_word_that_is_wrong) {
  const AtomGroups groups{{"water", read_selection("resname WAT").selection}};
  for (const auto& [text, sentence, mark] : {
           ProblemCase{"", "a selection is missing here", "^"},
           ProblemCase{"element O and", "a selection is missing here", "             ^"},
           ProblemCase{"and element O", "a selection is missing in front of and", "^~~"},
           ProblemCase{"elemnt O", "did you mean element?", "^~~~~~"},
           ProblemCase{"not watr", "did you mean water?", "    ^~~~"},
           ProblemCase{"colour red", "these are words: element", "^~~~~~"},
           ProblemCase{"element", "element needs what to select", "^~~~~~~"},
           ProblemCase{"element O Qq", "Qq is not an element", "          ^~"},
           ProblemCase{"all O", "and or or is missing in front of O", "    ^"},
           ProblemCase{"name O not name H", "and or or is missing in front of not", "       ^~~"},
           ProblemCase{"(name O", "this parenthesis is not closed", "^"},
           ProblemCase{"name O)", "no parenthesis is open here", "      ^"},
           ProblemCase{"index 5-", "5- is not a number or a range", "      ^~"},
           ProblemCase{"index 7-3", "7-3 is not a number or a range", "      ^~~"},
           ProblemCase{"index 1-2-3", "1-2-3 is not a number or a range", "      ^~~~~"},
           ProblemCase{"mass", "mass needs a comparison", "    ^"},
           ProblemCase{"mass 2", "mass needs a comparison", "     ^"},
           ProblemCase{"mass >", "a number is missing behind mass >", "      ^"},
           ProblemCase{"mass > x", "a number is missing behind mass >", "       ^"},
           ProblemCase{"within of name O", "within takes a distance", "       ^~"},
           ProblemCase{"within -1 of name O", "within takes a distance", "       ^~"},
           ProblemCase{"within 1e400 of name O", "within takes a distance", "       ^~~~~"},
           ProblemCase{"within 3 name O", "of is missing here", "         ^~~~"},
           ProblemCase{"same colour as all", "same takes one of residue, molecule", "     ^~~~~~"},
           ProblemCase{"same residue all", "as is missing here", "             ^~~"},
           ProblemCase{"name \"O", "this quote has no end", "     ^~"},
           ProblemCase{"name \xc3\x84 or colour", "these are words: element", "          ^~~~~~"},
       }) {
    const auto read = read_selection(text, groups);
    EXPECT_FALSE(read.selection) << text;
    EXPECT_THAT(read.problem, HasSubstr(sentence)) << text;
    EXPECT_THAT(read.problem, EndsWith("\n    " + mark)) << text;
  }
}

TEST(Selection, of_any_depth_and_length_ends_with_a_word) {
  const auto repeated = [](std::string_view part, int count) {
    std::string text;
    for (int k = 0; k < count; ++k) text += part;
    return text;
  };
  EXPECT_THAT(read_selection(repeated("not ", 1000000) + "all").problem, StartsWith("this goes too deep"));
  EXPECT_THAT(read_selection(repeated("(", 1000000)).problem, StartsWith("this goes too deep"));
  EXPECT_THAT(read_selection(repeated("all or ", 20000) + "all").problem, StartsWith("a selection has at most 10000"));
  EXPECT_THAT(read_selection(repeated("all or ", 5000) + "all").problem, IsEmpty());
  const auto problem = read_selection("elemnt " + repeated("O ", 100000)).problem;
  EXPECT_LT(problem.size(), 400U);
  // Groups within groups grow as a power of two.
  AtomGroups groups{{"g", read_selection("all").selection}};
  std::string trouble;
  for (int k = 0; k < 50 && trouble.empty(); ++k) {
    auto read = read_selection("g and g", groups);
    trouble = read.problem;
    if (read.selection) groups["g"] = read.selection;
  }
  EXPECT_THAT(trouble, StartsWith("a selection has at most"));
}

TEST(Selection, takes_parentheses_in_names_and_quotes_as_they_stand) {
  auto model = carbon_model({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}});
  model.names = {};
  for (const auto* name : {"H(1)", "and", "c="}) model.names.push_back(name);
  DataModel data;
  data.add_model(std::move(model));
  for (const auto& [text, flags] : {Case{"name H(1)", {1, 0, 0}}, Case{"(name H(1))", {1, 0, 0}},
                                    Case{"name 'and'", {0, 1, 0}}, Case{"name c= H(1)", {1, 0, 1}}}) {
    const auto read = read_selection(text);
    ASSERT_THAT(read.problem, IsEmpty()) << text;
    EXPECT_THAT(chosen_atoms(data, data.models(), *read.selection).flags, ElementsAre(flags)) << text;
  }
}

TEST(Residues, hang_together_where_numbers_are_used_again) {
  auto model = carbon_model(std::vector<Vector3>(7));
  for (std::size_t k = 0; k < 7; ++k) model.positions[k] = {10.0 * static_cast<double>(k), 0, 0};
  model.residue_ids = {1, 1, 2, 1, 1, 2, 2};
  model.bonds = {{2, 5}};  // the atoms of one residue stand apart
  DataModel data;
  data.add_model(std::move(model));
  for (const auto& [text, flags] :
       {Case{"same residue as index 1", {1, 1, 0, 0, 0, 0, 0}}, Case{"same residue as index 5", {0, 0, 0, 1, 1, 0, 0}},
        Case{"same residue as index 3", {0, 0, 1, 0, 0, 1, 1}}}) {
    EXPECT_THAT(chosen_atoms(data, data.models(), *read_selection(text).selection).flags, ElementsAre(flags)) << text;
  }
}

TEST(NearAtoms, are_those_that_the_definition_finds) {
  const auto seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> within(-20, 20);
  const Cell small{{{4, 0, 0}, {1, 5, 0}, {-1, 2, 30}}};
  const Cell large{{{47, 0, 0}, {15, 35, 0}, {-4, 3, 38}}};
  for (const auto& cell : {small, large}) {
    for (const auto type : {not_periodic, periodic_1d, periodic_2d, periodic_3d}) {
      std::vector<Vector3> positions(300);
      for (auto& p : positions) p = {within(random), within(random), within(random)};
      positions[7] = {1e200, 0, std::numeric_limits<double>::quiet_NaN()};
      auto model = carbon_model(positions);
      model.periodic_type = type;
      model.cell = cell;
      AtomFlags from(300);
      for (auto& flag : from) flag = random() % 20 == 0 ? 1 : 0;
      from[7] = 1;
      const Lattice lattice(type, cell);
      for (const double distance : {0.0, 1e-9, 1.5, 4.0, 7.0, 13.0, 60.0}) {
        auto expected = from;
        for (std::uint32_t i = 0; i < 300; ++i) {
          for (std::uint32_t j = 0; j < 300; ++j) {
            Vector3 d{};
            dvecsub_(positions[j], positions[i], d);
            d = translated(d, cell, lattice.nearest_image(d));
            if (from[j] && std::sqrt(dvecdot_(d, d)) <= distance) expected[i] = 1;
          }
        }
        ASSERT_EQ(atoms_near(model, from, distance), expected) << type << " " << distance;
      }
    }
  }
}

TEST(Groups, can_be_named_by_the_lines_behind_them) {
  const auto script = read_script("@group water = resname WAT\n@group near = within 3 of water\n@select atoms near");
  EXPECT_THAT(script.problems, IsEmpty());
  ASSERT_EQ(script.lines.size(), 3U);
  EXPECT_TRUE(script.lines[2].selection);
  EXPECT_THAT(read_script("@select atoms water\n@group water = all").problems,
              ElementsAre(HasSubstr("1: water is neither")));
  for (const auto& [line, sentence] : {std::pair{"@group not = all", "not is a word of selections"},
                                       {"@group of = all", "of is a word of selections"},
                                       {"@group 2nd = all", "the name of a group is a letter"},
                                       {"@group a:b = all", "the name of a group is a letter"},
                                       {"@group water", "this line is written @group NAME = SELECTION"},
                                       {"@group water resname WAT", "this line is written @group NAME = SELECTION"}}) {
    EXPECT_THAT(read_script(line).problems, ElementsAre(HasSubstr(sentence))) << line;
  }
}

TEST(Groups, stand_for_their_atoms_where_atoms_are_named) {
  TwoPairs pairs;
  auto& model = *pairs.data.models()[0];
  const AtomGroups groups{{"oxygens", read_selection("element O").selection},
                          {"nothing", read_selection("none").selection}};
  const std::vector<std::string> words{"angle", "oxygens", "12"};
  EXPECT_THAT(with_groups_replaced(pairs.data, model, words, groups).words, ElementsAre("angle", "11", "21", "12"));
  const std::vector<std::string> empty{"angle", "nothing", "12"};
  EXPECT_THAT(with_groups_replaced(pairs.data, model, empty, groups).problem,
              AllOf(HasSubstr("nothing"), HasSubstr("0 atoms")));
}

TEST(Patterns, stand_for_letters) {
  for (const auto& [text, pattern, fits] : {std::tuple{"CA", "C*", true},
                                            {"CA", "*A", true},
                                            {"CA", "?A", true},
                                            {"CA", "*", true},
                                            {"", "*", true},
                                            {"", "?", false},
                                            {"CA", "C", false},
                                            {"C", "CA", false},
                                            {"aXbXc", "a*X*c", true},
                                            {"abcabd", "*abd", true},
                                            {"abcabd", "*abc", false},
                                            {"C5*", "C5*", true}}) {
    EXPECT_EQ(fits_pattern(text, pattern), fits) << text << " " << pattern;
  }
}

}  // namespace
}  // namespace pathstat::desk
