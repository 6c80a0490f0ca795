#pragma once

// The one table of options: what feeds the parser, --help and `q7z options`. Import options are the loader's parameters under the
// names of their keys.

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
  kNormals,       // none, phong or vertex
  kAngleDegrees,  // degrees on the command line, radians in the host
  kUnit,
};

struct ImportOption
{
  std::string_view key;  // without the keys' common prefix
  int parameterId;
  OptionType type;
  std::string_view defaultText;
  std::string_view meaning;
};

/// Every import option, in the order of `q7z options`.
const std::vector<ImportOption>& GetImportOptions();

/// What people call a type.
std::string_view GetTypeName(OptionType type);

/// "KEY=VALUE" as a parameter of the loader. @return the parameter, or a line that says what is wrong and what to do.
struct ParsedOption
{
  int parameterId = 0;
  HostValue value;
  std::string error;  // empty when the option is good
};
ParsedOption ParseImportOption(std::string_view text);

/// "1m", "2.5cm" or "0.01" (a plain length factor, in metres). Nothing when it is none of these.
std::optional<HostUnitScale> ParseUnit(std::string_view text);

}  // namespace q7z::app
