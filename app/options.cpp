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

std::optional<Int32> ParseInteger(std::string_view text)
{
  Int32 value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return value;
}

struct Choice
{
  OptionType type;
  std::string_view name;
  Int32 value;
};
constexpr std::array<Choice, 8> kChoices = {{
  {OptionType::kNormals, "none", 1006},
  {OptionType::kNormals, "vertex", 1007},
  {OptionType::kNormals, "phong", 1008},
  {OptionType::kTextureResize, "shrink", 1009},
  {OptionType::kTextureResize, "exact", 1010},
  {OptionType::kTextureResize, "keep", 1011},
  {OptionType::kFileFormat, "gltf", 1028},
  {OptionType::kFileFormat, "glb", kGlbFileFormat},
}};

std::optional<Int32> ParseChoice(OptionType type, std::string_view text)
{
  for (const Choice& choice : kChoices)
  {
    if (choice.type == type && choice.name == text)
      return choice.value;
  }
  return std::nullopt;
}

std::string_view GetExpectation(OptionType type)
{
  switch (type)
  {
    case OptionType::kBool: return "true or false";
    case OptionType::kInteger: return "a whole number";
    case OptionType::kNormals: return "none, phong or vertex";
    case OptionType::kTextureResize: return "shrink, exact or keep";
    case OptionType::kFileFormat: return "gltf or glb";
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
    case OptionType::kInteger:
      if (const auto value = ParseInteger(text))
        return HostValue(*value);
      break;
    case OptionType::kNormals:
    case OptionType::kTextureResize:
    case OptionType::kFileFormat:
      if (const auto value = ParseChoice(type, text))
        return HostValue(*value);
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

std::string ListKeys(const OptionTable& table)
{
  std::string keys;
  for (const Option& option : table.options)
  {
    keys += keys.empty() ? "" : ", ";
    keys += option.key;
  }
  return keys;
}

}  // namespace

const OptionTable& GetImportOptions()
{
  static const OptionTable table =
    {"import",
     {
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
     }};
  return table;
}

const OptionTable& GetExportOptions()
{
  static const OptionTable table =
    {"export",
     {
       {"exportNormals", 1001, OptionType::kBool, "true", "write normals"},
       {"exportUvs", 1002, OptionType::kBool, "true", "write texture coordinates"},
       {"exportScale", 1003, OptionType::kUnit, "1m", "the length that a unit of the file stands for"},
       {"exportTextures", 1005, OptionType::kBool, "true", "write the textures of materials"},
       {"textureWidth", 1006, OptionType::kInteger, "1024", "width of textures in pixels"},
       {"textureHeight", 1007, OptionType::kInteger, "1024", "height of textures in pixels"},
       {"textureResizeMode", 1008, OptionType::kTextureResize, "shrink", "shrink to the size, exactly to it, or keep"},
       {"doubleSidedMaterials", 1012, OptionType::kBool, "false", "mark every material as double-sided"},
       {"exportTransformAnimation", 1014, OptionType::kBool, "true", "write the animation of transforms"},
       {"exportMorphs", kExportMorphsOption, OptionType::kBool, "true",
        "write morph targets; false by itself where there are none"},
       {"exportSkins", 1019, OptionType::kBool, "false", "write joints and skins"},
       {"bakeAnimation", 1020, OptionType::kBool, "false", "sample the animation frame by frame"},
       {"useCurrentFrame", 1022, OptionType::kBool, "true", "save the document at the time that it stands at"},
       {"exportFrame", 1023, OptionType::kInteger, "0", "the frame to save, when useCurrentFrame is false"},
       {"exportCameras", 1024, OptionType::kBool, "true", "write cameras"},
       {"shareMeshes", 1026, OptionType::kBool, "true", "write copies with equal points as one mesh"},
       {"flipZ", 1025, OptionType::kBool, "true", "mirror Z, into the file's right-handed space"},
       {"fileFormat", kFileFormatOption, OptionType::kFileFormat, "gltf", "gltf or glb; by default as the output's suffix says"},
     }};
  return table;
}

std::string_view GetTypeName(OptionType type)
{
  switch (type)
  {
    case OptionType::kBool: return "bool";
    case OptionType::kInteger: return "integer";
    case OptionType::kNormals:
    case OptionType::kTextureResize:
    case OptionType::kFileFormat: return "choice";
    case OptionType::kAngleDegrees: return "degrees";
    case OptionType::kUnit: return "length";
  }
  return "";
}

ParsedOption ParseOption(const OptionTable& table, std::string_view text)
{
  ParsedOption parsed;
  const std::string flag = "--" + std::string(table.name);
  const size_t equals = text.find('=');
  const std::string_view key = text.substr(0, equals);
  if (equals == std::string_view::npos)
  {
    parsed.error = flag + " wants KEY=VALUE, not \"" + std::string(text) + "\"";
    return parsed;
  }
  const std::string_view valueText = text.substr(equals + 1);
  for (const Option& option : table.options)
  {
    if (option.key != key)
      continue;
    parsed.parameterId = option.parameterId;
    parsed.value = ParseValue(option.type, valueText);
    if (parsed.value.IsNil())
    {
      parsed.error = flag + " " + std::string(key) + " wants " + std::string(GetExpectation(option.type)) + ", not \"" +
                     std::string(valueText) + "\"";
    }
    return parsed;
  }
  parsed.error = "there is no " + std::string(table.name) + " option \"" + std::string(key) + "\"; there are " + ListKeys(table);
  return parsed;
}

std::optional<Int32> GetFormatOfName(std::string_view name)
{
  const size_t dot = name.rfind('.');
  std::string suffix(dot == std::string_view::npos ? "" : name.substr(dot + 1));
  for (char& c : suffix)
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return ParseChoice(OptionType::kFileFormat, suffix);
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
