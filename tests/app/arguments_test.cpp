// The command line: what is refused before anything is read, and what is said about it.

#include <regex>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/app/expectations.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

struct WrongUsage
{
  std::string name;
  std::vector<std::string> arguments;
  std::string said;
};

class AppUsage : public testing::TestWithParam<WrongUsage>
{};

TEST_P(AppUsage, EndsInOneLineThatSaysWhatIsWanted)
{
  const RunResult result = RunTool(GetParam().arguments);
  ExpectFailure(result, 2, GetParam().said);
  EXPECT_EQ(result.out, "");
}

const std::vector<WrongUsage> kWrongUsages = {
  {"NoVerb", {}, "q7z --help"},
  {"UnknownVerb", {"frobnicate"}, "there is no verb \"frobnicate\""},
  {"UnknownOption", {"import", "a.gltf", "--nope"}, "--nope"},
  {"NoInput", {"import"}, "IN"},
  {"ImportWithoutValue", {"import", "a.gltf", "--import"}, "--import"},
  {"ImportWithoutEquals", {"import", "a.gltf", "--import", "scale"}, "--import wants KEY=VALUE, not \"scale\""},
  {"ImportUnknownKey",
   {"import", "a.gltf", "--import", "size=1"},
   "there is no import option \"size\"; there are scale, cameras, geometry, splitmesh, normals, phongangle, vertexcolors, uvs, "
   "flipz, materials, animation.trs, animation.morph, animation.morph.targetslayer, animation.cleantracks"},
  {"BoolIsMaybe", {"import", "a.gltf", "--import", "flipz=maybe"}, "--import flipz wants true or false, not \"maybe\""},
  {"NormalsAreFlat",
   {"import", "a.gltf", "--import", "normals=flat"},
   "--import normals wants none, phong or vertex, not \"flat\""},
  {"AngleIsNoNumber", {"import", "a.gltf", "--import", "phongangle=wide"}, "--import phongangle wants an angle in degrees"},
  {"AngleIsNotFinite", {"import", "a.gltf", "--import", "phongangle=inf"}, "not \"inf\""},
  {"ScaleIsNothing", {"import", "a.gltf", "--import", "scale=0"}, "not \"0\""},
  {"ScaleIsNegative", {"import", "a.gltf", "--import", "scale=-1m"}, "--import scale wants a length such as 1m"},
  {"ScaleUnitUnknown", {"import", "a.gltf", "--import", "scale=1parsec"}, "not \"1parsec\""},
  {"ConfigWithoutEquals", {"import", "a.gltf", "--config", "X"}, "--config wants VARIABLE=VALUE, not \"X\""},
  {"UnitUnknown", {"inspect", "a.gltf", "--unit", "1ell"}, "--unit wants a length such as 1cm, 1m or 1inch, not \"1ell\""},
  {"FpsIsNothing", {"inspect", "a.gltf", "--fps", "0"}, "--fps"},
  {"ColorSometimes", {"inspect", "a.gltf", "--color", "sometimes"}, "--color"},
  {"TwoThingsOnStdout", {"import", "a.gltf", "-", "--report", "-"}, "the document and the report cannot both go to stdout"},
  {"TreeAndReportOnStdout", {"inspect", "a.gltf", "--report", "-"}, "give --report a file"},
  {"ControlsOfTheCommandLine", {"import", "a.gltf", "--import", "\x1b[2J=1"}, "\"\\x1B[2J\""},
};

INSTANTIATE_TEST_SUITE_P(Rows, AppUsage, testing::ValuesIn(kWrongUsages), RowName());

// Every key, its parameter and its default, as people are told; the default is taken as a value.
TEST(AppOptions, AreListedAndTakeTheirDefault)
{
  const char* const rows[][3] = {{"scale", "1002", "1m"},
                                 {"cameras", "1003", "true"},
                                 {"geometry", "1004", "true"},
                                 {"splitmesh", "1018", "false"},
                                 {"normals", "1005", "vertex"},
                                 {"phongangle", "1009", "40"},
                                 {"vertexcolors", "1010", "true"},
                                 {"uvs", "1011", "true"},
                                 {"flipz", "1012", "true"},
                                 {"materials", "1013", "true"},
                                 {"animation.trs", "1014", "true"},
                                 {"animation.morph", "1017", "true"},
                                 {"animation.morph.targetslayer", "1020", "true"},
                                 {"animation.cleantracks", "1019", "false"}};
  std::istringstream list(RunTool({"options"}).out);
  std::vector<std::string> run = {"import", "-"};
  for (const auto& [key, id, value] : rows)
  {
    std::string pattern = std::string("\n *") + key + " +" + id + " +[^ ]+ +" + value;
    EXPECT_TRUE(std::regex_search("\n" + list.str(), std::regex(pattern))) << key << " in " << list.str();
    run = Join(run, {"--import", std::string(key) + "=" + value});
  }
  const RunResult result = RunTool(run, {kGoodFile});
  EXPECT_EQ(result.status, 0) << result.err;
}

TEST(AppHelp, GoesToStdoutAndTellsTheOptions)
{
  for (const char* const argument : {"--help", "--version"})
  {
    const RunResult result = RunTool({argument});
    EXPECT_EQ(result.status, 0) << argument;
    EXPECT_NE(result.out.find("q7z"), std::string::npos) << result.out;
    EXPECT_EQ(result.err, "") << argument;
  }
  const std::string help = RunTool({"import", "--help"}).out;
  for (const char* const option : {"--import", "--config", "--node-space", "--unit", "--fps", "--tex", "--allow-outside",
                                   "--report", "--strict", "--plugin", "--quiet", "--verbose", "--progress", "--color"})
    EXPECT_NE(help.find(option), std::string::npos) << option;
}

}  // namespace
}  // namespace q7z::test
