#include "desk/cli/line_completion.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "desk/link/folder_content.h"
#include "desk/script/script.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

/// What all texts begin with.
std::string shared_start(const std::vector<std::string>& texts) {
  std::string_view start = texts.front();
  for (const std::string_view text : texts) {
    const auto end = std::mismatch(start.begin(), start.end(), text.begin(), text.end()).first;
    start = start.substr(0, static_cast<std::size_t>(end - start.begin()));
  }
  // A letter of several bytes is not cut.
  while (start.size() < texts.front().size() && !start.empty() && (texts.front()[start.size()] & 0xc0) == 0x80) {
    start.remove_suffix(1);
  }
  return std::string(start);
}

bool has_blank(const std::string& text) { return text.find_first_of(" \t") != std::string::npos; }

char mark_for(const LastWord& last, const std::vector<std::string>& candidates) {
  if (last.mark != '\0') return last.mark;
  if (std::none_of(candidates.begin(), candidates.end(), has_blank)) return '\0';
  return candidates.front().find('"') == std::string::npos ? '"' : '\'';
}

}  // namespace

std::vector<std::string> paths_beginning(std::string_view begun, bool (*fits)(const fs::path& file)) {
  const auto name_at = begun.rfind('/') + 1;  // 0 without a slash
  const auto folder = std::string(begun.substr(0, name_at));
  const auto name = begun.substr(name_at);
  const char* home = std::getenv("HOME");
  const auto place = folder.starts_with("~/") && home ? home + folder.substr(1) : folder.empty() ? "." : folder;
  std::vector<std::string> paths;
  std::error_code trouble;
  for (const auto& found : names_in(place, trouble)) {
    if (!found.starts_with(name) || (name.empty() && found.front() == '.')) continue;
    std::error_code unknown;
    const auto path = fs::path(place) / found;
    const bool is_folder = fs::is_directory(path, unknown);
    if (is_folder || !fits || fits(path)) paths.push_back(folder + found + (is_folder ? "/" : ""));
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

LineCompletion complete_line(std::string_view line, const Completer& completer) {
  const auto last = last_word(line);
  auto completion = completer(last.before, last.begun);
  auto candidates = completion.files ? paths_beginning(last.begun, completion.fits) : std::move(completion.candidates);
  LineCompletion done{.from = last.from, .text = std::string(line.substr(last.from)), .choices = {}};
  if (candidates.empty()) return done;
  // Candidates may differ from what is typed in the case of letters; fewer letters than were typed are no progress.
  const auto start = shared_start(candidates);
  const bool only = candidates.size() == 1;
  if (only || start.size() >= last.begun.size()) {
    const char mark = mark_for(last, candidates);
    const auto marks = std::string(mark == '\0' ? 0 : 1, mark);
    done.text = marks + start;
    if (only && start.back() != '/') done.text += (mark == '{' ? "}" : marks) + " ";
  }
  if (!only) done.choices = std::move(candidates);
  return done;
}

}  // namespace pathstat::desk
