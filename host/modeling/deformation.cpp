#include "host/modeling/deformation.h"

#include <algorithm>
#include <cmath>

#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlessweighttag.h"

namespace q7z
{

Bool GlobalMatrices::Get(const HeadlessObject& object, HostMatrix& matrix) noexcept
{
  const HostMatrix* found = nullptr;
  _path.Truncate(0);
  for (const HeadlessObject* place = &object; place; place = place->GetUp())
  {
    found = _matrices.Find(place);
    if (found)
      break;
    if (_path.Append(place).HasError())
      return false;
  }
  matrix = found ? *found : HostMatrix();
  for (Int i = _path.GetCount(); i-- > 0;)
  {
    matrix = matrix * _path[i]->GetLocalMatrix();
    if (_matrices.Set(_path[i], matrix).HasError())
      return false;
  }
  return true;
}

// Pose morphs.

namespace
{

constexpr Int32 kTagStrengthParameter = 1031;

const HostArray<Vector>* FindMorphPoints(const HeadlessMorph& morph) noexcept
{
  if (const HeadlessPointNode* const node = morph.GetPointNode())
    return &node->GetPoints();
  const HeadlessObject* const object = morph.GetObject();
  const HeadlessPolygonObject* const mesh = object ? object->AsPolygonObject() : nullptr;
  return mesh ? &mesh->GetPoints() : nullptr;
}

Float GetTagStrength(const HeadlessTag& tag) noexcept
{
  const HostValue* const strength = tag.GetParameters().Find(kTagStrengthParameter);
  return strength ? strength->GetFloat(1) : 1;
}

/// @param base  as many points as the object has.
Bool ApplyMorph(const HeadlessMorph& morph, Float tagStrength, const HostArray<Vector>& base,
                HeadlessPolygonObject& object) noexcept
{
  const Float strength = tagStrength * morph.GetStrength();
  const HostArray<Vector>* const shape = FindMorphPoints(morph);
  if (strength == 0 || !shape || shape->IsEmpty() || shape->GetCount() != base.GetCount())
    return true;
  Vector* const points = object.GetPointsW();
  if (!points)
    return false;
  const Vector* const from = base.GetR();
  const Vector* const to = shape->GetR();
  for (Int i = 0; i < base.GetCount(); ++i)
    points[i] += (to[i] - from[i]) * strength;
  return true;
}

/// @param own  the object's points before any morph.
Bool ApplyPoseMorphTag(const HeadlessPoseMorphTag& tag, const HostArray<Vector>& own, HeadlessPolygonObject& object) noexcept
{
  const HeadlessMorph* const first = tag.GetMorph(0);
  const HeadlessPointNode* const kept = first ? first->GetPointNode() : nullptr;
  const HostArray<Vector> base = kept && kept->GetPoints().GetCount() == own.GetCount() ? kept->GetPoints() : own;
  const Float strength = GetTagStrength(tag);
  for (Int32 i = 1; i < tag.GetMorphCount(); ++i)
  {
    if (!ApplyMorph(*tag.GetMorph(i), strength, base, object))
      return false;
  }
  return true;
}

}  // namespace

Bool ApplyPoseMorphs(HeadlessPolygonObject& object) noexcept
{
  const HostArray<Vector> own = object.GetPoints();
  for (const HeadlessTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext())
  {
    const Bool isMorphTag = tag->GetType() == kPoseMorphTagType;
    if (isMorphTag && !ApplyPoseMorphTag(static_cast<const HeadlessPoseMorphTag&>(*tag), own, object))
      return false;
  }
  return true;
}

// Skins.

namespace
{

Float GetLargest(const Vector& v) noexcept
{
  return std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)});
}

Float GetLargest(const HostMatrix& m) noexcept
{
  return std::max({GetLargest(m.offset), GetLargest(m.axisX), GetLargest(m.axisY), GetLargest(m.axisZ)});
}

/// The sum of axes, times their weights, less the unit axes: what is left of a rotation when nothing turns is 0.
struct AxisSum
{
  Vector x;
  Vector y;
  Vector z;

  void Add(const HostMatrix& matrix, Float weight) noexcept
  {
    x += (matrix.axisX - Vector{1, 0, 0}) * weight;
    y += (matrix.axisY - Vector{0, 1, 0}) * weight;
    z += (matrix.axisZ - Vector{0, 0, 1}) * weight;
  }
  Bool IsZero() const noexcept { return x == Vector() && y == Vector() && z == Vector(); }
};

/// What all joints together do to a point. Movements are kept as differences, so that a point whose joints stand still stays
/// exactly where it is.
struct PointBlend
{
  Float weight = 0;
  Vector movement;  // times weight
};

class SkinBlend
{
public:
  explicit SkinBlend(HeadlessPolygonObject& copy) noexcept : _copy(copy), _hasNormals(copy.FindTag(kNormalTagType) != nullptr) {}

  Bool Init() noexcept
  {
    const Int count = _copy.GetPointCount();
    return !_blends.Resize(count).HasError() && (!_hasNormals || !_turns.Resize(count).HasError());
  }

  /// A joint that stands still; its weights count all the same.
  void AddStill(const BaseArray<PointWeight>& weights) noexcept
  {
    for (const PointWeight& entry : weights)
    {
      if (IsInside(entry.point))
        _blends[entry.point].weight += entry.weight;
    }
  }

  void AddMoved(const BaseArray<PointWeight>& weights, const HostMatrix& movement) noexcept
  {
    const Vector* const points = _copy.GetPoints().GetR();
    for (const PointWeight& entry : weights)
    {
      if (!IsInside(entry.point))
        continue;
      PointBlend& blend = _blends[entry.point];
      blend.weight += entry.weight;
      blend.movement += (movement * points[entry.point] - points[entry.point]) * entry.weight;
      if (_hasNormals)
        _turns[entry.point].Add(movement, entry.weight);
      _hasMoved = true;
    }
  }

  Bool Apply() noexcept { return !_hasMoved || (MovePoints() && TurnNormals()); }

private:
  Bool IsInside(Int32 point) const noexcept { return point >= 0 && point < _blends.GetCount(); }

  Bool MovePoints() noexcept
  {
    Vector* const points = _copy.GetPointsW();
    if (!points)
      return false;
    for (Int i = 0; i < _blends.GetCount(); ++i)
    {
      const PointBlend& blend = _blends[i];
      if (blend.weight != 0)
        points[i] += Vector{blend.movement.x / blend.weight, blend.movement.y / blend.weight, blend.movement.z / blend.weight};
    }
    return true;
  }

  Bool TurnNormals() noexcept
  {
    for (HeadlessTag* tag = _hasNormals ? _copy.GetFirstTag() : nullptr; tag; tag = tag->GetNext())
    {
      if (tag->GetType() == kNormalTagType && !TurnNormals(static_cast<HeadlessCornerTag&>(*tag)))
        return false;
    }
    return true;
  }

  Bool TurnNormals(HeadlessCornerTag& tag) noexcept
  {
    const HostCornerHandle handle = tag.GetHandleW(false);
    if (!handle)
      return tag.GetPolygonCount() == 0;
    const HostPolygon* const polygons = _copy.GetPolygons().GetR();
    const Int count = std::min<Int>(handle.polygonCount, _copy.GetPolygonCount());
    for (Int i = 0; i < count; ++i)
    {
      HostCorners corners = handle.Get(i);
      corners.a = Turn(corners.a, polygons[i].a);
      corners.b = Turn(corners.b, polygons[i].b);
      corners.c = Turn(corners.c, polygons[i].c);
      corners.d = Turn(corners.d, polygons[i].d);
      handle.Set(i, corners);
    }
    return true;
  }

  /// By the blended transform's cofactors, which hold a normal upright where the transform also scales.
  Vector Turn(const Vector& normal, Int32 point) const noexcept
  {
    if (!IsInside(point) || _blends[point].weight == 0 || _turns[point].IsZero())
      return normal;
    const Float part = 1 / _blends[point].weight;
    const AxisSum& sum = _turns[point];
    const Vector x = Vector{1, 0, 0} + sum.x * part;
    const Vector y = Vector{0, 1, 0} + sum.y * part;
    const Vector z = Vector{0, 0, 1} + sum.z * part;
    const Vector turned = y.Cross(z) * normal.x + z.Cross(x) * normal.y + x.Cross(y) * normal.z;
    const Float length = turned.GetLength();
    const Float sign = x.Dot(y.Cross(z)) < 0 ? -1.0 : 1.0;
    return length > 0 && std::isfinite(length) ? turned * (sign * normal.GetLength() / length) : normal;
  }

  HeadlessPolygonObject& _copy;
  BaseArray<PointBlend> _blends;  // one a point
  BaseArray<AxisSum> _turns;      // one a point; empty without a normal tag
  Bool _hasNormals;
  Bool _hasMoved = false;
};

/// One joint against the object, now and in the bind pose.
struct JointMovement
{
  HostMatrix object;
  HostMatrix joint;
  HostMatrix objectBind;
  HostMatrix jointBind;

  /// Rounding of the global matrices is no movement, or meshes that stand still would lose what they share.
  Bool IsStill() const noexcept
  {
    constexpr Float kTolerance = 1e-12;
    const HostMatrix now = object.GetInverse() * joint;
    const HostMatrix then = objectBind.GetInverse() * jointBind;
    const HostMatrix difference{now.offset - then.offset, now.axisX - then.axisX, now.axisY - then.axisY, now.axisZ - then.axisZ};
    const Float size = std::max({GetLargest(object), GetLargest(joint), GetLargest(now), GetLargest(then)});
    return GetLargest(difference) <= kTolerance * size;
  }

  /// In the object's space: into the bind pose's joint, and back out of today's.
  HostMatrix GetMatrix() const noexcept { return object.GetInverse() * joint * jointBind.GetInverse() * objectBind; }
};

}  // namespace

Bool ApplySkin(const HeadlessWeightTag& tag, GlobalMatrices& globals, HeadlessPolygonObject& copy) noexcept
{
  JointMovement movement;
  if (!tag.HasBindPose() || !tag.GetObject() || copy.GetPointCount() == 0)
    return true;
  SkinBlend blend(copy);
  if (!blend.Init() || !globals.Get(*tag.GetObject(), movement.object))
    return false;
  movement.objectBind = tag.GetObjectBindMatrix();
  for (Int32 i = 0; i < tag.GetJointCount(); ++i)
  {
    const HeadlessObject* const joint = tag.GetJoint(i);
    if (!joint)
      continue;
    if (!globals.Get(*joint, movement.joint))
      return false;
    movement.jointBind = tag.GetJointBindMatrix(i);
    if (movement.IsStill())
      blend.AddStill(tag.GetWeights(i));
    else
      blend.AddMoved(tag.GetWeights(i), movement.GetMatrix());
  }
  return blend.Apply();
}

}  // namespace q7z
