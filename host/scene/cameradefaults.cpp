#include "host/scene/cameradefaults.h"

#include <cmath>

#include "framework/trigonometry.h"
#include "host/scene/headlessdocument.h"

namespace q7z
{

namespace
{

constexpr Float kWideAspect = 16.0 / 9;
constexpr Float kHalfWidthAtOne = 0.5;  // 53 degrees: a picture is as wide as it is far
constexpr Float kNear = 1.0;            // host lengths
constexpr Float kFar = 100'000.0;

/// Width by height of the document's pictures.
Float GetAspect(const HeadlessObject& object) noexcept
{
  const HeadlessDocument* const document = object.GetDocument();
  const HeadlessContainer* const render = document ? document->GetRenderData() : nullptr;
  const HostValue* const width = render ? render->Find(kRenderWidth) : nullptr;
  const HostValue* const height = render ? render->Find(kRenderHeight) : nullptr;
  const Float aspect = width && height ? width->GetFloat() / height->GetFloat() : kWideAspect;
  return aspect > 0 && std::isfinite(aspect) ? aspect : kWideAspect;
}

/// @param factor  of the tangents of the halves: this angle's by the other's.
Float GetAngle(const HeadlessObject& object, Int32 otherAngle, Float factor, Float halfTangent) noexcept
{
  const HostValue* const other = object.GetParameters().Find(otherAngle);
  return 2 * Atan(other ? Tan(other->GetFloat() / 2) * factor : halfTangent);
}

}  // namespace

Bool FindCameraDefault(const HeadlessObject& object, const HostDescId& id, HostValue& value) noexcept
{
  const Bool isCamera = object.GetType() == kCameraObjectType || object.GetType() == kRenderCameraObjectType;
  if (!isCamera || id.GetDepth() != 1)
    return false;
  switch (id[0].id)
  {
    case kCameraProjection: value = HostValue(Int32{0}); return true;
    case kCameraZoom: value = HostValue(1.0); return true;
    case kCameraHorizontalAngle:
      value = HostValue(GetAngle(object, kCameraVerticalAngle, GetAspect(object), kHalfWidthAtOne));
      return true;
    case kCameraVerticalAngle:
      value = HostValue(GetAngle(object, kCameraHorizontalAngle, 1 / GetAspect(object), kHalfWidthAtOne / GetAspect(object)));
      return true;
    case kCameraNearEnabled:
    case kCameraFarEnabled: value = HostValue(false); return true;
    case kCameraNearDistance: value = HostValue(kNear); return true;
    case kCameraFarDistance: value = HostValue(kFar); return true;
    default: return false;
  }
}

}  // namespace q7z
