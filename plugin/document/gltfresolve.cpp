// What the records refer to: bytes of buffers and images, accessors of meshes, animations and skins. An item that cannot be had is a warning and the load
// goes on; whoever needs it finds nothing later.

#include "plugin/document/gltfparse.h"
#include "plugin/module/diagnostics.h"
#include "plugin/module/hostconsole.h"

namespace q7z
{

namespace
{

constexpr Int kMaximumUriCharacters = 260;  // of the whole message; a data URI may run to millions

// Images may share views, so a small file can ask for far more bytes than it has. Below this much no file is held to its size.
constexpr Int kFreeImageBytes = Int(64) << 20;
constexpr Int kImageBytesPerBufferByte = 4;

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
  if (_options->IsMaterials())
  {
    ResolveMaterials(warnings);
    LoadImages(warnings);
  }
  if (_options->IsAnimations())
  {
    ResolveAnimations(warnings);
    ResolveSkins(warnings);
  }
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

void GltfParser::ResolveMaterials(const ImportWarnings& warnings) noexcept
{
  for (auto& entry : _gltfData->materials)
  {
    const Result<void> resolved = entry.GetValue().ResolveMaterial(_gltfData);
    if (resolved.HasError())
      WarnAboutAsset(warnings, resolved.GetError());
  }
}

void GltfParser::LoadImages(const ImportWarnings& warnings) noexcept
{
  const Result<Url> folder = _fileUrl.GetDirectory();
  Int budget = kFreeImageBytes;
  for (const auto& entry : _gltfData->buffers)
    budget += kImageBytesPerBufferByte * entry.GetValue().GetBytes().GetCount();
  for (auto& entry : _gltfData->images)
  {
    GltfImage& image = entry.GetValue();
    const Bool hasView = image.GetBufferViewIndex() != -1;
    const Bool hasUri = image.GetURIString().IsPopulated();
    // One with both, or with neither, is left alone.
    if (hasUri && !hasView)
      LoadImage(image, folder, warnings);
    else if (hasView && !hasUri)
      CopyImage(image, budget, warnings);
  }
}

void GltfParser::LoadImage(GltfImage& image, const Result<Url>& folder, const ImportWarnings& warnings) noexcept
{
  const Result<void> loaded = folder.HasError() ? folder.GetError() : image.LoadImageData(folder.GetValue());
  if (loaded.HasError() && image.IsBase64())
    WarnAboutDataUri(warnings, image.GetURIString(), loaded.GetError());
  else if (loaded.HasError())
    WarnAboutAsset(warnings, loaded.GetError());
  image.DropLoadedSource();
}

/// Views are bound by the materials: the view of an image that no material asks for cannot be had.
void GltfParser::CopyImage(GltfImage& image, Int& budget, const ImportWarnings& warnings) noexcept
{
  const Bool fits = image.GetViewByteLength() <= budget;
  const Result<void> copied = fits ? image.CopyFromBufferView() : Error::OutOfMemory();
  if (copied.HasError())
    WarnAboutAsset(warnings, copied.GetError());
  budget -= image.GetData().GetCount();
}

void GltfParser::ResolveAnimations(const ImportWarnings& warnings) noexcept
{
  for (auto& entry : _gltfData->animations)
  {
    const Result<void> resolved = entry.GetValue().ResolveAnimation(_gltfData);
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
