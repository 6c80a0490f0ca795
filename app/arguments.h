#pragma once

// What the command line asks for, checked as far as the line alone tells.

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/terminal.h"
#include "host/headlesshost.h"

namespace q7z::app
{

enum class Verb
{
  kImport,
  kExport,
  kConvert,
  kInspect,
  kHash,
  kOptions,
};

struct Arguments
{
  Verb verb = Verb::kInspect;
  std::string input;
  std::string output;  // empty for none
  bool json = false;
  std::vector<std::string> names;  // of hash; none for the lines of stdin
  bool onlyHashes = false;

  std::vector<std::pair<int, HostValue>> importParameters;         // by the loader's parameter id
  std::vector<std::pair<int, HostValue>> exportParameters;         // by the saver's
  std::vector<std::pair<std::string, std::string>> configuration;  // name, value
  std::string nodeSpace;                                           // empty for the host's own
  std::optional<HostUnitScale> unit;
  int framesPerSecond = 0;  // 0 for the host's own
  std::string texFolder;
  bool allowOutside = false;
  std::string reportFile;
  bool timings = false;
  bool strict = false;
  std::string pluginPath;
  bool quiet = false;
  bool verbose = false;
  When progress = When::kAuto;
  When color = When::kAuto;
};

/// @return the exit code when nothing is left to run (help, version, or an error that has been printed); arguments is filled
/// otherwise.
std::optional<int> ParseArguments(int argc, char** argv, Arguments& arguments);

}  // namespace q7z::app
