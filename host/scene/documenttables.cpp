#include "framework/result.h"
#include "host/scene/headlessalias.h"
#include "host/scene/scenetables.h"

namespace q7z
{

HostDocument* SceneDocumentTable::Clone(const HostDocument* document, Int32) noexcept
{
  return ToHost(CloneDocument(ToHeadless(document)));
}

void SceneDocumentTable::InsertObject(HostDocument* document, HostObject* object, HostObject* parent,
                                      HostObject* predecessor) noexcept
{
  ToHeadless(document)->InsertObject(ToHeadless(object), ToHeadless(parent), ToHeadless(predecessor));
}

void SceneDocumentTable::InsertMaterial(HostDocument* document, HostMaterial* material) noexcept
{
  ToHeadless(document)->InsertMaterial(ToHeadless(material));
}

HostObject* SceneDocumentTable::GetFirstObject(const HostDocument* document) noexcept
{
  return ToHost(ToHeadless(document)->GetFirstObject());
}

void SceneDocumentTable::SetTime(HostDocument* document, const HostTime& time) noexcept
{
  ToHeadless(document)->SetTime(time, _state.jobs);
}

HostTime SceneDocumentTable::GetTime(const HostDocument* document) noexcept
{
  return ToHeadless(document)->GetTime();
}

void SceneDocumentTable::ExecutePasses(HostDocument* document) noexcept
{
  ToHeadless(document)->ExecutePasses(_state.jobs);
}

/// This host has no hooks.
HostNode* SceneDocumentTable::FindSceneHook(const HostDocument*, Int32) noexcept
{
  return nullptr;
}

/// No node of this host takes messages.
Bool SceneDocumentTable::SendMessage(HostNode*, Int32, void*) noexcept
{
  return false;
}

HostContainer* SceneDocumentTable::GetSettings(HostDocument* document) noexcept
{
  return ToHost(&ToHeadless(document)->GetSettings());
}

HostContainer* SceneDocumentTable::GetActiveRenderData(HostDocument* document) noexcept
{
  return ToHost(ToHeadless(document)->GetRenderData());
}

String SceneDocumentTable::GetActiveNodeSpace() noexcept
{
  if (_state.nodeSpace.IsPopulated())
    return _state.nodeSpace;
  if (_state.activeDocument)
    return _state.activeDocument->GetNodeSpace();
  return kStandardNodeSpace;
}

HostDocument* SceneDocumentTable::GetActiveDocument() noexcept
{
  return ToHost(_state.activeDocument);
}

HostMaterial* SceneMaterialTable::Alloc(Int32 type) noexcept
{
  return type == kMaterialType ? ToHost(HeadlessMaterial::Create()) : nullptr;
}

Bool SceneMaterialTable::IsNodeBased(const HostMaterial* material) noexcept
{
  return ToHeadless(material)->IsNodeBased();
}

Bool SceneMaterialTable::GetChannelState(const HostMaterial* material, Int32 channel) noexcept
{
  const MaterialChannel* const found = ToHeadless(material)->FindChannel(channel);
  return found && found->on;
}

HostShader* SceneMaterialTable::GetChannelShader(const HostMaterial* material, Int32 channel) noexcept
{
  const MaterialChannel* const found = ToHeadless(material)->FindChannel(channel);
  return found ? ToHost(found->shader) : nullptr;
}

Int32 SceneMaterialTable::GetReflectanceLayerId(const HostMaterial* material, Int32 index) noexcept
{
  const BaseArray<ReflectanceLayer>& layers = ToHeadless(material)->GetLayers();
  return index >= 0 && index < layers.GetCount() ? layers[index].firstId : 0;
}

HostShader* SceneMaterialTable::GetLayerShader(const HostMaterial* material, Int32 parameter) noexcept
{
  return ToHost(ToHeadless(material)->FindLayerShader(parameter));
}

namespace
{

constexpr Int32 kShaderFileParameter = 1002;

Bool IsAbsolute(const String& path) noexcept
{
  const std::string_view text = path.GetView();
  return text.starts_with('/') || text.starts_with('\\') || (text.size() > 1 && text[1] == ':');
}

}  // namespace

HostFilename SceneMaterialTable::ResolveShaderFile(const HostShader* shader, const HostDocument* document) noexcept
{
  const HostValue* const value = shader ? ToHeadless(shader)->GetParameters().Find(kShaderFileParameter) : nullptr;
  const String path = value ? value->GetString() : String();
  const String folder = document ? ToHeadless(document)->GetFolder() : String();
  if (path.IsEmpty() || folder.IsEmpty() || IsAbsolute(path))
    return HostFilename(path);
  const Bool needsSlash = !folder.GetView().ends_with('/');
  Result<String> joined = String::Join({folder, needsSlash ? "/"_s : String(), path});
  return joined.HasError() ? HostFilename() : HostFilename(std::move(joined).GetValue());
}

HostContainer* SceneMaterialTable::GetGlobalSettings() noexcept
{
  return ToHost(&_state.globalSettings);
}

}  // namespace q7z
