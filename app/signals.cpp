#include "app/signals.h"

#include <unistd.h>

#include <atomic>
#include <csignal>

namespace q7z::app
{

namespace
{

std::atomic<HeadlessJob*> g_job{nullptr};
volatile std::sig_atomic_t g_signal = 0;

extern "C" void OnInterrupt(int signal)
{
  if (g_signal != 0)
    _exit(128 + signal);
  g_signal = signal;
  if (HeadlessJob* const job = g_job.load(std::memory_order_relaxed))
    job->Cancel();
}

}  // namespace

InterruptGuard::InterruptGuard(HeadlessJob& job)
{
  g_job.store(&job, std::memory_order_relaxed);
  struct sigaction action = {};
  action.sa_handler = OnInterrupt;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
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
