#include "app/arguments.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <map>

#include "app/exitcode.h"
#include "app/options.h"

namespace q7z::app
{

namespace
{

const std::map<std::string, When> kWhenNames = {{"auto", When::kAuto}, {"always", When::kAlways}, {"never", When::kNever}};

/// What CLI11 fills before it is checked.
struct RawTexts
{
  std::vector<std::string> importOptions;
  std::vector<std::string> configuration;
  std::string unit;
};

/// Options that most verbs share.
void AddCommonOptions(CLI::App& command, Arguments& arguments, RawTexts& raw)
{
  // One value an option, so that a file name behind it is not swallowed.
  command.add_option("--import", raw.importOptions, "An import option, KEY=VALUE (see q7z options)")
    ->type_name("KEY=VALUE")
    ->expected(1)
    ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  command.add_option("--config", raw.configuration, "A configuration variable of the plug-in, VARIABLE=VALUE")
    ->type_name("VARIABLE=VALUE")
    ->expected(1)
    ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  command.add_option("--node-space", arguments.nodeSpace, "Id of the active material node space")->type_name("ID");
  command.add_option("--unit", raw.unit, "Unit of the new document, such as 1cm or 1m")->type_name("UNIT");
  command.add_option("--fps", arguments.framesPerSecond, "Frames a second of the new document")
    ->type_name("N")
    ->check(CLI::Range(1, 100000));
  command.add_option("--tex", arguments.texFolder, "Folder in which the tex folder of images is made")->type_name("DIR");
  command.add_flag("--allow-outside", arguments.allowOutside, "Read side files from outside the input's folder, too");
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

void AddVerbs(CLI::App& app, Arguments& arguments, RawTexts& raw)
{
  CLI::App* const import = app.add_subcommand("import", "Load a glTF file; write it as a scene document");
  import->add_option("IN", arguments.input, "A .gltf or .glb file, or - for stdin")->required();
  import->add_option("OUT", arguments.output, "The scene document to write, or - for stdout");
  AddCommonOptions(*import, arguments, raw);
  import->callback([&arguments] { arguments.verb = Verb::kImport; });

  CLI::App* const inspect = app.add_subcommand("inspect", "Show a tree of what arrives from a file");
  inspect->add_option("IN", arguments.input, "A .gltf or .glb file, or - for stdin")->required();
  inspect->add_flag("--json", arguments.json, "Print the scene document instead");
  AddCommonOptions(*inspect, arguments, raw);
  inspect->callback([&arguments] { arguments.verb = Verb::kInspect; });

  CLI::App* const options = app.add_subcommand("options", "List every import option");
  options->callback([&arguments] { arguments.verb = Verb::kOptions; });
}

int FailUsage(const std::string& message)
{
  std::fprintf(stderr, "q7z: %s\n", Escape(message).c_str());
  return kUsage;
}

/// Whether two names, neither of them "-", lead to one file. What does not exist yet is told by its name alone.
bool IsSameFile(const std::string& a, const std::string& b)
{
  std::error_code error;
  return !a.empty() && a != "-" && b != "-" && (a == b || std::filesystem::equivalent(a, b, error));
}

std::optional<int> CheckTexts(const RawTexts& raw, Arguments& arguments)
{
  for (const std::string& text : raw.importOptions)
  {
    const ParsedOption option = ParseImportOption(text);
    if (!option.error.empty())
      return FailUsage(option.error);
    arguments.importParameters.emplace_back(option.parameterId, option.value);
  }
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
  if (IsSameFile(arguments.reportFile, arguments.input) || IsSameFile(arguments.reportFile, arguments.output))
    return FailUsage("the report would replace \"" + arguments.reportFile + "\"; give it a file of its own");
  return std::nullopt;
}

}  // namespace

std::optional<int> ParseArguments(int argc, char** argv, Arguments& arguments)
{
  CLI::App app("Loads glTF files through the io_gltf plug-in, without the big host.", "q7z");
  app.set_version_flag("--version", "q7z " Q7Z_VERSION);
  app.require_subcommand(1);
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
  return CheckTexts(raw, arguments);
}

}  // namespace q7z::app
