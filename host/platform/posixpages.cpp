// Fresh memory costs more than what is done with it: each page is cleared by the system when it is touched for the first time, and in
// a virtual machine that has handed it back it must come from outside first. A second thread does that ahead of the one that fills it.

#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <mutex>
#include <thread>

#include "framework/memory.h"
#include "host/platform/process.h"

namespace q7z
{

#if defined(MADV_POPULATE_WRITE)

namespace
{

constexpr Int kFetchedAtOnce = Int(2) << 20;

/// While it lives, no signal reaches this thread, nor ever one that it starts: signals are for the threads that wait for something.
class NoSignals
{
public:
  NoSignals() noexcept
  {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &_before);
  }
  NoSignals(const NoSignals&) = delete;
  NoSignals& operator=(const NoSignals&) = delete;
  ~NoSignals() { pthread_sigmask(SIG_SETMASK, &_before, nullptr); }

private:
  sigset_t _before;
};

class PageThread
{
public:
  /// Throws when there is no thread to be had.
  PageThread()
  {
    const NoSignals blocked;
    std::thread([this] { Run(); }).detach();
  }

  void Add(Byte* start, Int byteCount) noexcept
  try
  {
    const std::lock_guard lock(_mutex);
    if (!_areSlow)
      madvise(start, static_cast<size_t>(byteCount), MADV_HUGEPAGE);
    _blocks.push_back({start, start + byteCount});
    _added.notify_one();
  }
  catch (...)
  {
    return;  // without memory to note them the pages come when they are touched
  }

private:
  struct Block
  {
    Byte* next;
    Byte* end;
  };

  [[noreturn]] void Run()
  {
    for (;;)
    {
      Block block = Take();
      // The one that fills it is there already.
      block.next += std::min(block.end - block.next, kLead);
      while (block.next < block.end && Fetch(block))
        continue;
    }
  }

  Block Take()
  {
    std::unique_lock lock(_mutex);
    _added.wait(lock, [this] { return !_blocks.empty(); });
    const Block block = _blocks.front();
    _blocks.pop_front();
    return block;
  }

  /// The next page or so of the block. @return false when it cannot be had, as when the block is freed.
  Bool Fetch(Block& block)
  {
    const Int byteCount = std::min(block.end - block.next, kFetchedAtOnce);
    const auto before = Clock::now();
    if (madvise(block.next, static_cast<size_t>(byteCount), MADV_POPULATE_WRITE) != 0)
      return false;
    block.next += byteCount;
    Judge(block, Clock::now() - before);
    return true;
  }

  /// Large pages are good as long as they are at hand. Small ones mostly are, from the gaps between what others have.
  void Judge(const Block& block, std::chrono::steady_clock::duration time)
  {
    if (_areSlow)
      return;
    _lost = std::max(_lost + time - kUsualTime, Clock::duration::zero());
    if (_lost < kMostLost)
      return;
    const std::lock_guard lock(_mutex);
    _areSlow = true;
    UseSmallPages(block);
    for (const Block& waiting : _blocks)
      UseSmallPages(waiting);
  }

  static void UseSmallPages(const Block& block)
  {
    madvise(block.next, static_cast<size_t>(block.end - block.next), MADV_NOHUGEPAGE);
  }

  using Clock = std::chrono::steady_clock;
  static constexpr Int kLead = kFetchedAtOnce;
  static constexpr auto kUsualTime = std::chrono::microseconds(700);  // 200 on an idle machine; a slow page takes 1000 to 8000
  static constexpr auto kMostLost = std::chrono::milliseconds(5);

  std::mutex _mutex;
  std::condition_variable _added;
  std::deque<Block> _blocks;
  std::atomic<Bool> _areSlow = false;
  Clock::duration _lost = Clock::duration::zero();  // the thread's own
};

PageThread* g_pageThread = nullptr;  // for ever, as the thread itself

void FetchPages(void* start, Int byteCount) noexcept
{
  g_pageThread->Add(static_cast<Byte*>(start), byteCount);
}

}  // namespace

#endif

void StartFetchingPages() noexcept
try
{
#if defined(MADV_POPULATE_WRITE) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  if (g_pageThread || std::thread::hardware_concurrency() < 2)
    return;
  g_pageThread = new PageThread;
  SetPageFetcher(FetchPages);
#endif
}
catch (...)
{
  return;  // pages then come when they are touched
}

}  // namespace q7z
