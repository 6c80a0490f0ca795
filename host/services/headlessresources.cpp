#include "host/services/headlessresources.h"

#include <algorithm>
#include <charconv>

#include "host/services/filereading.h"
#include "host/services/resourcelines.h"

namespace q7z
{

namespace
{

constexpr const char* kTextsName = "strings_en.txt";
// The descriptions that the module goes by.
constexpr const char* kDescriptionNames[] = {"fgltfimporter", "Fgltfexporter"};

/// Reads a whole file into text. @return an empty text, or what went wrong.
std::string ReadResource(const std::string& path, std::string& text)
{
  const Result<BlockOwner> file = ReadFileIntoBlock(String(path.data(), static_cast<Int>(path.size())), 0);
  if (file.HasError())
    return ToStd(file.GetError().GetMessage());
  StringBlock* const block = file.GetValue().Get();
  text.assign(block->GetBytes(), static_cast<size_t>(block->GetByteCount()));
  return IsValidUtf8(text) ? "" : "\"" + path + "\" is no UTF-8 text";
}

}  // namespace

bool HeadlessDescriptions::Read(const std::string& name)
{
  if (_descriptions.count(name))
    return true;
  const std::string path = _folder + "/" + name + ".txt";
  std::string text;
  std::vector<ParameterDescription> parameters;
  _failure = ReadResource(path, text);
  if (_failure.empty())
  {
    const std::string broken = ParseDescription(text, parameters);
    _failure = broken.empty() ? "" : "\"" + path + "\" is broken: " + broken;
  }
  if (!_failure.empty())
    return false;
  _descriptions.emplace(name, std::move(parameters));
  return true;
}

bool HeadlessDescriptions::Register(Int32 id, const std::string& name)
{
  if (!Read(name))
    return false;
  _names[id] = name;
  return true;
}

const std::vector<ParameterDescription>* HeadlessDescriptions::FindParameters(Int32 id) const
{
  const auto named = _names.find(id);
  return named == _names.end() ? nullptr : &_descriptions.at(named->second);
}

Bool HeadlessDescriptions::LoadByName(HostDescription*, const Char* name) noexcept
{
  return std::any_of(_names.begin(), _names.end(), [&](const auto& entry) { return entry.second == name; });
}

Bool HeadlessDescriptions::LoadById(HostDescription*, Int32 id) noexcept
{
  return _names.count(id) > 0;
}

bool HeadlessResources::ReadTexts()
{
  const std::string path = _folder + "/" + kTextsName;
  std::string text;
  _failure = ReadResource(path, text);
  if (!_failure.empty())
    return false;
  std::map<Int32, std::string> parsed;
  const std::string broken = ParseTexts(text, parsed);
  if (!broken.empty())
  {
    _failure = "\"" + path + "\" is broken: " + broken;
    return false;
  }
  std::map<Int32, String> texts;
  for (const auto& [number, line] : parsed)
  {
    Result<String> copy = String::Create(line);
    if (copy.HasError())
      throw std::bad_alloc();
    texts.emplace(number, std::move(copy).GetValue());
  }
  _texts = std::move(texts);
  return true;
}

Bool HeadlessResources::Load() noexcept
{
  try
  {
    if (!ReadTexts())
      return false;
    for (const char* const name : kDescriptionNames)
    {
      if (!_descriptions.Read(name))
      {
        _failure = _descriptions.GetFailure();
        return false;
      }
    }
    return true;
  }
  catch (...)
  {
    _failure.clear();
    return false;
  }
}

String HeadlessResources::GetString(Int32 number) noexcept
{
  const auto found = _texts.find(number);
  return found == _texts.end() ? String() : found->second;
}

}  // namespace q7z
