#include "desk/model/marked_measure.h"

#include "desk/model/data_model.h"
#include "desk/model/model_export.h"
#include "small_models.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

std::vector<std::string> words_of(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

/// The two waters; in the second one atom has the name of another.
class Marking : public testing::Test {
 protected:
  Marking() {
    auto result = imported(water_pair);
    auto& columns = result.models.front();
    columns.names = {};
    for (const auto* name : {"O1", "H1", "H2", "O2", "H3", "H3"}) columns.names.push_back(name);
    model_ = &data_.model(data_.add_model(std::move(result.models.front())))->data;
  }
  DataModel data_;
  MolecularModel* model_ = nullptr;
};

struct MarkCase {
  const char* words;
  const char* text;
};

TEST_F(Marking, places_each_atom_nearest_to_the_one_before_it) {
  const MarkCase cases[] = {
      {"distance 11 12", "distance 11 12 (O1 H1): 1 Å"},
      {"distance O1:1 21", "distance 11 21-c (O1 O2): 1.80278 Å"},
      {"distance 11 21+0", "distance 11 21 (O1 O2): 8.55862 Å"},
      {"distance 21 11", "distance 21 11+c (O2 O1): 1.80278 Å"},
      {"distance 11+c 21", "distance 11+c 21 (O1 O2): 1.80278 Å"},
      {"distance 11 11+2a-b", "distance 11 11+2a-b (O1 O1): 22.3607 Å"},
      {"distance 11 12+a-a+b", "distance 11 12+b (O1 H1): 11 Å"},
      {"angle 21 22 11", "angle 21 22+c 11+c (O2 H3 O1): 116.565 degrees"},
      {"torsion 12 11 21 23", "torsion 12 11 21-c 23-c (H1 O1 O2 H3): 0 degrees"},
      {"plane 12 11 13 23 21 22", "plane 12 11 13 23-c 21-c 22 (H1 O1 H2 H3 O2 H3): 90 degrees"},
      {"inversion umbrella 21 22 23 11", "inversion umbrella 21 22+c 23 11+c (O2 H3 H3 O1): 180 degrees"},
      // About the third atom, which stands nearest to the first: the others then follow it.
      {"inversion ijkl 21 22 11 13", "inversion ijkl 21 22+c 11+c 13+c (O2 H3 O1 H2): 90 degrees"},
  };
  for (const auto& [words, text] : cases) {
    ASSERT_TRUE(is_measure(words_of(words))) << words;
    const auto marked = marked_measure(*model_, words_of(words));
    EXPECT_THAT(marked.problem, IsEmpty()) << words;
    EXPECT_EQ(measure_text(*model_, marked.monitor), text);
  }
}

TEST_F(Marking, tells_what_is_wrong) {
  const MarkCase cases[] = {
      {"distance 11 99", "there is no atom 99"},
      {"distance 11 O1:2", "there is no atom O1:2"},
      {"distance 11 H3:2", "H3:2 names 2 atoms"},
      {"distance 11 O1", "O1 is no atom"},
      {"distance :1 11", ":1 is no atom"},
      {"distance 11 12x", "12x: an image is written as"},
      {"distance 11 12+", "12+: an image is written as"},
      {"distance 11 12+1001a", "12+1001a: an image is written as"},
      {"distance 11 12+99999999999a", "an image is written as"},
      {"distance 11 11", "an atom stands there twice"},
      {"plane 11 12 11 11 12 13", "an atom stands there twice"},
  };
  for (const auto& [words, sentence] : cases) {
    EXPECT_THAT(marked_measure(*model_, words_of(words)).problem, HasSubstr(sentence)) << words;
  }
  for (const auto* words :
       {"distance 1", "torsion 1 2 3", "inversion 1 2 3 4", "inversion kjil 1 2 3 4", "length 1 2"}) {
    EXPECT_FALSE(is_measure(words_of(words))) << words;
  }
}

TEST_F(Marking, is_kept_by_a_model_file) {
  model_->monitors = {marked_measure(*model_, words_of("distance 11 21+2b")).monitor};
  const ScratchFolder folder;
  ASSERT_THAT(write_model_file(*model_, folder.file("copy.qfx")), IsEmpty());
  const auto back = read_model_file(folder.file("copy.qfx"));
  ASSERT_THAT(back.problem, IsEmpty());
  EXPECT_EQ(back.models.front().monitors.front().images, (std::vector<Translation>{{0, 0, 0}, {0, 2, 0}}));
  auto text = folder.read("copy.qfx");
  const auto at = text.find("(A I Images (0 0 0 0 2 0))");
  ASSERT_NE(at, std::string::npos);
  EXPECT_THAT(imported(text.erase(at + 22, 2)).problem, HasSubstr("is not made of three numbers for each atom"));
}

TEST(MarkingInALayer, knows_the_directions_that_repeat) {
  auto columns = carbon_model({{0, 0, 0}, {0, 0, 8}});
  columns.periodic_type = periodic_2d;
  columns.cell = {{{9, 0, 0}, {0, 9, 0}, {0, 0, 9}}};
  DataModel data;
  const auto& model = data.model(data.add_model(std::move(columns)))->data;
  EXPECT_EQ(measure_text(model, marked_measure(model, words_of("distance 1 2")).monitor), "distance 1 2-c (C C): 1 Å");
  EXPECT_THAT(marked_measure(model, words_of("distance 1 2+a")).problem, HasSubstr("does not repeat along a"));
}

}  // namespace
}  // namespace pathstat::desk
