#pragma once

// The tables of the headless host that are no part of the scene: registrations and console. Each belongs to one HeadlessHost.

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/services/headlessresources.h"
#include "plugin/module/hostconsole.h"
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
  /// Null for an id that no command has.
  HostCommand* FindCommand(Int32 id) const noexcept;
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

  /// The newest diagnostic line without its place, once: a saver, which answers with a number alone, tells there what failed.
  std::string TakeLastDiagnostic();

private:
  std::mutex _mutex;  // lines come from several threads
  std::string _lastDiagnostic;
};

}  // namespace q7z
