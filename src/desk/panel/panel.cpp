#include "desk/panel/panel.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "desk/advice/trajectory_advice.h"
#include "desk/link/work_directory.h"
#include "desk/messages/visible_text.h"
#include "desk/panel/access.h"
#include "desk/panel/downloads.h"
#include "desk/panel/page_server.h"
#include "desk/panel/panel_messages.h"
#include "desk/panel/panel_session.h"
#include "desk/panel/requests.h"
#include "desk/panel/start_folder.h"
#include "desk/script/file_content.h"
#include "desk/script/script.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

int complain(const std::string& problem) {
  fmt::print(stderr, "pathdesk: {}\n", visible(problem));
  return exit_code::not_run;
}

/// The lines that run before those of the pages. @return false if there is something wrong with them, which is told
bool first_lines(const fs::path& path, std::vector<ScriptLine>& lines) {
  if (path.empty()) return true;
  std::string text;
  switch (kind_of_file(path)) {
    case FileKind::trajectory:
      text = "TRAJECTORY " + in_quotes(path.filename().string());
      break;
    case FileKind::text:
      if (const auto why = read_script_text(path, text); !why.empty()) {
        complain(fmt::format("the script {} cannot be read: {}", path.string(), why));
        return false;
      }
      break;
    default:
      complain(fmt::format("{} is neither a script nor a trajectory", path.string()));
      return false;
  }
  auto script = read_script(text);
  for (const auto& problem : script.problems)
    fmt::print(stderr, "{}\n", visible_lines(fmt::format("{}:{}", visible(path.string()), problem)));
  lines = std::move(script.lines);
  return script.problems.empty();
}

std::optional<PageDocument> file_list(const StartFolder& folder, std::string_view target) {
  const auto place = query_value(target, "folder");
  const auto entries = folder.list(place);
  if (!entries) return std::nullopt;
  auto list = json::array();
  for (const auto& entry : *entries) {
    list.push_back({{"name", entry.name}, {"kind", entry.kind}, {"bytes", entry.bytes}});
  }
  return PageDocument{"application/json", text_message({{"folder", place}, {"entries", std::move(list)}}).bytes};
}

/// Opens the browser on a private file that leads to the address: the arguments of a program can be read by everybody
/// on this machine, and the address holds the token.
void open_browser(const std::string& address, const fs::path& private_folder) {
  const bool has_display = std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY");
  if (!has_display) return;
  const auto page = private_folder / "open.html";
  std::ofstream(page) << "<!DOCTYPE html><title>pathdesk panel</title><meta http-equiv=\"refresh\" content=\"0; url="
                      << address << "\">\n";
  std::thread([page = page.string()] {
    std::string program = "xdg-open", file = page;
    std::array<char*, 3> arguments{program.data(), file.data(), nullptr};
    pid_t child = 0;
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    for (const int stream : {1, 2}) posix_spawn_file_actions_addopen(&quiet, stream, "/dev/null", O_WRONLY, 0);
    if (posix_spawnp(&child, "xdg-open", &quiet, nullptr, arguments.data(), environ) == 0) waitpid(child, nullptr, 0);
    posix_spawn_file_actions_destroy(&quiet);
  }).detach();
}

}  // namespace

int run_panel(const RunOptions& options, const PanelOptions& panel) {
  std::vector<ScriptLine> lines;
  if (!first_lines(panel.file, lines)) return exit_code::not_run;
  const StartFolder folder(panel.file.empty() ? fs::current_path() : fs::absolute(panel.file).parent_path());
  std::string error;
  const PrivateDirectory scratch(error);
  if (!error.empty()) return complain(error);
  const auto token = new_token();
  if (token.empty()) return complain("the system gives no random numbers");

  PageRequests requests;
  Downloads downloads;
  PageServer server(
      token, {.received =
                  [&](PageId page, const std::string& text) {
                    if (requests.take(page, text)) return;
                    server.send(
                        page,
                        text_message({{"type", "log"}, {"kind", "complaint"}, {"text", "too much waits to be done"}}));
                  },
              .document = [&](std::string_view target) -> std::optional<PageDocument> {
                if (path_of(target) == "/files") return file_list(folder, target);
                return downloads.find(path_of(target));
              }});

  const LineSource source{.name = "panel", .place = {}, .folder = folder.path(), .stop_on_error = false};
  return with_runner(options, source, [&](LineRunner& runner) {
    if (auto problem = server.start(); !problem.empty()) return complain(problem);
    fmt::print("The panel is at {}\nCtrl-C ends it.\n", server.address());
    std::fflush(stdout);
    if (panel.open_browser) open_browser(server.address(), scratch.path());
    const int code = PanelSession(runner, server, requests, downloads, folder, scratch.path()).run(lines);
    server.stop();
    return code;
  });
}

}  // namespace pathstat::desk
