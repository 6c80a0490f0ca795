// The spin lock: it excludes, and it calls the yield function while it waits.

#include <gtest/gtest.h>

#include <thread>

#include "framework/spinlock.h"

namespace q7z::test
{
namespace
{

std::atomic<Int> g_yields{0};

void CountYield()
{
  g_yields.fetch_add(1);
  std::this_thread::yield();
}

TEST(SpinLocks, ExcludeAndYieldWhileTheyWait)
{
  SetSpinYield(CountYield);
  SpinLock lock;
  Int sum = 0;  // deliberately not atomic
  const auto add = [&]
  {
    for (int i = 0; i < 20000; ++i)
    {
      const SpinLockGuard guard(lock);
      sum = sum + 1;
    }
  };
  lock.Lock();
  EXPECT_EQ(g_yields, 0);
  std::thread first(add);
  std::thread second(add);
  while (g_yields < 3)
    std::this_thread::yield();
  EXPECT_EQ(sum, 0);
  lock.Unlock();
  first.join();
  second.join();
  SetSpinYield(nullptr);
  EXPECT_EQ(sum, 40000);
}

}  // namespace
}  // namespace q7z::test
