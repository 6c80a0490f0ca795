#include "plugin/export/gltfprogress.h"

#include <atomic>

#include "framework/check.h"
#include "plugin/module/hostconsole.h"

namespace q7z
{

namespace
{

struct ProgressState
{
  ProgressDialog* dialog = nullptr;
  Int stepCount = 0;
  Int stepTotal = 0;
  std::atomic<Bool> isCancelled{false};  // asked and set from several threads
};
ProgressState g_progress;

}  // namespace

void ProgressBegin(ProgressDialog* dialog) noexcept
{
  g_progress.dialog = dialog;
  ProgressReset();
  ProgressClearCancelled();
}

void ProgressDetach() noexcept
{
  g_progress.dialog = nullptr;
}

void ProgressClearCancelled() noexcept
{
  g_progress.isCancelled.store(false, std::memory_order_relaxed);
}

void ProgressSetText(Int32 stringId) noexcept
{
  if (g_progress.dialog)
    g_progress.dialog->SetStatusText(HostLoadString(stringId));
}

void ProgressReset() noexcept
{
  g_progress.stepCount = 0;
  g_progress.stepTotal = 0;
}

void ProgressAddTotal(Int steps) noexcept
{
  g_progress.stepTotal += steps;
}

void ProgressStep(SpinLock& lock) noexcept
{
  const SpinLockGuard guard(lock);
  ++g_progress.stepCount;
  if (g_progress.dialog && g_progress.stepTotal != 0)
    g_progress.dialog->SetProgress(static_cast<Float>(g_progress.stepCount) / static_cast<Float>(g_progress.stepTotal));
}

void ProgressPollCancel() noexcept
{
  if (g_progress.dialog && g_progress.dialog->IsCancelled())
    g_progress.isCancelled.store(true, std::memory_order_relaxed);
}

Bool ProgressIsCancelled() noexcept
{
  return g_progress.isCancelled.load(std::memory_order_relaxed);
}

Error MakeCancelledError() noexcept
{
  return MAKE_ERROR(ErrorClass::kOperationCancelled, "The save was cancelled."_s);
}

Result<void> ProgressCheckCancel() noexcept
{
  ProgressPollCancel();
  if (ProgressIsCancelled())
    return MakeCancelledError();
  return {};
}

}  // namespace q7z
