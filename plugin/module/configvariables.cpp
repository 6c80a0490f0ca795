#include "plugin/module/configvariables.h"

namespace q7z
{

namespace
{

constinit ConfigVariableEntry g_entries[kMaximumConfigVariables];

}  // namespace

// The table is reached through the hook, which stands before any initialiser runs: sources may register in any order.
Bool RegisterConfigVariable(Bool* variable, const String& name, const String& help, Bool defaultValue) noexcept
{
  if (g_tarno.configVariableCount >= kMaximumConfigVariables)
  {
    *variable = defaultValue;
    return defaultValue;
  }
  ConfigVariableEntry& entry = g_entries[g_tarno.configVariableCount];
  entry.name = name;
  entry.help = help;
  entry.variable = variable;
  g_tarno.configVariables = g_entries;
  ++g_tarno.configVariableCount;
  return defaultValue;
}

Bool g_gltfImporterNoSkin =
  RegisterConfigVariable(&g_gltfImporterNoSkin, "g_gltfImporterNoSkin"_s, "Disables skin creation on glTF import"_s, false);

Bool g_gltfImporterBakeSplineInterpolatedAnimation = RegisterConfigVariable(
  &g_gltfImporterBakeSplineInterpolatedAnimation, "g_gltfImporterBakeSplineInterpolatedAnimation"_s,
  "Bake glTF animation track values into linear interpolation keyframes rather than using Q7Z spline interpolated keyframes"_s,
  false);

}  // namespace q7z
