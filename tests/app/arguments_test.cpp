// The command line: what is refused before anything is read, and what is said about it.

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
  {"VerbOfOneLetter", {"i", "a.gltf"}, "there is no verb \"i\""},
  {"UnknownOption", {"import", "a.gltf", "--nope"}, "--nope"},
  {"NoInput", {"import"}, "IN"},
  {"OneFileTooMany", {"import", "a.gltf", "b", "c"}, "c"},
  {"InspectTakesOneFile", {"inspect", "a.gltf", "b"}, "b"},
  {"OptionsTakesNone", {"options", "a.gltf"}, "a.gltf"},
  {"ImportWithoutValue", {"import", "a.gltf", "--import"}, "--import"},
  {"ImportWithoutEquals", {"import", "a.gltf", "--import", "scale"}, "--import wants KEY=VALUE, not \"scale\""},
  {"ImportUnknownKey",
   {"import", "a.gltf", "--import", "size=1"},
   "there is no import option \"size\"; there are scale, cameras, geometry, splitmesh, normals, phongangle, vertexcolors, uvs, "
   "flipz, materials, animation.trs, animation.morph, animation.morph.targetslayer, animation.cleantracks"},
  {"ImportEmptyKey", {"import", "a.gltf", "--import", "=1"}, "there is no import option \"\""},
  {"ImportKeyIsCaseSensitive", {"import", "a.gltf", "--import", "FlipZ=true"}, "there is no import option \"FlipZ\""},
  {"BoolIsMaybe", {"import", "a.gltf", "--import", "flipz=maybe"}, "--import flipz wants true or false, not \"maybe\""},
  {"BoolIsEmpty", {"import", "a.gltf", "--import", "uvs="}, "--import uvs wants true or false, not \"\""},
  {"NormalsAreFlat",
   {"import", "a.gltf", "--import", "normals=flat"},
   "--import normals wants none, phong or vertex, not \"flat\""},
  {"AngleIsNoNumber", {"import", "a.gltf", "--import", "phongangle=wide"}, "--import phongangle wants an angle in degrees"},
  {"AngleHasRest", {"import", "a.gltf", "--import", "phongangle=40deg"}, "not \"40deg\""},
  {"AngleIsNotFinite", {"import", "a.gltf", "--import", "phongangle=inf"}, "not \"inf\""},
  {"ScaleIsNegative", {"import", "a.gltf", "--import", "scale=-1m"}, "--import scale wants a length such as 1m"},
  {"ScaleIsNothing", {"import", "a.gltf", "--import", "scale=0"}, "not \"0\""},
  {"ScaleIsNoNumber", {"import", "a.gltf", "--import", "scale=nan"}, "not \"nan\""},
  {"ScaleUnitUnknown", {"import", "a.gltf", "--import", "scale=1parsec"}, "not \"1parsec\""},
  {"SecondImportIsChecked", {"import", "a.gltf", "--import", "uvs=on", "--import", "uvs=un"}, "not \"un\""},
  {"ConfigWithoutEquals", {"import", "a.gltf", "--config", "X"}, "--config wants VARIABLE=VALUE, not \"X\""},
  {"ConfigWithoutName", {"import", "a.gltf", "--config", "=true"}, "--config wants VARIABLE=VALUE, not \"=true\""},
  {"UnitUnknown", {"inspect", "a.gltf", "--unit", "1ell"}, "--unit wants a length such as 1cm, 1m or 1inch, not \"1ell\""},
  {"FpsIsNothing", {"inspect", "a.gltf", "--fps", "0"}, "--fps"},
  {"FpsIsNoNumber", {"inspect", "a.gltf", "--fps", "x"}, "--fps"},
  {"ColorSometimes", {"inspect", "a.gltf", "--color", "sometimes"}, "--color"},
  {"ProgressSometimes", {"inspect", "a.gltf", "--progress", "sometimes"}, "--progress"},
  {"TwoThingsOnStdout", {"import", "a.gltf", "-", "--report", "-"}, "the document and the report cannot both go to stdout"},
  {"TreeAndReportOnStdout", {"inspect", "a.gltf", "--report", "-"}, "give --report a file"},
  {"ControlsOfTheCommandLine", {"import", "a.gltf", "--import", "\x1b[2J=1"}, "\"\\x1B[2J\""},
};

INSTANTIATE_TEST_SUITE_P(Rows, AppUsage, testing::ValuesIn(kWrongUsages), RowName());

/// Every key, its parameter and its default, as people are told.
struct OptionRow
{
  std::string name;
  std::string key;
  std::string id;
  std::string defaultText;
};

class AppOptions : public testing::TestWithParam<OptionRow>
{};

TEST_P(AppOptions, AreListedAndTakeTheirDefault)
{
  const OptionRow& row = GetParam();
  const RunResult list = RunTool({"options"});
  ASSERT_EQ(list.status, 0) << list.err;
  bool found = false;
  std::istringstream lines(list.out);
  for (std::string line; std::getline(lines, line);)
  {
    std::istringstream words(line);
    std::string key, id, type, defaultText;
    words >> key >> id >> type >> defaultText;
    found = found || (key == row.key && id == row.id && defaultText == row.defaultText && !type.empty());
  }
  EXPECT_TRUE(found) << list.out;

  const RunResult run = RunTool({"import", "-", "--import", row.key + "=" + row.defaultText}, {kGoodFile});
  EXPECT_EQ(run.status, 0) << run.err;
}

const std::vector<OptionRow> kOptionRows = {
  {"Scale", "scale", "1002", "1m"},
  {"Cameras", "cameras", "1003", "true"},
  {"Geometry", "geometry", "1004", "true"},
  {"SplitMesh", "splitmesh", "1018", "false"},
  {"Normals", "normals", "1005", "vertex"},
  {"PhongAngle", "phongangle", "1009", "40"},
  {"VertexColors", "vertexcolors", "1010", "true"},
  {"Uvs", "uvs", "1011", "true"},
  {"FlipZ", "flipz", "1012", "true"},
  {"Materials", "materials", "1013", "true"},
  {"AnimationTrs", "animation.trs", "1014", "true"},
  {"AnimationMorph", "animation.morph", "1017", "true"},
  {"TargetsLayer", "animation.morph.targetslayer", "1020", "true"},
  {"CleanTracks", "animation.cleantracks", "1019", "false"},
};

INSTANTIATE_TEST_SUITE_P(Rows, AppOptions, testing::ValuesIn(kOptionRows), RowName());

TEST(AppHelp, GoesToStdoutAndSucceeds)
{
  for (const char* const argument : {"--help", "--version"})
  {
    const RunResult result = RunTool({argument});
    EXPECT_EQ(result.status, 0) << argument;
    EXPECT_TRUE(result.out.find("q7z") != std::string::npos) << result.out;
    EXPECT_EQ(result.err, "") << argument;
  }
}

TEST(AppHelp, OfAVerbTellsItsOptions)
{
  const RunResult result = RunTool({"import", "--help"});
  EXPECT_EQ(result.status, 0);
  for (const char* const option : {"--import", "--config", "--node-space", "--unit", "--fps", "--tex", "--allow-outside",
                                   "--report", "--strict", "--plugin", "--quiet", "--verbose", "--progress", "--color"})
    EXPECT_NE(result.out.find(option), std::string::npos) << option;
}

}  // namespace
}  // namespace q7z::test
