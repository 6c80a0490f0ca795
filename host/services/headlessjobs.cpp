#include "host/services/headlessjobs.h"

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <atomic>
#include <mutex>

namespace q7z
{

struct HeadlessJobs::Arena
{
  explicit Arena(int threads) : arena(threads > 0 ? threads : tbb::task_arena::automatic) {}
  tbb::task_arena arena;
};

namespace
{

/// The first error of a loop; what has not begun when it is set is left out.
class FirstError
{
public:
  void Set(const Error& error)
  {
    const std::lock_guard lock(_mutex);
    if (!_error)
      _error = error;
    _failed.store(true, std::memory_order_relaxed);
  }
  bool HasFailed() const { return _failed.load(std::memory_order_relaxed); }
  Error Get()
  {
    const std::lock_guard lock(_mutex);
    return _error;
  }

private:
  std::mutex _mutex;
  Error _error;
  std::atomic<bool> _failed{false};
};

}  // namespace

HeadlessJobs::HeadlessJobs(int threads) noexcept : _threads(threads)
{}
HeadlessJobs::~HeadlessJobs() = default;

HeadlessJobs::Arena& HeadlessJobs::FindOrMakeArena()
{
  const std::lock_guard lock(_mutex);
  if (!_arena)
    _arena = std::make_unique<Arena>(_threads);
  return *_arena;
}

Result<void> HeadlessJobs::ParallelFor(Int count, Int grain, RangeFunction function, void* context) noexcept
{
  if (count <= 0)
    return {};
  try
  {
    Arena& arena = FindOrMakeArena();
    FirstError first;
    // What the caller wrote before the loop is seen in it, and what the pieces wrote is seen behind it. oneTBB orders this itself;
    // written down here, it is also seen by tools that watch our code alone.
    std::atomic<Int> order{0};
    order.store(1, std::memory_order_release);
    const auto body = [&](const tbb::blocked_range<Int>& range)
    {
      if (first.HasFailed())
        return;
      order.load(std::memory_order_acquire);
      const Result<void> result = function(context, range.begin(), range.end());
      if (result.HasError())
        first.Set(result.GetError());
      order.fetch_add(1, std::memory_order_release);
    };
    arena.arena.execute(
      [&]
      {
        const tbb::blocked_range<Int> all(0, count, static_cast<size_t>(grain > 0 ? grain : 1));
        tbb::parallel_for(all, body, tbb::simple_partitioner());
      });
    order.load(std::memory_order_acquire);
    const Error error = first.Get();
    return error ? Result<void>(error) : Result<void>();
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

}  // namespace q7z
