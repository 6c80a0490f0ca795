// The reading of cameras from a file.

#include <new>
#include <numbers>

#include "framework/check.h"
#include "plugin/document/gltfcamera.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfutilities.h"

namespace q7z
{

namespace
{

constexpr String kPerspective = "perspective"_s;

}  // namespace

GltfPerspectiveCamera::GltfPerspectiveCamera() noexcept
{
  second = std::numbers::pi;  // deliberately no sensible field of view
}

GltfOrthographicCamera::GltfOrthographicCamera() noexcept = default;

Result<GltfCameraOwner> ReadCamera(const DataDictionary& src) noexcept
{
  CHECK_STATE(src.IsPopulated());
  ASSIGN_OR_RETURN(String type, ReadRequiredString(src, keys::kType));
  const Bool isPerspective = type == kPerspective;
  GltfCameraOwner camera;
  if (isPerspective)
    camera.reset(new (std::nothrow) GltfPerspectiveCamera);
  else
    camera.reset(new (std::nothrow) GltfOrthographicCamera);
  if (!camera)
    return Error::OutOfMemory();
  camera->type = std::move(type);
  const Result<DataDictionary> members = ReadDictionary(src, isPerspective ? keys::kPerspective : keys::kOrthographic);
  if (members.HasError())
    return camera;  // deliberately: a camera without its members is one with the start values
  RETURN_IF_ERROR(camera->ReadFromJson(members.GetValue()));
  return camera;
}

Result<void> GltfCamera::ReadFromJson(const DataDictionary& src) noexcept
{
  CHECK_ARGUMENT(src.IsPopulated());
  name = ReadString(src, keys::kName, String());
  znear = ReadFloat(src, keys::kZnear, znear);
  return {};
}

Result<void> GltfPerspectiveCamera::ReadFromJson(const DataDictionary& src) noexcept
{
  RETURN_IF_ERROR(GltfCamera::ReadFromJson(src));
  second = ReadFloat(src, keys::kYfov, second);
  first = ReadFloat(src, keys::kAspectRatio, first);
  zfar = ReadFloat(src, keys::kZfar, zfar);
  return {};
}

Result<void> GltfOrthographicCamera::ReadFromJson(const DataDictionary& src) noexcept
{
  RETURN_IF_ERROR(GltfCamera::ReadFromJson(src));
  first = ReadFloat(src, keys::kXmag, first);
  second = ReadFloat(src, keys::kYmag, second);
  zfar = ReadFloat(src, keys::kZfar, zfar);
  return {};
}

}  // namespace q7z
