#pragma once

// Cameras between a file and the host: the records are filled from the host's cameras, and the host's cameras from records.

#include "plugin/document/gltfcamera.h"

namespace q7z
{

/// Whether an object is a camera of one of the two types.
Bool IsCameraObject(const HostObject* op) noexcept;
/// Whether it is one with a projection that a file can have.
Bool IsExportableCamera(const HostObject* op) noexcept;

/// The record of a host camera; any projection but 0 makes an orthographic one.
Result<GltfCameraOwner> CreateCameraFromHost(HostObject* op, const ExportOptions& options) noexcept;

Result<void> WriteCameraToHost(const GltfCamera* camera, HostObject* op, HostDocument* doc,
                               const ImportOptions& options) noexcept;

}  // namespace q7z
