#include "host/services/headlesstables.h"

#include <charconv>

#include "host/services/filereading.h"

namespace q7z
{

namespace
{

constexpr Int32 kFirstText = 10000;
constexpr Int32 kLastText = 10022;

void Tell(const TextSink& sink, const std::string& line)
{
  if (sink)
    sink(line);
}

std::string_view TrimView(std::string_view text)
{
  const size_t first = text.find_first_not_of(" \t\r");
  return first == std::string_view::npos ? std::string_view() : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// One line "NUMBER = TEXT" of the file of texts. Empty lines and comments are fine. @return false for a broken line.
bool ReadTextLine(std::string_view line, std::map<Int32, std::string>& texts)
{
  line = TrimView(line);
  if (line.empty() || line[0] == '#')
    return true;
  const size_t equals = line.find('=');
  if (equals == std::string_view::npos)
    return false;
  const std::string_view numberText = TrimView(line.substr(0, equals));
  Int32 number = 0;
  const auto [end, error] = std::from_chars(numberText.data(), numberText.data() + numberText.size(), number);
  if (error != std::errc() || end != numberText.data() + numberText.size() || number < kFirstText || number > kLastText)
    return false;
  return texts.emplace(number, TrimView(line.substr(equals + 1))).second;
}

}  // namespace

Bool HeadlessResources::Load() noexcept
{
  try
  {
    const std::string path = _folder + "/strings_en.txt";
    const Result<String> name = String::Create(path);
    if (name.HasError())
      return false;
    const Result<BlockOwner> file = ReadFileIntoBlock(name.GetValue(), 0);
    if (file.HasError())
      return false;
    StringBlock* const block = file.GetValue().Get();
    std::string_view rest(block->GetBytes(), static_cast<size_t>(block->GetByteCount()));
    std::map<Int32, std::string> texts;
    while (!rest.empty())
    {
      const size_t end = std::min(rest.find('\n'), rest.size());
      if (!ReadTextLine(rest.substr(0, end), texts))
        return false;
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    _texts = std::move(texts);
    return !_texts.empty();
  }
  catch (...)
  {
    return false;
  }
}

String HeadlessResources::GetString(Int32 number) noexcept
{
  const auto found = _texts.find(number);
  // The map outlives the module, so the text may be looked at in place.
  return found == _texts.end() ? String() : String(found->second.data(), static_cast<Int>(found->second.size()));
}

bool HeadlessDescriptions::Exists(const std::string& name) const
{
  return GetFileSystemType(_folder + "/" + name + ".txt") == HostFileSystemType::kFile;
}

bool HeadlessDescriptions::Register(Int32 id, const std::string& name)
{
  if (!Exists(name))
    return false;
  _names[id] = name;
  return true;
}

Bool HeadlessDescriptions::LoadByName(HostDescription*, const Char* name) noexcept
{
  try
  {
    for (const auto& entry : _names)
    {
      if (entry.second == name)
        return Exists(name);
    }
    return false;
  }
  catch (...)
  {
    return false;
  }
}

Bool HeadlessDescriptions::LoadById(HostDescription*, Int32 id) noexcept
{
  try
  {
    const auto found = _names.find(id);
    return found != _names.end() && Exists(found->second);
  }
  catch (...)
  {
    return false;
  }
}

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
    text += ToStd(line) + " [" + std::string(name) + ":" + std::to_string(sourceLine) + "]";
    Tell(onDiagnostic, text);
  }
  catch (...)
  {
    return;  // a line is lost; nobody can be told
  }
}

void HeadlessDialogs::ShowMessage(const String& text) noexcept
{
  try
  {
    Tell(onMessage, ToStd(text));
  }
  catch (...)
  {
    return;  // a line is lost; nobody can be told
  }
}

}  // namespace q7z
