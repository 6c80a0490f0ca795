// What a mesh has per host point: joints with their weights, and vertex colours. Every vertex takes those of its point.

#include <algorithm>

#include "framework/check.h"
#include "plugin/geometry/gltfmeshexportparts.h"
#include "plugin/module/hostids.h"

namespace q7z
{

namespace
{

constexpr Int kMostInfluences = 4;
constexpr Int kMostJoints = 65536;  // what an index of 16 bits tells apart

struct VertexJoints
{
  UInt16 joints[kMostInfluences] = {};
};

struct VertexWeights
{
  Float32 weights[kMostInfluences] = {};
};

/// The largest influences on a point, sorted by falling weight.
class Influences
{
public:
  void Insert(Float weight, Int joint) noexcept
  {
    const Int position = FindPosition(weight);
    if (position < 0 || position == kMostInfluences)
      return;
    _count = std::min(_count + 1, kMostInfluences);
    for (Int i = _count - 1; i > position; --i)
      _influences[i] = _influences[i - 1];
    _influences[position] = {weight, joint};
  }

  void CopyTo(VertexJoints& joints, VertexWeights& weights) const noexcept
  {
    for (Int i = 0; i < kMostInfluences; ++i)
    {
      joints.joints[i] = static_cast<UInt16>(_influences[i].joint);
      weights.weights[i] = static_cast<Float32>(_influences[i].weight);
    }
  }

private:
  struct Influence
  {
    Float weight = 0;
    Int joint = 0;
  };

  /// Of equal weights a new one goes before the first and behind the last. -1 is beside a NaN, where nothing fits.
  Int FindPosition(Float weight) const noexcept
  {
    if (_count == 0 || weight >= _influences[0].weight)
      return 0;
    if (!(weight > _influences[_count - 1].weight))
      return _count;
    for (Int i = 0; i + 1 < _count; ++i)
    {
      if (_influences[i].weight >= weight && weight >= _influences[i + 1].weight)
        return i + 1;
    }
    return -1;
  }

  Influence _influences[kMostInfluences];
  Int _count = 0;
};

/// The indices in the tag of the joints that count. Groups and joints that are gone do not, as in the list of the skin.
Result<BaseArray<Int32>> FindJoints(const HostWeightTag* tag, HostDocument* doc) noexcept
{
  BaseArray<Int32> joints;
  const Int32 count = tag->GetJointCount();
  for (Int32 i = 0; i < count; ++i)
  {
    const HostObject* const joint = tag->GetJoint(i, doc);
    if (joint && joint->GetType() != kNullObjectType)
      RETURN_IF_ERROR(joints.Append(i));
  }
  return joints;
}

/// Indices beyond would begin at 0 again and bend the mesh by other joints.
Result<void> CheckJointCount(const HostPolygonObject* op, Int count) noexcept
{
  if (count <= kMostJoints)
    return {};
  ASSIGN_OR_RETURN(const String message,
                   String::Format("'@' has more joints than the 65536 that a file can tell apart."_s, {op->GetName()}));
  return MAKE_ERROR(ErrorClass::kIllegalState, message);
}

/// Points whose influences stay in the cache while joint after joint is asked for their weights.
constexpr Int kBlockPoints = 256;

void CollectBlock(const HostWeightTag* tag, const BaseArray<Int32>& tagJoints, Int firstPoint, Int count, VertexJoints* joints,
                  VertexWeights* weights) noexcept
{
  Influences influences[kBlockPoints];
  Float jointWeights[kBlockPoints];
  for (Int number = 0; number < tagJoints.GetCount(); ++number)
  {
    tag->GetWeights(tagJoints[number], static_cast<Int32>(firstPoint), static_cast<Int32>(count), jointWeights);
    for (Int i = 0; i < count; ++i)
      influences[i].Insert(jointWeights[i], number);
  }
  for (Int i = 0; i < count; ++i)
    influences[i].CopyTo(joints[i], weights[i]);
}

/// Gives the vertices behind the host points the values of their points.
template <typename T>
void SpreadToCopies(const BaseArray<Int32>& copyPoints, Int pointCount, BaseArray<T>& values) noexcept
{
  for (Int i = 0; i < copyPoints.GetCount(); ++i)
    values[pointCount + i] = values[copyPoints[i]];
}

Result<void> CollectJointsAndWeights(const MeshData& record, const HostPolygonObject* op, const HostWeightTag* tag,
                                     HostDocument* doc, BaseArray<VertexJoints>& joints,
                                     BaseArray<VertexWeights>& weights) noexcept
{
  CHECK_STATE(!joints.IsPopulated());
  CHECK_STATE(!weights.IsPopulated());
  const Int pointCount = op->GetPointCount();
  const Int vertexCount = pointCount + record.copyPoints.GetCount();
  RETURN_IF_ERROR(joints.Resize(vertexCount));
  RETURN_IF_ERROR(weights.Resize(vertexCount));
  ASSIGN_OR_RETURN(const BaseArray<Int32> tagJoints, FindJoints(tag, doc));
  RETURN_IF_ERROR(CheckJointCount(op, tagJoints.GetCount()));
  for (Int first = 0; first < pointCount; first += kBlockPoints)
    CollectBlock(tag, tagJoints, first, std::min(pointCount - first, kBlockPoints), &joints[first], &weights[first]);
  SpreadToCopies(record.copyPoints, pointCount, joints);
  SpreadToCopies(record.copyPoints, pointCount, weights);
  return {};
}

Result<void> CollectVertexColors(const MeshData& record, const HostPolygonObject* op, const HostVertexColorTag* tag,
                                 BaseArray<VertexColor>& vertexColors) noexcept
{
  CHECK_STATE(!vertexColors.IsPopulated());
  const Int pointCount = op->GetPointCount();
  RETURN_IF_ERROR(vertexColors.ResizeForOverwrite(pointCount + record.copyPoints.GetCount()));
  std::fill(vertexColors.begin(), vertexColors.end(), VertexColor{0, 0, 0, 0});  // deliberately without the alpha of a corner
  const HostColorHandle handle = tag->GetHandleR();
  for (Int point = 0; point < pointCount; ++point)
  {
    if (!handle || point >= handle.count)
      continue;
    const Float32* const color = handle.GetPoint(point);
    vertexColors[point] = {color[0], color[1], color[2], color[3]};
  }
  SpreadToCopies(record.copyPoints, pointCount, vertexColors);
  return {};
}

template <typename T>
Result<void> AppendAttribute(MeshAccessor& attribute, GltfBufferView& view, GltfBuffer& buffer,
                             const BaseArray<T>& values) noexcept
{
  attribute.isUsed = true;
  view.AddByteOffset(buffer.GetBytes().GetCount());
  return attribute.accessor.AppendElements(buffer, view, values.GetFirst(), values.GetCount());
}

}  // namespace

Result<void> WriteSkinWeights(MeshData& record, GltfBuffer& buffer, const HostPolygonObject* op, HostDocument* doc) noexcept
{
  const auto* const tag = static_cast<const HostWeightTag*>(op->GetTag(kWeightTagType));
  if (!tag || tag->GetJointCount() < 1)
    return {};
  BaseArray<VertexJoints> joints;
  BaseArray<VertexWeights> weights;
  RETURN_IF_ERROR(CollectJointsAndWeights(record, op, tag, doc, joints, weights));
  RETURN_IF_ERROR(AppendAttribute(record.joints, record.jointView, buffer, joints));
  return AppendAttribute(record.weights, record.weightView, buffer, weights);
}

Result<void> WriteVertexColors(MeshData& record, GltfBuffer& buffer, const HostPolygonObject* op) noexcept
{
  const auto* const tag = static_cast<const HostVertexColorTag*>(op->GetTag(kVertexColorTagType));
  if (!tag || !tag->IsPerPoint())
    return {};
  BaseArray<VertexColor> vertexColors;
  RETURN_IF_ERROR(CollectVertexColors(record, op, tag, vertexColors));
  return AppendAttribute(record.vertexColors, record.colorView, buffer, vertexColors);
}

}  // namespace q7z
