#include "host/services/parallelloop.h"

#include <algorithm>
#include <thread>

#include <tbb/blocked_range.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

namespace q7z
{

namespace
{

int CountCores() noexcept
{
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

/// What the library makes once in a process is made before main, when memory is not short yet: if it ran out in the middle of that,
/// every later call would wait for ever. Threads are started when there is work.
[[maybe_unused]] const bool g_isLibraryReady = []() noexcept
{
  const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, static_cast<size_t>(CountCores()));
  tbb::task_arena arena(CountCores());
  arena.initialize();
  return arena.is_active();
}();

}  // namespace

struct ParallelLoop::Arena
{
  explicit Arena(int threads)
      : limit(tbb::global_control::max_allowed_parallelism, static_cast<size_t>(std::max(threads, CountCores()))),
        arena(threads > 0 ? threads : CountCores())
  {
    arena.initialize();  // now: an arena that runs out of memory in its first use waits for ever in the next
  }
  tbb::global_control limit;  // more threads than cores, where they are asked for
  tbb::task_arena arena;
};

ParallelLoop::ParallelLoop(int threads) : _arena(std::make_unique<Arena>(threads))
{}
ParallelLoop::~ParallelLoop() = default;

void ParallelLoop::Run(Int count, Int grain, RangeFunction function, void* context)
{
  const auto body = [=](const tbb::blocked_range<Int>& range) { function(context, range.begin(), range.end()); };
  _arena->arena.execute(
    [&]
    {
      const tbb::blocked_range<Int> all(0, count, static_cast<size_t>(grain));
      tbb::parallel_for(all, body, tbb::simple_partitioner());
    });
}

}  // namespace q7z
