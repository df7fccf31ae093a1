#include "desk/import/script_stream.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "desk/script/interrupts.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

/// Memory for a payload grows by so much at a time, as its bytes come.
constexpr std::size_t bytes_together = std::size_t{4} << 20;
constexpr int poll_milliseconds = 100;

/// Runs in the child.
[[noreturn]] void become(char* const* arguments, int output, pid_t parent) {
  // The child dies with its parent, in whatever way that ends, and leaves the interrupt key to it.
  if (::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || ::getppid() != parent) ::_exit(127);
  std::signal(SIGINT, SIG_IGN);
  std::signal(SIGPIPE, SIG_DFL);
  const int input = ::open("/dev/null", O_RDONLY);
  if (input >= 0 && ::dup2(input, 0) == 0 && ::dup2(output, 1) == 1) ::execvp(arguments[0], arguments);
  ::_exit(127);
}

}  // namespace

fs::path scripts_folder() {
  if (const char* told = std::getenv("PATHSTAT_SCRIPTS")) return told;
  std::error_code error;
  const auto program = fs::read_symlink("/proc/self/exe", error);
  return program.parent_path().parent_path() / "share" / "pathstat" / "python";
}

ScriptStream::~ScriptStream() {
  if (child_ <= 0) return;
  ::kill(child_, SIGKILL);
  reap();
}

std::string ScriptStream::start(const std::string& script, const std::vector<std::string>& arguments) {
  const auto path = scripts_folder() / script;
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return fmt::format("the script {} is missing", path.string());
  std::vector<std::string> words{"python3", path.string()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (auto& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);

  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return fmt::format("cannot start python3: {}", std::strerror(errno));
  pipe_ = FileDescriptor(ends[0]);
  const FileDescriptor output(ends[1]);
  ::fcntl(ends[0], F_SETPIPE_SZ, 1 << 20);  // fewer turns between the two; without it all goes on, but slower
  const pid_t parent = ::getpid();
  child_ = ::fork();
  if (child_ == 0) become(pointers.data(), output.get(), parent);
  return child_ < 0 ? fmt::format("cannot start python3: {}", std::strerror(errno)) : std::string{};
}

ScriptStream::Next ScriptStream::fill(std::span<std::byte> bytes, std::size_t& got) {
  got = 0;
  while (got < bytes.size()) {
    pollfd waiting{pipe_.get(), POLLIN, 0};
    const int ready = ::poll(&waiting, 1, poll_milliseconds);
    if (interrupts() > 0) return Next::interrupted;
    if (ready == 0 || (ready < 0 && errno == EINTR)) continue;
    const auto count = ::read(pipe_.get(), bytes.data() + got, bytes.size() - got);
    if (count == 0) return Next::ended;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      problem_ = fmt::format("the import script is not to be read: {}", std::strerror(errno));
      return Next::failed;
    }
    got += static_cast<std::size_t>(count);
  }
  return Next::block;
}

ScriptStream::Next ScriptStream::next(Block& block, const std::function<std::int64_t(std::string_view tag)>& longest) {
  struct {
    char tag[8];
    std::int64_t length;
  } head{};
  std::size_t got = 0;
  auto state = fill(std::as_writable_bytes(std::span(&head, 1)), got);
  if (state == Next::ended) {
    reap();
    return got == 0 ? Next::ended : Next::failed;
  }
  if (state != Next::block) return state;
  block.tag.assign(head.tag, sizeof head.tag);
  block.tag.erase(block.tag.find_last_not_of(' ') + 1);
  if (const auto most = longest(block.tag); head.length < 0 || head.length > most) {
    problem_ = fmt::format("the import script sent a block {} of {} bytes, which can have {}", block.tag, head.length,
                           std::max<std::int64_t>(most, 0));
    return Next::failed;
  }
  const auto length = static_cast<std::size_t>(head.length);
  for (std::size_t have = 0; have < length; have += got) {
    const auto step = std::min(bytes_together, length - have);
    if (payload_.size() < have + step) payload_.resize(have + step);
    state = fill(std::span(payload_).subspan(have, step), got);
    if (state == Next::ended) {
      reap();
      return Next::failed;
    }
    if (state != Next::block) return state;
  }
  block.payload = std::span(payload_).first(length);
  return Next::block;
}

void ScriptStream::reap() {
  int status = 0;
  while (::waitpid(child_, &status, 0) < 0 && errno == EINTR) continue;
  child_ = 0;
  if (WIFEXITED(status) && WEXITSTATUS(status) == 127) {
    problem_ = "python3 cannot be started; install the package python3-mdanalysis";
  } else if (WIFSIGNALED(status)) {
    problem_ =
        fmt::format("the import script was ended by signal {} ({})", WTERMSIG(status), ::strsignal(WTERMSIG(status)));
  } else {
    problem_ = fmt::format("the import script ended early, with exit status {}", WEXITSTATUS(status));
  }
}

}  // namespace pathstat::desk
