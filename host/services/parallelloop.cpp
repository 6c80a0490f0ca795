#include "host/services/parallelloop.h"

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

namespace q7z
{

struct ParallelLoop::Arena
{
  explicit Arena(int threads) : arena(threads > 0 ? threads : tbb::task_arena::automatic) {}
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
