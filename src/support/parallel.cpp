#include "support/parallel.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <exception>
#include <limits>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace pathstat {
namespace {

constexpr std::int64_t no_block = std::numeric_limits<std::int64_t>::max();

/// Set on a thread that runs a block: its own calls run right there.
thread_local bool in_block = false;

}  // namespace

/// All members but the bodies are guarded by the pool's mutex.
struct ParallelBlocks::Job {
  std::int64_t blocks;
  BlockBody run;
  BlockBody join;
  std::size_t workers;
  std::int64_t next = 0;
  std::int64_t joined = 0;  ///< blocks whose turn to join is over
  std::size_t running = 0;
  std::int64_t failed = no_block;
  std::exception_ptr failure;
  std::condition_variable turn;
  std::condition_variable done;

  bool open_to(std::size_t worker) const { return worker < workers && next < blocks && failed == no_block; }
};

namespace {

using Job = ParallelBlocks::Job;

/// The threads and the jobs that they share. Never destroyed: threads may sleep in it when the process ends.
class Pool {
 public:
  std::size_t threads() {
    const std::lock_guard lock(mutex_);
    return threads_;
  }

  void set_threads(std::int64_t count) {
    const std::lock_guard lock(mutex_);
    threads_ = static_cast<std::size_t>(std::clamp<std::int64_t>(count, 1, std::int64_t{most_threads}));
  }

  void begin(const std::shared_ptr<Job>& job) {
    const std::lock_guard lock(mutex_);
    if (ended_ || threads_ == 1 || job->blocks < 1) return;
    start_helpers();
    jobs_.push_back(job);
    ++begun_;
    work_.notify_all();
  }

  /// Works on the job on the calling thread, then waits for the others.
  void finish(Job& job) {
    std::unique_lock lock(mutex_);
    while (job.open_to(0)) run_next(job, 0, lock);
    job.done.wait(lock, [&] { return job.running == 0; });
    drop(job);
  }

  /// Lets no further block begin and waits.
  void abandon(Job& job) {
    std::unique_lock lock(mutex_);
    job.next = job.blocks;
    job.done.wait(lock, [&] { return job.running == 0; });
    drop(job);
  }

  void end() {
    std::unique_lock lock(mutex_);
    ended_ = true;
    for (const auto& job : jobs_) job->next = job->blocks;
    for (const auto& job : std::vector(jobs_)) job->done.wait(lock, [&] { return job->running == 0; });
    jobs_.clear();
  }

 private:
  /// Helper k, from 1, is worker k of each job. The process goes on with fewer where the system has no more.
  void start_helpers() try {
    if (helpers_ == 0) std::atexit(end_parallel_work);  // before the owners of what blocks work on
    while (helpers_ + 1 < threads_) {
      std::thread([this, worker = helpers_ + 1] { help(worker); }).detach();
      ++helpers_;
    }
  } catch (const std::system_error&) {
  }

  void help(std::size_t worker) {
    std::unique_lock lock(mutex_);
    while (true) {
      const auto open = std::ranges::find_if(jobs_, [&](const auto& job) { return job->open_to(worker); });
      if (open == jobs_.end() || worker >= threads_) {
        if (worker >= threads_ || !comes_soon(lock)) work_.wait(lock);
        continue;
      }
      const std::shared_ptr<Job> job = *open;
      while (job->open_to(worker)) run_next(*job, worker, lock);
    }
  }

  /// Looks out for another job for a moment: to wake a thread that sleeps takes longer than many a job that comes once
  /// a frame.
  bool comes_soon(std::unique_lock<std::mutex>& lock) {
    const auto seen = begun_.load();
    lock.unlock();
    const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(100);
    while (begun_.load() == seen && std::chrono::steady_clock::now() < end) {
    }
    lock.lock();
    return begun_.load() != seen;
  }

  void run_next(Job& job, std::size_t worker, std::unique_lock<std::mutex>& lock) {
    const std::int64_t block = job.next++;
    ++job.running;
    lock.unlock();
    std::exception_ptr failure = guarded(job.run, block, worker);
    lock.lock();
    if (job.join) {
      job.turn.wait(lock, [&] { return job.joined == block; });
      if (!failure && job.failed > block) {
        lock.unlock();
        failure = guarded(job.join, block, worker);
        lock.lock();
      }
      ++job.joined;
      job.turn.notify_all();
    }
    if (failure && block < job.failed) {
      job.failed = block;
      job.failure = failure;
    }
    if (--job.running == 0) job.done.notify_all();
  }

  static std::exception_ptr guarded(const BlockBody& body, std::int64_t block, std::size_t worker) {
    const bool outside = std::exchange(in_block, true);
    std::exception_ptr failure;
    try {
      body(block, worker);
    } catch (...) {
      failure = std::current_exception();
    }
    in_block = outside;
    return failure;
  }

  void drop(const Job& job) {
    std::erase_if(jobs_, [&](const auto& other) { return other.get() == &job; });
  }

  std::mutex mutex_;
  std::condition_variable work_;
  std::vector<std::shared_ptr<Job>> jobs_;
  std::size_t threads_ = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, most_threads);
  std::size_t helpers_ = 0;
  std::atomic<std::uint64_t> begun_ = 0;  ///< jobs; changes under the mutex
  bool ended_ = false;
};

Pool& pool() {
  static auto* const instance = new Pool;
  return *instance;
}

}  // namespace

std::size_t thread_count() { return pool().threads(); }
void set_thread_count(std::int64_t count) { pool().set_threads(count); }

ParallelBlocks::ParallelBlocks(std::int64_t blocks, BlockBody run, BlockBody join, std::size_t workers)
    : job_(std::make_shared<Job>()) {
  job_->blocks = blocks;
  job_->run = std::move(run);
  job_->join = std::move(join);
  job_->workers = workers;
  pool().begin(job_);
}

ParallelBlocks::~ParallelBlocks() { pool().abandon(*job_); }

void ParallelBlocks::finish() {
  pool().finish(*job_);
  if (job_->failure) std::rethrow_exception(std::exchange(job_->failure, {}));
}

void for_blocks(std::int64_t blocks, BlockBody run, BlockBody join, std::size_t workers) {
  if (!in_block && blocks > 1 && workers > 1)
    return ParallelBlocks(blocks, std::move(run), std::move(join), workers).finish();
  for (std::int64_t block = 0; block < blocks; ++block) {
    run(block, 0);
    if (join) join(block, 0);
  }
}

void for_pieces(std::size_t count, std::size_t length,
                const std::function<void(std::size_t first, std::size_t end)>& run) {
  for_blocks(static_cast<std::int64_t>((count + length - 1) / length), [&](std::int64_t piece, std::size_t) {
    const std::size_t first = static_cast<std::size_t>(piece) * length;
    run(first, std::min(first + length, count));
  });
}

void end_parallel_work() { pool().end(); }

}  // namespace pathstat
