#include "desk/graphs/graph_store.h"

#include "desk/graphs/plot_operations.h"
#include "testing.h"

namespace pathstat::desk {
namespace {

constexpr std::int32_t viewer = 100, graph = 101, data_set = 102;

Graph layout_of(std::vector<std::int32_t> sets) {
  Graph layout;
  layout.title = "T";
  layout.sets = std::move(sets);
  return layout;
}

TEST(GraphStore, makes_a_new_version_each_time_but_keeps_one_viewer_under_a_name) {
  GraphStore store;
  const auto first = store.write("Profile", graph), second = store.write("Profile", graph);
  EXPECT_NE(first, second);
  EXPECT_EQ(store.info(first)->version, 1);
  EXPECT_EQ(store.info(second)->version, 2);
  EXPECT_EQ(store.info(store.write("Profile", data_set))->version, 1) << "kinds count on their own";
  EXPECT_EQ(store.write("Varlane Graphs", viewer), store.write("Varlane Graphs", viewer));
  EXPECT_EQ(store.write("Profile", 103), 0);
}

TEST(GraphStore, finds_a_version_and_makes_only_the_next_one) {
  GraphStore store;
  const auto set = store.write("pr", data_set);
  EXPECT_EQ(store.write_specific("pr", 1, data_set), set);
  EXPECT_EQ(store.write_specific("pr", 3, data_set), 0);
  EXPECT_EQ(store.write_specific("pr", 0, data_set), 0);
  const auto next = store.write_specific("pr", 2, data_set);
  EXPECT_EQ(store.info(next)->version, 2);
}

TEST(GraphStore, replaces_points_on_a_first_write_and_adds_on_an_append) {
  GraphStore store;
  const auto set = store.write("s", data_set);
  const float first[] = {0, 1, 2, 3}, more[] = {4, 5};
  EXPECT_EQ(store.write_points(set, false, first), 0);
  EXPECT_EQ(store.write_points(set, true, more), 0);
  EXPECT_THAT(store.data_set(set)->points, ElementsAre(PlotPoint{0, 1}, PlotPoint{2, 3}, PlotPoint{4, 5}));
  EXPECT_EQ(store.write_points(set, false, more), 0);
  EXPECT_THAT(store.data_set(set)->points, ElementsAre(PlotPoint{4, 5}));
}

TEST(GraphStore, refuses_handles_of_another_kind_and_changes_nothing) {
  GraphStore store;
  const auto g = store.write("g", graph), s = store.write("s", data_set), v = store.write("v", viewer);
  const float point[] = {1, 1};
  EXPECT_EQ(store.write_points(g, false, point), no_such_handle);
  EXPECT_EQ(store.set_graph_method(s, {}), no_such_handle);
  EXPECT_EQ(store.set_graph_method(g, layout_of({s, g})), no_such_handle);
  EXPECT_THAT(store.graph(g)->sets, IsEmpty());
  const std::int32_t wrong[] = {g, s}, right[] = {g};
  EXPECT_EQ(store.set_graph_list(v, wrong), no_such_handle);
  EXPECT_THAT(store.shown_graphs(), IsEmpty());
  EXPECT_EQ(store.set_graph_list(g, right), no_such_handle);
  for (const std::int32_t handle : {0, -1, 4, 1 << 30}) EXPECT_EQ(store.info(handle), nullptr) << handle;
}

TEST(GraphStore, lays_a_graph_out_in_any_order_with_its_aspect_ratio) {
  GraphStore store;
  const auto g = store.write("g", graph), s = store.write("s", data_set), v = store.write("v", viewer);
  const std::int32_t list[] = {g};
  EXPECT_EQ(store.set_graph_list(v, list), 0);
  EXPECT_EQ(store.set_aspect_ratio(g, 2.0f), 0);
  EXPECT_EQ(store.set_graph_method(g, layout_of({s})), 0);
  EXPECT_EQ(store.graph(g)->aspect_ratio, 2.0f);
  EXPECT_THAT(store.shown_graphs(), ElementsAre(g));
  EXPECT_THAT(store.graph_list(v), ElementsAre(g));
}

TEST(GraphStore, marks_points_that_exist_and_clears_marks_by_name) {
  GraphStore store;
  const auto s = store.write("s", data_set);
  const float points[] = {0, 0, 1, 1};
  store.write_points(s, false, points);
  const std::int32_t second[] = {2}, third[] = {3}, zeroth[] = {0};
  EXPECT_EQ(store.mark("m", s, highlight_mark, second), 0);
  EXPECT_EQ(store.mark("other", s, 200, second), 0);
  EXPECT_EQ(store.mark("m", s, highlight_mark, third), bad_points);
  EXPECT_EQ(store.mark("m", s, highlight_mark, zeroth), bad_points);
  store.clear_marks("m");
  ASSERT_EQ(store.data_set(s)->marks.size(), 1u);
  EXPECT_EQ(store.data_set(s)->marks[0].name, "other");
}

TEST(GraphStore, ends_only_transactions_that_were_begun) {
  GraphStore store;
  store.begin();
  store.begin();
  EXPECT_TRUE(store.end());
  EXPECT_TRUE(store.end());
  EXPECT_FALSE(store.end());
}

TEST(PlotOperations, put_each_slot_of_a_graph_where_it_belongs) {
  GraphStore store;
  OperationServer server;
  register_plot_operations(server, store);
  const auto g = store.write("g", graph), s = store.write("s", data_set);
  const OperationCall call{*find_operation("kvP_GRF_SetMethodXY"),
                           {g, 1, fixed_x_layout, 0.5f, 12.0f, 0.0f, 0.0f, 1, std::string("S(k)"),
                            std::string(" k (1/A)"), 15, std::vector<std::int32_t>{s}, std::string(" ")}};
  EXPECT_EQ(server.serve(call).error, 0);
  const auto& made = *store.graph(g);
  EXPECT_EQ(made.layout, fixed_x_layout);
  EXPECT_EQ(made.x_low, 0.5f);
  EXPECT_EQ(made.x_high, 12.0f);
  EXPECT_EQ(made.labels, title_on_y_axis);
  EXPECT_EQ(made.title, "S(k)");
  EXPECT_EQ(made.x_label, "k (1/A)");
  EXPECT_EQ(made.y_label, "");
  EXPECT_THAT(made.sets, ElementsAre(s));
}

TEST(PlotOperations, refuse_an_unknown_write_mode_and_tell_the_version_of_a_handle) {
  GraphStore store;
  OperationServer server;
  register_plot_operations(server, store);
  const auto s = store.write("s", data_set);
  const OperationCall write{*find_operation("kvP_DAT_WriteXY"), {s, 803, 1, std::vector<float>{1, 2}}};
  EXPECT_NE(server.serve(write).error, 0);
  const auto info = server.serve({*find_operation("kvP_HAN_Info"), {store.write("s", data_set), 80}});
  EXPECT_EQ(info.error, 0);
  EXPECT_THAT(info.outputs, ElementsAre(SlotValue(std::string("s")), SlotValue(2), SlotValue(0), SlotValue(data_set)));
  EXPECT_NE(server.serve({*find_operation("kvP_HAN_Info"), {99, 80}}).error, 0);
}

}  // namespace
}  // namespace pathstat::desk
