#include "recording_core.h"

#include <cstdio>
#include <span>

#include "corelink/remote_call.h"
#include "testing.h"

namespace pathstat {
namespace {

RecordingCore* core = nullptr;
Connection no_connection;
std::string name_of_call;
RecordingCore::Inputs inputs_of_call;

template <class T>
void keep(std::span<const T> values) {
  for (const T value : values) {
    char text[40];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
    inputs_of_call.emplace_back(text);
  }
}

template <class T, class Source>
void give(std::span<T> values, std::deque<Source>& answers) {
  for (T& value : values) {
    value = answers.empty() ? T{} : static_cast<T>(answers.front());
    if (!answers.empty()) answers.pop_front();
  }
}

std::string joined(const RecordingCore::Inputs& words, char separator) {
  std::string text;
  for (const auto& word : words) text += (text.empty() ? "" : std::string(1, separator)) + word;
  return text;
}

}  // namespace

RecordingCore::RecordingCore() {
  core = this;
  answers["kvP_HAN_Write"] = [this](const Inputs& inputs) {
    const auto known = std::ranges::find(handles_, inputs);
    const auto handle = static_cast<std::int32_t>(known - handles_.begin()) + 1;
    if (known == handles_.end()) handles_.push_back(inputs);
    return Answer{{handle, 0}, {}, {}};
  };
  answers["kvP_HAN_Info"] = [this](const Inputs& inputs) {
    const Inputs& handle = handles_.at(std::stoul(inputs[0]) - 1);
    return Answer{{1, 0, std::stoi(handle[1]), 0}, {}, {handle[0]}};
  };
}

RecordingCore::~RecordingCore() { core = nullptr; }

std::vector<std::string> RecordingCore::calls(const std::string& start) const {
  std::vector<std::string> found;
  for (const auto& words : log_) {
    if (words[0].starts_with(start)) found.push_back(joined(words, '|'));
  }
  return found;
}

std::vector<std::string> RecordingCore::messages() const {
  std::vector<std::string> shown;
  Inputs words;
  for (const auto& call : log_) {
    if (call[0].starts_with("kvU_MSG_Arg")) words.push_back(call[1]);
    if (call[0] != "kvU_MSG_Display") continue;
    EXPECT_EQ(call[1], "2") << call[2];
    words.push_back(call[2]);
    shown.push_back(joined(words, ' '));
    words.clear();
  }
  return shown;
}

void RecordingCore::call(const std::string& name, const Inputs& inputs) {
  Inputs words{name};
  words.insert(words.end(), inputs.begin(), inputs.end());
  log_.push_back(words);
  const auto found = answers.find(name);
  answer_ = found == answers.end() ? Answer{} : found->second(inputs);
}

RemoteCall::RemoteCall(std::string_view name, std::int32_t, std::int32_t, std::int32_t&) : connection_(no_connection) {
  name_of_call = name;
  inputs_of_call.clear();
}
void RemoteCall::send(std::span<const std::int32_t> values) { keep(values); }
void RemoteCall::send(std::span<const float> values) { keep(values); }
void RemoteCall::send(std::span<const double> values) { keep(values); }
void RemoteCall::send_text(std::string_view text) { inputs_of_call.emplace_back(text); }
void RemoteCall::wait() { core->call(name_of_call, inputs_of_call); }
void RemoteCall::receive(std::span<std::int32_t> values) { give(values, core->answer_.integers); }
void RemoteCall::receive(std::span<float> values) { give(values, core->answer_.doubles); }
void RemoteCall::receive(std::span<double> values) { give(values, core->answer_.doubles); }
std::string RemoteCall::receive_text() {
  if (core->answer_.texts.empty()) return {};
  const std::string text = core->answer_.texts.front();
  core->answer_.texts.pop_front();
  return text;
}

}  // namespace pathstat
