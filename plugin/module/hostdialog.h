#pragma once

// Dialogs: message boxes, the non-modal dialog that a plug-in lays out itself, the progress dialog with a worker thread, and the
// brackets around background work. The host draws; the plug-in answers.

#include "framework/string.h"
#include "plugin/module/hosttables.h"

namespace q7z
{

/// A dialog of the plug-in: the host calls these while it is open.
class HostDialogClient
{
public:
  virtual Bool CreateLayout(HostDialogBase* dialog) noexcept = 0;
  virtual Bool Command(HostDialogBase* dialog, Int32 id) noexcept = 0;
  /// @return what the base's own handling answered.
  virtual Int Message(HostDialogBase* dialog, Int32 message) noexcept = 0;

protected:
  ~HostDialogClient() = default;
};

/// What the worker thread of a progress dialog runs.
class HostWorkerClient
{
public:
  virtual Int32 Run() noexcept = 0;
  /// The status text to show, called from the dialog's thread.
  virtual String GetStatusText() noexcept = 0;

protected:
  ~HostWorkerClient() = default;
};

class HostDialogTable
{
public:
  virtual void ShowMessage(const String& text) noexcept = 0;

  virtual Bool MayShowDialog() noexcept = 0;
  virtual void BeginBackgroundWork(Int32 flags) noexcept = 0;
  virtual void EndBackgroundWork() noexcept = 0;
  /// Opens a progress dialog, runs the client on its worker thread and waits for both. @return false when it could not be set up
  /// (the client did not run then); result is the client's.
  virtual Bool RunWorkerDialog(HostWorkerClient* client, Int32* result) noexcept = 0;
  virtual void SetWorkerProgress(Float value) noexcept = 0;
  virtual Bool IsWorkerCancelled() noexcept = 0;

  virtual HostDialogBase* Alloc(HostDialogClient* client) noexcept = 0;
  virtual void Free(HostDialogBase* dialog) noexcept = 0;
  virtual Bool Open(HostDialogBase* dialog, Int32 dialogType, Int32 pluginId, Int32 x, Int32 y, Int32 width,
                    Int32 height) noexcept = 0;
  virtual Bool IsOpen(const HostDialogBase* dialog) noexcept = 0;
  virtual Bool RestoreLayout(HostDialogBase* dialog, Int32 pluginId, void* state) noexcept = 0;
  virtual void SetTitle(HostDialogBase* dialog, const String& title) noexcept = 0;
  virtual Bool BeginMenu(HostDialogBase* dialog, const String& title) noexcept = 0;
  virtual Bool AddMenuItem(HostDialogBase* dialog, Int32 id, const String& title) noexcept = 0;
  virtual void EndMenu(HostDialogBase* dialog) noexcept = 0;
  virtual void SetMenuCheck(HostDialogBase* dialog, Int32 id, Bool checked) noexcept = 0;
  virtual Bool BeginGroup(HostDialogBase* dialog, Int32 id, Int32 columns, Int32 width, Int32 height) noexcept = 0;
  virtual void SetGroupBorderSpace(HostDialogBase* dialog, Int32 left, Int32 top, Int32 right, Int32 bottom) noexcept = 0;
  virtual void EndGroup(HostDialogBase* dialog) noexcept = 0;
  virtual Bool AddMultiLineText(HostDialogBase* dialog, Int32 id, Int32 layoutFlags, Int32 width, Int32 style) noexcept = 0;
  virtual void AddSeparator(HostDialogBase* dialog) noexcept = 0;
  virtual Bool GetText(HostDialogBase* dialog, Int32 id, String& text) noexcept = 0;
  virtual Bool SetText(HostDialogBase* dialog, Int32 id, const String& text) noexcept = 0;
  virtual Bool BaseCommand(HostDialogBase* dialog, Int32 id) noexcept = 0;
  virtual Int BaseMessage(HostDialogBase* dialog, Int32 message) noexcept = 0;

protected:
  ~HostDialogTable() = default;
};

inline Bool HostMayShowDialog() noexcept { return g_hostTables->dialog->MayShowDialog(); }
inline void HostBeginBackgroundWork(Int32 flags) noexcept { g_hostTables->dialog->BeginBackgroundWork(flags); }
inline void HostEndBackgroundWork() noexcept { g_hostTables->dialog->EndBackgroundWork(); }
inline void HostShowMessage(const String& text) noexcept { g_hostTables->dialog->ShowMessage(text); }

}  // namespace q7z
