#pragma once

// The tables of the headless host that are no part of the scene: registrations, console and dialogs. Each belongs to one
// HeadlessHost. What needs a window answers that there is none.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/services/headlessresources.h"
#include "plugin/module/hostconsole.h"
#include "plugin/module/hostdialog.h"
#include "plugin/module/hostmaterial.h"
#include "plugin/module/hostregistration.h"

namespace q7z
{

/// Takes a line that the plug-in says: a console line, a diagnostic line or a message box.
using TextSink = std::function<void(const std::string& line)>;

/// A registered loader or saver.
struct HeadlessPlugin
{
  Int32 kind = 0;
  Int32 id = 0;
  std::string name;
  Int32 infoFlags = 0;
  std::string description;
  std::string suffix;
  HostPluginFactory factory = nullptr;
};

struct HeadlessCommand
{
  Int32 id = 0;
  std::string name;
  Int32 info = 0;
  std::unique_ptr<HostCommand> command;
};

class HeadlessRegistrations final : public HostRegistrationTable
{
public:
  explicit HeadlessRegistrations(HeadlessDescriptions& descriptions) noexcept : _descriptions(descriptions) {}
  const std::vector<HeadlessPlugin>& GetPlugins() const noexcept { return _plugins; }
  const std::vector<HeadlessCommand>& GetCommands() const noexcept { return _commands; }
  void Clear() noexcept;

  Bool RegisterDescription(Int32 id, const String& description) noexcept override;
  Bool RegisterPlugin(const HostPluginRecord& record) noexcept override;
  Bool RegisterCommand(Int32 id, const String& name, Int32 info, HostBitmap* icon, const String& help,
                       HostCommand* command) noexcept override;

private:
  HeadlessDescriptions& _descriptions;
  std::vector<HeadlessPlugin> _plugins;
  std::vector<HeadlessCommand> _commands;
};

class HeadlessConsole final : public HostConsoleTable
{
public:
  TextSink onConsole;
  TextSink onDiagnostic;

  void Print(const String& line) noexcept override;
  void Diagnostic(HostDiagnosticLevel level, const String& line, const Char* file, Int32 sourceLine) noexcept override;
};

/// Nothing opens without a window; message boxes become lines.
class HeadlessDialogs final : public HostDialogTable
{
public:
  TextSink onMessage;

  void ShowMessage(const String& text) noexcept override;
  Bool MayShowDialog() noexcept override { return false; }
  void BeginBackgroundWork(Int32) noexcept override {}
  void EndBackgroundWork() noexcept override {}
  Bool RunWorkerDialog(HostWorkerClient*, Int32*) noexcept override { return false; }
  void SetWorkerProgress(Float) noexcept override {}
  Bool IsWorkerCancelled() noexcept override { return false; }
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
};

/// Images are not handled yet: no bitmap can be had.
class HeadlessBitmaps final : public HostBitmapTable
{
public:
  HostBitmap* Alloc() noexcept override { return nullptr; }
  void Free(HostBitmap*) noexcept override {}
  Bool Init(HostBitmap*, Int32, Int32, Int32) noexcept override { return false; }
  Bool Load(HostBitmap*, const HostFilename&) noexcept override { return false; }
  Int32 GetWidth(const HostBitmap*) noexcept override { return 0; }
  Int32 GetHeight(const HostBitmap*) noexcept override { return 0; }
  Bool ScaleInto(const HostBitmap*, HostBitmap*) noexcept override { return false; }
  Bool HasAlpha(const HostBitmap*) noexcept override { return false; }
  Bool AddAlpha(HostBitmap*) noexcept override { return false; }
  void RemoveAlpha(HostBitmap*) noexcept override {}
  Bool ReadRow(const HostBitmap*, Int32, Byte*, Bool) noexcept override { return false; }
  Bool WriteRow(HostBitmap*, Int32, const Byte*, Bool) noexcept override { return false; }
  HostImage* GetImage(HostBitmap*) noexcept override { return nullptr; }
};

}  // namespace q7z
