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

class SpinLocks : public testing::Test
{
protected:
  void SetUp() override
  {
    g_yields = 0;
    SetSpinYield(CountYield);
  }
  void TearDown() override { SetSpinYield(nullptr); }
};

TEST_F(SpinLocks, WaitingLockYields)
{
  SpinLock lock;
  lock.Lock();
  EXPECT_EQ(g_yields, 0);
  std::atomic<Bool> entered{false};
  std::thread waiting(
    [&]
    {
      const SpinLockGuard guard(lock);
      entered = true;
    });
  while (g_yields < 3)
    std::this_thread::yield();
  EXPECT_FALSE(entered);
  lock.Unlock();
  waiting.join();
  EXPECT_TRUE(entered);
}

TEST_F(SpinLocks, OneThreadAtATime)
{
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
  std::thread first(add);
  std::thread second(add);
  first.join();
  second.join();
  EXPECT_EQ(sum, 40000);
}

}  // namespace
}  // namespace q7z::test
