#include "plugin/module/moduleshell.h"

#include <memory>
#include <new>

#include "framework/spinlock.h"
#include "plugin/export/gltfexport.h"
#include "plugin/import/gltfimport.h"
#include "plugin/module/hostconsole.h"
#include "plugin/module/hostregistration.h"
#include "plugin/module/hostservices.h"
#include "plugin/tools/extensionshasher.h"

namespace q7z
{

const HostTables* g_hostTables = nullptr;

namespace
{

constexpr Int32 kRefused = -3;
constexpr Int32 kUnknownMessage = -1;
constexpr Int32 kResourcesMissing = -1;
constexpr Int32 kInterfaceVersion = 5;
constexpr Int kLoadResources = 1;

struct ModuleState
{
  UInt32 attachCount = 0;
  std::unique_ptr<HostFilename> path;
};
ModuleState g_module;

Bool HasAllTables(const HostTables& t) noexcept
{
  return t.registration && t.resource && t.description && t.document && t.node && t.object && t.hierarchy && t.transform &&
         t.visibility && t.parameter && t.container && t.unit && t.instance && t.modeling && t.alias && t.polygon && t.phong &&
         t.tag && t.normal && t.uvw && t.vertexColor && t.selection && t.neighbor && t.weight && t.poseMorph && t.texture &&
         t.nodeMaster && t.track && t.curve && t.key && t.take && t.layer && t.material && t.bitmap && t.file && t.dialog &&
         t.console;
}

// Names every table, not the missing one, and lets the attach go on: the host decides what it does without it.
void ReportMissingTables() noexcept
{
  if (!g_hostTables->console)
    return;
  constexpr String kAssertion =
    "Assertion failed: registration && resource && description && document && node && object && hierarchy && transform && "
    "visibility && parameter && container && unit && instance && modeling && alias && polygon && phong && tag && normal && uvw "
    "&& "
    "vertexColor && selection && neighbor && weight && poseMorph && texture && nodeMaster && track && curve && key && take && "
    "layer && material && bitmap && file && dialog && console"_s;
  g_hostTables->console->Diagnostic(HostDiagnosticLevel::kCritical, kAssertion, "operatingsystem", 135);
}

Int32 Attach(const HostTables* tables, const HostFilename* path) noexcept
{
  if (g_module.attachCount++ != 0)
    return 1;
  // The version is the block's first word; nothing else of an older host's block can be trusted to be where it is looked for.
  if (!tables || !path || tables->version < kMinimumHostVersion)
    return kRefused;
  g_hostTables = tables;
  if (!HasAllTables(*tables))
    ReportMissingTables();
  SetSpinYield(g_CpuYieldDelegate);
  g_module.path.reset(new (std::nothrow) HostFilename(*path));  // null without memory; the module stays attached
  return 1;
}

Int32 Detach() noexcept
{
  if (g_module.attachCount-- != 1)
    return 1;
  g_hostTables = nullptr;
  SetSpinYield(nullptr);
  g_module.path.reset();
  return 1;
}

Bool RegisterLoader() noexcept
{
  return HostRegisterSceneLoader(1060210, HostLoadString(10000), 0x3400000, &MakeGltfSceneLoader, "fgltfimporter"_s);
}

Bool RegisterSaver() noexcept
{
  return HostRegisterSceneSaver(1041129, HostLoadString(10000), 0x100000, &MakeGltfSceneSaver, "Fgltfexporter"_s, "gltf"_s);
}

Bool RegisterAll() noexcept
{
  constexpr Bool (*kRegistrations[])() noexcept = {&RegisterSaver, &RegisterLoader, &RegisterExtensionsHasher};
  for (const auto registerOne : kRegistrations)
  {
    if (!registerOne())
      return false;
  }
  return true;
}

Int32 AnswerResourceMessage(Int subMessage, HostResourceRecord* record) noexcept
{
  if (subMessage != kLoadResources)
    return 1;
  if (!g_hostTables || !g_hostTables->resource->Load())
    return kResourcesMissing;
  if (record)
    record->pointer = nullptr;
  return 1;
}

}  // namespace

Int32 AnswerModuleMessage(Int32 message, void* argument1, void* argument2, void* argument3) noexcept
{
  switch (message)
  {
    case kAttachMessage: return Attach(static_cast<const HostTables*>(argument1), static_cast<const HostFilename*>(argument3));
    case kStartMessage: return g_hostTables && RegisterAll();
    case kEndMessage: return Detach();
    case kVersionMessage: return kInterfaceVersion;
    case kResourceMessage:
      return AnswerResourceMessage(reinterpret_cast<Int>(argument1), static_cast<HostResourceRecord*>(argument2));
    default: return kUnknownMessage;
  }
}

}  // namespace q7z
