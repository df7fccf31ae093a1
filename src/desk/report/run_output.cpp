#include "desk/report/run_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>

#include "desk/graphs/figure.h"
#include "desk/graphs/pictures.h"
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

std::vector<std::string> write_output(const RunRecord& record, const GraphStore& store, const OutputPlan& plan) {
  std::vector<std::string> problems;
  const auto note = [&](std::string problem) {
    if (!problem.empty()) problems.push_back(std::move(problem));
  };
  const auto figures = figures_of(store);
  PictureFolders pictures;
  if (plan.formats.svg || plan.formats.html) pictures.svg = plan.formats.svg ? plan.folder : plan.scratch;
  if (plan.formats.png) pictures.png = plan.folder;
  if (!pictures.svg.empty() || !pictures.png.empty()) note(draw_pictures(figures, pictures, plan.scratch));
  if (plan.formats.tsv) {
    for (const auto& figure : figures) note(write_file(plan.folder / (figure.name + ".tsv"), points_table(figure)));
  }
  for (const auto& result : plan.results) note(copy_result(result, plan.folder));
  if (plan.formats.html) {
    ReportParts parts{record, figures, pictures.svg, plan.results, plan.formats.tsv};
    note(write_file(plan.folder / "report.html", html_report(parts)));
  }
  return problems;
}

}  // namespace pathstat::desk
