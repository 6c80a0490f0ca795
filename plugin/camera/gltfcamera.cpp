#include "plugin/camera/gltfcamera.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "framework/check.h"
#include "framework/trigonometry.h"

namespace q7z
{

namespace
{

constexpr Int32 kPerspectiveProjection = 0;
constexpr Int32 kOrthographicProjection = 1;

constexpr Float kNoFarPlane = 1e10;
constexpr Float kSmallestPerspectiveNear = 0.01;  // a file needs one above 0
constexpr Float kExportWidth = 512.0;             // whatever the render width is: zoom comes back at a width of 1024 alone

HostValue ReadParameter(const HostObject* op, Int32 id) noexcept
{
  HostValue value;
  op->GetParameter(id, value);
  return value;
}

Float ReadLength(const HostObject* op, Int32 enabledId, Int32 lengthId, Float scale, Float disabled) noexcept
{
  return ReadParameter(op, enabledId).GetBool() ? ReadParameter(op, lengthId).GetFloat() * scale : disabled;
}

Result<void> WriteParameter(HostObject* op, Int32 id, const HostValue& value) noexcept
{
  CHECK_STATE(op->SetParameter(id, value));
  return {};
}

struct RenderSize
{
  Float width = 0;
  Float height = 0;
};

Result<RenderSize> ReadRenderSize(HostDocument* doc) noexcept
{
  const HostContainer* const rd = doc->GetActiveRenderData();
  CHECK_STATE(rd);
  return RenderSize{rd->GetFloat(kRenderWidth), rd->GetFloat(kRenderHeight)};
}

}  // namespace

Bool IsCameraObject(const HostObject* op) noexcept
{
  return op->GetType() == kCameraObjectType || op->GetType() == kRenderCameraObjectType;
}

Bool IsExportableCamera(const HostObject* op) noexcept
{
  if (!IsCameraObject(op))
    return false;
  const Int32 projection = ReadParameter(op, kCameraProjection).GetInt32();
  return projection == kPerspectiveProjection || projection == kOrthographicProjection;
}

Result<GltfCameraOwner> CreateCameraFromHost(HostObject* op, const ExportOptions& options) noexcept
{
  CHECK_ARGUMENT(op);
  GltfCameraOwner camera;
  if (ReadParameter(op, kCameraProjection).GetInt32() == kPerspectiveProjection)
    camera.reset(new (std::nothrow) GltfPerspectiveCamera);
  else
    camera.reset(new (std::nothrow) GltfOrthographicCamera);
  if (!camera)
    return Error::OutOfMemory();
  RETURN_IF_ERROR(camera->ReadFromHost(op, options));
  return camera;
}

Result<void> WriteCameraToHost(const GltfCamera* camera, HostObject* op, HostDocument* doc, const ImportOptions& options) noexcept
{
  CHECK_STATE(op);
  CHECK_STATE(doc);
  CHECK_STATE(camera);
  return camera->WriteToHost(op, doc, options);
}

Result<void> GltfCamera::ReadFromHost(HostObject* op, const ExportOptions& options) noexcept
{
  CHECK_ARGUMENT(op);
  zfar = ReadLength(op, kCameraFarEnabled, kCameraFarDistance, options.exportScale, kNoFarPlane);
  znear = ReadLength(op, kCameraNearEnabled, kCameraNearDistance, options.exportScale, 0.0);
  return {};
}

Result<void> GltfCamera::WriteToHost(HostObject* op, HostDocument* doc, const ImportOptions& options) const noexcept
{
  CHECK_STATE(op);
  CHECK_STATE(doc);
  RETURN_IF_ERROR(WriteParameter(op, kCameraNearEnabled, true));
  RETURN_IF_ERROR(WriteParameter(op, kCameraNearDistance, znear * options.GetScale()));
  RETURN_IF_ERROR(WriteParameter(op, kCameraFarEnabled, true));
  return WriteParameter(op, kCameraFarDistance, zfar * options.GetScale());
}

Result<void> GltfPerspectiveCamera::ReadFromHost(HostObject* op, const ExportOptions& options) noexcept
{
  RETURN_IF_ERROR(GltfCamera::ReadFromHost(op, options));
  type = "perspective"_s;
  const Float hfov = ReadParameter(op, kCameraHorizontalAngle).GetFloat();
  const Float vfov = ReadParameter(op, kCameraVerticalAngle).GetFloat();
  second = vfov;
  first = Tan(0.5 * hfov) / Tan(0.5 * vfov);
  if (znear <= 0.0)
    znear = kSmallestPerspectiveNear;
  return {};
}

Result<void> GltfPerspectiveCamera::WriteToHost(HostObject* op, HostDocument* doc, const ImportOptions& options) const noexcept
{
  CHECK_STATE(op);
  CHECK_STATE(doc);
  RETURN_IF_ERROR(WriteParameter(op, kCameraProjection, kPerspectiveProjection));
  RETURN_IF_ERROR(GltfCamera::WriteToHost(op, doc, options));
  const Float hfov = 2 * Atan(first * Tan(second * 0.5));
  RETURN_IF_ERROR(WriteParameter(op, kCameraHorizontalAngle, hfov));
  return WriteParameter(op, kCameraVerticalAngle, second);
}

Result<void> GltfOrthographicCamera::ReadFromHost(HostObject* op, const ExportOptions& options) noexcept
{
  RETURN_IF_ERROR(GltfCamera::ReadFromHost(op, options));
  type = "orthographic"_s;
  HostDocument* const doc = op->GetDocument();
  CHECK_STATE(doc);
  ASSIGN_OR_RETURN(const RenderSize size, ReadRenderSize(doc));
  const Float zoom = ReadParameter(op, kCameraZoom).GetFloat(0.0);  // 0 is divided by like any other
  first = (kExportWidth / size.width) * size.width * (1.0 / zoom) * options.exportScale;
  second = (kExportWidth / size.width) * size.height * (1.0 / zoom) * options.exportScale;
  return {};
}

Result<void> GltfOrthographicCamera::WriteToHost(HostObject* op, HostDocument* doc, const ImportOptions& options) const noexcept
{
  CHECK_STATE(op);
  CHECK_STATE(doc);
  RETURN_IF_ERROR(WriteParameter(op, kCameraProjection, kOrthographicProjection));
  RETURN_IF_ERROR(GltfCamera::WriteToHost(op, doc, options));
  ASSIGN_OR_RETURN(const RenderSize size, ReadRenderSize(doc));
  const Float zoom = std::min(size.width / first, size.height / second) * 0.5 / options.GetScale();
  return WriteParameter(op, kCameraZoom, zoom);
}

}  // namespace q7z
