#include "app/options.h"

#include <array>
#include <charconv>
#include <cmath>
#include <numbers>

namespace q7z::app
{

namespace
{

struct UnitName
{
  std::string_view name;
  int code;
};

// Longer names first: "mm" ends in "m".
constexpr std::array<UnitName, 12> kUnitNames = {{
  {"mile", 7},
  {"yard", 8},
  {"foot", 9},
  {"inch", 10},
  {"km", 1},
  {"cm", 3},
  {"mm", 4},
  {"um", 5},
  {"µm", 5},
  {"nm", 6},
  {"in", 10},
  {"m", 2},
}};

std::optional<double> ParseNumber(std::string_view text)
{
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
    return std::nullopt;
  return value;
}

std::optional<bool> ParseBool(std::string_view text)
{
  if (text == "true" || text == "on" || text == "yes" || text == "1")
    return true;
  if (text == "false" || text == "off" || text == "no" || text == "0")
    return false;
  return std::nullopt;
}

std::optional<int> ParseNormals(std::string_view text)
{
  if (text == "none")
    return 1006;
  if (text == "vertex")
    return 1007;
  if (text == "phong")
    return 1008;
  return std::nullopt;
}

std::string_view GetExpectation(OptionType type)
{
  switch (type)
  {
    case OptionType::kBool: return "true or false";
    case OptionType::kNormals: return "none, phong or vertex";
    case OptionType::kAngleDegrees: return "an angle in degrees";
    case OptionType::kUnit: return "a length such as 1m, 2.5cm or a plain factor";
  }
  return "";
}

/// The value of an option's text; nil when it is none.
HostValue ParseValue(OptionType type, std::string_view text)
{
  switch (type)
  {
    case OptionType::kBool:
      if (const auto value = ParseBool(text))
        return HostValue(*value);
      break;
    case OptionType::kNormals:
      if (const auto value = ParseNormals(text))
        return HostValue(Int32(*value));
      break;
    case OptionType::kAngleDegrees:
      if (const auto value = ParseNumber(text))
        return HostValue(*value * std::numbers::pi / 180.0);
      break;
    case OptionType::kUnit:
      if (const auto value = ParseUnit(text))
        return HostValue(*value);
      break;
  }
  return HostValue();
}

std::string ListKeys()
{
  std::string keys;
  for (const ImportOption& option : GetImportOptions())
  {
    keys += keys.empty() ? "" : ", ";
    keys += option.key;
  }
  return keys;
}

}  // namespace

const std::vector<ImportOption>& GetImportOptions()
{
  static const std::vector<ImportOption> options = {
    {"scale", 1002, OptionType::kUnit, "1m", "the length that a unit of the file stands for"},
    {"cameras", 1003, OptionType::kBool, "true", "import cameras"},
    {"geometry", 1004, OptionType::kBool, "true", "import meshes"},
    {"splitmesh", 1018, OptionType::kBool, "false", "one object for each primitive of a mesh"},
    {"normals", 1005, OptionType::kNormals, "vertex", "the file's normals, phong shading alone, or neither"},
    {"phongangle", 1009, OptionType::kAngleDegrees, "40", "angle in degrees up to which phong shading smooths"},
    {"vertexcolors", 1010, OptionType::kBool, "true", "import vertex colours"},
    {"uvs", 1011, OptionType::kBool, "true", "import texture coordinates"},
    {"flipz", 1012, OptionType::kBool, "true", "mirror Z, from the file's right-handed space into the host's"},
    {"materials", 1013, OptionType::kBool, "true", "import materials"},
    {"animation.trs", 1014, OptionType::kBool, "true", "import transform animation and skins"},
    {"animation.morph", 1017, OptionType::kBool, "true", "import morph targets and their animation"},
    {"animation.morph.targetslayer", 1020, OptionType::kBool, "true", "put morph targets on a layer of their own"},
    {"animation.cleantracks", 1019, OptionType::kBool, "false", "leave out tracks that never change"},
  };
  return options;
}

std::string_view GetTypeName(OptionType type)
{
  switch (type)
  {
    case OptionType::kBool: return "bool";
    case OptionType::kNormals: return "choice";
    case OptionType::kAngleDegrees: return "degrees";
    case OptionType::kUnit: return "length";
  }
  return "";
}

ParsedOption ParseImportOption(std::string_view text)
{
  ParsedOption parsed;
  const size_t equals = text.find('=');
  const std::string_view key = text.substr(0, equals);
  if (equals == std::string_view::npos)
  {
    parsed.error = "--import wants KEY=VALUE, not \"" + std::string(text) + "\"";
    return parsed;
  }
  const std::string_view valueText = text.substr(equals + 1);
  for (const ImportOption& option : GetImportOptions())
  {
    if (option.key != key)
      continue;
    parsed.parameterId = option.parameterId;
    parsed.value = ParseValue(option.type, valueText);
    if (parsed.value.IsNil())
    {
      parsed.error = "--import " + std::string(key) + " wants " + std::string(GetExpectation(option.type)) + ", not \"" +
                     std::string(valueText) + "\"";
    }
    return parsed;
  }
  parsed.error = "there is no import option \"" + std::string(key) + "\"; there are " + ListKeys();
  return parsed;
}

std::optional<HostUnitScale> ParseUnit(std::string_view text)
{
  for (const UnitName& unit : kUnitNames)
  {
    if (!text.ends_with(unit.name))
      continue;
    const std::string_view number = text.substr(0, text.size() - unit.name.size());
    const std::optional<double> factor = number.empty() ? 1.0 : ParseNumber(number);
    if (!factor || *factor <= 0)
      return std::nullopt;
    return HostUnitScale{*factor, unit.code};
  }
  const std::optional<double> factor = ParseNumber(text);
  if (!factor || *factor <= 0)
    return std::nullopt;
  return HostUnitScale{*factor, 2};
}

}  // namespace q7z::app
