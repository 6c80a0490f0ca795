#include "app/signals.h"

#include <atomic>
#include <cstdlib>

#include "host/platform/process.h"

namespace q7z::app
{

namespace
{

std::atomic<HeadlessJob*> g_job{nullptr};
std::atomic<int> g_signal{0};

extern "C" void OnInterrupt(int signal)
{
  if (g_signal.exchange(signal) != 0)
    std::_Exit(128 + signal);
  if (HeadlessJob* const job = g_job.load(std::memory_order_relaxed))
    job->Cancel();
}

}  // namespace

InterruptGuard::InterruptGuard(HeadlessJob& job)
{
  g_job.store(&job, std::memory_order_relaxed);
  CatchInterrupts(OnInterrupt);
}

InterruptGuard::~InterruptGuard()
{
  g_job.store(nullptr, std::memory_order_relaxed);
}

int InterruptGuard::GetSignal()
{
  return g_signal;
}

}  // namespace q7z::app
