#pragma once

// What the preparation of a scene leaves on its objects for the passes behind it: the markers in a container of the object's
// settings, and the tag that leads from a converted object back to the one it came from.

#include "framework/result.h"
#include "framework/spinlock.h"
#include "framework/types.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hosttrack.h"

namespace q7z
{

/// Keys of the markers.
enum ObjectMarker : Int32
{
  kMorphExportFailed = 0,  ///< Bool
  kRemovableBranch = 1,    ///< Bool
  kSubtreeCount = 2,       ///< Int32
  kNeededForJoints = 3,    ///< Bool: a joint of a skin, or above one
  kHiddenObject = 4,       ///< Bool
};

/// The name that keeps hidden objects, and what stands under them, out of files.
inline constexpr String kDontExportName = "dontexport"_s;

/// The container of an object's markers, made empty on first access. Owned by the object.
Result<HostContainer*> GetObjectMarkers(HostObject* op) noexcept;

/// A marker without making the container; defaultValue when there is none.
Bool GetBoolMarker(HostObject* op, ObjectMarker marker, Bool defaultValue = false) noexcept;

/// The same of a number.
Int32 GetIntMarker(HostObject* op, ObjectMarker marker, Int32 defaultValue = 0) noexcept;

/// Sets a marker in the container, which is made when there is none.
Result<void> SetMarker(HostObject* op, ObjectMarker marker, const HostValue& value) noexcept;

/// Puts a new tag on op that leads to it and, on its clones, still does. The lock guards the insertion: scenes are tagged from
/// several threads. Tags of its name that op had before are freed.
Result<void> AddAuxTag(HostObject* op, SpinLock& lock) noexcept;

/// The object as it stood before the conversion; null when op has no tag that tells.
HostObject* GetAuxSource(const HostObject* op) noexcept;

/// Whether op is hidden in editor and render and bears the name that keeps objects out of files.
Bool IsDontExport(HostObject* op) noexcept;

/// Takes all tracks of an id off op.
void FreeTracks(HostObject* op, const HostDescId& id) noexcept;

/// Whether op has a track on any component of position, rotation or scale.
Bool HasTransformTracks(const HostObject* op) noexcept;

/// Whether op is a polygon object with points and polygons.
Bool HasGeometry(HostObject* op) noexcept;

}  // namespace q7z
