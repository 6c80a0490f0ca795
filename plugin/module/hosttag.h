#pragma once

// Tags of objects: the list of an object, and the tags with bulk data (normals, UVW, colours, selections, weights, textures,
// phong). Bulk data is reached through pointers to the host's own arrays; every pointer holds until the tag changes its size,
// its precision or its mode, or goes.

#include "framework/vector.h"
#include "plugin/module/hostobject.h"

namespace q7z
{

class HostTagTable
{
public:
  /// A new tag in no list, sized for count: polygons for 5711 and 5671, points for 431000045, 0 for all others. Null for an
  /// unknown type or without memory. The caller owns it. Bulk data starts as 0; colours as (0, 0, 0, 1).
  virtual HostTag* Alloc(Int32 type, Int32 count) noexcept = 0;
  virtual HostTag* Clone(const HostTag* tag, HostAliasTrans* trans) noexcept = 0;
  /// Puts the tag at the end of the object's list; the object owns it then. @return false for a null argument.
  virtual Bool Insert(HostObject* object, HostTag* tag) noexcept = 0;
  /// Takes the tag out of its list; the caller owns it then.
  virtual void Remove(HostTag* tag) noexcept = 0;
  virtual HostTag* GetFirst(const HostObject* object) noexcept = 0;
  virtual HostTag* GetNext(const HostTag* tag) noexcept = 0;
  /// The index-th tag of the type, or null.
  virtual HostTag* Find(const HostObject* object, Int32 type, Int32 index) noexcept = 0;
  virtual Int32 GetCount(const HostObject* object, Int32 type) noexcept = 0;
  virtual HostObject* GetObject(const HostTag* tag) noexcept = 0;

protected:
  ~HostTagTable() = default;
};

class HostTag : public HostNode
{
public:
  static HostTag* Alloc(Int32 type, Int32 count = 0) noexcept { return g_hostTables->tag->Alloc(type, count); }
  HostTag* Clone(HostAliasTrans* trans = nullptr) const noexcept { return g_hostTables->tag->Clone(this, trans); }
  void Remove() noexcept { g_hostTables->tag->Remove(this); }
  HostTag* GetNext() const noexcept { return g_hostTables->tag->GetNext(this); }
  HostObject* GetObject() const noexcept { return g_hostTables->tag->GetObject(this); }

protected:
  HostTag() noexcept = default;
  ~HostTag() = default;
};

inline HostTag* HostObject::GetFirstTag() const noexcept { return g_hostTables->tag->GetFirst(this); }
inline HostTag* HostObject::GetTag(Int32 type, Int32 index) const noexcept { return g_hostTables->tag->Find(this, type, index); }
inline Int32 HostObject::GetTagCount(Int32 type) const noexcept { return g_hostTables->tag->GetCount(this, type); }
inline Bool HostObject::InsertTag(HostTag* tag) noexcept { return g_hostTables->tag->Insert(this, tag); }
/// Makes a tag and inserts it. Null without memory.
inline HostTag* HostObject::MakeTag(Int32 type, Int32 count) noexcept
{
  HostTag* tag = HostTag::Alloc(type, count);
  if (tag)
    InsertTag(tag);
  return tag;
}

/// The four vectors of one polygon.
struct HostCorners
{
  Vector a;
  Vector b;
  Vector c;
  Vector d;
};

/// Direct access to corner data: 12 numbers a polygon (a, b, c, d; x, y, z each) in one of two precisions. Exactly one of the two
/// pointers is set, both are null for no data.
struct HostCornerHandle
{
  Float32* singles = nullptr;
  Float* doubles = nullptr;
  Int polygonCount = 0;

  explicit operator Bool() const noexcept { return singles || doubles; }
  HostCorners Get(Int polygon) const noexcept { return singles ? Read(singles + 12 * polygon) : Read(doubles + 12 * polygon); }
  void Set(Int polygon, const HostCorners& corners) const noexcept
  {
    if (singles)
      Write(singles + 12 * polygon, corners);
    else
      Write(doubles + 12 * polygon, corners);
  }

private:
  template <typename T>
  static HostCorners Read(const T* p) noexcept
  {
    return {{p[0], p[1], p[2]}, {p[3], p[4], p[5]}, {p[6], p[7], p[8]}, {p[9], p[10], p[11]}};
  }
  template <typename T>
  static void Write(T* p, const HostCorners& corners) noexcept
  {
    const Vector* const all[4] = {&corners.a, &corners.b, &corners.c, &corners.d};
    for (int i = 0; i < 4; ++i)
    {
      p[3 * i] = static_cast<T>(all[i]->x);
      p[3 * i + 1] = static_cast<T>(all[i]->y);
      p[3 * i + 2] = static_cast<T>(all[i]->z);
    }
  }
};

class HostNormalTable
{
public:
  /// @param needsDoubles  false: the data as it is kept (32-bit unless it was given in more). true: 64-bit from now on.
  /// @return no data without memory.
  virtual HostCornerHandle GetHandleW(HostNormalTag* tag, Bool needsDoubles) noexcept = 0;
  /// For reading; never changes the precision.
  virtual HostCornerHandle GetHandleR(const HostNormalTag* tag) noexcept = 0;

protected:
  ~HostNormalTable() = default;
};

class HostUvwTable
{
public:
  virtual HostCornerHandle GetHandleW(HostUvwTag* tag, Bool needsDoubles) noexcept = 0;  ///< as for normals
  virtual HostCornerHandle GetHandleR(const HostUvwTag* tag) noexcept = 0;

protected:
  ~HostUvwTable() = default;
};

class HostNormalTag : public HostTag
{
public:
  HostCornerHandle GetHandleW(Bool needsDoubles = false) noexcept { return g_hostTables->normal->GetHandleW(this, needsDoubles); }
  HostCornerHandle GetHandleR() const noexcept { return g_hostTables->normal->GetHandleR(this); }

protected:
  HostNormalTag() noexcept = default;
  ~HostNormalTag() = default;
};

class HostUvwTag : public HostTag
{
public:
  HostCornerHandle GetHandleW(Bool needsDoubles = false) noexcept { return g_hostTables->uvw->GetHandleW(this, needsDoubles); }
  HostCornerHandle GetHandleR() const noexcept { return g_hostTables->uvw->GetHandleR(this); }

protected:
  HostUvwTag() noexcept = default;
  ~HostUvwTag() = default;
};

/// Direct access to colours: r, g, b, a as 32-bit floats; four numbers a point in per-point mode, else sixteen a polygon.
struct HostColorHandle
{
  Float32* colors = nullptr;
  Int count = 0;  ///< points or polygons

  explicit operator Bool() const noexcept { return colors != nullptr; }
  void SetPoint(Int point, const Vector32& color) const noexcept
  {
    colors[4 * point] = color.x;
    colors[4 * point + 1] = color.y;
    colors[4 * point + 2] = color.z;
  }
  void SetPointAlpha(Int point, Float32 alpha) const noexcept { colors[4 * point + 3] = alpha; }
  const Float32* GetPoint(Int point) const noexcept { return colors + 4 * point; }
  const Float32* GetCorner(Int polygon, Int corner) const noexcept { return colors + 16 * polygon + 4 * corner; }
};

class HostVertexColorTable
{
public:
  virtual Bool IsPerPoint(const HostVertexColorTag* tag) noexcept = 0;
  /// Switching sizes the data for the object that the tag is on (all colours (0, 0, 0, 1)); staying changes nothing.
  /// @return false without memory.
  virtual Bool SetPerPoint(HostVertexColorTag* tag, Bool perPoint) noexcept = 0;
  virtual HostColorHandle GetHandleW(HostVertexColorTag* tag) noexcept = 0;
  virtual HostColorHandle GetHandleR(const HostVertexColorTag* tag) noexcept = 0;

protected:
  ~HostVertexColorTable() = default;
};

class HostVertexColorTag : public HostTag
{
public:
  Bool IsPerPoint() const noexcept { return g_hostTables->vertexColor->IsPerPoint(this); }
  Bool SetPerPoint(Bool perPoint) noexcept { return g_hostTables->vertexColor->SetPerPoint(this, perPoint); }
  HostColorHandle GetHandleW() noexcept { return g_hostTables->vertexColor->GetHandleW(this); }
  HostColorHandle GetHandleR() const noexcept { return g_hostTables->vertexColor->GetHandleR(this); }

protected:
  HostVertexColorTag() noexcept = default;
  ~HostVertexColorTag() = default;
};

class HostSelectionTable
{
public:
  /// The selection of a 5673 tag, never null. Owned by the tag.
  virtual HostSelection* GetTagSelection(HostPolygonSelectionTag* tag) noexcept = 0;
  /// The active polygon selection of a polygon object, never null. Owned by the object.
  virtual HostSelection* GetPolygonSelection(HostPolygonObject* object) noexcept = 0;
  /// Selects first to last, both included. @return false for first > last, a negative number, or without memory.
  virtual Bool SelectRange(HostSelection* selection, Int32 first, Int32 last) noexcept = 0;
  virtual Bool CopyTo(const HostSelection* selection, HostSelection* target) noexcept = 0;
  virtual Int32 GetCount(const HostSelection* selection) noexcept = 0;
  virtual Bool IsSelected(const HostSelection* selection, Int32 index) noexcept = 0;

protected:
  ~HostSelectionTable() = default;
};

class HostSelection
{
public:
  Bool SelectRange(Int32 first, Int32 last) noexcept { return g_hostTables->selection->SelectRange(this, first, last); }
  Bool CopyTo(HostSelection* target) const noexcept { return g_hostTables->selection->CopyTo(this, target); }
  Int32 GetCount() const noexcept { return g_hostTables->selection->GetCount(this); }
  Bool IsSelected(Int32 index) const noexcept { return g_hostTables->selection->IsSelected(this, index); }

protected:
  HostSelection() noexcept = default;
  ~HostSelection() = default;
};

class HostPolygonSelectionTag : public HostTag
{
public:
  HostSelection* GetSelection() noexcept { return g_hostTables->selection->GetTagSelection(this); }

protected:
  HostPolygonSelectionTag() noexcept = default;
  ~HostPolygonSelectionTag() = default;
};

class HostTextureTable
{
public:
  virtual HostMaterial* GetMaterial(const HostTextureTag* tag) noexcept = 0;
  virtual void SetMaterial(HostTextureTag* tag, HostMaterial* material) noexcept = 0;

protected:
  ~HostTextureTable() = default;
};

class HostTextureTag : public HostTag
{
public:
  HostMaterial* GetMaterial() const noexcept { return g_hostTables->texture->GetMaterial(this); }
  void SetMaterial(HostMaterial* material) noexcept { g_hostTables->texture->SetMaterial(this, material); }

protected:
  HostTextureTag() noexcept = default;
  ~HostTextureTag() = default;
};

class HostPhongTable
{
public:
  /// Gives the object its phong tag (made when it has none) with these settings. @return false without memory.
  virtual Bool SetPhong(HostObject* object, Bool on, Bool limit, Float angleRadians) noexcept = 0;
  /// The phong normals of a polygon object, 12 numbers a polygon. @return false for no polygon object.
  virtual Bool ComputeNormals(HostPolygonObject* object, const HostCornerHandle& target) noexcept = 0;

protected:
  ~HostPhongTable() = default;
};

/// A weight to be set.
struct HostPointWeight
{
  Int32 joint = 0;  ///< index in the tag
  Int32 point = 0;
  Float weight = 0;
};

class HostWeightTable
{
public:
  /// @return the joint's index in the tag, or -1. A joint that is added twice is there twice.
  virtual Int32 AddJoint(HostWeightTag* tag, HostObject* joint) noexcept = 0;
  virtual Int32 GetJointCount(const HostWeightTag* tag) noexcept = 0;
  virtual HostObject* GetJoint(const HostWeightTag* tag, Int32 jointIndex, HostDocument* document) noexcept = 0;
  virtual Float GetWeight(const HostWeightTag* tag, Int32 jointIndex, Int32 pointIndex) noexcept = 0;
  /// The weights of count points from firstPoint on, as GetWeight gives them; here by asking for each.
  virtual void GetWeights(const HostWeightTag* tag, Int32 jointIndex, Int32 firstPoint, Int32 count, Float* weights) noexcept
  {
    for (Int32 i = 0; i < count; ++i)
      weights[i] = GetWeight(tag, jointIndex, firstPoint + i);
  }
  /// @return false for an index out of range or without memory.
  virtual Bool SetWeight(HostWeightTag* tag, Int32 jointIndex, Int32 pointIndex, Float weight) noexcept = 0;
  /// Sets count weights in their order, as SetWeight does; here by asking for each. The first that fails ends it with false.
  virtual Bool SetWeights(HostWeightTag* tag, const HostPointWeight* weights, Int32 count) noexcept
  {
    for (Int32 i = 0; i < count; ++i)
    {
      if (!SetWeight(tag, weights[i].joint, weights[i].point, weights[i].weight))
        return false;
    }
    return true;
  }
  /// Takes the present global matrices of the object and the joints as the bind pose.
  virtual Bool SetBindPose(HostWeightTag* tag, HostDocument* document) noexcept = 0;

protected:
  ~HostWeightTable() = default;
};

class HostWeightTag : public HostTag
{
public:
  Int32 AddJoint(HostObject* joint) noexcept { return g_hostTables->weight->AddJoint(this, joint); }
  Int32 GetJointCount() const noexcept { return g_hostTables->weight->GetJointCount(this); }
  HostObject* GetJoint(Int32 jointIndex, HostDocument* document) const noexcept
  {
    return g_hostTables->weight->GetJoint(this, jointIndex, document);
  }
  Float GetWeight(Int32 jointIndex, Int32 pointIndex) const noexcept
  {
    return g_hostTables->weight->GetWeight(this, jointIndex, pointIndex);
  }
  void GetWeights(Int32 jointIndex, Int32 firstPoint, Int32 count, Float* weights) const noexcept
  {
    g_hostTables->weight->GetWeights(this, jointIndex, firstPoint, count, weights);
  }
  Bool SetWeight(Int32 jointIndex, Int32 pointIndex, Float weight) noexcept
  {
    return g_hostTables->weight->SetWeight(this, jointIndex, pointIndex, weight);
  }
  Bool SetWeights(const HostPointWeight* weights, Int32 count) noexcept
  {
    return g_hostTables->weight->SetWeights(this, weights, count);
  }
  Bool SetBindPose(HostDocument* document) noexcept { return g_hostTables->weight->SetBindPose(this, document); }

protected:
  HostWeightTag() noexcept = default;
  ~HostWeightTag() = default;
};

class HostNodeMasterTable
{
public:
  /// The node master of a 1001149 tag, or null; its root, or null. The root has parameters as every node.
  virtual HostNodeMaster* GetMaster(const HostTag* tag) noexcept = 0;
  virtual HostNode* GetRoot(const HostNodeMaster* master) noexcept = 0;

protected:
  ~HostNodeMasterTable() = default;
};

class HostNodeMaster
{
public:
  static HostNodeMaster* Of(const HostTag* tag) noexcept { return g_hostTables->nodeMaster->GetMaster(tag); }
  HostNode* GetRoot() const noexcept { return g_hostTables->nodeMaster->GetRoot(this); }

protected:
  HostNodeMaster() noexcept = default;
  ~HostNodeMaster() = default;
};

}  // namespace q7z
