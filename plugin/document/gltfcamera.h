#pragma once

// The records of `cameras`, which reading and writing share: filled from a file or from a camera of the host, and put into either. The
// two kinds give the last two fields their meaning.

#include <memory>

#include "framework/data.h"
#include "framework/result.h"
#include "plugin/document/gltfexportoptions.h"
#include "plugin/document/gltfimportoptions.h"
#include "plugin/module/hostdocument.h"

namespace q7z
{

class GltfCamera
{
public:
  virtual ~GltfCamera() = default;
  /// Takes the clipping planes of a host camera; the derived kinds take the rest, too.
  virtual Result<void> ReadFromHost(HostObject* op, const ExportOptions& options) noexcept;
  /// Takes the members that are there. @param src  the object under the camera's type.
  virtual Result<void> ReadFromJson(const DataDictionary& src) noexcept;
  /// Clipping is switched on for every camera. The first parameter that cannot be set ends it.
  virtual Result<void> WriteToHost(HostObject* op, HostDocument* doc, const ImportOptions& options) const noexcept;

  String name;  // of that object, not of the camera itself
  String type;
  Float zfar = 1e10;
  Float znear = 0.0;
  Float first = 1.0;   ///< aspectRatio or xmag
  Float second = 1.0;  ///< yfov in radians, or ymag
};

class GltfPerspectiveCamera final : public GltfCamera
{
public:
  GltfPerspectiveCamera() noexcept;
  Result<void> ReadFromHost(HostObject* op, const ExportOptions& options) noexcept override;
  Result<void> ReadFromJson(const DataDictionary& src) noexcept override;
  Result<void> WriteToHost(HostObject* op, HostDocument* doc, const ImportOptions& options) const noexcept override;
};

class GltfOrthographicCamera final : public GltfCamera
{
public:
  GltfOrthographicCamera() noexcept;
  Result<void> ReadFromHost(HostObject* op, const ExportOptions& options) noexcept override;
  Result<void> ReadFromJson(const DataDictionary& src) noexcept override;
  Result<void> WriteToHost(HostObject* op, HostDocument* doc, const ImportOptions& options) const noexcept override;
};

using GltfCameraOwner = std::unique_ptr<GltfCamera>;

/// The camera of an element of the file. Any type but "perspective" counts as orthographic; one without the object of its type keeps
/// its start values.
Result<GltfCameraOwner> ReadCamera(const DataDictionary& src) noexcept;

/// A document's camera: empty until it was read.
struct GltfCameraRecord
{
  Result<void> ReadFromJson(const DataDictionary& element) noexcept
  {
    ASSIGN_OR_RETURN(camera, ReadCamera(element));
    return {};
  }
  GltfCameraOwner camera;
};

}  // namespace q7z
