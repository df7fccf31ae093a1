#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

// Work shared among the threads of the process. Blocks may run in any order and at the same time; what they add up is
// joined in the order of the blocks, so that results do not depend on the number of threads. Blocks compute and
// nothing else: they never call the Core, print or poll.
namespace pathstat {

/// Threads that share the work, the calling one included; from 1. All processors until it is set.
std::size_t thread_count();
/// @param count  taken as 1 if it is below, and as the most that are ever started if it is above
void set_thread_count(std::int64_t count);

/// @param worker  below thread_count(): a place for what a block needs to itself
using BlockBody = std::function<void(std::int64_t block, std::size_t worker)>;

/// Threads that there never are more of.
constexpr std::size_t most_threads = 256;

/// Blocks that the other threads begin with at once, while the caller does something else.
class ParallelBlocks {
 public:
  /// @param join  called behind a block's run on the same thread, for one block after another from 0 on; may be empty
  /// @param workers  that take part at most, from 1; fewer where each takes much memory
  ParallelBlocks(std::int64_t blocks, BlockBody run, BlockBody join = {}, std::size_t workers = most_threads);
  /// Blocks that have not begun are left out; waits for those that have.
  ~ParallelBlocks();
  ParallelBlocks(const ParallelBlocks&) = delete;
  ParallelBlocks& operator=(const ParallelBlocks&) = delete;

  /// Takes part until all blocks are done. Throws what the first of the failed blocks threw; no block begins after a
  /// failure, and none behind the failed one is joined.
  void finish();

  struct Job;

 private:
  std::shared_ptr<Job> job_;
};

/// Runs all blocks and waits for them; a single one, and those that a block asks for, on the calling thread.
void for_blocks(std::int64_t blocks, BlockBody run, BlockBody join = {}, std::size_t workers = most_threads);

/// The same for pieces of a range, 0 ... count, of `length` each.
void for_pieces(std::size_t count, std::size_t length,
                const std::function<void(std::size_t first, std::size_t end)>& run);

/// No block begins any more, and this waits for those that run: for the end of the process, before what they work on
/// goes away. What is asked for afterwards runs on the calling thread.
void end_parallel_work();

}  // namespace pathstat
