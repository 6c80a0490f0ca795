// The forms of the resource files: texts by number, parameters by group.

#include <algorithm>

#include "host/services/headlessresources.h"
#include "host/services/resourcelines.h"

namespace q7z
{

namespace
{

constexpr Int32 kFirstText = 10000;
constexpr Int32 kLastText = 10022;
constexpr Int32 kUnusedText = 10001;

struct KindName
{
  std::string_view name;
  ParameterKind kind;
};
constexpr KindName kKindNames[] = {
  {"switch", ParameterKind::kSwitch}, {"choice", ParameterKind::kChoice}, {"integer", ParameterKind::kInteger},
  {"length", ParameterKind::kLength}, {"angle", ParameterKind::kAngle},
};

/// Calls read(line) for each line that says something. @return what read has answered first, with the line's number in front.
template <typename Read>
std::string ReadLines(std::string_view text, Read read)
{
  int number = 0;
  for (const std::string_view line : SplitLine(text, '\n'))
  {
    ++number;
    const std::string broken = line.empty() || line[0] == '#' ? "" : read(line);
    if (!broken.empty())
      return "line " + std::to_string(number) + ": " + broken;
  }
  return "";
}

std::string Quote(std::string_view text)
{
  return "\"" + std::string(text) + "\"";
}

std::string ReadText(std::string_view line, std::map<Int32, std::string>& texts)
{
  const size_t equals = line.find('=');
  Int32 number = 0;
  if (equals == std::string_view::npos || !ReadNumber(TrimLine(line.substr(0, equals)), number))
    return "NUMBER = TEXT expected";
  if (number < kFirstText || number > kLastText || number == kUnusedText)
    return "there is no text " + std::to_string(number);
  const std::string_view text = TrimLine(line.substr(equals + 1));
  if (text.empty())
    return "the text " + std::to_string(number) + " is empty";
  return texts.emplace(number, text).second ? "" : "the text " + std::to_string(number) + " stands here again";
}

/// "NUMBER label, NUMBER label, ...".
std::string ReadChoices(std::string_view text, ParameterDescription& parameter)
{
  for (const std::string_view choice : SplitLine(text, ','))
  {
    const size_t blank = std::min(choice.find(' '), choice.size());
    Int32 number = 0;
    if (!ReadNumber(choice.substr(0, blank), number) || blank == choice.size())
      return "NUMBER label expected, not " + Quote(choice);
    parameter.choices.emplace_back(number, TrimLine(choice.substr(blank)));
  }
  const bool hasDefault = std::any_of(parameter.choices.begin(), parameter.choices.end(),
                                      [&](const auto& choice) { return std::to_string(choice.first) == parameter.defaultText; });
  return hasDefault ? "" : "the default " + Quote(parameter.defaultText) + " is none of the choices";
}

std::string CheckDefault(const ParameterDescription& parameter)
{
  const std::string& text = parameter.defaultText;
  Int32 number = 0;
  switch (parameter.kind)
  {
    case ParameterKind::kSwitch: return text == "on" || text == "off" ? "" : "on or off expected, not " + Quote(text);
    case ParameterKind::kInteger: return ReadNumber(text, number) ? "" : "a whole number expected, not " + Quote(text);
    case ParameterKind::kLength:
    case ParameterKind::kAngle: return text.empty() ? "a default expected" : "";
    case ParameterKind::kChoice: break;
  }
  return "";
}

/// "ID | kind | label | default | choices or range".
std::string ReadParameter(std::string_view line, ParameterDescription& parameter)
{
  const std::vector<std::string_view> fields = SplitLine(line, '|');
  if (fields.size() < 4 || fields.size() > 5 || !ReadNumber(fields[0], parameter.id) || fields[2].empty())
    return "ID | kind | label | default expected";
  const auto kind =
    std::find_if(std::begin(kKindNames), std::end(kKindNames), [&](const KindName& name) { return name.name == fields[1]; });
  if (kind == std::end(kKindNames))
    return "there is no kind " + Quote(fields[1]);
  parameter.kind = kind->kind;
  parameter.label = fields[2];
  parameter.defaultText = fields[3];
  const std::string_view last = fields.size() == 5 ? fields[4] : std::string_view();
  if (parameter.kind == ParameterKind::kChoice)
    return ReadChoices(last, parameter);
  parameter.range = last;
  return CheckDefault(parameter);
}

bool HasId(const std::vector<ParameterDescription>& parameters, Int32 id)
{
  return std::any_of(parameters.begin(), parameters.end(), [&](const ParameterDescription& other) { return other.id == id; });
}

}  // namespace

std::string ParseTexts(std::string_view text, std::map<Int32, std::string>& texts)
{
  std::string broken = ReadLines(text, [&](std::string_view line) { return ReadText(line, texts); });
  if (!broken.empty())
    return broken;
  for (Int32 number = kFirstText; number <= kLastText; ++number)
  {
    if (number != kUnusedText && !texts.count(number))
      return "the text " + std::to_string(number) + " is missing";
  }
  return "";
}

std::string ParseDescription(std::string_view text, std::vector<ParameterDescription>& parameters)
{
  std::string group;
  const auto read = [&](std::string_view line) -> std::string
  {
    if (line.front() == '[' && line.back() == ']')
    {
      group = TrimLine(line.substr(1, line.size() - 2));
      return group.empty() ? "a group wants a title" : "";
    }
    ParameterDescription parameter;
    parameter.group = group;
    if (group.empty())
      return "a parameter stands in a group";
    std::string broken = ReadParameter(line, parameter);
    if (!broken.empty())
      return broken;
    if (HasId(parameters, parameter.id))
      return "the parameter " + std::to_string(parameter.id) + " stands here again";
    parameters.push_back(std::move(parameter));
    return "";
  };
  std::string broken = ReadLines(text, read);
  return broken.empty() && parameters.empty() ? "it describes no parameter" : broken;
}

}  // namespace q7z
