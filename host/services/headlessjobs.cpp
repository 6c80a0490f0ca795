#include "host/services/headlessjobs.h"

#include <atomic>

namespace q7z
{

namespace
{

// What the caller of a loop wrote before it is seen in the loop, and what the pieces wrote is seen behind it. The threads order this
// themselves; written down here, it is also seen by tools that watch our code alone. One word for all loops: a release is a read and
// a write, so that every later acquire sees all of them.
std::atomic<UInt> g_order{0};

void Release() noexcept
{
  g_order.fetch_add(1, std::memory_order_release);
}
void Acquire() noexcept
{
  g_order.load(std::memory_order_acquire);
}

/// One loop: what runs, and the first error; what has not begun when that is set is left out.
class Loop
{
public:
  Loop(HostJobs::RangeFunction function, void* context) noexcept : _function(function), _context(context) {}

  void RunRange(Int first, Int end) noexcept
  {
    if (_failed.load(std::memory_order_relaxed))
      return;
    const Result<void> result = _function(_context, first, end);
    if (result.HasError())
      SetError(result.GetError());
  }

  /// Behind the loop only.
  Result<void> GetResult() const noexcept { return _error ? Result<void>(_error) : Result<void>(); }

private:
  void SetError(const Error& error) noexcept
  {
    const std::lock_guard lock(_mutex);
    if (!_error)
      _error = error;
    _failed.store(true, std::memory_order_relaxed);
  }

  HostJobs::RangeFunction _function;
  void* _context;
  std::mutex _mutex;
  Error _error;
  std::atomic<bool> _failed{false};
};

void RunLoopRange(void* context, Int first, Int end)
{
  Acquire();
  static_cast<Loop*>(context)->RunRange(first, end);
  Release();
}

}  // namespace

HeadlessJobs::HeadlessJobs(int threads) noexcept : _threads(threads)
{}
HeadlessJobs::~HeadlessJobs() = default;

ParallelLoop& HeadlessJobs::FindOrMakeLoop()
{
  const std::lock_guard lock(_mutex);
  if (!_loop)
    _loop = std::make_unique<ParallelLoop>(_threads);
  return *_loop;
}

Result<void> HeadlessJobs::ParallelFor(Int count, Int grain, RangeFunction function, void* context) noexcept
{
  if (count <= 0)
    return {};
  try
  {
    Loop loop(function, context);
    Release();
    FindOrMakeLoop().Run(count, grain > 0 ? grain : 1, &RunLoopRange, &loop);
    Acquire();
    return loop.GetResult();
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

}  // namespace q7z
