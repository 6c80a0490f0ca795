// What the records refer to: bytes of buffers, accessors of meshes and skins. An item that cannot be had is a warning and the load
// goes on; whoever needs it finds nothing later.

#include "plugin/document/gltfparse.h"
#include "plugin/module/diagnostics.h"
#include "plugin/module/hostconsole.h"

namespace q7z
{

namespace
{

constexpr Int kMaximumUriCharacters = 260;  // of the whole message; a data URI may run to millions

void WarnAboutAsset(const ImportWarnings& warnings, const Error& error) noexcept
{
  PrintError("An asset could not be resolved"_s, error);
  warnings.AddResource(HostMessageClass::kWarning, 10014);
}

void WarnAboutDataUri(const ImportWarnings& warnings, const String& uri, const Error& error) noexcept
{
  PrintError("A data URI could not be decoded"_s, error);
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
    const Result<void> loaded = buffer.Load(_fileUrl);
    if (loaded.HasError() && GetBufferDataPrefixLength(buffer.GetUri()))
      WarnAboutDataUri(warnings, buffer.GetUri(), loaded.GetError());
    else if (loaded.HasError())
      WarnAboutAsset(warnings, loaded.GetError());
    buffer.DropEncodedText();
  }
}

void GltfParser::ResolveMeshes(const ImportWarnings& warnings) noexcept
{
  for (auto& entry : _gltfData->meshes)
  {
    const Result<void> resolved = entry.GetValue().Resolve(_gltfData);
    if (resolved.HasError())
      WarnAboutAsset(warnings, resolved.GetError());
  }
}

void GltfParser::ResolveSkins(const ImportWarnings& warnings) noexcept
{
  for (auto& entry : _gltfData->skins)
  {
    const Result<void> resolved = entry.GetValue().Resolve(_gltfData);
    if (resolved.HasError())
      WarnAboutAsset(warnings, resolved.GetError());
  }
}

}  // namespace q7z
