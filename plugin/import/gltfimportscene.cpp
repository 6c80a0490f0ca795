// The scene of a load: its steps in order, its materials, the group objects of the file's scenes, and the document's texts.

#include <new>

#include "framework/check.h"
#include "plugin/import/gltfimporter.h"
#include "plugin/module/diagnostics.h"

namespace q7z
{

namespace
{

constexpr Float kMaterialWeight = 0.35;
constexpr Int32 kMaterialTitle = 10019;
constexpr Int32 kMaterialFailedText = 10016;
constexpr Float kHierarchyWeight = 0.55;
constexpr Int32 kHierarchyTitle = 10018;

// A file may refer to its nodes more often than it has nodes, within reason.
constexpr Int kMaximumExtraObjects = 1'000'000;

// About a second of work; real files need a few millions.
constexpr Int kMaximumUpwardSteps = 100'000'000;

}  // namespace

Result<std::unique_ptr<GltfImporter>> GltfImporter::Create(HostDocument* doc, const Url& fileUrl, Bool isGlb, Bool merging,
                                                           HostBackgroundJob* backgroundJob) noexcept
{
  std::unique_ptr<GltfImporter> importer(new (std::nothrow) GltfImporter(doc, fileUrl, isGlb, merging, backgroundJob));
  if (!importer)
    return Error::OutOfMemory();
  RETURN_IF_ERROR(importer->_gltfData.Init());
  return importer;
}

Result<void> GltfImporter::ConstructScene() noexcept
{
  CHECK_STATE(_doc);
  const LoadProgress materialProgress(_job, kMaterialWeight, kMaterialTitle);
  RETURN_IF_ERROR(materialProgress.Report(0.01));
  RETURN_IF_ERROR(LoadMaterials(materialProgress));

  RETURN_IF_ERROR(_meshesToObjects.Reserve(_gltfData.meshes.GetCount()));
  RETURN_IF_ERROR(_nodesToObjects.Reserve(_gltfData.nodes.GetCount()));
  SetLimits();
  _hierarchyProgress = LoadProgress(_job, kHierarchyWeight, kHierarchyTitle);
  RETURN_IF_ERROR(_hierarchyProgress.Report(0.01));
  RETURN_IF_ERROR(_gltfData.scenes.IsPopulated() ? LoadScenes() : LoadRoots());
  RETURN_IF_ERROR(TryLoadAnimations());
  // Cameras stay the host's own. A renderer that has cameras of its kind converts them by its library, which the interface of hosts
  // does not hold.

  CHECK_STATE(LoadMetaInfo());
  return _hierarchyProgress.Report(1.0);
}

/// In other node spaces the objects simply get no materials.
Result<void> GltfImporter::LoadMaterials(const LoadProgress& progress) noexcept
{
  const Int materialCount = _gltfData.materials.GetCount();
  if (!_options.IsMaterials() || materialCount == 0 || HostGetActiveNodeSpace() != kStandardNodeSpace)
    return {};
  const Result<void> prepared = _materialImporter.Init(_doc, _fileUrl);
  if (prepared.HasError())  // a material that needs what is missing falls back by itself
    PrintError("The material import could not be prepared"_s, prepared.GetError());
  Int count = 0;
  for (const auto& entry : _gltfData.materials)
  {
    RETURN_IF_ERROR(CreateDocumentMaterial(entry.GetKey(), entry.GetValue(), _warnings));
    RETURN_IF_ERROR(progress.Report(static_cast<Float>(++count) / static_cast<Float>(materialCount)));
  }
  return {};
}

Result<void> GltfImporter::CreateDocumentMaterial(Int gltfMatIdx, const GltfMaterial& gltfMaterial,
                                                  const ImportWarnings& log) noexcept
{
  CHECK_STATE(gltfMatIdx > -1);
  ASSIGN_OR_RETURN(auto* const place, _materialsToObjects.FindOrInsert(gltfMatIdx));
  HostOwner<HostMaterial> created;
  if (!*place)
  {
    ASSIGN_OR_RETURN(created, MakeMaterial(gltfMatIdx, gltfMaterial, log));
  }
  HostMaterial* const material = created ? created.get() : *place;
  if (!material || !material->SetName(gltfMaterial.name))
    return Error::OutOfMemory();
  if (created)
    _doc->InsertMaterial(created.release());
  *place = material;
  return {};
}

/// A material that cannot be had is a warning and becomes a plain one.
Result<HostOwner<HostMaterial>> GltfImporter::MakeMaterial(Int gltfMatIdx, const GltfMaterial& gltfMaterial,
                                                           const ImportWarnings& log) noexcept
{
  Result<HostOwner<HostMaterial>> material = _materialImporter.CreateMaterial(gltfMaterial);
  if (!material.HasError())
    return material;
  PrintError("A material could not be imported"_s, material.GetError());
  const Result<String> index = String::FromInt(gltfMatIdx);
  if (!index.HasError())  // without memory there is no message
    log.AddResource(HostMessageClass::kWarning, kMaterialFailedText, index.GetValue());
  HostOwner<HostMaterial> plain(HostMaterial::Alloc(kMaterialType));
  if (!plain)
    return Error::OutOfMemory();
  return plain;
}

void GltfImporter::SetLimits() noexcept
{
  Int bufferByteCount = 0;
  for (const auto& entry : _gltfData.buffers)
    bufferByteCount += entry.GetValue().GetBytes().GetCount();
  for (const auto& entry : _gltfData.skins)  // what lists joints may have tags of them
    bufferByteCount += entry.GetValue().joints.GetCount();
  _geometryBudget = GeometryBudget(bufferByteCount);
  _remainingObjects = _gltfData.nodes.GetCount() + kMaximumExtraObjects;
  _remainingSteps = kMaximumUpwardSteps;
}

Result<void> GltfImporter::LoadScenes() noexcept
{
  for (const auto& entry : _gltfData.scenes)
    RETURN_IF_ERROR(LoadScene(entry.GetKey(), entry.GetValue()));
  return {};
}

Result<void> GltfImporter::LoadScene(Int sceneIndex, const GltfScene& scene) noexcept
{
  HostObject* const sceneParent = HostAllocObject(kNullObjectType);
  CHECK_STATE(sceneParent);
  HostInsertObject(_doc, sceneParent, nullptr, nullptr);
  Result<void> filled = FillScene(sceneIndex, scene, sceneParent);
  if (filled.HasError())
  {
    HostRemove(sceneParent);
    HostNode::Free(sceneParent);
  }
  return filled;
}

Result<void> GltfImporter::FillScene(Int sceneIndex, const GltfScene& scene, HostObject* sceneParent) noexcept
{
  RETURN_IF_ERROR(SetObjectName(sceneParent, scene.name, "Scene @"_s, sceneIndex));
  if (sceneIndex != _gltfData.defaultScene)
  {
    sceneParent->SetVisibility(kEditorVisibility, kHiddenMode);
    sceneParent->SetVisibility(kRenderVisibility, kHiddenMode);
  }
  return LoadHierarchy(scene.nodes, sceneParent);
}

Result<void> GltfImporter::LoadRoots() noexcept
{
  RETURN_IF_ERROR(FindRoots());
  const HostOwner<HostObject> group(HostAllocObject(kNullObjectType));
  if (!group)
    return Error::OutOfMemory();
  RETURN_IF_ERROR(LoadHierarchy(_roots, group.get()));
  // Each goes before the ones that went before it, so the roots end up in reverse order.
  while (HostObject* const root = group->GetDown())
  {
    HostRemove(root);
    HostInsertObject(_doc, root, nullptr, nullptr);
  }
  return {};
}

Result<void> GltfImporter::FindRoots() noexcept
{
  HashSet<Int> roots;
  RETURN_IF_ERROR(roots.Reserve(_gltfData.nodes.GetCount()));
  for (const auto& entry : _gltfData.nodes)
    RETURN_IF_ERROR(roots.Set(entry.GetKey(), NoValue()));
  for (const auto& entry : _gltfData.nodes)
  {
    for (const Int child : entry.GetValue().children)
      roots.Erase(child);
  }
  RETURN_IF_ERROR(_roots.Reserve(roots.GetCount()));
  for (const auto& entry : roots)
    RETURN_IF_ERROR(_roots.Append(entry.GetKey()));
  return {};
}

// The text goes to 2000 although an export reads its generator from 2002: on purpose, a round trip does not carry it.
Result<Bool> GltfImporter::LoadMetaInfo() noexcept
{
  if (!_doc)
    return false;
  if (_merging)
    return true;
  // Copies, so that the document does not keep the file's whole text alive.
  ASSIGN_OR_RETURN(const String generator, _gltfData.generator.Copy());
  ASSIGN_OR_RETURN(const String copyright, _gltfData.copyright.Copy());
  CHECK_STATE(_doc->SetParameter(kDocumentGeneratorParameter, generator));
  CHECK_STATE(_doc->SetParameter(kDocumentCopyrightParameter, copyright));
  return true;
}

}  // namespace q7z
