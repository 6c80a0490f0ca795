#pragma once

// Polygon objects: points, polygons, phong, neighbours, and the pose morph tag that keeps other shapes of the same object.

#include "plugin/module/hosttag.h"

namespace q7z
{

/// Four point indices; a triangle has d = c. An index may lie outside the object: every consumer checks.
struct HostPolygon
{
  Int32 a = 0;
  Int32 b = 0;
  Int32 c = 0;
  Int32 d = 0;
  friend constexpr Bool operator==(const HostPolygon&, const HostPolygon&) noexcept = default;
};

class HostPolygonTable
{
public:
  virtual Int32 GetPointCount(const HostPolygonObject* object) noexcept = 0;
  virtual Int32 GetPolygonCount(const HostPolygonObject* object) noexcept = 0;
  /// The host's own arrays; null when the count is 0 or, for writing, without memory (arrays are shared until written).
  virtual const Vector* GetPointsR(const HostPolygonObject* object) noexcept = 0;
  virtual Vector* GetPointsW(HostPolygonObject* object) noexcept = 0;
  virtual const HostPolygon* GetPolygonsR(const HostPolygonObject* object) noexcept = 0;
  virtual HostPolygon* GetPolygonsW(HostPolygonObject* object) noexcept = 0;
  /// Whether objects may have the same polygons in memory until one of them writes.
  virtual Bool CanSharePolygons() noexcept { return false; }
  /// Gives the object the source's polygons, as many as there are. Called only where they can be shared.
  virtual void SharePolygons(HostPolygonObject*, const HostPolygonObject*) noexcept {}

protected:
  ~HostPolygonTable() = default;
};

class HostPolygonObject : public HostObject
{
public:
  static HostPolygonObject* Alloc(Int32 pointCount, Int32 polygonCount) noexcept
  {
    return g_hostTables->object->AllocPolygonObject(pointCount, polygonCount);
  }
  Int32 GetPointCount() const noexcept { return g_hostTables->polygon->GetPointCount(this); }
  Int32 GetPolygonCount() const noexcept { return g_hostTables->polygon->GetPolygonCount(this); }
  const Vector* GetPointsR() const noexcept { return g_hostTables->polygon->GetPointsR(this); }
  Vector* GetPointsW() noexcept { return g_hostTables->polygon->GetPointsW(this); }
  const HostPolygon* GetPolygonsR() const noexcept { return g_hostTables->polygon->GetPolygonsR(this); }
  HostPolygon* GetPolygonsW() noexcept { return g_hostTables->polygon->GetPolygonsW(this); }
  static Bool CanSharePolygons() noexcept { return g_hostTables->polygon->CanSharePolygons(); }
  void SharePolygons(const HostPolygonObject* source) noexcept { g_hostTables->polygon->SharePolygons(this, source); }
  HostSelection* GetPolygonSelection() noexcept { return g_hostTables->selection->GetPolygonSelection(this); }
  Bool SetPhong(Bool on, Bool limit, Float angleRadians) noexcept
  {
    return g_hostTables->phong->SetPhong(this, on, limit, angleRadians);
  }

protected:
  HostPolygonObject() noexcept = default;
  ~HostPolygonObject() = default;
};

/// The object as a polygon object; the caller knows that its type is 5100. Null stays null.
inline HostPolygonObject* ToPoly(HostObject* op) noexcept { return static_cast<HostPolygonObject*>(op); }
inline const HostPolygonObject* ToPoly(const HostObject* op) noexcept { return static_cast<const HostPolygonObject*>(op); }

class HostNeighborTable
{
public:
  virtual HostNeighbor* Alloc(Int32 pointCount, const HostPolygon* polygons, Int32 polygonCount) noexcept = 0;
  virtual void Free(HostNeighbor* neighbor) noexcept = 0;
  /// The polygons around a point, in rising order. @return their number; polygons is set to the host's array.
  virtual Int32 GetPointPolygons(const HostNeighbor* neighbor, Int32 point, const Int32** polygons) noexcept = 0;

protected:
  ~HostNeighborTable() = default;
};

class HostNeighbor
{
public:
  static HostNeighbor* Alloc(Int32 pointCount, const HostPolygon* polygons, Int32 polygonCount) noexcept
  {
    return g_hostTables->neighbor->Alloc(pointCount, polygons, polygonCount);
  }
  static void Free(HostNeighbor* neighbor) noexcept
  {
    if (neighbor)
      g_hostTables->neighbor->Free(neighbor);
  }
  Int32 GetPointPolygons(Int32 point, const Int32** polygons) const noexcept
  {
    return g_hostTables->neighbor->GetPointPolygons(this, point, polygons);
  }

protected:
  HostNeighbor() noexcept = default;
  ~HostNeighbor() = default;
};

class HostPoseMorphTable
{
public:
  virtual Int32 GetMorphCount(const HostPoseMorphTag* tag) noexcept = 0;  ///< with the base pose, morph 0
  virtual HostMorph* GetMorph(const HostPoseMorphTag* tag, Int32 index) noexcept = 0;
  /// A new morph at the end. Null without memory. Owned by the tag.
  virtual HostMorph* AddMorph(HostPoseMorphTag* tag) noexcept = 0;
  virtual String GetMorphName(const HostMorph* morph) noexcept = 0;
  virtual Bool SetMorphName(HostMorph* morph, const String& name) noexcept = 0;
  /// Index 0 takes the object's point data and frees the object; another index links to the object, which stays in the document.
  virtual Bool StoreObject(HostPoseMorphTag* tag, HostMorph* morph, HostDocument* document, HostObject* object) noexcept = 0;
  virtual HostObject* GetObject(const HostMorph* morph) noexcept = 0;
  virtual HostPointNode* GetPointNode(const HostMorph* morph) noexcept = 0;
  virtual Int32 GetPointCount(const HostPointNode* node) noexcept = 0;
  virtual const Vector* GetPoints(const HostPointNode* node) noexcept = 0;
  virtual Float GetStrength(const HostMorph* morph) noexcept = 0;
  virtual HostDescId GetStrengthId(const HostPoseMorphTag* tag, Int32 index) noexcept = 0;
  virtual void EnterEdit(HostPoseMorphTag* tag, HostDocument* document) noexcept = 0;
  virtual Bool ExitEdit(HostPoseMorphTag* tag, HostDocument* document, Bool apply) noexcept = 0;
  virtual void Update(HostPoseMorphTag* tag, HostDocument* document) noexcept = 0;

protected:
  ~HostPoseMorphTable() = default;
};

class HostMorph
{
public:
  String GetName() const noexcept { return g_hostTables->poseMorph->GetMorphName(this); }
  Bool SetName(const String& name) noexcept { return g_hostTables->poseMorph->SetMorphName(this, name); }
  HostObject* GetObject() const noexcept { return g_hostTables->poseMorph->GetObject(this); }
  HostPointNode* GetPointNode() const noexcept { return g_hostTables->poseMorph->GetPointNode(this); }
  Float GetStrength() const noexcept { return g_hostTables->poseMorph->GetStrength(this); }

protected:
  HostMorph() noexcept = default;
  ~HostMorph() = default;
};

class HostPointNode
{
public:
  Int32 GetPointCount() const noexcept { return g_hostTables->poseMorph->GetPointCount(this); }
  const Vector* GetPoints() const noexcept { return g_hostTables->poseMorph->GetPoints(this); }

protected:
  HostPointNode() noexcept = default;
  ~HostPointNode() = default;
};

class HostPoseMorphTag : public HostTag
{
public:
  Int32 GetMorphCount() const noexcept { return g_hostTables->poseMorph->GetMorphCount(this); }
  HostMorph* GetMorph(Int32 index) const noexcept { return g_hostTables->poseMorph->GetMorph(this, index); }
  HostMorph* AddMorph() noexcept { return g_hostTables->poseMorph->AddMorph(this); }
  Bool StoreObject(HostMorph* morph, HostDocument* document, HostObject* object) noexcept
  {
    return g_hostTables->poseMorph->StoreObject(this, morph, document, object);
  }
  void EnterEdit(HostDocument* document) noexcept { g_hostTables->poseMorph->EnterEdit(this, document); }
  Bool ExitEdit(HostDocument* document, Bool apply) noexcept { return g_hostTables->poseMorph->ExitEdit(this, document, apply); }
  void Update(HostDocument* document) noexcept { g_hostTables->poseMorph->Update(this, document); }

protected:
  HostPoseMorphTag() noexcept = default;
  ~HostPoseMorphTag() = default;
};

inline HostDescId HostPoseMorphTagGetStrengthId(const HostPoseMorphTag* tag, Int32 index) noexcept
{
  return g_hostTables->poseMorph->GetStrengthId(tag, index);
}

}  // namespace q7z
