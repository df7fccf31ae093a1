#include "desk/report/run_output.h"

#include "desk/link/work_directory.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

TEST(RunOutput, writes_a_graph_again_only_when_it_has_changed) {
  std::string error;
  const PrivateDirectory folder(error);
  ASSERT_EQ(error, "");
  GraphStore store;
  std::array<std::int32_t, 2> sets{}, graphs{};
  for (std::size_t k = 0; k < 2; ++k) {
    sets[k] = store.write(k == 0 ? "a" : "b", 102);
    graphs[k] = store.write(k == 0 ? "a" : "b", 101);
    Graph layout;
    layout.x_label = "x";
    layout.y_label = "y";
    layout.sets = {sets[k]};
    store.set_graph_method(graphs[k], layout);
    store.write_points(sets[k], false, std::array{1.0F, 2.0F});
  }
  store.set_graph_list(store.write("viewer", 100), graphs);

  RunOutput output({.folder = folder.path(), .formats = {false, false, true, false}, .scratch = folder.path()});
  const auto a = (folder.path() / "a.tsv").string(), b = (folder.path() / "b.tsv").string();
  EXPECT_THAT(output.write_graphs(store), ElementsAre(a, b));
  EXPECT_THAT(output.write_graphs(store), IsEmpty());
  store.write_points(sets[1], true, std::array{3.0F, 4.0F});
  EXPECT_THAT(output.write_graphs(store), ElementsAre(b));
  store.mark("mark", sets[0], highlight_mark, std::array{1});
  EXPECT_THAT(output.write_graphs(store), ElementsAre(a));
  store.clear_marks("another");
  EXPECT_THAT(output.write_graphs(store), IsEmpty());
  store.set_aspect_ratio(graphs[1], 2);
  EXPECT_THAT(output.write_graphs(store), ElementsAre(b));

  std::filesystem::remove(b);
  std::filesystem::create_directory(b);
  store.set_aspect_ratio(graphs[1], 3);
  EXPECT_THAT(output.write_graphs(store), IsEmpty());
  EXPECT_THAT(output.take_problems(), SizeIs(1));
  std::filesystem::remove(b);
  EXPECT_THAT(output.write_graphs(store), IsEmpty());
  output.forget_failed();
  EXPECT_THAT(output.write_graphs(store), ElementsAre(b)) << "one that failed comes once more";
  std::ifstream file(b);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}),
            "# b\n# graph: b\n# column 1: x, without a unit\n# column 2: y, without a unit\nx\ty\n1\t2\n3\t4\n");
}

}  // namespace
}  // namespace pathstat::desk
