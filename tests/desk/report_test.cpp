#include "desk/report/html_report.h"

#include "testing.h"

namespace pathstat::desk {
namespace {

TEST(HtmlReport, shows_every_command_with_its_status_and_messages_and_escapes_their_texts) {
  RunRecord record;
  record.script = "a<b>.script";
  record.steps.push_back(
      {.line = 3, .text = "RDF & more", .status = 1, .failed = true, .seconds = 2.5, .notes = {}, .graphs = {}});
  record.note(message_of(2, "PATHSTAT_ERROR_72", {}));
  record.note(PrintedLine{"x < y\x1b[1m\xc2\x9b"});
  const auto page = html_report({record, {}, {}, {}, false});
  EXPECT_THAT(page, AllOf(HasSubstr("a&lt;b&gt;.script"), HasSubstr("RDF &amp; more"), HasSubstr("status 1"),
                          HasSubstr("2.5 s"), HasSubstr("No atoms are selected."),
                          HasSubstr("<pre>x &lt; y\\x1b[1m\\xc2\\x9b\n</pre>")));
}

TEST(HtmlReport, does_not_grow_with_lines_of_which_there_is_nothing_to_tell) {
  RunRecord record;
  const auto run = [&](int line, bool tells) {
    record.steps.push_back({.line = line, .text = "MSD_ATOMS ALL", .status = 0, .notes = {}, .graphs = {}});
    if (tells) record.note(PrintedLine{"told"});
    record.end_line();
  };
  for (int line = 1; line <= 100000; ++line) run(line, line == 50 || line == 99);
  // 20 of each row, the second and the third row longer than that.
  EXPECT_EQ(record.steps.size(), 20u + 1 + 20 + 1 + 20);
  const auto page = html_report({record, {}, {}, {}, false});
  EXPECT_THAT(page,
              AllOf(HasSubstr("100000 lines"), HasSubstr("and 29 more lines, to line 49,"),
                    HasSubstr("and 28 more lines, to line 98,"), HasSubstr("and 99881 more lines, to line 100000,")));
}

TEST(HtmlReport, needs_nothing_from_elsewhere) {
  RunRecord record;
  const auto page = html_report({record, {}, {}, {}, true});
  for (const auto* other : {"http:", "https:", "src=", "@import", "<script", "<link"}) {
    EXPECT_THAT(page, Not(HasSubstr(other)));
  }
}

TEST(HtmlReport, joins_the_lines_of_a_table_into_one_block) {
  RunRecord record;
  record.note(message_of(2, "PATHSTAT_MSG_9", {1.0, 2.0}));
  record.note(message_of(2, "PATHSTAT_MSG_9", {3.0, 4.0}));
  const auto page = html_report({record, {}, {}, {}, false});
  EXPECT_EQ(page.find("<pre>"), page.rfind("<pre>"));
}

TEST(HtmlReport, tells_the_marked_points_of_a_graph) {
  const std::vector<PlotPoint> points{{0.25F, -1.5F}, {0.5F, 2.5F}};
  Figure figure;
  figure.graph = 1;
  figure.x_text = "Time (ps)";
  figure.curves.push_back({.label = "Energy", .points = &points, .highlighted = points[1]});
  RunRecord record;
  record.steps.push_back({.line = 1, .text = "PROFILE", .status = 0, .notes = {}, .graphs = {1}});
  EXPECT_THAT(html_report({record, {&figure, 1}, {}, {}, false}), HasSubstr("marked: Time (ps) 0.5, Energy 2.5"));
}

TEST(HtmlTable, makes_rows_of_tab_separated_lines_and_shortens_long_numbers) {
  const auto table = html_table("Time\tEnergy\n   0.020000000000000\t -515.8632900000000\n");
  EXPECT_THAT(table, AllOf(HasSubstr("<tr><th>Time</th><th>Energy</th></tr>"),
                           HasSubstr("<tr><td>0.02</td><td>-515.8633</td></tr>")));
  EXPECT_THAT(html_table("no table here\n"), IsEmpty());
  std::string tall = "a\tb\n";
  for (int k = 0; k < 250; ++k) tall += "1\t2\n";
  EXPECT_THAT(html_table(tall), HasSubstr("50 more rows"));
}

}  // namespace
}  // namespace pathstat::desk
