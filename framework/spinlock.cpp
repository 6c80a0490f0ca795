#include "framework/spinlock.h"

#include <thread>

namespace q7z
{

namespace
{

std::atomic<YieldFunction> g_yield{nullptr};

void Yield() noexcept
{
  if (const YieldFunction yield = g_yield.load(std::memory_order_relaxed))
    yield();
  else
    std::this_thread::yield();
}

}  // namespace

void SetSpinYield(YieldFunction yield) noexcept
{
  g_yield.store(yield, std::memory_order_relaxed);
}

void SpinLock::Lock() noexcept
{
  UInt32 free = 0;
  while (!_word.compare_exchange_weak(free, 1, std::memory_order_acquire, std::memory_order_relaxed))
  {
    free = 0;
    Yield();
  }
}

}  // namespace q7z
