#include "desk/script/kept_session.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>

#include "coreapi/operation_row.h"
#include "desk/link/folder_content.h"
#include "desk/link/reconnection.h"
#include "desk/link/work_directory.h"
#include "desk/model/model_export.h"
#include "desk/model/model_import.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr std::string_view folder_prefix = "pathdesk-detached-";
constexpr const char* session_name = "session.cbor";
constexpr const char* claimed_name = "claimed.cbor";
constexpr const char* models_name = "models.cbor";

/// In a form that takes names of any bytes.
std::string write_value(const json& value, const fs::path& path) {
  const auto beside = path.string() + ".new";
  std::ofstream file(beside, std::ios::binary);
  const auto bytes = json::to_cbor(value);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  std::error_code failure;
  if (file) fs::rename(beside, path, failure);
  return file && !failure ? std::string{} : fmt::format("cannot write {}", path.string());
}

json read_value(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return json::from_cbor(file);
}

fs::path model_file(const fs::path& folder, std::int32_t number) {
  return folder / fmt::format("model-{}.qfx", number);
}

/// All that has to come back of the models beside what their files hold.
json facts_of(const DataModel& model) {
  json models = json::array(), values = json::array();
  for (const auto* each : model.models()) {
    json images = json::array();
    for (const auto& image : model.atom_images(*each)) images.push_back({image.id, image.place, image.image});
    models.push_back({{"number", each->number},
                      {"id", each->id},
                      {"first_atom", each->first_atom},
                      {"atom_ids", each->atom_ids},
                      {"atoms", each->data.atoms()},
                      {"monitors", each->monitor_ids},
                      {"planes", each->plane_ids},
                      {"images", images},
                      {"magnitudes", each->vector_magnitudes},
                      {"selected", each->selected},
                      {"atom_selected", each->atom_selected},
                      {"selected_atoms", each->selected_atoms}});
  }
  for (const auto& [owner, named] : model.user_values()) {
    for (const auto& [name, value] : named) {
      values.push_back({{"owner", owner},
                        {"name", name},
                        {"kind", static_cast<int>(value.kind)},
                        {"values", value.values},
                        {"number", value.number}});
    }
  }
  std::sort(values.begin(), values.end());
  return {
      {"models", models}, {"current", model.current_model()}, {"next", model.next_identifier()}, {"values", values}};
}

/// Something to be made that gets this identifier.
struct Step {
  std::int64_t id;
  std::function<bool()> make;
};

void add_steps(const json& facts, const fs::path& folder, DataModel& model, std::vector<Step>& steps) {
  const auto id = facts.at("id").get<std::int32_t>(), number = facts.at("number").get<std::int32_t>();
  const auto monitors = std::make_shared<std::vector<Monitor>>();
  steps.push_back({id, [=, &model] {
                     auto file = read_model_file(model_file(folder, number).string());
                     if (!file.problem.empty() || file.models.size() != 1) return false;
                     monitors->swap(file.models[0].monitors);
                     model.number_next_model(number);
                     return model.add_model(std::move(file.models[0])) == id;
                   }});
  const auto monitor_ids = facts.at("monitors").get<std::vector<std::int32_t>>();
  for (std::size_t k = 0; k < monitor_ids.size(); ++k) {
    steps.push_back({monitor_ids[k], [=, &model] {
                       return k < monitors->size() && model.add_monitor(*model.model(id), (*monitors)[k]);
                     }});
  }
  for (const auto& image : facts.at("images")) {
    const auto place = image.at(1).get<std::uint32_t>();
    const auto cell = image.at(2).get<Translation>();
    steps.push_back({image.at(0).get<std::int32_t>(), [=, &model] {
                       auto& owner = *model.model(id);
                       return place < owner.data.atoms() && model.atom_image(owner, place, cell) != 0;
                     }});
  }
}

void set_selection(const json& facts, DataModel& model) {
  auto& object = *model.model(facts.at("id").get<std::int32_t>());
  object.vector_magnitudes = facts.at("magnitudes").get<decltype(object.vector_magnitudes)>();
  object.selected = facts.at("selected").get<bool>();
  object.atom_selected = facts.at("atom_selected").get<std::vector<std::uint8_t>>();
  object.selected_atoms = facts.at("selected_atoms").get<std::size_t>();
  if (!object.atom_selected.empty()) object.atom_selected.resize(object.data.atoms());
}

bool restore(const json& facts, const fs::path& folder, DataModel& model) {
  std::vector<Step> steps;
  for (const auto& each : facts.at("models")) add_steps(each, folder, model, steps);
  std::sort(steps.begin(), steps.end(), [](const Step& a, const Step& b) { return a.id < b.id; });
  for (const auto& step : steps) {
    model.go_on_at(step.id);
    if (!step.make()) return false;
  }
  for (const auto& each : facts.at("models")) set_selection(each, model);
  for (const auto& each : facts.at("values")) {
    model.set_user_value(each.at("owner").get<std::int32_t>(), each.at("name").get<std::string>(),
                         {static_cast<UserValue::Kind>(each.at("kind").get<int>()),
                          each.at("values").get<std::vector<std::int32_t>>(), each.at("number").get<double>()});
  }
  model.set_current_model(facts.at("current").get<std::int32_t>());
  model.go_on_at(facts.at("next").get<std::int64_t>());
  return facts_of(model) == facts;
}

/// Bindings are numbered by the table of operations: only a pathdesk with the same one can go on.
std::size_t table_mark() {
  std::size_t mark = all_operations().size();
  for (const auto& row : all_operations()) mark = mark * 31 + std::hash<std::string_view>{}(row.name);
  return mark;
}

pid_t process_of(const fs::path& folder) {
  const auto name = folder.filename().string();
  pid_t process = 0;
  if (!name.starts_with(folder_prefix)) return 0;
  const auto* begin = name.data() + folder_prefix.size();
  const auto* end = name.data() + name.size();
  return std::from_chars(begin, end, process).ptr == end ? process : 0;
}

/// True if the session that stands in the folder is that of a process which runs.
bool lives(const fs::path& folder, const char* name) try {
  const auto session = read_value(folder / name);
  const auto started = session.at("started").get<std::uint64_t>();
  return started != 0 && start_of_process(session.at("process").get<pid_t>()) == started;
} catch (const std::exception&) {
  return false;
}

std::string numbers(const std::vector<pid_t>& processes) {
  std::string text;
  for (const auto process : processes) text += fmt::format("{}{}", text.empty() ? "" : ", ", process);
  return text;
}

}  // namespace

fs::path kept_folder(pid_t process) {
  return base_of_temporary_folders() / fmt::format("{}{}", folder_prefix, process);
}

std::string make_kept_folder(pid_t process) {
  const auto folder = kept_folder(process);
  if (is_own_folder(folder)) remove_tree(folder);
  if (::mkdir(folder.c_str(), S_IRWXU) == 0) return {};
  return fmt::format("cannot make the folder {}: {}", folder.string(), std::strerror(errno));
}

std::string keep_models(const DataModel& model, const fs::path& folder) {
  for (const auto* each : model.models()) {
    if (auto problem = write_model_file(each->data, model_file(folder, each->number).string()); !problem.empty()) {
      return problem;
    }
  }
  if (auto problem = write_value(facts_of(model), folder / models_name); !problem.empty()) return problem;
  DataModel trial;
  return read_kept_models(folder, trial);
}

std::string read_kept_models(const fs::path& folder, DataModel& model) try {
  if (restore(read_value(folder / models_name), folder, model)) return {};
  return "the models can't be brought back as the process knows them";
} catch (const std::exception&) {
  return fmt::format("{} can't be read", (folder / models_name).string());
}

std::string keep_session(const KeptSession& session, const fs::path& folder) {
  const json value{{"process", session.process},     {"started", session.started},   {"work", session.work.string()},
                   {"shown", session.shown},         {"drawn", session.drawn},       {"running", session.running},
                   {"selection", session.selection}, {"settings", session.settings}, {"tables", session.tables},
                   {"operations", table_mark()}};
  return write_value(value, folder / session_name);
}

std::string claim_session(pid_t process, KeptSession& session) try {
  const auto there = detached_processes();
  if (process == 0) {
    if (there.empty()) return "there is no detached process";
    if (there.size() > 1) return "there are several detached processes: " + numbers(there);
    process = there.front();
  }
  const auto folder = kept_folder(process);
  if (std::find(there.begin(), there.end(), process) == there.end()) {
    return fmt::format("there is no detached process {}{}", process,
                       there.empty() ? "" : "; there is " + numbers(there));
  }
  std::error_code failure;
  fs::rename(folder / session_name, folder / claimed_name, failure);
  if (failure) return fmt::format("another run takes over process {}", process);
  const auto value = read_value(folder / claimed_name);
  if (value.at("operations").get<std::size_t>() != table_mark()) {
    give_back_session(process);
    return fmt::format("process {} belongs to another version of pathdesk", process);
  }
  session = {.process = process,
             .started = value.at("started").get<std::uint64_t>(),
             .work = value.at("work").get<std::string>(),
             .shown = value.at("shown").get<std::uintmax_t>(),
             .drawn = value.at("drawn").get<std::set<std::int32_t>>(),
             .selection = value.at("selection").get<std::string>(),
             .running = value.at("running").get<std::string>(),
             .settings = value.at("settings").get<std::vector<std::string>>(),
             .tables = value.at("tables").get<std::vector<std::string>>()};
  return {};
} catch (const std::exception&) {
  return fmt::format("the session of process {} can't be read", process);
}

void give_back_session(pid_t process) {
  const auto folder = kept_folder(process);
  std::error_code ignored;
  fs::rename(folder / claimed_name, folder / session_name, ignored);
}

std::vector<pid_t> detached_processes() {
  std::vector<pid_t> processes;
  std::error_code trouble;
  const auto base = base_of_temporary_folders();
  for (const auto& name : names_in(base, trouble)) {
    const auto folder = base / name;
    const auto process = process_of(folder);
    if (process <= 0 || !is_own_folder(folder)) continue;
    if (lives(folder, session_name)) {
      processes.push_back(process);
    } else if (start_of_process(process) == 0) {
      remove_tree(folder);
    }
  }
  std::sort(processes.begin(), processes.end());
  return processes;
}

}  // namespace pathstat::desk
