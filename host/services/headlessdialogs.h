#pragma once

// HeadlessDialogs: the dialogs of a host without a window. Message boxes become lines, the progress dialog becomes the progress of a
// job, and a dialog that a plug-in lays out waits for whoever runs the host to fill it in.

#include <atomic>

#include "host/services/headlessdialog.h"
#include "host/services/headlessjob.h"
#include "host/services/headlesstables.h"
#include "plugin/module/hostdialog.h"

namespace q7z
{

class HeadlessDialogs : public HostDialogTable
{
public:
  HeadlessDialogs() = default;
  HeadlessDialogs(const HeadlessDialogs&) = delete;
  HeadlessDialogs& operator=(const HeadlessDialogs&) = delete;
  virtual ~HeadlessDialogs() = default;

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

  // Dialogs that a plug-in lays out.
  HostDialogBase* Alloc(HostDialogClient* client) noexcept override;
  void Free(HostDialogBase* dialog) noexcept override;
  Bool Open(HostDialogBase* dialog, Int32 dialogType, Int32 pluginId, Int32 x, Int32 y, Int32 width,
            Int32 height) noexcept override;
  Bool IsOpen(const HostDialogBase* dialog) noexcept override;
  Bool RestoreLayout(HostDialogBase* dialog, Int32 pluginId, void* state) noexcept override;
  void SetTitle(HostDialogBase* dialog, const String& title) noexcept override;
  Bool BeginMenu(HostDialogBase* dialog, const String& title) noexcept override;
  Bool AddMenuItem(HostDialogBase* dialog, Int32 id, const String& title) noexcept override;
  void EndMenu(HostDialogBase* dialog) noexcept override;
  void SetMenuCheck(HostDialogBase* dialog, Int32 id, Bool checked) noexcept override;
  Bool BeginGroup(HostDialogBase* dialog, Int32 id, Int32 columns, Int32 width, Int32 height) noexcept override;
  void SetGroupBorderSpace(HostDialogBase* dialog, Int32 left, Int32 top, Int32 right, Int32 bottom) noexcept override;
  void EndGroup(HostDialogBase* dialog) noexcept override;
  Bool AddMultiLineText(HostDialogBase* dialog, Int32 id, Int32 layoutFlags, Int32 width, Int32 style) noexcept override;
  void AddSeparator(HostDialogBase* dialog) noexcept override;
  Bool GetText(HostDialogBase* dialog, Int32 id, String& text) noexcept override;
  Bool SetText(HostDialogBase* dialog, Int32 id, const String& text) noexcept override;
  Bool BaseCommand(HostDialogBase*, Int32) noexcept override { return true; }
  Int BaseMessage(HostDialogBase*, Int32) noexcept override { return 1; }

  /// The open dialog of a plug-in; null when there is none.
  HeadlessDialog* FindOpen(Int32 pluginId) const noexcept;

private:
  void NoteFailure(const char* reason) noexcept;

  HeadlessJob* _job = nullptr;
  std::atomic<Float> _progress{0};
  std::string _failure;
  std::vector<HeadlessDialog*> _open;  // not owned
};

}  // namespace q7z
