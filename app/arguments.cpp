#include "app/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <map>

#include "app/exitcode.h"
#include "app/options.h"
#include "host/platform/platform.h"

namespace q7z::app
{

namespace
{

const std::map<std::string, When> kWhenNames = {{"auto", When::kAuto}, {"always", When::kAlways}, {"never", When::kNever}};

/// What CLI11 fills before it is checked.
struct RawTexts
{
  std::vector<std::string> importOptions;
  std::vector<std::string> exportOptions;
  std::vector<std::string> configuration;
  std::string unit;
};

/// Options whose texts are checked by a table. One value an option, so that a file name behind it is not swallowed.
CLI::Option* AddTexts(CLI::App& command, const char* name, std::vector<std::string>& texts, const char* help)
{
  return command.add_option(name, texts, help)->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void AddTrustOption(CLI::App& command, Arguments& arguments)
{
  command.add_flag("--allow-outside", arguments.allowOutside, "Read side files from outside the input's folder, too");
}

/// Options of the verbs that load a glTF file.
void AddLoadOptions(CLI::App& command, Arguments& arguments, RawTexts& raw)
{
  AddTexts(command, "--import", raw.importOptions, "An import option, KEY=VALUE (see q7z options)")->type_name("KEY=VALUE");
  command.add_option("--unit", raw.unit, "Unit of the new document, such as 1cm or 1m")->type_name("UNIT");
  command.add_option("--fps", arguments.framesPerSecond, "Frames a second of the new document")
    ->type_name("N")
    ->check(CLI::Range(1, 100000));
  command.add_option("--tex", arguments.texFolder, "Folder in which the tex folder of images is made")->type_name("DIR");
  AddTrustOption(command, arguments);
}

/// Options of the verbs that save a glTF file.
void AddSaveOptions(CLI::App& command, RawTexts& raw)
{
  AddTexts(command, "--export", raw.exportOptions, "An export option, FIELD=VALUE (see q7z options)")->type_name("FIELD=VALUE");
}

/// Options that all verbs share that run the plug-in.
void AddCommonOptions(CLI::App& command, Arguments& arguments, RawTexts& raw)
{
  AddTexts(command, "--config", raw.configuration, "A configuration variable of the plug-in, VARIABLE=VALUE")
    ->type_name("VARIABLE=VALUE");
  command.add_option("--node-space", arguments.nodeSpace, "Id of the active material node space")->type_name("ID");
  command.add_option("--report", arguments.reportFile, "Write the run as JSON; - is stdout")->type_name("FILE");
  command.add_flag("--timings", arguments.timings, "Put clock times into the report");
  command.add_flag("--strict", arguments.strict, "Exit with 5 when there were warnings");
  command.add_option("--plugin", arguments.pluginPath, "The plug-in to load")->type_name("PATH");
  command.add_flag("-q,--quiet", arguments.quiet, "No warnings on stderr");
  command.add_flag("-v,--verbose", arguments.verbose, "Diagnostic output on stderr");
  command.add_option("--progress", arguments.progress, "Progress bar: auto, always or never")
    ->type_name("WHEN")
    ->transform(CLI::CheckedTransformer(kWhenNames).description(""));
  command.add_option("--color", arguments.color, "Colours: auto, always or never")
    ->type_name("WHEN")
    ->transform(CLI::CheckedTransformer(kWhenNames).description(""));
}

CLI::App* AddVerb(CLI::App& app, Arguments& arguments, Verb verb, const char* name, const char* help)
{
  CLI::App* const command = app.add_subcommand(name, help);
  command->callback([&arguments, verb] { arguments.verb = verb; });
  return command;
}

void AddVerbs(CLI::App& app, Arguments& arguments, RawTexts& raw)
{
  constexpr const char* kInput = "A .gltf or .glb file, or - for stdin";
  constexpr const char* kOutput = "The .gltf or .glb file to write, or - for stdout";

  CLI::App* const import = AddVerb(app, arguments, Verb::kImport, "import", "Load a glTF file; write it as a scene document");
  import->add_option("IN", arguments.input, kInput)->required();
  import->add_option("OUT", arguments.output, "The scene document to write, or - for stdout");
  AddLoadOptions(*import, arguments, raw);
  AddCommonOptions(*import, arguments, raw);

  CLI::App* const save = AddVerb(app, arguments, Verb::kExport, "export", "Read a scene document; save it as a glTF file");
  save->add_option("SCENE", arguments.input, "A scene document, or - for stdin")->required();
  save->add_option("OUT", arguments.output, kOutput)->required();
  AddTrustOption(*save, arguments);
  AddSaveOptions(*save, raw);
  AddCommonOptions(*save, arguments, raw);

  CLI::App* const convert = AddVerb(app, arguments, Verb::kConvert, "convert", "Load a glTF file and save it as another");
  convert->add_option("IN", arguments.input, kInput)->required();
  convert->add_option("OUT", arguments.output, kOutput)->required();
  AddLoadOptions(*convert, arguments, raw);
  AddSaveOptions(*convert, raw);
  AddCommonOptions(*convert, arguments, raw);

  CLI::App* const inspect = AddVerb(app, arguments, Verb::kInspect, "inspect", "Show a tree of what arrives from a file");
  inspect->add_option("IN", arguments.input, kInput)->required();
  inspect->add_flag("--json", arguments.json, "Print the scene document instead");
  AddLoadOptions(*inspect, arguments, raw);
  AddCommonOptions(*inspect, arguments, raw);

  CLI::App* const hash = AddVerb(app, arguments, Verb::kHash, "hash", "Show the hashes of names of extensions");
  hash->add_option("NAME", arguments.names, "Names of extensions; without any, the lines of stdin");
  hash->add_flag("--only-hashes", arguments.onlyHashes, "Leave the names out");
  AddCommonOptions(*hash, arguments, raw);

  AddVerb(app, arguments, Verb::kOptions, "options", "List every import and export option");
}

int FailUsage(const std::string& message)
{
  std::fprintf(stderr, "q7z: %s\n", Escape(message).c_str());
  return kUsage;
}

/// Whether two names, neither of them "-", lead to one file. What does not exist yet is told by its name alone.
bool AreOneFile(const std::string& a, const std::string& b)
{
  return !a.empty() && a != "-" && b != "-" && (a == b || IsSameFile(a, b));
}

void TakePaths(Arguments& arguments)
{
  for (std::string* const path :
       {&arguments.input, &arguments.output, &arguments.texFolder, &arguments.reportFile, &arguments.pluginPath})
    *path = TakePath(*path);
}

std::optional<int> CheckOptions(const OptionTable& table, const std::vector<std::string>& texts,
                                std::vector<std::pair<int, HostValue>>& parameters)
{
  for (const std::string& text : texts)
  {
    const ParsedOption option = ParseOption(table, text);
    if (!option.error.empty())
      return FailUsage(option.error);
    parameters.emplace_back(option.parameterId, option.value);
  }
  return std::nullopt;
}

/// The export options, and the form that the output's suffix tells when they do not.
std::optional<int> CheckForm(const RawTexts& raw, Arguments& arguments)
{
  if (const auto code = CheckOptions(GetExportOptions(), raw.exportOptions, arguments.exportParameters))
    return code;
  const bool isChosen = std::any_of(arguments.exportParameters.begin(), arguments.exportParameters.end(),
                                    [](const auto& parameter) { return parameter.first == kFileFormatOption; });
  const bool saves = arguments.verb == Verb::kExport || arguments.verb == Verb::kConvert;
  if (!saves || isChosen || arguments.output == "-")
    return std::nullopt;
  const std::optional<Int32> format = GetFormatOfName(arguments.output);
  if (!format)
    return FailUsage("\"" + arguments.output + "\" ends in neither .gltf nor .glb; choose with --export fileFormat=gltf or glb");
  arguments.exportParameters.emplace_back(kFileFormatOption, HostValue(*format));
  return std::nullopt;
}

std::optional<int> CheckTexts(const RawTexts& raw, Arguments& arguments)
{
  if (const auto code = CheckOptions(GetImportOptions(), raw.importOptions, arguments.importParameters))
    return code;
  if (const auto code = CheckForm(raw, arguments))
    return code;
  for (const std::string& text : raw.configuration)
  {
    const size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0)
      return FailUsage("--config wants VARIABLE=VALUE, not \"" + text + "\"");
    arguments.configuration.emplace_back(text.substr(0, equals), text.substr(equals + 1));
  }
  if (!raw.unit.empty())
  {
    arguments.unit = ParseUnit(raw.unit);
    if (!arguments.unit)
      return FailUsage("--unit wants a length such as 1cm, 1m or 1inch, not \"" + raw.unit + "\"");
  }
  if (arguments.output == "-" && arguments.reportFile == "-")
    return FailUsage("the document and the report cannot both go to stdout");
  if (arguments.verb == Verb::kInspect && arguments.reportFile == "-")
    return FailUsage("inspect writes to stdout itself; give --report a file");
  if (arguments.verb == Verb::kHash && arguments.reportFile == "-")
    return FailUsage("hash writes to stdout itself; give --report a file");
  if (AreOneFile(arguments.reportFile, arguments.input) || AreOneFile(arguments.reportFile, arguments.output))
    return FailUsage("the report would replace \"" + arguments.reportFile + "\"; give it a file of its own");
  return std::nullopt;
}

}  // namespace

std::optional<int> ParseArguments(int argc, char** argv, Arguments& arguments)
{
  CLI::App app("Loads and saves glTF files through the io_gltf plug-in, without the big host.", "q7z");
  app.set_version_flag("--version", "q7z " Q7Z_VERSION);
  app.require_subcommand(1);
  app.allow_windows_style_options(false);  // a path may begin with a slash there, too
  app.footer("Exit codes: 0 done, 1 file refused, 2 wrong usage, 3 no access, 4 out of memory or over a limit,\n"
             "5 warnings under --strict, 130 and 143 interrupted.");
  RawTexts raw;
  AddVerbs(app, arguments, raw);
  try
  {
    app.parse(argc, argv);
  }
  catch (const CLI::ParseError& error)
  {
    if (error.get_exit_code() == 0)
      return app.exit(error);
    // Without a verb, a word that is none counts as left over, of which the parser says nothing.
    if (app.get_subcommands().empty() && argc > 1 && argv[1][0] != '-')
      return FailUsage("there is no verb \"" + std::string(argv[1]) + "\"; try q7z --help");
    return FailUsage(std::string(error.what()) + "; try q7z --help");
  }
  TakePaths(arguments);
  return CheckTexts(raw, arguments);
}

}  // namespace q7z::app
