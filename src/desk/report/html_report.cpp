#include "desk/report/html_report.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <fstream>

#include "desk/messages/visible_text.h"
#include "desk/model/surface.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view style = R"(
:root { --ink: #1c2430; --quiet: #5d6876; --line: #dde2e8; --tint: #f6f8fa; --good: #1a7f4b; --bad: #b42318; --warn: #8a5a00; }
* { box-sizing: border-box; }
body { margin: 0; background: #fff; color: var(--ink); font: 15px/1.5 system-ui, -apple-system, "Segoe UI", "DejaVu Sans", sans-serif; }
main { max-width: 62rem; margin: 0 auto; padding: 2.5rem 1.5rem 4rem; }
h1 { font-size: 1.6rem; margin: 0 0 .3rem; }
.facts { color: var(--quiet); margin: 0 0 1.6rem; }
.ending { border-left: 4px solid var(--bad); background: #fdf3f2; padding: .7rem 1rem; white-space: pre-wrap; }
nav { columns: 2 18rem; border: 1px solid var(--line); border-radius: 8px; padding: .9rem 1.2rem; margin-bottom: 2rem; }
nav a { display: block; color: #0b5cad; text-decoration: none; break-inside: avoid; }
nav a:hover { text-decoration: underline; }
section { border-top: 1px solid var(--line); padding: .75rem 0; }
section > header { display: flex; gap: .9rem; align-items: baseline; }
section > header code { flex: 1; font-weight: 600; overflow-wrap: anywhere; }
code, pre { font-family: ui-monospace, "DejaVu Sans Mono", Menlo, Consolas, monospace; font-size: .87rem; }
.number, .time { color: var(--quiet); font-variant-numeric: tabular-nums; font-size: .85rem; }
.badge { font-size: .78rem; border-radius: 1rem; padding: .05rem .6rem; color: var(--good); background: #e8f5ee; white-space: nowrap; }
.badge.failed { color: var(--bad); background: #fdecea; }
.note { margin: .45rem 0 .45rem 2.4rem; white-space: pre-wrap; }
.note.error { color: var(--bad); }
.note.warning { color: var(--warn); }
.note b { font-weight: 600; }
.key { color: var(--quiet); font-size: .78rem; margin-left: .5rem; }
pre { margin: .5rem 0 .5rem 2.4rem; padding: .7rem 1rem; background: var(--tint); border-radius: 6px; overflow-x: auto; }
figure { margin: 1.2rem 0; }
figure svg { width: 100%; height: auto; display: block; }
figcaption { color: var(--quiet); font-size: .85rem; text-align: right; }
.table { overflow: auto; max-height: 34rem; border: 1px solid var(--line); border-radius: 6px; }
table { border-collapse: collapse; font-size: .85rem; font-variant-numeric: tabular-nums; width: 100%; }
th, td { padding: .25rem .8rem; text-align: right; border-bottom: 1px solid var(--line); white-space: nowrap; }
th { position: sticky; top: 0; background: var(--tint); }
.hint { color: var(--warn); text-align: left; white-space: normal; }
th:first-child, td:first-child { text-align: left; }
.says h3 { font-size: .95rem; margin: 1rem 0 .3rem; }
h2 { font-size: 1.15rem; margin: 2rem 0 .7rem; }
@media print { .table { max-height: none; } nav { display: none; } }
)";

/// More rows of a table file than this are left to the file.
constexpr std::size_t most_rows = 200;

std::string escaped(std::string_view text) {
  std::string safe;
  for (const char c : visible_lines(text)) {
    switch (c) {
      case '&':
        safe += "&amp;";
        break;
      case '<':
        safe += "&lt;";
        break;
      case '>':
        safe += "&gt;";
        break;
      case '"':
        safe += "&quot;";
        break;
      default:
        safe += c;
    }
  }
  return safe;
}

std::string duration(double seconds) {
  if (seconds < 0.001) return "";
  if (seconds < 1) return fmt::format("{:.0f} ms", 1000 * seconds);
  if (seconds < 60) return fmt::format("{:.1f} s", seconds);
  const auto whole = static_cast<long>(seconds);
  return fmt::format("{} min {:02} s", whole / 60, whole % 60);
}

std::string text_of(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The picture without what belongs to a file of its own.
std::string inline_picture(const fs::path& path) {
  auto svg = text_of(path);
  const auto first = svg.find("<svg");
  return first == std::string::npos ? std::string{} : svg.substr(first);
}

std::string shortened(std::string_view cell) {
  const auto first = cell.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  cell = cell.substr(first, cell.find_last_not_of(' ') - first + 1);
  double value = 0;
  const auto [end, status] = std::from_chars(cell.data(), cell.data() + cell.size(), value);
  const bool is_number = status == std::errc{} && end == cell.data() + cell.size();
  return is_number && cell.size() > 10 ? fmt::format("{:.7g}", value) : escaped(cell);
}

std::string table_row(std::string_view line, std::string_view tag) {
  std::string row = "<tr>";
  for (std::size_t from = 0; from <= line.size();) {
    const auto end = std::min(line.find('\t', from), line.size());
    row += fmt::format("<{0}>{1}</{0}>", tag, shortened(line.substr(from, end - from)));
    from = end + 1;
  }
  return row + "</tr>\n";
}

/// "marked: Time (ps) 0.55, Total Energy 25.6", from the marked points of the curves; empty without one.
std::string marked_points(const Figure& figure) {
  std::string text;
  for (const auto& curve : figure.curves) {
    if (!curve.highlighted) continue;
    if (text.empty()) text = fmt::format("marked: {} {:.6g}", figure.x_text, curve.highlighted->x);
    text += fmt::format(", {} {:.7g}", curve.label.empty() ? figure.y_text : curve.label, curve.highlighted->y);
  }
  return text;
}

std::string picture(const ReportParts& parts, const Figure& figure) {
  auto svg = figure.has_points() ? inline_picture(parts.pictures / (figure.name + ".svg")) : std::string{};
  if (svg.empty()) {
    svg = fmt::format("<p class=\"note\">{}: {}.</p>", escaped(figure.heading),
                      figure.has_points() ? "the picture could not be drawn" : "no points to draw");
  }
  auto points = escaped(marked_points(figure));
  if (!points.empty() && parts.links_points) points += " · ";
  if (parts.links_points) points += fmt::format("<a href=\"{0}.tsv\">points</a>", figure.name);
  return fmt::format("<figure id=\"{}\">{}<figcaption>{}</figcaption></figure>\n", figure.name, svg, points);
}

std::string surface_section(const ReportParts& parts, std::size_t surface) {
  const auto name = surface_name(surface);
  return fmt::format(
      "<figure id=\"{0}\">{1}<figcaption><a href=\"{0}.ply\">{0}.ply</a> · <a href=\"{0}.obj\">"
      "{0}.obj</a></figcaption></figure>\n",
      name, inline_picture(parts.pictures / (name + ".svg")));
}

std::string message_note(const Message& message) {
  const bool loud = message.kind == MessageKind::error || message.kind == MessageKind::warning;
  const auto* word = message.kind == MessageKind::error     ? "error"
                     : message.kind == MessageKind::warning ? "warning"
                                                            : "";
  return fmt::format("<p class=\"note {0}\">{1}{2}<span class=\"key\">{3}</span></p>\n", word,
                     loud ? fmt::format("<b>{}:</b> ", word) : std::string{}, escaped(message.text),
                     escaped(message.key));
}

/// The text of a note that is shown as it stands; null for one that is a sentence.
const std::string* plain_text(const RunNote& note) {
  if (const auto* line = std::get_if<PrintedLine>(&note)) return &line->text;
  if (const auto* returned = std::get_if<ReturnedText>(&note)) return &returned->text;
  const auto& message = std::get<Message>(note);
  return message.kind == MessageKind::table ? &message.text : nullptr;
}

/// The notes in order; lines that stand as they are in a row make one block.
std::string notes(const std::vector<RunNote>& all) {
  std::string html, block;
  const auto close = [&] {
    const auto first = block.find_first_not_of('\n');
    if (first != std::string::npos) html += "<pre>" + escaped(std::string_view(block).substr(first)) + "</pre>\n";
    block.clear();
  };
  for (const auto& note : all) {
    if (const auto* text = plain_text(note)) {
      block += *text + "\n";
    } else {
      close();
      html += message_note(std::get<Message>(note));
    }
  }
  close();
  return html;
}

std::string badge(const StepRecord& step) {
  if (step.failed) {
    return fmt::format("<span class=\"badge failed\">{}</span>",
                       step.status ? fmt::format("status {}", *step.status) : std::string("failed"));
  }
  return step.status ? "<span class=\"badge\">status 0</span>" : "";
}

std::string section(const ReportParts& parts, const StepRecord& step) {
  auto html = fmt::format(
      "<section><header><span class=\"number\">{}</span><code>{}</code>{}<span class=\"time\">{}</span></header>\n",
      step.line, escaped(step.text), badge(step), duration(step.seconds));
  html += notes(step.notes);
  if (step.folded > 0) {
    html += fmt::format("<p class=\"note\">and {} more lines, to line {}, of which there is nothing to tell</p>\n",
                        step.folded, step.last_line);
  }
  for (const auto& figure : parts.figures) {
    if (std::find(step.graphs.begin(), step.graphs.end(), figure.graph) != step.graphs.end()) {
      html += picture(parts, figure);
    }
  }
  for (const auto surface : step.surfaces) html += surface_section(parts, surface);
  return html + "</section>\n";
}

std::string contents(const ReportParts& parts) {
  if (parts.figures.empty()) return {};
  std::string html = "<nav>\n";
  for (const auto& figure : parts.figures) {
    html += fmt::format("<a href=\"#{}\">{}</a>\n", figure.name, escaped(figure.heading));
  }
  return html + "</nav>\n";
}

std::string summary_row(const SummaryItem& item) {
  auto row = fmt::format("<tr><td>{}</td>", escaped(item.name));
  for (const auto& value : item.values) {
    const bool has_unit = value.value && !value.unit.empty();
    row += fmt::format("<td>{}{}</td>", with_error(value), has_unit ? " " + escaped(value.unit) : "");
  }
  return row + fmt::format("<td class=\"hint\">{}</td></tr>\n", escaped(item.hint));
}

std::string what_the_run_says(std::span<const SummaryTable> summary) {
  if (summary.empty()) return {};
  std::string html = "<div class=\"says\">\n<h2>What the run says</h2>\n";
  for (const auto& table : summary) {
    html += fmt::format("<h3>{}</h3>\n<div class=\"table\"><table>\n<tr><th></th>", table.title);
    for (const auto& value : table.items.front().values) html += fmt::format("<th>{}</th>", value.quantity);
    html += "<th></th></tr>\n";
    for (const auto& item : table.items) html += summary_row(item);
    html += "</table></div>\n";
  }
  return html + "</div>\n";
}

std::string tables(const ReportParts& parts) {
  std::string html;
  for (const auto& result : parts.results) {
    if (result.extension() != ".dat") continue;
    const auto table = html_table(text_of(result));
    if (!table.empty()) html += fmt::format("<h2>{}</h2>\n{}", escaped(result.filename().string()), table);
  }
  return html;
}

}  // namespace

std::string html_table(std::string_view text) {
  if (text.find('\t') == std::string_view::npos || text.find('\0') != std::string_view::npos) return {};
  std::string html = "<div class=\"table\"><table>\n";
  std::size_t rows = 0;
  for (; !text.empty(); ++rows) {
    const auto end = std::min(text.find('\n'), text.size());
    if (rows <= most_rows) html += table_row(text.substr(0, end), rows == 0 ? "th" : "td");
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  html += "</table></div>\n";
  if (rows > most_rows + 1)
    html += fmt::format("<p class=\"facts\">{} more rows are in the file.</p>\n", rows - 1 - most_rows);
  return html;
}

std::string html_report(const ReportParts& parts) {
  const auto& record = parts.record;
  const auto failed =
      std::count_if(record.steps.begin(), record.steps.end(), [](const auto& step) { return step.failed; });
  auto html = fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, "
      "initial-scale=1\">\n<title>{0}</title>\n<style>{1}</style>\n"
      "</head>\n<body>\n<main>\n<h1>{0}</h1>\n<p class=\"facts\">{2} · {3} lines, {4} failed · {5} graphs · {6}</p>\n",
      escaped(record.script), style, escaped(record.started), record.lines, failed, parts.figures.size(),
      duration(record.seconds));
  if (!record.ending.empty()) html += fmt::format("<p class=\"ending\">{}</p>\n", escaped(record.ending));
  html += what_the_run_says(parts.summary);
  html += contents(parts);
  html += notes(record.before);
  for (const auto& step : record.steps) html += section(parts, step);
  html += tables(parts);
  return html + "</main>\n</body>\n</html>\n";
}

}  // namespace pathstat::desk
