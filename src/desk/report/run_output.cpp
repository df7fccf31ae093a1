#include "desk/report/run_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <utility>

#include "desk/graphs/figure.h"
#include "desk/graphs/pictures.h"
#include "desk/graphs/surface_picture.h"
#include "desk/link/folder_content.h"
#include "desk/report/html_report.h"
#include "desk/summary/figure_notes.h"
#include "desk/summary/run_summary.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

/// Result files of the analyses: how their names begin, and the one table that has no such name.
constexpr std::string_view result_prefix = "PathStat.";
constexpr std::string_view table_suffix = ".dat";

/// The files of one graph by the format that asks for them.
constexpr std::array<std::pair<bool OutputFormats::*, const char*>, 4> kinds_of_files{{{&OutputFormats::svg, ".svg"},
                                                                                       {&OutputFormats::png, ".png"},
                                                                                       {&OutputFormats::pdf, ".pdf"},
                                                                                       {&OutputFormats::tsv, ".tsv"}}};

}  // namespace

std::vector<fs::path> result_files(const fs::path& work, WrittenBetween times, const std::set<fs::path>& tables,
                                   std::string& problem) {
  std::set<fs::path> files;
  std::error_code error;
  for (const auto& name : names_in(work, error)) {
    const bool named = name.starts_with(result_prefix) || name.ends_with(table_suffix);
    if (!named) continue;
    const auto path = work / name;
    std::error_code gone;
    if (fs::is_regular_file(fs::symlink_status(path, gone)) && times.contains(fs::last_write_time(path, gone))) {
      files.insert(path);
    }
  }
  if (error) problem = fmt::format("cannot see what results are in {}: {}", work.string(), error.message());
  for (const auto& table : tables) {
    std::error_code gone;
    if (fs::is_regular_file(table, gone) && fs::last_write_time(table, gone) <= times.last) {
      files.insert(table.lexically_normal());
    }
  }
  return {files.begin(), files.end()};
}

std::vector<std::string> RunOutput::write_graphs(const GraphStore& store) {
  std::vector<std::string> all;
  auto figures = figures_of(store);
  annotate(figures);
  std::erase_if(figures, [&](const Figure& figure) {
    const auto revision = store.revision(figure.graph);
    return std::exchange(written_[figure.graph], revision) == revision;
  });
  const PictureKinds kinds{.svg = formats_.svg || formats_.html, .png = formats_.png, .pdf = formats_.pdf};
  if (auto undrawn = draw_pictures(figures, kinds, scratch_); !undrawn.empty()) {
    undrawn_.push_back(std::move(undrawn));
    for (const auto& figure : figures) failed_.insert(figure.graph);
  }
  for (const auto& figure : figures) {
    std::string files;
    for (const auto& [kind, extension] : kinds_of_files) {
      const auto name = figure.name + extension;
      std::error_code unknown;
      const bool points = kind == &OutputFormats::tsv;
      if (!(formats_.*kind) || (!points && !fs::exists(scratch_ / name, unknown))) continue;
      const bool written = points ? results_.write(name, points_table(figure)) : results_.copy(scratch_ / name, name);
      if (!written) failed_.insert(figure.graph);
      if (written) files += (files.empty() ? "" : " ") + (results_.path() / name).string();
    }
    if (!files.empty()) all.push_back(std::move(files));
  }
  return all;
}

std::vector<std::string> RunOutput::write_surfaces(const std::vector<Surface>& surfaces) {
  std::vector<std::string> all;
  for (; surfaces_written_ < surfaces.size(); ++surfaces_written_) {
    const auto& surface = surfaces[surfaces_written_];
    if (surface.triangles.empty()) continue;
    const auto name = surface_name(surfaces_written_);
    const auto picture = formats_.svg || formats_.html ? surface_picture(surface) : std::string{};
    if (!picture.empty()) std::ofstream(scratch_ / (name + ".svg"), std::ios::binary) << picture;
    std::string files;
    const auto put = [&](const std::string& file, const std::string& content) {
      if (!results_.write(file, content)) {
        failed_surface_ = std::min(failed_surface_, surfaces_written_);
        return;
      }
      files += (files.empty() ? "" : " ") + (results_.path() / file).string();
    };
    if (formats_.svg) put(name + ".svg", picture);
    put(name + ".ply", surface_as_ply(surface));
    put(name + ".obj", surface_as_obj(surface));
    if (!files.empty()) all.push_back(std::move(files));
  }
  return all;
}

void RunOutput::forget_failed() {
  for (const auto graph : std::exchange(failed_, {})) written_.erase(graph);
  surfaces_written_ = std::min(surfaces_written_, std::exchange(failed_surface_, no_surface));
}

std::vector<std::string> RunOutput::write_report(const RunRecord& record, const GraphStore& store,
                                                 const std::vector<fs::path>& results) {
  for (const auto& result : results) results_.copy(result, result.filename());
  const auto figures = figures_of(store);
  const auto summary = summarise(figures);
  if (formats_.tsv && !summary.empty()) {
    results_.write("summary.tsv", summary_tsv(summary));
    results_.write("summary.json", summary_json(summary));
  }
  if (formats_.html) {
    results_.write("report.html", html_report({record, figures, scratch_, results, formats_.tsv, summary}));
  }
  return summary_lines(summary);
}

std::vector<std::string> RunOutput::take_problems() {
  auto problems = std::exchange(undrawn_, {});
  for (auto& problem : results_.take_problems()) problems.push_back(std::move(problem));
  return problems;
}

}  // namespace pathstat::desk
