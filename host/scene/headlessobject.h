#pragma once

// HeadlessObject: an object of the scene with its place in the hierarchy, transform, visibility, tags and tracks; and
// HeadlessPolygonObject, type 5100, with points and polygons. Every object of type 5100 is a HeadlessPolygonObject.

#include "framework/hostmatrix.h"
#include "framework/rotation.h"
#include "host/scene/headlessnode.h"
#include "host/scene/headlessselection.h"
#include "host/scene/hostarray.h"
#include "plugin/module/hostpolygon.h"

namespace q7z
{

/// Position, rotation (radians, in the object's own order) and scale, relative to the parent and the base transform.
struct TransformVectors
{
  Vector position;
  Vector rotation;
  Vector scale{1, 1, 1};
  friend Bool operator==(const TransformVectors&, const TransformVectors&) noexcept = default;
};

/// The fixed transform under the animated one.
struct BaseTransform
{
  HostMatrix matrix;
  Vector scale{1, 1, 1};
  friend Bool operator==(const BaseTransform&, const BaseTransform&) noexcept = default;
};

class HeadlessObject : public HeadlessNamedNode
{
public:
  /// An object in no document, of any type. Null without memory.
  static HeadlessObject* Create(Int32 type) noexcept;
  /// Whether type is one of the objects that the interface names.
  static Bool IsKnownType(Int32 type) noexcept;
  ~HeadlessObject() override;

  Bool IsPolygonObject() const noexcept { return GetType() == kPolygonObjectType; }
  inline HeadlessPolygonObject* AsPolygonObject() noexcept;
  inline const HeadlessPolygonObject* AsPolygonObject() const noexcept;

  // Hierarchy.
  HeadlessObject* GetNext() const noexcept { return _place == Place::kKept ? nullptr : _next; }
  HeadlessObject* GetPrevious() const noexcept { return _place == Place::kKept ? nullptr : _previous; }
  HeadlessObject* GetUp() const noexcept { return _up; }
  HeadlessObject* GetDown() const noexcept { return _down; }
  HeadlessObject* GetLastChild() const noexcept { return _lastChild; }
  /// The next object of the walk parent before children, within root's tree; null at its end. The walk needs no memory.
  HeadlessObject* GetNextInTree(const HeadlessObject* root) const noexcept;
  /// The document whose hierarchy the object stands in.
  HeadlessDocument* GetDocument() const noexcept override;

  // Each takes the object out of where it stands first. An object that would come under itself stays where it is.
  void InsertBefore(HeadlessObject* other) noexcept;
  void InsertAfter(HeadlessObject* other) noexcept;
  /// As first / last child. A null parent detaches: an object that is, or was before it was removed, in a document that still
  /// lives is kept alive by that document outside its hierarchy; any other belongs to the caller.
  void InsertUnder(HeadlessObject* parent) noexcept;
  void InsertUnderLast(HeadlessObject* parent) noexcept;
  /// Takes the object out with its children; the caller owns it then.
  void Remove() noexcept;

  // Transform. The local matrix is base matrix * vectors * base scale.
  const HostMatrix& GetLocalMatrix() const noexcept { return _matrix; }
  /// Keeps the matrix as given; the vectors follow from it.
  void SetLocalMatrix(const HostMatrix& matrix) noexcept;
  HostMatrix GetGlobalMatrix() const noexcept;
  void SetGlobalMatrix(const HostMatrix& matrix) noexcept;
  TransformVectors GetVectors() const noexcept;
  /// The same as theirs, in less time.
  Vector GetScale() const noexcept;
  /// Builds the matrix anew. @return false without memory: the matrix is the new one, and the vectors follow from it.
  Bool SetVectors(const TransformVectors& vectors) noexcept;
  /// Keeps both as given, whether they fit together or not. @return as SetVectors.
  Bool SetVectorsAndMatrix(const TransformVectors& vectors, const HostMatrix& matrix) noexcept;
  BaseTransform GetBase() const noexcept { return _base ? *_base : BaseTransform(); }
  /// Vectors and local matrix stay. @return false without memory: nothing has changed then.
  Bool SetBase(const BaseTransform& base) noexcept;
  RotationOrder GetRotationOrder() const noexcept { return _rotationOrder; }
  /// The angles and the matrix stay; an order outside 0 to 6 counts as 6. @return false without memory: nothing has changed then.
  Bool SetRotationOrder(RotationOrder order) noexcept;
  /// Transform and visibility of another. @return false without memory.
  Bool CopyPlaceFrom(const HeadlessObject& other) noexcept;

  /// The mode for selector 0 (editor) or 1 (render); 0 for any other selector.
  Int32 GetVisibility(Int32 selector) const noexcept;
  void SetVisibility(Int32 selector, Int32 mode) noexcept;

  HeadlessLayer* GetLayer() const noexcept;
  /// Null for none. @return false without memory.
  Bool SetLayer(HeadlessLayer* layer) noexcept;

  Bool IsInstance() const noexcept { return GetType() == kInstanceObjectType || GetType() == kSecondInstanceObjectType; }
  /// What an instance object shows, or null.
  HeadlessObject* GetReference() const noexcept;
  /// Null for none. @return false for an object that is no instance, or without memory.
  Bool SetReference(HeadlessObject* shown) noexcept;

  // Tags, in list order.
  HeadlessTag* GetFirstTag() const noexcept { return _firstTag; }
  HeadlessTag* FindTag(Int32 type, Int32 index = 0) const noexcept;
  Int32 GetTagCount(Int32 type) const noexcept;

  void VisitLinks(LinkVisitor visit, void* context) noexcept override;

  /// A copy without children, in no document, with tags and tracks; links lead where they led. Null without memory.
  HeadlessObject* CloneAlone() const noexcept;

protected:
  explicit HeadlessObject(Int32 type) noexcept : HeadlessNamedNode(NodeKind::kObject, type) {}
  virtual Bool CopyDataFrom(const HeadlessObject&) noexcept { return true; }
  Bool TakeOut() noexcept override;
  void Destroy() noexcept override;
  ParameterAnswer GetOwnParameter(const HostDescId& id, HostValue& value) const noexcept override;
  Bool GetDefaultParameter(const HostDescId& id, HostValue& value) const noexcept override;
  ParameterAnswer SetOwnParameter(const HostDescId& id, const HostValue& value) noexcept override;

private:
  friend class HeadlessDocument;
  friend class HeadlessTag;

  enum class Place : Byte
  {
    kNowhere,   ///< the caller's
    kChild,     ///< under _up
    kTopLevel,  ///< in _document's list
    kKept,      ///< alive with _document, outside its hierarchy
  };

  Bool MakeVectors() noexcept;
  const HeadlessObject* GetRoot() const noexcept;
  Bool IsUnderOrSame(const HeadlessObject* ancestor) const noexcept;
  Bool LeaveFor(const HeadlessObject* newParent) noexcept;
  void Link(HeadlessDocument* document, HeadlessObject* parent, HeadlessObject* previous, HeadlessObject* next) noexcept;
  void Unlink() noexcept;
  static void DestroyList(HeadlessObject* first) noexcept;
  Bool CopyObjectFrom(const HeadlessObject& other) noexcept;

  HeadlessDocument* _document = nullptr;  // of places kTopLevel and kKept; not owned
  HeadlessObject* _up = nullptr;
  HeadlessObject* _down = nullptr;
  HeadlessObject* _lastChild = nullptr;
  HeadlessObject* _previous = nullptr;
  HeadlessObject* _next = nullptr;
  HeadlessTag* _firstTag = nullptr;
  HeadlessTag* _lastTag = nullptr;
  HostMatrix _matrix;
  std::unique_ptr<TransformVectors> _vectors;  // not used while _vectorsFollow; null for those of a new object
  std::unique_ptr<BaseTransform> _base;
  WeakLink _layer;
  WeakLink _reference;
  WeakLink _origin;  // the document that the object was removed from
  Int32 _editorMode = 0;
  Int32 _renderMode = 0;
  Place _place = Place::kNowhere;
  Byte _rotationOrder = kDefaultRotationOrder;
  Bool _vectorsFollow = false;  // the matrix was set last: the vectors are worked out when asked for
};

class HeadlessPolygonObject final : public HeadlessObject
{
public:
  /// Points and indices are 0. Null without memory or for a negative count.
  static HeadlessPolygonObject* Create(Int32 pointCount, Int32 polygonCount) noexcept;
  HeadlessPolygonObject() noexcept : HeadlessObject(kPolygonObjectType) {}

  Int32 GetPointCount() const noexcept { return static_cast<Int32>(_points.GetCount()); }
  Int32 GetPolygonCount() const noexcept { return static_cast<Int32>(_polygons.GetCount()); }
  const HostArray<Vector>& GetPoints() const noexcept { return _points; }
  const HostArray<HostPolygon>& GetPolygons() const noexcept { return _polygons; }
  /// For writing; null when the count is 0 or without memory.
  Vector* GetPointsW() noexcept { return _points.GetW(); }
  HostPolygon* GetPolygonsW() noexcept { return _polygons.GetW(); }
  /// Replaces points and polygons; tags stay as they are. Counts beyond 32 bits are the caller's to avoid.
  void SetGeometry(HostArray<Vector> points, HostArray<HostPolygon> polygons) noexcept;

  /// The active polygon selection.
  HeadlessSelection& GetPolygonSelection() noexcept { return _selection; }
  const HeadlessSelection& GetPolygonSelection() const noexcept { return _selection; }

protected:
  Bool CopyDataFrom(const HeadlessObject& other) noexcept override;

private:
  HostArray<Vector> _points;
  HostArray<HostPolygon> _polygons;
  HeadlessSelection _selection;
};

inline HeadlessPolygonObject* HeadlessObject::AsPolygonObject() noexcept
{
  return IsPolygonObject() ? static_cast<HeadlessPolygonObject*>(this) : nullptr;
}
inline const HeadlessPolygonObject* HeadlessObject::AsPolygonObject() const noexcept
{
  return IsPolygonObject() ? static_cast<const HeadlessPolygonObject*>(this) : nullptr;
}

}  // namespace q7z
