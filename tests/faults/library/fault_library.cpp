// Preloaded into a program that is tested: counts its calls of one kind and makes the n-th of them fail, or return
// short. What to do stands in the environment:
//   FAULT_PROGRAM  name of the program that is meant; others, started by it, are left alone
//   FAULT_CALL     the kind of call: malloc, open, read, write, close, rename, connect, accept, socket, process
//   FAULT_AT       which call, from 1; 0 only counts
//   FAULT_HOW      once: that call fails; on: that and all behind it; short: it does half of what it is asked for;
//                  rarely: some calls fail, by chance, and FAULT_AT is its seed;
//                  the number of a signal: the program gets it
//   FAULT_ACCOUNT  file of the shared account
// Writes to the standard error output always go well: there a program tells what has happened.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <netdb.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "faults/library/fault_library.h"

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

using pathstat::faults::Account;

enum class Kind { none, malloc, open, read, write, close, rename, connect, accept, socket, process };
enum class How { once, on, half, rarely, signal };
enum class Verdict { pass, fail, half };

constexpr const char* kind_names[] = {"none",   "malloc",  "open",   "read",   "write",  "close",
                                      "rename", "connect", "accept", "socket", "process"};

Kind watched = Kind::none;
How how = How::once;
int signal_number = 0;
std::uint64_t at = 0;
Account* account = nullptr;
/// What runs ahead of main() is the business of the system's libraries, and cannot be told of.
bool in_main = false;
/// The system's look-up of host names ends the process by itself where it has no memory.
thread_local bool in_look_up = false;
int (*real_main)(int, char**, char**) = nullptr;

int main_of_program(int count, char** arguments, char** environment) {
  in_main = true;
  return real_main(count, arguments, environment);
}

/// The function of the C library that ours stands before.
template <class Function>
Function* real(Function*, const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}
#define REAL(name) static const auto real_##name = real(&::name, #name)

__attribute__((constructor)) void begin() {
  const char* program = std::getenv("FAULT_PROGRAM");
  const char* call = std::getenv("FAULT_CALL");
  const char* place = std::getenv("FAULT_AT");
  const char* manner = std::getenv("FAULT_HOW");
  const char* file = std::getenv("FAULT_ACCOUNT");
  if (!program || !call || !place || !manner || !file) return;
  if (std::strcmp(program, program_invocation_short_name) != 0) return;
  const int descriptor = static_cast<int>(::syscall(SYS_openat, AT_FDCWD, file, O_RDWR | O_CLOEXEC));
  if (descriptor < 0) return;
  void* shared = ::mmap(nullptr, sizeof(Account), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  ::syscall(SYS_close, descriptor);
  if (shared == MAP_FAILED) return;
  account = static_cast<Account*>(shared);
  at = std::strtoull(place, nullptr, 10);
  signal_number = std::atoi(manner);
  how = signal_number > 0                    ? How::signal
        : std::strcmp(manner, "short") == 0  ? How::half
        : std::strcmp(manner, "on") == 0     ? How::on
        : std::strcmp(manner, "rarely") == 0 ? How::rarely
                                             : How::once;
  for (int k = 1; k <= static_cast<int>(Kind::process); ++k) {
    if (std::strcmp(call, kind_names[k]) == 0) watched = static_cast<Kind>(k);
  }
}

/// One call of some five hundred.
bool is_hit_by_chance(std::uint64_t number) {
  constexpr std::uint64_t one_of = 512;
  std::uint64_t mixed = (number + (at << 32)) * 0x9e3779b97f4a7c15;
  mixed = (mixed ^ (mixed >> 31)) * 0xbf58476d1ce4e5b9;
  return (mixed >> 32) % one_of == 0;
}

Verdict judge(Kind kind) {
  if (kind != watched || !in_main || in_look_up) return Verdict::pass;
  const auto number = ++account->calls;
  if (at == 0) return Verdict::pass;
  if (how == How::rarely ? !is_hit_by_chance(number) : number < at || (number > at && how != How::on)) {
    return Verdict::pass;
  }
  ++account->fired;
  account->when = std::chrono::steady_clock::now().time_since_epoch().count();
  if (how == How::signal) {
    ::kill(::getpid(), signal_number);
    return Verdict::pass;
  }
  return how == How::half ? Verdict::half : Verdict::fail;
}

/// True, with errno set, if a call has to fail.
bool fails(Kind kind, int error) {
  if (judge(kind) == Verdict::pass) return false;
  errno = error;
  return true;
}

bool is_socket(int descriptor) {
  struct stat facts {};
  return ::fstat(descriptor, &facts) == 0 && S_ISSOCK(facts.st_mode);
}

/// A transfer of bytes, of which a verdict may leave half.
template <class Transfer>
ssize_t transferred(Kind kind, int descriptor, std::size_t size, Transfer transfer) {
  if (kind == Kind::write && descriptor == STDERR_FILENO) return transfer(size);
  const auto verdict = judge(kind);
  if (verdict == Verdict::fail) {
    errno = is_socket(descriptor) ? ECONNRESET : kind == Kind::write ? ENOSPC : EIO;
    return -1;
  }
  return transfer(verdict == Verdict::half && size > 1 ? size / 2 : size);
}

/// The mode argument of the calls that open.
mode_t mode_of(int flags, va_list arguments) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

// The C library declares much of this with attributes that a definition need not repeat.
#pragma GCC diagnostic ignored "-Wattributes"
#pragma GCC diagnostic ignored "-Wnonnull-compare"

extern "C" {

int __libc_start_main(int (*program)(int, char**, char**), int count, char** arguments, void (*first)(), void (*last)(),
                      void (*linker_last)(), void* stack_end) {
  const auto start = reinterpret_cast<decltype(&__libc_start_main)>(::dlsym(RTLD_NEXT, "__libc_start_main"));
  real_main = program;
  return start(main_of_program, count, arguments, first, last, linker_last, stack_end);
}

void* malloc(std::size_t size) { return fails(Kind::malloc, ENOMEM) ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) {
  return fails(Kind::malloc, ENOMEM) ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
  return fails(Kind::malloc, ENOMEM) ? nullptr : __libc_realloc(block, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
  return fails(Kind::malloc, ENOMEM) ? nullptr : __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return fails(Kind::malloc, ENOMEM) ? nullptr : __libc_memalign(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  if (fails(Kind::malloc, ENOMEM)) return ENOMEM;
  *block = __libc_memalign(alignment, size);
  return *block ? 0 : ENOMEM;
}

#define OPENER(name)                                                        \
  int name(const char* path, int flags, ...) {                              \
    REAL(name);                                                             \
    va_list arguments;                                                      \
    va_start(arguments, flags);                                             \
    const auto mode = mode_of(flags, arguments);                            \
    va_end(arguments);                                                      \
    return fails(Kind::open, EMFILE) ? -1 : real_##name(path, flags, mode); \
  }
OPENER(open)
OPENER(open64)

#define OPENER_AT(name)                                                             \
  int name(int folder, const char* path, int flags, ...) {                          \
    REAL(name);                                                                     \
    va_list arguments;                                                              \
    va_start(arguments, flags);                                                     \
    const auto mode = mode_of(flags, arguments);                                    \
    va_end(arguments);                                                              \
    return fails(Kind::open, EMFILE) ? -1 : real_##name(folder, path, flags, mode); \
  }
OPENER_AT(openat)
OPENER_AT(openat64)

#define STREAM_OPENER(name)                                               \
  FILE* name(const char* path, const char* mode) {                        \
    REAL(name);                                                           \
    return fails(Kind::open, EMFILE) ? nullptr : real_##name(path, mode); \
  }
STREAM_OPENER(fopen)
STREAM_OPENER(fopen64)
FILE* fdopen(int descriptor, const char* mode) {
  REAL(fdopen);
  return fails(Kind::open, EMFILE) ? nullptr : real_fdopen(descriptor, mode);
}
FILE* tmpfile() {
  REAL(tmpfile);
  return fails(Kind::open, EMFILE) ? nullptr : real_tmpfile();
}
DIR* opendir(const char* path) {
  REAL(opendir);
  return fails(Kind::open, EMFILE) ? nullptr : real_opendir(path);
}
char* mkdtemp(char* pattern) {
  REAL(mkdtemp);
  return fails(Kind::open, EMFILE) ? nullptr : real_mkdtemp(pattern);
}
int mkdir(const char* path, mode_t mode) {
  REAL(mkdir);
  return fails(Kind::open, EACCES) ? -1 : real_mkdir(path, mode);
}

ssize_t read(int descriptor, void* bytes, std::size_t size) {
  REAL(read);
  return transferred(Kind::read, descriptor, size, [&](std::size_t n) { return real_read(descriptor, bytes, n); });
}
#define READER_AT(name)                                                                           \
  ssize_t name(int descriptor, void* bytes, std::size_t size, off_t offset) {                     \
    REAL(name);                                                                                   \
    return transferred(Kind::read, descriptor, size,                                              \
                       [&](std::size_t n) { return real_##name(descriptor, bytes, n, offset); }); \
  }
READER_AT(pread)
READER_AT(pread64)
ssize_t recv(int descriptor, void* bytes, std::size_t size, int flags) {
  REAL(recv);
  return transferred(Kind::read, descriptor, size,
                     [&](std::size_t n) { return real_recv(descriptor, bytes, n, flags); });
}
std::size_t fread(void* items, std::size_t size, std::size_t count, FILE* stream) {
  REAL(fread);
  const auto got = transferred(Kind::read, ::fileno(stream), count,
                               [&](std::size_t n) { return static_cast<ssize_t>(real_fread(items, size, n, stream)); });
  return got < 0 ? 0 : static_cast<std::size_t>(got);
}

ssize_t write(int descriptor, const void* bytes, std::size_t size) {
  REAL(write);
  return transferred(Kind::write, descriptor, size, [&](std::size_t n) { return real_write(descriptor, bytes, n); });
}
ssize_t writev(int descriptor, const iovec* parts, int count) {
  REAL(writev);
  // Half of a block in parts is its first part.
  return transferred(Kind::write, descriptor, static_cast<std::size_t>(count),
                     [&](std::size_t n) { return real_writev(descriptor, parts, static_cast<int>(n)); });
}
#define WRITER_AT(name)                                                                           \
  ssize_t name(int descriptor, const void* bytes, std::size_t size, off_t offset) {               \
    REAL(name);                                                                                   \
    return transferred(Kind::write, descriptor, size,                                             \
                       [&](std::size_t n) { return real_##name(descriptor, bytes, n, offset); }); \
  }
WRITER_AT(pwrite)
WRITER_AT(pwrite64)
ssize_t send(int descriptor, const void* bytes, std::size_t size, int flags) {
  REAL(send);
  return transferred(Kind::write, descriptor, size,
                     [&](std::size_t n) { return real_send(descriptor, bytes, n, flags); });
}
std::size_t fwrite(const void* items, std::size_t size, std::size_t count, FILE* stream) {
  REAL(fwrite);
  const auto done = transferred(Kind::write, ::fileno(stream), count, [&](std::size_t n) {
    return static_cast<ssize_t>(real_fwrite(items, size, n, stream));
  });
  return done < 0 ? 0 : static_cast<std::size_t>(done);
}
int fflush(FILE* stream) {
  REAL(fflush);
  if (!stream || ::fileno(stream) == STDERR_FILENO) return real_fflush(stream);
  return fails(Kind::write, ENOSPC) ? EOF : real_fflush(stream);
}
int fclose(FILE* stream) {
  REAL(fclose);
  const bool failed = fails(Kind::close, ENOSPC);
  const int result = real_fclose(stream);
  if (failed) errno = ENOSPC;
  return failed ? EOF : result;
}
int close(int descriptor) {
  REAL(close);
  const bool failed = fails(Kind::close, EIO);
  const int result = real_close(descriptor);
  if (failed) errno = EIO;
  return failed ? -1 : result;
}

int rename(const char* from, const char* to) {
  REAL(rename);
  return fails(Kind::rename, EACCES) ? -1 : real_rename(from, to);
}
int ftruncate(int descriptor, off_t size) {
  REAL(ftruncate);
  return fails(Kind::rename, EIO) ? -1 : real_ftruncate(descriptor, size);
}

int connect(int descriptor, const sockaddr* address, socklen_t size) {
  REAL(connect);
  return fails(Kind::connect, ECONNREFUSED) ? -1 : real_connect(descriptor, address, size);
}
int accept(int descriptor, sockaddr* address, socklen_t* size) {
  REAL(accept);
  return fails(Kind::accept, EMFILE) ? -1 : real_accept(descriptor, address, size);
}
int accept4(int descriptor, sockaddr* address, socklen_t* size, int flags) {
  REAL(accept4);
  return fails(Kind::accept, EMFILE) ? -1 : real_accept4(descriptor, address, size, flags);
}

int socket(int domain, int type, int protocol) {
  REAL(socket);
  return fails(Kind::socket, EMFILE) ? -1 : real_socket(domain, type, protocol);
}
int bind(int descriptor, const sockaddr* address, socklen_t size) {
  REAL(bind);
  return fails(Kind::socket, EADDRINUSE) ? -1 : real_bind(descriptor, address, size);
}
int listen(int descriptor, int waiting) {
  REAL(listen);
  return fails(Kind::socket, EADDRINUSE) ? -1 : real_listen(descriptor, waiting);
}

int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** found) {
  REAL(getaddrinfo);
  in_look_up = true;
  const int result = real_getaddrinfo(name, service, hints, found);
  in_look_up = false;
  return result;
}

pid_t fork() {
  REAL(fork);
  return fails(Kind::process, EAGAIN) ? -1 : real_fork();
}
int pipe2(int* ends, int flags) {
  REAL(pipe2);
  return fails(Kind::process, EMFILE) ? -1 : real_pipe2(ends, flags);
}
int posix_spawnp(pid_t* child, const char* program, const posix_spawn_file_actions_t* actions,
                 const posix_spawnattr_t* attributes, char* const* arguments, char* const* environment) {
  REAL(posix_spawnp);
  return fails(Kind::process, EAGAIN) ? EAGAIN
                                      : real_posix_spawnp(child, program, actions, attributes, arguments, environment);
}
int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument) {
  REAL(pthread_create);
  return fails(Kind::process, EAGAIN) ? EAGAIN : real_pthread_create(thread, attributes, start, argument);
}

}  // extern "C"
