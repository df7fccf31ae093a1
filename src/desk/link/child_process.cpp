#include "desk/link/child_process.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "desk/link/reconnection.h"
#include "support/record_file.h"

namespace pathstat::desk {
namespace {

/// Runs in the child: what goes wrong is told to the parent through `report` as an error number.
[[noreturn]] void become(const ChildProcess::Start& how, char* const* environment, int output, int report,
                         pid_t parent) {
  // The child dies with its parent, in whatever way that ends.
  if (::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || ::getppid() != parent) ::_exit(127);
  const int input = ::open("/dev/null", O_RDONLY);
  const char* program = how.program.c_str();
  char* const arguments[] = {const_cast<char*>(program), nullptr};
  std::signal(SIGINT, SIG_IGN);
  std::signal(SIGPIPE, SIG_DFL);
  if (input >= 0 && ::dup2(input, 0) == 0 && ::dup2(output, 1) == 1 && ::dup2(output, 2) == 2 &&
      ::chdir(how.directory.c_str()) == 0) {
    ::execve(program, arguments, environment);
  }
  const int failure = errno;
  [[maybe_unused]] const auto told = ::write(report, &failure, sizeof failure);
  ::_exit(127);
}

std::vector<std::string> environment_of(const ChildProcess::Start& how) {
  std::vector<std::string> all;
  for (char** entry = environ; *entry; ++entry) {
    const std::string_view text = *entry;
    const auto name = text.substr(0, text.find('='));
    const bool replaced = std::any_of(how.environment.begin(), how.environment.end(),
                                      [&](const auto& setting) { return setting.first == name; });
    if (!replaced) all.emplace_back(text);
  }
  for (const auto& [name, value] : how.environment) all.push_back(fmt::format("{}={}", name, value));
  return all;
}

}  // namespace

std::string ChildProcess::start(const Start& how) {
  const auto settings = environment_of(how);
  std::vector<char*> environment;
  environment.reserve(settings.size() + 1);
  for (const auto& setting : settings) environment.push_back(const_cast<char*>(setting.c_str()));
  environment.push_back(nullptr);

  auto output = create_new(how.output, 0600);
  if (!output.is_open()) return fmt::format("cannot write {}: {}", how.output.string(), std::strerror(errno));
  int report[2];
  if (::pipe2(report, O_CLOEXEC) != 0) {
    return fmt::format("cannot start {}: {}", how.program.string(), std::strerror(errno));
  }
  const pid_t parent = ::getpid();
  adopted_ = false;
  id_ = ::fork();
  if (id_ == 0) become(how, environment.data(), output.get(), report[1], parent);
  int failure = id_ < 0 ? errno : 0;
  output.close();
  ::close(report[1]);
  if (id_ > 0) {
    ended_ = false;
    while (::read(report[0], &failure, sizeof failure) < 0 && errno == EINTR) continue;
  }
  ::close(report[0]);
  if (failure == 0) return {};
  wait(1000);
  return fmt::format("cannot start {}: {}", how.program.string(), std::strerror(failure));
}

void ChildProcess::adopt(pid_t process) {
  id_ = process;
  adopted_ = true;
  ended_ = false;
}

void ChildProcess::release() { ended_ = true; }

bool ChildProcess::runs() {
  if (ended_) return false;
  if (adopted_) {
    ended_ = start_of_process(id_) == 0;
    return !ended_;
  }
  const auto got = ::waitpid(id_, &wait_status_, WNOHANG);
  ended_ = got == id_ || (got < 0 && errno != EINTR);
  return !ended_;
}

bool ChildProcess::wait(int milliseconds) {
  using namespace std::chrono;
  const auto limit = steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (runs()) {
    if (steady_clock::now() >= limit) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

void ChildProcess::end(int milliseconds) {
  if (wait(milliseconds)) return;
  ::kill(id_, SIGTERM);
  if (wait(500)) return;
  ::kill(id_, SIGKILL);
  wait(5000);
}

bool ChildProcess::ended_well() const {
  return ended_ && !adopted_ && WIFEXITED(wait_status_) && WEXITSTATUS(wait_status_) == 0;
}

std::string ChildProcess::ending() const {
  if (!ended_) return "it still runs";
  if (adopted_) return "a status that is not known";
  if (WIFSIGNALED(wait_status_)) {
    return fmt::format("signal {} ({})", WTERMSIG(wait_status_), ::strsignal(WTERMSIG(wait_status_)));
  }
  return fmt::format("exit status {}", WEXITSTATUS(wait_status_));
}

}  // namespace pathstat::desk
