// What the records refer to: bytes of buffers, accessors of meshes and skins. An item that cannot be had is a warning and the load
// goes on; whoever needs it finds nothing later.

#include "plugin/document/gltfparse.h"
#include "plugin/module/hostconsole.h"

namespace q7z
{

namespace
{

constexpr Int kMaximumUriCharacters = 260;  // of the whole message; a data URI may run to millions

void WarnAboutAsset(const ImportWarnings& warnings) noexcept
{
  warnings.AddResource(HostMessageClass::kWarning, 10014);
}

void WarnAboutDataUri(const ImportWarnings& warnings, const String& uri) noexcept
{
  const Result<String> text = String::Format(HostLoadString(10013), {uri.GetFirstCharacters(kMaximumUriCharacters)});
  if (!text.HasError())  // without memory there is no message
    warnings.Add(HostMessageClass::kWarning, text.GetValue().GetFirstCharacters(kMaximumUriCharacters));
}

}  // namespace

Result<Bool> GltfParser::ResolveAssets(HostBackgroundJob* backgroundJob) noexcept
{
  if (!_sceneLoader || !_gltfData)
    return false;
  const ImportWarnings warnings(backgroundJob);
  ResolveBuffers(warnings);
  if (_options->IsGeometry())
    ResolveMeshes(warnings);
  if (_options->IsAnimations())
    ResolveSkins(warnings);
  return true;
}

void GltfParser::ResolveBuffers(const ImportWarnings& warnings) noexcept
{
  Bool firstBuffer = true;
  for (auto& entry : _gltfData->buffers)
  {
    GltfBuffer& buffer = entry.GetValue();
    // The first buffer that was read, whatever its index, has the bytes of the container when it names no other source.
    const Bool isGlbBuffer = firstBuffer && buffer.GetUri().IsEmpty() && _sceneLoader->IsGlb();
    firstBuffer = false;
    if (isGlbBuffer)
    {
      buffer.TakeBytes(std::move(_glbBytes));
      continue;
    }
    if (buffer.Load(_fileUrl).HasError())
    {
      if (GetBufferDataPrefixLength(buffer.GetUri()))
        WarnAboutDataUri(warnings, buffer.GetUri());
      else
        WarnAboutAsset(warnings);
    }
    buffer.DropEncodedText();
  }
}

void GltfParser::ResolveMeshes(const ImportWarnings& warnings) noexcept
{
  for (auto& entry : _gltfData->meshes)
  {
    if (entry.GetValue().Resolve(_gltfData).HasError())
      WarnAboutAsset(warnings);
  }
}

void GltfParser::ResolveSkins(const ImportWarnings& warnings) noexcept
{
  for (auto& entry : _gltfData->skins)
  {
    if (entry.GetValue().Resolve(_gltfData).HasError())
      WarnAboutAsset(warnings);
  }
}

}  // namespace q7z
