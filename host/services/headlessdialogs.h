#pragma once

// HeadlessDialogs: the dialogs of a host without a window. Message boxes become lines; of all dialogs only the progress dialog opens,
// as the progress of a job.

#include <atomic>

#include "host/services/headlessjob.h"
#include "host/services/headlesstables.h"
#include "plugin/module/hostdialog.h"

namespace q7z
{

class HeadlessDialogs final : public HostDialogTable
{
public:
  TextSink onMessage;

  /// The job that shows the progress of work, and through which work is cancelled; null for none: no dialog may be shown then.
  void SetJob(HeadlessJob* job) noexcept;
  /// Why the last progress dialog could not be opened; empty when it could.
  const std::string& GetFailure() const noexcept { return _failure; }

  void ShowMessage(const String& text) noexcept override;
  Bool MayShowDialog() noexcept override { return _job != nullptr; }
  void BeginBackgroundWork(Int32) noexcept override {}
  void EndBackgroundWork() noexcept override {}
  Bool RunWorkerDialog(HostWorkerClient* client, Int32* result) noexcept override;
  void SetWorkerProgress(Float value) noexcept override { _progress.store(value, std::memory_order_relaxed); }
  Bool IsWorkerCancelled() noexcept override { return _job && _job->IsCancelled(); }
  HostDialogBase* Alloc(HostDialogClient*) noexcept override { return nullptr; }
  void Free(HostDialogBase*) noexcept override {}
  Bool Open(HostDialogBase*, Int32, Int32, Int32, Int32, Int32, Int32) noexcept override { return false; }
  Bool IsOpen(const HostDialogBase*) noexcept override { return false; }
  Bool RestoreLayout(HostDialogBase*, Int32, void*) noexcept override { return false; }
  void SetTitle(HostDialogBase*, const String&) noexcept override {}
  Bool BeginMenu(HostDialogBase*, const String&) noexcept override { return false; }
  Bool AddMenuItem(HostDialogBase*, Int32, const String&) noexcept override { return false; }
  void EndMenu(HostDialogBase*) noexcept override {}
  void SetMenuCheck(HostDialogBase*, Int32, Bool) noexcept override {}
  Bool BeginGroup(HostDialogBase*, Int32, Int32, Int32, Int32) noexcept override { return false; }
  void SetGroupBorderSpace(HostDialogBase*, Int32, Int32, Int32, Int32) noexcept override {}
  void EndGroup(HostDialogBase*) noexcept override {}
  Bool AddMultiLineText(HostDialogBase*, Int32, Int32, Int32, Int32) noexcept override { return false; }
  void AddSeparator(HostDialogBase*) noexcept override {}
  Bool GetText(HostDialogBase*, Int32, String&) noexcept override { return false; }
  Bool SetText(HostDialogBase*, Int32, const String&) noexcept override { return false; }
  Bool BaseCommand(HostDialogBase*, Int32) noexcept override { return false; }
  Int BaseMessage(HostDialogBase*, Int32) noexcept override { return 0; }

private:
  void NoteFailure(const char* reason) noexcept;

  HeadlessJob* _job = nullptr;
  std::atomic<Float> _progress{0};
  std::string _failure;
};

}  // namespace q7z
