#include "desk/report/run_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <utility>

#include "desk/graphs/figure.h"
#include "desk/report/html_report.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

/// Result files of the analyses: how their names begin, and the one table that has no such name.
constexpr std::string_view result_prefix = "PathStat.";
constexpr std::string_view table_suffix = ".dat";

std::string write_file(const fs::path& path, std::string_view content) {
  std::ofstream file(path, std::ios::binary);
  file << content;
  file.close();
  return file ? std::string{} : fmt::format("cannot write {}", path.string());
}

std::string copy_result(const fs::path& from, const fs::path& folder) {
  std::error_code error;
  const auto to = folder / from.filename();
  if (fs::equivalent(from, to, error)) return {};
  error.clear();
  fs::copy_file(from, to, fs::copy_options::overwrite_existing, error);
  return error ? fmt::format("cannot copy {} to {}: {}", from.string(), to.string(), error.message()) : std::string{};
}

void add_problem(std::vector<std::string>& problems, std::string problem) {
  if (!problem.empty()) problems.push_back(std::move(problem));
}

/// The files of one graph by the format that asks for them.
constexpr std::array<std::pair<bool OutputFormats::*, const char*>, 3> kinds_of_files{
    {{&OutputFormats::svg, ".svg"}, {&OutputFormats::png, ".png"}, {&OutputFormats::tsv, ".tsv"}}};

}  // namespace

std::vector<fs::path> result_files(const fs::path& work, fs::file_time_type since, const std::set<fs::path>& tables) {
  std::set<fs::path> files;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(work, error)) {
    const auto name = entry.path().filename().string();
    const bool named = name.starts_with(result_prefix) || name.ends_with(table_suffix);
    std::error_code gone;
    if (named && !entry.is_symlink(gone) && entry.is_regular_file(gone) && entry.last_write_time(gone) >= since) {
      files.insert(entry.path());
    }
  }
  for (const auto& table : tables) {
    if (fs::is_regular_file(table, error)) files.insert(table.lexically_normal());
  }
  return {files.begin(), files.end()};
}

PictureFolders RunOutput::picture_folders() const {
  PictureFolders folders;
  if (plan_.formats.svg || plan_.formats.html) folders.svg = plan_.formats.svg ? plan_.folder : plan_.scratch;
  if (plan_.formats.png) folders.png = plan_.folder;
  return folders;
}

RunOutput::Graphs RunOutput::write_graphs(const GraphStore& store) {
  Graphs graphs;
  auto figures = figures_of(store);
  std::erase_if(figures, [&](const Figure& figure) {
    const auto revision = store.revision(figure.graph);
    return std::exchange(written_[figure.graph], revision) == revision;
  });
  add_problem(graphs.problems, draw_pictures(figures, picture_folders(), plan_.scratch));
  for (const auto& figure : figures) {
    const auto path = [&](const char* extension) { return plan_.folder / (figure.name + extension); };
    if (plan_.formats.tsv) add_problem(graphs.problems, write_file(path(".tsv"), points_table(figure)));
    std::string files;
    for (const auto& [kind, extension] : kinds_of_files) {
      const bool drawn = plan_.formats.*kind && (figure.has_points() || kind == &OutputFormats::tsv);
      if (drawn) files += (files.empty() ? "" : " ") + path(extension).string();
    }
    if (!files.empty() && graphs.problems.empty()) graphs.files.push_back(std::move(files));
  }
  return graphs;
}

std::vector<std::string> RunOutput::write_report(const RunRecord& record, const GraphStore& store,
                                                 const std::vector<fs::path>& results) const {
  std::vector<std::string> problems;
  for (const auto& result : results) add_problem(problems, copy_result(result, plan_.folder));
  if (plan_.formats.html) {
    const auto figures = figures_of(store);
    const ReportParts parts{record, figures, picture_folders().svg, results, plan_.formats.tsv};
    add_problem(problems, write_file(plan_.folder / "report.html", html_report(parts)));
  }
  return problems;
}

}  // namespace pathstat::desk
