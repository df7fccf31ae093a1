// Commands and requests of any words and arguments, with any answers of the Core to the calls that they make, and
// further commands while such a call waits. Words that lead to files of the user or end the process are left out; what
// is written goes to a folder that is not there any more.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <vector>

#include "corelink/remote_call.h"
#include "desk/script/script.h"
#include "fuzz_input.h"
#include "main/applications.h"
#include "scratch_folder.h"
#include "shell/application_table.h"
#include "shell/word_table.h"

namespace pathstat {
namespace {

fuzz::Numbers* core = nullptr;  ///< all that it says
Connection no_connection;

struct Word {
  std::string_view application, word;
};

const std::vector<Word>& words() {
  static const auto all = [] {
    std::vector<Word> list;
    for (const auto* table : words_of_applications()) {
      for (const auto& row : table->words) {
        const bool leaves = row.word == "STOP" || row.word == "DETACH";
        if (!leaves && !desk::takes_path(row.word)) list.push_back({table->application, row.word});
      }
    }
    return list;
  }();
  return all;
}

std::string text_of_core() {
  std::string text(core->byte() % 32, '\0');
  for (char& c : text) c = static_cast<char>(core->byte());
  return text;
}

/// Most numbers of a Core are small.
std::int32_t integer_of_core() {
  const auto choice = core->byte();
  return choice < 240 ? choice % 24 - 2 : core->below(65535) - 32768;
}

double number_of_core() { return core->byte() < 240 ? 40 * core->fraction() : core->any(); }

void run_one() {
  const auto& word = words()[static_cast<std::size_t>(core->below(static_cast<std::int32_t>(words().size()) - 1))];
  if (core->byte() % 4 != 0) {
    sch_ParseApplicationCommand(word.application, word.word, text_of_core());
    return;
  }
  std::array<char, 64> value{}, range{};
  std::int64_t value_length = 0, range_length = 0;
  sch_ParseApplicationRequest(word.application, word.word, value, range, value_length, range_length);
  if (value_length < 0 || range_length < 0) __builtin_trap();
}

/// A folder in which nothing can be made.
int folder_that_is_gone() {
  const ScratchFolder scratch;
  const int folder = ::open(scratch.path().c_str(), O_PATH);
  if (folder < 0) __builtin_trap();
  return folder;
}

}  // namespace

// Calls of the Core lead here.

void set_nested_input_handler(NestedInputHandler) {}
RemoteCall::RemoteCall(std::string_view, std::int32_t, std::int32_t, std::int32_t&) : connection_(no_connection) {}
void RemoteCall::send(std::span<const std::int32_t>) {}
void RemoteCall::send(std::span<const float>) {}
void RemoteCall::send(std::span<const double>) {}
void RemoteCall::send_text(std::string_view) {}
void RemoteCall::wait() {
  static int depth = 0;
  if (core->byte() < 250 || depth > 3) return;
  ++depth;
  run_one();
  --depth;
}
void RemoteCall::receive(std::span<std::int32_t> values) {
  for (auto& value : values) value = integer_of_core();
}
void RemoteCall::receive(std::span<float> values) {
  for (auto& value : values) value = static_cast<float>(number_of_core());
}
void RemoteCall::receive(std::span<double> values) {
  for (auto& value : values) value = number_of_core();
}
std::string RemoteCall::receive_text() { return text_of_core(); }

}  // namespace pathstat

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace pathstat;
  static const int folder = folder_that_is_gone(), home = ::open(".", O_PATH);
  register_applications(applications_of_process());
  fuzz::Numbers numbers(std::span(data, size));
  core = &numbers;
  if (::fchdir(folder) != 0) __builtin_trap();
  sch_InitApplications();
  while (!numbers.ended()) run_one();
  sch_TerminateApplications();
  if (::fchdir(home) != 0) __builtin_trap();
  return 0;
}
