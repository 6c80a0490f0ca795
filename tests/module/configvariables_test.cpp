// Configuration variables: the two of the module, as a host finds them in the built library, and the table's end.

#include <gtest/gtest.h>

#include "plugin/module/configvariables.h"
#include "tests/module/fakehost.h"
#include "tests/module/loadedmodule.h"

namespace q7z::test
{
namespace
{

struct VariableCase
{
  const char* name;
  const char* help;
};
const VariableCase kVariableCases[] = {
  {"g_gltfImporterNoSkin", "Disables skin creation on glTF import"},
  {"g_gltfImporterBakeSplineInterpolatedAnimation",
   "Bake glTF animation track values into linear interpolation keyframes rather than using Q7Z spline interpolated keyframes"},
};

TEST(ConfigVariables, StandInTheHookFromTheStart)
{
  const LoadedModule module;
  ASSERT_EQ(module.hook->configVariableCount, std::ssize(kVariableCases));
  for (const VariableCase& row : kVariableCases)
  {
    const ConfigVariableEntry* const begin = module.hook->configVariables;
    const ConfigVariableEntry* const end = begin + module.hook->configVariableCount;
    const auto* const entry = std::find_if(begin, end, [&](const auto& candidate) { return Text(candidate.name) == row.name; });
    ASSERT_NE(entry, end) << row.name;
    EXPECT_EQ(Text(entry->help), row.help);
    EXPECT_EQ(entry->typeCode, 1);
    EXPECT_EQ(entry->word, 0u);
    ASSERT_NE(entry->variable, nullptr);
    EXPECT_FALSE(*entry->variable);
  }
}

TEST(ConfigVariables, TableEndsAtTwoHundredFiftySix)
{
  // Entries stay for the life of the process, and so do the variables that they point at.
  static Bool variables[300] = {};
  const Int32 before = g_tarno.configVariableCount;
  Int32 next = 0;
  while (g_tarno.configVariableCount < 256)
  {
    ASSERT_LT(next, 300);
    ASSERT_TRUE(RegisterConfigVariable(&variables[next], "filler"_s, "help"_s, true));
    ++next;
    ASSERT_EQ(g_tarno.configVariableCount, before + next);
  }
  const ConfigVariableEntry& last = g_tarno.configVariables[255];
  EXPECT_EQ(last.variable, &variables[next - 1]);

  Bool beyond = false;
  EXPECT_TRUE(RegisterConfigVariable(&beyond, "beyond"_s, "help"_s, true));
  EXPECT_TRUE(beyond);
  EXPECT_EQ(g_tarno.configVariableCount, 256);
  EXPECT_EQ(last.variable, &variables[next - 1]);
  EXPECT_EQ(Text(last.name), "filler");
  EXPECT_FALSE(variables[0]);  // inside the table the caller stores the default itself
}

}  // namespace
}  // namespace q7z::test
