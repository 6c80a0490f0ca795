#include "host/services/headlesstables.h"

#include <utility>

#include "host/services/filereading.h"

namespace q7z
{

namespace
{

void Tell(const TextSink& sink, const std::string& line)
{
  if (sink)
    sink(line);
}

}  // namespace

void HeadlessRegistrations::Clear() noexcept
{
  _plugins.clear();
  _commands.clear();
}

Bool HeadlessRegistrations::RegisterDescription(Int32 id, const String& description) noexcept
{
  try
  {
    return _descriptions.Register(id, ToStd(description));
  }
  catch (...)
  {
    return false;
  }
}

HostCommand* HeadlessRegistrations::FindCommand(Int32 id) const noexcept
{
  for (const HeadlessCommand& entry : _commands)
  {
    if (entry.id == id)
      return entry.command.get();
  }
  return nullptr;
}

Bool HeadlessRegistrations::RegisterPlugin(const HostPluginRecord& record) noexcept
{
  if (!record.factory || (record.kind != kSceneLoaderKind && record.kind != kSceneSaverKind))
    return false;
  try
  {
    _plugins.push_back({record.kind, record.id, ToStd(record.name), record.infoFlags, ToStd(record.description),
                        ToStd(record.suffix), record.factory});
    return true;
  }
  catch (...)
  {
    return false;
  }
}

Bool HeadlessRegistrations::RegisterCommand(Int32 id, const String& name, Int32 info, HostBitmap*, const String&,
                                            HostCommand* command) noexcept
{
  if (!command)
    return false;
  try
  {
    _commands.push_back({id, ToStd(name), info, nullptr});
    _commands.back().command.reset(command);
    return true;
  }
  catch (...)
  {
    return false;
  }
}

void HeadlessConsole::Print(const String& line) noexcept
{
  try
  {
    Tell(onConsole, ToStd(line));
  }
  catch (...)
  {
    return;  // a line is lost; nobody can be told
  }
}

void HeadlessConsole::Diagnostic(HostDiagnosticLevel level, const String& line, const Char* file, Int32 sourceLine) noexcept
{
  try
  {
    std::string_view name = file ? file : "";
    name.remove_prefix(name.rfind('/') == std::string_view::npos ? 0 : name.rfind('/') + 1);
    std::string text = level == HostDiagnosticLevel::kCritical ? "critical: " : "";
    {
      const std::lock_guard lock(_mutex);
      _lastDiagnostic = ToStd(line);
    }
    text += ToStd(line) + " [" + std::string(name) + ":" + std::to_string(sourceLine) + "]";
    Tell(onDiagnostic, text);
  }
  catch (...)
  {
    return;  // a line is lost; nobody can be told
  }
}

std::string HeadlessConsole::TakeLastDiagnostic()
{
  const std::lock_guard lock(_mutex);
  return std::exchange(_lastDiagnostic, "");
}

}  // namespace q7z
