#pragma once

// SpinLock: a lock word taken by compare-and-swap. While it waits it calls the yield function that the process has set, so that
// a host can give the processor away.

#include <atomic>

#include "framework/types.h"

namespace q7z
{

using YieldFunction = void (*)();

/// Sets what a waiting lock of this module calls; null for nothing. Set before any lock is used by two threads.
void SetSpinYield(YieldFunction yield) noexcept;

class SpinLock
{
public:
  void Lock() noexcept;
  void Unlock() noexcept { _word.store(0, std::memory_order_release); }

private:
  std::atomic<UInt32> _word{0};  // 0 when free
};

class SpinLockGuard
{
public:
  explicit SpinLockGuard(SpinLock& lock) noexcept : _lock(lock) { _lock.Lock(); }
  ~SpinLockGuard() { _lock.Unlock(); }
  SpinLockGuard(const SpinLockGuard&) = delete;
  SpinLockGuard& operator=(const SpinLockGuard&) = delete;

private:
  SpinLock& _lock;
};

}  // namespace q7z
