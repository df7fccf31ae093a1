#include "support/parallel.h"

#include <atomic>
#include <chrono>
#include <new>
#include <stdexcept>
#include <thread>

#include "testing.h"

namespace pathstat {
namespace {

class OnThreads : public testing::TestWithParam<int> {
 protected:
  OnThreads() { set_thread_count(GetParam()); }
};

TEST_P(OnThreads, run_each_block_once_and_join_in_order) {
  constexpr std::int64_t blocks = 500;
  std::vector<std::atomic<int>> runs(blocks);
  std::vector<std::int64_t> joined;
  std::vector<std::int64_t> held(thread_count(), -1);  // what a worker keeps from its run to its join
  for_blocks(
      blocks,
      [&](std::int64_t block, std::size_t worker) {
        ++runs[static_cast<std::size_t>(block)];
        held.at(worker) = block;
      },
      [&](std::int64_t block, std::size_t worker) {
        EXPECT_EQ(held[worker], block);
        joined.push_back(block);
      });
  EXPECT_TRUE(std::ranges::all_of(runs, [](const auto& count) { return count == 1; }));
  ASSERT_EQ(joined.size(), runs.size());
  EXPECT_TRUE(std::ranges::is_sorted(joined));
}

TEST_P(OnThreads, are_no_more_than_may_take_part) {
  for (const std::size_t most : {1U, 2U}) {
    std::atomic<int> runs = 0;
    std::atomic<std::size_t> last_worker = 0;
    for_blocks(
        200,
        [&](std::int64_t, std::size_t worker) {
          ++runs;
          if (worker > last_worker) last_worker = worker;
          std::this_thread::sleep_for(std::chrono::microseconds(50));  // so that all who may come to it
        },
        {}, most);
    EXPECT_EQ(runs, 200);
    EXPECT_LT(last_worker, most);
  }
}

TEST_P(OnThreads, the_first_failure_comes_back_and_ends_the_work) {
  std::atomic<int> joined = 0;
  const auto run = [](std::int64_t block, std::size_t) {
    if (block == 20) throw std::bad_alloc();
    if (block > 20) throw std::runtime_error("a later one");
  };
  for (int round = 0; round < 20; ++round) {
    EXPECT_THROW(for_blocks(1000, run, [&](std::int64_t, std::size_t) { ++joined; }), std::bad_alloc);
  }
  EXPECT_EQ(joined, 20 * 20);
  EXPECT_NO_THROW(for_blocks(10, run));
}

TEST_P(OnThreads, blocks_of_blocks_and_two_jobs_at_once_come_to_an_end) {
  std::atomic<int> done = 0;
  ParallelBlocks first(50,
                       [&](std::int64_t, std::size_t) { for_blocks(10, [&](std::int64_t, std::size_t) { ++done; }); });
  for_blocks(30, [&](std::int64_t, std::size_t) { ++done; });
  first.finish();
  EXPECT_EQ(done, 530);
  {
    const ParallelBlocks left([] { return 1'000'000; }(), [&](std::int64_t, std::size_t) { ++done; });
  }
  const int seen = done;
  for_blocks(0, [&](std::int64_t, std::size_t) { ++done; });
  EXPECT_EQ(done, seen);
}

TEST(ThreadCount, is_from_one_to_the_most_that_are_started) {
  for (const auto& [wanted, taken] : {std::pair{-1L, 1U}, {256L, 256U}, {1000000L, 256U}}) {
    set_thread_count(wanted);
    EXPECT_EQ(thread_count(), taken) << wanted;
  }
  set_thread_count(2);
}

INSTANTIATE_TEST_SUITE_P(counts, OnThreads, testing::Values(1, 2, 3, 8));

}  // namespace
}  // namespace pathstat
