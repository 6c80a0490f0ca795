#include "host/scene/headlessneighbor.h"
#include "host/scene/headlessobject.h"
#include "host/scene/phongnormals.h"
#include "host/scene/tablefamilies.h"

namespace q7z
{

namespace
{

class ScenePolygonTable final : public HostPolygonTable
{
public:
  Int32 GetPointCount(const HostPolygonObject* object) noexcept override { return ToHeadless(object)->GetPointCount(); }
  Int32 GetPolygonCount(const HostPolygonObject* object) noexcept override { return ToHeadless(object)->GetPolygonCount(); }
  const Vector* GetPointsR(const HostPolygonObject* object) noexcept override { return ToHeadless(object)->GetPoints().GetR(); }
  Vector* GetPointsW(HostPolygonObject* object) noexcept override { return ToHeadless(object)->GetPointsW(); }
  const HostPolygon* GetPolygonsR(const HostPolygonObject* object) noexcept override
  {
    return ToHeadless(object)->GetPolygons().GetR();
  }
  HostPolygon* GetPolygonsW(HostPolygonObject* object) noexcept override { return ToHeadless(object)->GetPolygonsW(); }
  Bool CanSharePolygons() noexcept override { return true; }
  void SharePolygons(HostPolygonObject* object, const HostPolygonObject* source) noexcept override
  {
    HeadlessPolygonObject& target = *ToHeadless(object);
    target.SetGeometry(target.GetPoints(), ToHeadless(source)->GetPolygons());
  }
};

HeadlessPhongTag* FindPhongTag(const HeadlessObject& object) noexcept
{
  return static_cast<HeadlessPhongTag*>(object.FindTag(kPhongTagType));
}

class ScenePhongTable final : public HostPhongTable
{
public:
  Bool SetPhong(HostObject* object, Bool on, Bool limit, Float angleRadians) noexcept override
  {
    HeadlessObject& target = *ToHeadless(object);
    HeadlessPhongTag* tag = FindPhongTag(target);
    if (!tag)
    {
      tag = static_cast<HeadlessPhongTag*>(HeadlessTag::Create(kPhongTagType));
      if (!tag)
        return false;
      tag->InsertInto(&target);
    }
    tag->SetSettings({on, limit, angleRadians});
    return true;
  }

  /// Without a phong tag polygons are flat.
  Bool ComputeNormals(HostPolygonObject* object, const HostCornerHandle& target) noexcept override
  {
    const HeadlessPolygonObject* const source = ToHeadless(object)->AsPolygonObject();
    if (!source || target.polygonCount < source->GetPolygonCount())
      return false;
    const HeadlessPhongTag* const tag = FindPhongTag(*source);
    return ComputePhongNormals(*source, tag ? tag->GetSettings() : PhongSettings{false, false, 0}, target);
  }
};

class SceneNeighborTable final : public HostNeighborTable
{
public:
  HostNeighbor* Alloc(Int32 pointCount, const HostPolygon* polygons, Int32 polygonCount) noexcept override
  {
    return ToHost(HeadlessNeighbor::Create(pointCount, polygons, polygonCount));
  }
  void Free(HostNeighbor* neighbor) noexcept override { delete ToHeadless(neighbor); }
  Int32 GetPointPolygons(const HostNeighbor* neighbor, Int32 point, const Int32** polygons) noexcept override
  {
    return ToHeadless(neighbor)->GetPointPolygons(point, polygons);
  }
};

}  // namespace

void FillPolygonTables(HostTables& tables) noexcept
{
  static ScenePolygonTable polygon;
  static ScenePhongTable phong;
  static SceneNeighborTable neighbor;
  tables.polygon = &polygon;
  tables.phong = &phong;
  tables.neighbor = &neighbor;
}

}  // namespace q7z
