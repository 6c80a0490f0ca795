#include "plugin/import/gltfimport.h"

#include <new>

#include "framework/check.h"
#include "plugin/document/gltfparse.h"
#include "plugin/import/gltfimporter.h"
#include "plugin/import/gltfimportparameters.h"
#include "plugin/import/gltfimportreport.h"
#include "plugin/module/diagnostics.h"

namespace q7z
{

namespace
{

Result<void> LoadParameterDescription(HostDescription* description) noexcept
{
  CHECK_STATE(description->LoadDescription("fgltfimporter"));
  return {};
}

// One load from the checks to the finished document. importer is set as soon as there is one, so that the report can ask it.
Result<void> RunLoad(HostNode* node, const HostFilename& name, HostDocument* doc, Int32 flags, const String* error, Bool isGlb,
                     std::unique_ptr<GltfImporter>& importer) noexcept
{
  CHECK_STATE(node && doc && error);
  ASSIGN_OR_RETURN(const Url fileUrl, TarnoConvert(name));
  HostBackgroundJob* const backgroundJob = name.GetBackgroundJob();
  const Bool merging = (flags & kLoadMerging) != 0;
  ASSIGN_OR_RETURN(importer, GltfImporter::Create(doc, fileUrl, isGlb, merging, backgroundJob));
  RETURN_IF_ERROR(FillImportOptions(*node->GetContainer(), doc, importer->GetOptions()));

  GltfParser parser;
  RETURN_IF_ERROR(parser.Init(importer.get(), fileUrl));
  RETURN_IF_ERROR(parser.Load(backgroundJob));
  return importer->ConstructScene();
}

}  // namespace

HostPluginInstance* MakeGltfSceneLoader()
{
  return new (std::nothrow) GltfSceneLoader;
}

Bool GltfSceneLoader::Init(HostNode* node) noexcept
{
  return WriteImportDefaults(*node->GetContainer());
}

Bool GltfSceneLoader::GetDescription(HostNode* node, HostDescription* description, Int32& flags) noexcept
{
  const Result<void> loaded = LoadParameterDescription(description);
  if (loaded.HasError())
  {
    PrintError("The import parameters have no description"_s, loaded.GetError());
    return false;
  }
  flags |= kDescriptionLoaded;
  return g_hostTables->description->BaseGetDescription(node, description, flags);
}

Bool GltfSceneLoader::GetEnabling(HostNode* node, const HostDescId& id) noexcept
{
  Bool enabled = false;
  if (FindImportEnabling(*node->GetContainer(), id[0].id, enabled))
    return enabled;
  return g_hostTables->description->BaseGetEnabling(node, id);
}

Bool GltfSceneLoader::Identify(HostNode*, const HostFilename& name, const Byte* probe, Int32 probeSize) noexcept
{
  _isGlb = IsGlbHeader(probe, probeSize);
  return _isGlb || name.HasSuffix("gltf"_s);
}

Int32 GltfSceneLoader::Load(HostNode* node, const HostFilename& name, HostDocument* doc, Int32 flags, String* error) noexcept
{
  const SpinLockGuard guard(_lock);
  if (!(flags & (kLoadObjects | kLoadMaterials)))
    return 0;
  std::unique_ptr<GltfImporter> importer;
  const Result<void> loaded = RunLoad(node, name, doc, flags, error, _isGlb, importer);
  const LoadOutcome outcome = GetLoadOutcome(loaded.GetError());
  if (loaded.HasError())
    TellFailure(loaded.GetError(), outcome, (flags & kLoadDialogsAllowed) != 0, error);
  SendLoadReport(importer.get(), name, outcome.status);
  return outcome.result;
}

}  // namespace q7z
