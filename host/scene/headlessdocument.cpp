#include "host/scene/headlessdocument.h"

#include <new>

#include "framework/result.h"
#include "host/scene/evaluation.h"
#include "host/scene/headlesstrack.h"

namespace q7z
{

namespace
{}  // namespace

HeadlessLayer::~HeadlessLayer()
{
  for (HeadlessLayer* const layer : _layers)
    delete layer;
}

void HeadlessLayer::Destroy() noexcept
{
  // A layer goes with its document.
  CountMistake(GetSceneDiagnostics().freedWhileInserted);
}

HeadlessLayer* HeadlessLayer::Add() noexcept
{
  std::unique_ptr<HeadlessLayer> layer(_isRoot ? new (std::nothrow) HeadlessLayer(_document, false) : nullptr);
  if (!layer || _layers.Append(layer.get()).HasError())
    return nullptr;
  return layer.release();
}

Bool HeadlessLayer::CopyFrom(const HeadlessLayer& other) noexcept
{
  if (!CopyCommonFrom(other))
    return false;
  for (const HeadlessLayer* source : other._layers)
  {
    HeadlessLayer* const layer = Add();
    if (!layer || !layer->CopyCommonFrom(*source))
      return false;
  }
  return true;
}

HeadlessDocument* HeadlessDocument::Create() noexcept
{
  HeadlessOwner<HeadlessDocument> document(new (std::nothrow) HeadlessDocument);
  if (!document || !document->Init())
    return nullptr;
  return document.release();
}

Bool HeadlessDocument::Init() noexcept
{
  constexpr HostTime kStart{0, 1};
  constexpr HostTime kEnd{3, 1};
  _layerRoot.reset(new (std::nothrow) HeadlessLayer(this, true));
  _nodeSpace = kStandardNodeSpace;
  HeadlessContainer& parameters = GetParameters();
  return _layerRoot && _takeData.Init(this) && parameters.Set(kDocumentRateParameter, Int32(30)) &&
         parameters.Set(kDocumentStartParameter, kStart) && parameters.Set(kDocumentEndParameter, kEnd) &&
         parameters.Set(kDocumentSecondStartParameter, kStart) && parameters.Set(kDocumentSecondEndParameter, kEnd) &&
         _settings.Set(kDocumentUnitSetting, HostUnitScale{1, 3}) && _renderData.Set(kRenderWidth, Int32(1280)) &&
         _renderData.Set(kRenderHeight, Int32(720));
}

HeadlessDocument::~HeadlessDocument()
{
  HeadlessObject::DestroyList(_firstObject);
  HeadlessObject::DestroyList(_firstKept);
  for (HeadlessMaterial* material = _firstMaterial; material;)
    delete std::exchange(material, material->_next);
}

void HeadlessDocument::InsertMaterial(HeadlessMaterial* material) noexcept
{
  if (material->TakeOut())
    CountMistake(GetSceneDiagnostics().insertedTwice);
  material->_document = this;
  material->_previous = _lastMaterial;
  (_lastMaterial ? _lastMaterial->_next : _firstMaterial) = material;
  _lastMaterial = material;
}

void HeadlessDocument::SetTime(const HostTime& time, HostJobs* jobs) noexcept
{
  _time = time;
  ExecutePasses(jobs);
}

void HeadlessDocument::ExecutePasses(HostJobs* jobs) noexcept
{
  EvaluateTracks(*this, jobs);
}

Bool HeadlessDocument::SetNodeSpace(const String& nodeSpace) noexcept
{
  Result<String> copy = nodeSpace.Copy();
  if (copy.HasError())
    return false;
  _nodeSpace = std::move(copy).GetValue();
  return true;
}

Bool HeadlessDocument::SetFolder(const String& folder) noexcept
{
  Result<String> copy = folder.Copy();
  if (copy.HasError())
    return false;
  _folder = std::move(copy).GetValue();
  return true;
}

Bool HeadlessDocument::CopySettingsFrom(const HeadlessDocument& other) noexcept
{
  _time = other._time;
  _nodeSpace = other._nodeSpace;
  _folder = other._folder;
  _hasRenderData = other._hasRenderData;
  return CopyCommonFrom(other) && _settings.CopyFrom(other._settings) && _renderData.CopyFrom(other._renderData);
}

}  // namespace q7z
