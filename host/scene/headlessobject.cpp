#include "host/scene/headlessobject.h"

#include <new>

#include "host/scene/cameradefaults.h"
#include "host/scene/headlessdocument.h"
#include "host/scene/headlesstag.h"
#include "host/scene/transformmath.h"

namespace q7z
{

HeadlessObject* HeadlessObject::Create(Int32 type) noexcept
{
  if (type == kPolygonObjectType)
    return new (std::nothrow) HeadlessPolygonObject;
  return new (std::nothrow) HeadlessObject(type);
}

Bool HeadlessObject::IsKnownType(Int32 type) noexcept
{
  switch (type)
  {
    case kPolygonObjectType:
    case kNullObjectType:
    case kCameraObjectType:
    case kRenderCameraObjectType:
    case kJointObjectType:
    case kSkinDeformerType:
    case kInstanceObjectType:
    case kSecondInstanceObjectType: return true;
    default: return false;
  }
}

HeadlessObject::~HeadlessObject()
{
  for (HeadlessTag* tag = _firstTag; tag;)
    delete std::exchange(tag, tag->_next);
}

// Transform.

void HeadlessObject::SetLocalMatrix(const HostMatrix& matrix) noexcept
{
  _matrix = matrix;
  _vectors.reset();
  _vectorsFollow = true;
}

HostMatrix HeadlessObject::GetGlobalMatrix() const noexcept
{
  HostMatrix matrix = _matrix;
  for (const HeadlessObject* parent = _up; parent; parent = parent->_up)
    matrix = parent->_matrix * matrix;
  return matrix;
}

void HeadlessObject::SetGlobalMatrix(const HostMatrix& matrix) noexcept
{
  SetLocalMatrix(_up ? _up->GetGlobalMatrix().GetInverse() * matrix : matrix);
}

TransformVectors HeadlessObject::GetVectors() const noexcept
{
  if (_vectorsFollow)
    return DecomposeLocalMatrix(_base.get(), _matrix, _rotationOrder);
  return _vectors ? *_vectors : TransformVectors();
}

Vector HeadlessObject::GetScale() const noexcept
{
  return _vectorsFollow ? DecomposeScale(_base.get(), _matrix) : GetVectors().scale;
}

Bool HeadlessObject::SetVectors(const TransformVectors& vectors) noexcept
{
  return SetVectorsAndMatrix(vectors, ComposeLocalMatrix(_base.get(), vectors, _rotationOrder));
}

Bool HeadlessObject::SetVectorsAndMatrix(const TransformVectors& vectors, const HostMatrix& matrix) noexcept
{
  const Bool keepsVectors = MakeVectors();
  if (keepsVectors)
    *_vectors = vectors;
  _matrix = matrix;
  _vectorsFollow = !keepsVectors;
  return keepsVectors;
}

/// Room for vectors beside the matrix, which most objects do without. @return false without memory.
Bool HeadlessObject::MakeVectors() noexcept
{
  if (!_vectors)
    _vectors.reset(new (std::nothrow) TransformVectors);
  return _vectors != nullptr;
}

Bool HeadlessObject::SetBase(const BaseTransform& base) noexcept
{
  if (base == GetBase())
    return true;
  const TransformVectors vectors = GetVectors();
  std::unique_ptr<BaseTransform> kept;
  if (!(base == BaseTransform()))
    kept.reset(new (std::nothrow) BaseTransform(base));
  if ((!kept && !(base == BaseTransform())) || !MakeVectors())
    return false;
  _base = std::move(kept);
  return SetVectorsAndMatrix(vectors, _matrix);
}

Bool HeadlessObject::CopyPlaceFrom(const HeadlessObject& other) noexcept
{
  std::unique_ptr<BaseTransform> base(other._base ? new (std::nothrow) BaseTransform(*other._base) : nullptr);
  std::unique_ptr<TransformVectors> vectors(other._vectors ? new (std::nothrow) TransformVectors(*other._vectors) : nullptr);
  if ((other._base && !base) || (other._vectors && !vectors))
    return false;
  _base = std::move(base);
  _vectors = std::move(vectors);
  _matrix = other._matrix;
  _vectorsFollow = other._vectorsFollow;
  _rotationOrder = other._rotationOrder;
  _editorMode = other._editorMode;
  _renderMode = other._renderMode;
  return true;
}

Bool HeadlessObject::SetRotationOrder(RotationOrder order) noexcept
{
  const RotationOrder known = order >= 0 && order <= kDefaultRotationOrder ? order : kDefaultRotationOrder;
  if (known == _rotationOrder)
    return true;
  const TransformVectors vectors = GetVectors();
  if (!MakeVectors())
    return false;
  _rotationOrder = static_cast<Byte>(known);
  return SetVectorsAndMatrix(vectors, _matrix);
}

namespace
{

/// The vector that a parameter id names: 0 position, 1 rotation, 2 scale; -1 for none.
int FindTransformVector(const HostDescId& id) noexcept
{
  const int index = id[0].id - kPositionParameter;
  const Bool isVector = index >= 0 && index < 3;
  const Bool isComponent = id.GetDepth() == 2 && id[1].id >= kComponentX && id[1].id <= kComponentZ;
  return isVector && (id.GetDepth() == 1 || isComponent) ? index : -1;
}

Vector& GetTransformVector(TransformVectors& vectors, int index) noexcept
{
  return index == 0 ? vectors.position : index == 1 ? vectors.rotation : vectors.scale;
}

}  // namespace

HeadlessNode::ParameterAnswer HeadlessObject::GetOwnParameter(const HostDescId& id, HostValue& value) const noexcept
{
  const int index = FindTransformVector(id);
  if (index < 0)
    return ParameterAnswer::kNotMine;
  TransformVectors vectors = GetVectors();
  const Vector& vector = GetTransformVector(vectors, index);
  value = id.GetDepth() == 1 ? HostValue(vector) : HostValue(vector[id[1].id - kComponentX]);
  return ParameterAnswer::kDone;
}

HeadlessNode::ParameterAnswer HeadlessObject::SetOwnParameter(const HostDescId& id, const HostValue& value) noexcept
{
  const int index = FindTransformVector(id);
  if (index < 0)
    return ParameterAnswer::kNotMine;
  const Bool isWhole = id.GetDepth() == 1;
  if (isWhole ? value.GetKind() != HostValueKind::kVector : !IsNumber(value))
    return ParameterAnswer::kRefused;
  if (!MakeVectors())
    return ParameterAnswer::kRefused;
  TransformVectors vectors = GetVectors();
  Vector& vector = GetTransformVector(vectors, index);
  if (isWhole)
    vector = value.GetVector();
  else
    vector[id[1].id - kComponentX] = value.GetFloat();
  SetVectors(vectors);
  return ParameterAnswer::kDone;
}

Bool HeadlessObject::GetDefaultParameter(const HostDescId& id, HostValue& value) const noexcept
{
  return FindCameraDefault(*this, id, value);
}

// Visibility, layer, reference, tags.

Int32 HeadlessObject::GetVisibility(Int32 selector) const noexcept
{
  return selector == kEditorVisibility ? _editorMode : selector == kRenderVisibility ? _renderMode : 0;
}

void HeadlessObject::SetVisibility(Int32 selector, Int32 mode) noexcept
{
  if (selector == kEditorVisibility)
    _editorMode = mode;
  else if (selector == kRenderVisibility)
    _renderMode = mode;
}

HeadlessLayer* HeadlessObject::GetLayer() const noexcept
{
  return _layer.GetAs<HeadlessLayer>();
}

Bool HeadlessObject::SetLayer(HeadlessLayer* layer) noexcept
{
  return _layer.Set(layer);
}

HeadlessObject* HeadlessObject::GetReference() const noexcept
{
  return _reference.GetAs<HeadlessObject>();
}

Bool HeadlessObject::SetReference(HeadlessObject* shown) noexcept
{
  return IsInstance() && _reference.Set(shown);
}

HeadlessTag* HeadlessObject::FindTag(Int32 type, Int32 index) const noexcept
{
  if (index < 0)
    return nullptr;
  for (HeadlessTag* tag = _firstTag; tag; tag = tag->GetNext())
  {
    if (tag->GetType() == type && index-- == 0)
      return tag;
  }
  return nullptr;
}

Int32 HeadlessObject::GetTagCount(Int32 type) const noexcept
{
  Int32 count = 0;
  for (const HeadlessTag* tag = _firstTag; tag; tag = tag->GetNext())
    count += tag->GetType() == type ? 1 : 0;
  return count;
}

void HeadlessObject::VisitLinks(LinkVisitor visit, void* context) noexcept
{
  HeadlessNode::VisitLinks(visit, context);
  visit(context, _layer);
  visit(context, _reference);
}

// Copies.

HeadlessObject* HeadlessObject::CloneAlone() const noexcept
{
  HeadlessOwner<HeadlessObject> copy(Create(GetType()));
  if (!copy || !copy->CopyObjectFrom(*this))
    return nullptr;
  for (const HeadlessTag* tag = _firstTag; tag; tag = tag->GetNext())
  {
    HeadlessTag* const tagCopy = tag->Clone();
    if (!tagCopy)
      return nullptr;
    tagCopy->InsertInto(copy.get());
  }
  return copy.release();
}

Bool HeadlessObject::CopyObjectFrom(const HeadlessObject& other) noexcept
{
  if (!CopyCommonFrom(other) || !CopyDataFrom(other))
    return false;
  _layer = other._layer;
  _reference = other._reference;
  return CopyPlaceFrom(other);
}

HeadlessPolygonObject* HeadlessPolygonObject::Create(Int32 pointCount, Int32 polygonCount) noexcept
{
  HeadlessOwner<HeadlessPolygonObject> object(new (std::nothrow) HeadlessPolygonObject);
  if (!object || !object->_points.Create(pointCount) || !object->_polygons.Create(polygonCount))
    return nullptr;
  return object.release();
}

void HeadlessPolygonObject::SetGeometry(HostArray<Vector> points, HostArray<HostPolygon> polygons) noexcept
{
  _points = std::move(points);
  _polygons = std::move(polygons);
}

Bool HeadlessPolygonObject::CopyDataFrom(const HeadlessObject& other) noexcept
{
  const HeadlessPolygonObject& source = *other.AsPolygonObject();
  _points = source._points;
  _polygons = source._polygons;
  return _selection.CopyFrom(source._selection);
}

}  // namespace q7z
