#pragma once

// A host of the smallest kind for tests of the module's entry: three tables that record what is asked of them, and pointers that
// nothing may follow for the rest.

#include <cstdint>
#include <string>
#include <vector>

#include "plugin/module/hostconsole.h"
#include "plugin/module/hostregistration.h"
#include "tests/framework/text.h"

namespace q7z::test
{

class RecordingRegistration final : public HostRegistrationTable
{
public:
  Bool RegisterDescription(Int32 id, const String& description) noexcept override
  {
    calls.push_back("description " + std::to_string(id) + " " + Text(description));
    return Answer();
  }
  Bool RegisterPlugin(const HostPluginRecord& record) noexcept override
  {
    calls.push_back("plugin " + std::to_string(record.kind) + " " + std::to_string(record.id) + " '" + Text(record.name) + "' " +
                    std::to_string(record.infoFlags) + " '" + Text(record.description) + "' '" + Text(record.suffix) + "'");
    factories.push_back(record.factory);
    return Answer();
  }
  Bool RegisterCommand(Int32 id, const String& name, Int32 info, HostBitmap*, const String& help,
                       HostCommand* command) noexcept override
  {
    calls.push_back("command " + std::to_string(id) + " '" + Text(name) + "' " + std::to_string(info) + " '" + Text(help) + "'");
    const Bool taken = Answer();
    if (taken)
      delete command;  // it is the host's
    return taken;
  }

  std::size_t refusedCall = SIZE_MAX;  // into calls
  std::vector<std::string> calls;
  std::vector<HostPluginFactory> factories;

private:
  Bool Answer() const noexcept { return calls.size() != refusedCall + 1; }
};

class RecordingResources final : public HostResourceTable
{
public:
  Bool Load() noexcept override
  {
    ++loads;
    return !broken;
  }
  String GetString(Int32 number) noexcept override { return number == 10000 ? "the name"_s : "another text"_s; }

  Bool broken = false;
  int loads = 0;
};

class RecordingConsole final : public HostConsoleTable
{
public:
  struct Line
  {
    HostDiagnosticLevel level;
    std::string text;
    std::string file;
    int line;
  };
  void Print(const String&) noexcept override {}
  void Diagnostic(HostDiagnosticLevel level, const String& line, const Char* file, Int32 sourceLine) noexcept override
  {
    diagnostics.push_back({level, Text(line), file, sourceLine});
  }

  std::vector<Line> diagnostics;
};

struct FakeHost
{
  FakeHost() noexcept
  {
    tables.version = kMinimumHostVersion;
    void** const pointers = reinterpret_cast<void**>(&tables);
    for (int i = 1; i <= kHostTableCount; ++i)
      pointers[i] = this;
    tables.registration = &registration;
    tables.resource = &resources;
    tables.console = &console;
  }

  RecordingRegistration registration;
  RecordingResources resources;
  RecordingConsole console;
  HostTables tables;
};

}  // namespace q7z::test
