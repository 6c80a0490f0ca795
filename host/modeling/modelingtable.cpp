#include "host/modeling/modelingtable.h"

#include "host/modeling/currentstate.h"
#include "host/modeling/removeunusedpoints.h"
#include "host/modeling/splitpolygons.h"
#include "host/modeling/triangulate.h"

namespace q7z
{

namespace
{

/// Null for no polygon object.
HeadlessPolygonObject* GetMesh(const HostModelingData& data) noexcept
{
  return data.object ? ToHeadless(data.object)->AsPolygonObject() : nullptr;
}

}  // namespace

Bool ModelingTable::Send(Int32 command, HostModelingData& data) noexcept
{
  _results.Truncate(0);
  data.results = nullptr;
  data.resultCount = 0;
  HeadlessPolygonObject* const mesh = GetMesh(data);
  switch (command)
  {
    case kSplitPolygonsCommand: return Split(data);
    case kTriangulateCommand: return mesh && Triangulate(*mesh);
    case kRemoveUnusedPointsCommand: return mesh && RemoveUnusedPoints(*mesh);
    case kCurrentStateCommand: return CopyCurrentState(data);
    default: return false;
  }
}

Bool ModelingTable::Split(HostModelingData& data) noexcept
{
  HeadlessPolygonObject* const mesh = GetMesh(data);
  // Room for the result comes first: behind the split nothing may fail.
  if (!mesh || data.mode != kPolygonSelectionMode || _results.Resize(1).HasError())
    return false;
  HeadlessOwner<HeadlessPolygonObject> part = SplitSelectedPolygons(*mesh);
  if (!part)
    return false;
  _results[0] = ToHost(static_cast<HeadlessObject*>(part.release()));
  data.results = _results.begin();
  data.resultCount = 1;
  return true;
}

Bool ModelingTable::CopyCurrentState(HostModelingData& data) noexcept
{
  if (_results.Resize(1).HasError())
    return false;
  HeadlessObject* const copy = MakeCurrentStateCopy(ToHeadless(data.document), ToHeadless(data.object), data.settings);
  if (!copy)
    return false;
  _results[0] = ToHost(copy);
  data.results = _results.begin();
  data.resultCount = 1;
  return true;
}

}  // namespace q7z
