#pragma once

// The one table of options: what feeds the parser, --help and `q7z options`. Import options are the loader's parameters under the
// names of their keys, export options the saver's under the names of their fields.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/headlesshost.h"

namespace q7z::app
{

enum class OptionType
{
  kBool,
  kInteger,
  kNormals,        // none, phong or vertex
  kTextureResize,  // shrink, exact or keep
  kFileFormat,     // gltf or glb
  kAngleDegrees,   // degrees on the command line, radians in the host
  kUnit,
};

struct Option
{
  std::string_view key;
  int parameterId;
  OptionType type;
  std::string_view defaultText;
  std::string_view meaning;
};

/// The loader's or the saver's options, under the name of the command line's option that sets them.
struct OptionTable
{
  std::string_view name;  // "import" or "export"
  std::vector<Option> options;
};

/// Every option, in the order of `q7z options`.
const OptionTable& GetImportOptions();
const OptionTable& GetExportOptions();

/// The export options that q7z sets itself when the command line does not.
inline constexpr int kExportMorphsOption = 1015;
inline constexpr int kFileFormatOption = 1027;

/// The value of fileFormat for GLB.
inline constexpr Int32 kGlbFileFormat = 1029;

/// What people call a type.
std::string_view GetTypeName(OptionType type);

/// "KEY=VALUE" as a parameter of the loader or saver. @return the parameter, or a line that says what is wrong and what to do.
struct ParsedOption
{
  int parameterId = 0;
  HostValue value;
  std::string error;  // empty when the option is good
};
ParsedOption ParseOption(const OptionTable& table, std::string_view text);

/// The value of fileFormat that fits a file's name; nothing for a name without one of the two suffixes.
std::optional<Int32> GetFormatOfName(std::string_view name);

/// "1m", "2.5cm" or "0.01" (a plain length factor, in metres). Nothing when it is none of these.
std::optional<HostUnitScale> ParseUnit(std::string_view text);

}  // namespace q7z::app
