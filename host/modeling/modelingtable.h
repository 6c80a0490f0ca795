#pragma once

// ModelingTable: the modeling commands behind the host interface. One belongs to a host and serves one thread at a time.

#include "framework/basearray.h"
#include "plugin/module/hostobject.h"

namespace q7z
{

/// Whatever the mode, kTriangulateCommand and kRemoveUnusedPointsCommand work on the whole object.
inline constexpr Int32 kSplitPolygonsCommand = 220;
inline constexpr Int32 kTriangulateCommand = 221;
inline constexpr Int32 kRemoveUnusedPointsCommand = 227;
inline constexpr Int32 kPolygonSelectionMode = 2;

class ModelingTable final : public HostModelingTable
{
public:
  /// The list of results is valid until the next command; the objects in it are the caller's.
  Bool Send(Int32 command, HostModelingData& data) noexcept override;

private:
  Bool Split(HostModelingData& data) noexcept;
  Bool CopyCurrentState(HostModelingData& data) noexcept;

  BaseArray<HostObject*> _results;
};

}  // namespace q7z
